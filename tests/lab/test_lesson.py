"""A lesson from its first to its last minute; ./test plays it with the programs built with sanitizers, too."""

import signal

from harness.companion import UPLOADED
from harness.processes import wait_until
from test_lab import expect_touches_work


def test_a_lesson_from_pairing_to_quitting_ends_with_status_0(lab):
    panel = lab.start_panel()
    companion = lab.start_companion(panel)
    companion.pair(panel)
    companion.start_casting()
    wait_until(lambda: panel.touch_enabled_at() == lab.computer_address, "the panel is asked for touches")
    for place in ((83, 731), (1187, 109), (1359, 761)):
        expect_touches_work(lab, panel, *place)
    wait_until(lambda: panel.ping_times(), "the heartbeat", 10)

    picture = lab.folder / "lesson.png"
    picture.write_bytes(bytes(range(256)) * 300)
    companion.pick_file(picture)
    companion.expect_alert(UPLOADED, 20)
    companion.window.dismiss_alert()
    assert panel.state()["uploads"]["list"][-1]["size"] == 76_800, "the file arrived with another size"

    companion.stop_casting()
    wait_until(lambda: panel.touch_enabled_at() is None, "the panel is told to stop")
    for process in (companion.process, panel.process):  # a sanitizer that has found something makes it another status
        process.send(signal.SIGTERM)
        assert process.wait(30) == 0, f"{process.name} ended with status {process.status()}: {process.output()[-5000:]}"
