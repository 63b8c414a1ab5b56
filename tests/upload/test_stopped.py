"""A panel that is stopped in the middle of an upload: the connection stays, and no byte moves any more."""

import os
import re
import signal
import threading
import time

from harness.processes import wait_until
from stage import MIB

IDLE_TIME = 60  # in seconds, after which a request ends
SIZE = 250 * MIB


def bytes_stored(pid):
    with open(f"/proc/{pid}/io", encoding="ascii") as io:
        return int(re.search(r"wchar: (\d+)", io.read()).group(1))


class StopAfterTheFirstBytes(threading.Thread):
    """An upload takes a fraction of a second, in which the one who drops the file has to wait for its source."""

    def __init__(self, pid):
        super().__init__(daemon=True)
        self._pid, self.time = pid, None
        self.start()

    def run(self):
        before = bytes_stored(self._pid)
        wait_until(lambda: bytes_stored(self._pid) > before + 4 * MIB, "the first bytes of the upload", 30, 0.001)
        os.kill(self._pid, signal.SIGSTOP)
        self.time = time.monotonic()


def test_an_upload_to_a_panel_that_stops_ends_after_a_minute(stage):
    pid = stage.paired().process.pid
    path = stage.files / "lecture.mp4"
    path.touch()
    os.truncate(path, SIZE)
    before = stage.companion.memory()
    stop = StopAfterTheFirstBytes(pid)
    stage.drop(path)
    stop.join()
    try:
        assert bytes_stored(pid) < SIZE, "the upload was over before the panel stopped"
        time.sleep(IDLE_TIME - 5)
        assert stage.progress(), "the upload has ended before its time"
        assert stage.companion.memory() - before > SIZE, "the file is not in memory"
        stage.progress_gone(30)
        waited = time.monotonic() - stop.time
    finally:
        os.kill(pid, signal.SIGCONT)
    assert waited > IDLE_TIME - 1, f"the upload ended after {waited:.1f} s"
    wait_until(lambda: stage.companion.memory() - before < 16 * MIB, "the file's memory free again")
    stage.no_alert("about an upload that was cut off")
