"""How uploads end and what they show meanwhile: slow, failing and quitting panels."""

import hashlib
import re

from harness.companion import UPLOADED as SUCCESS
from harness.processes import wait_until
from rawpanel import RawPanel, check_upload, read_head, read_upload
from stage import MIB, RAW_ADDRESS, REJECTED, SERVER_ERROR, expect_same


def test_error_replies_show_their_alerts(stage):
    stage.paired()
    path = stage.file("a.png", 3 * MIB)
    for mode, text in (("status 500", SERVER_ERROR), ("status 413 early", REJECTED), ("status 204", REJECTED),
                       ("disk-full", SERVER_ERROR)):
        stage.answer(mode)
        stage.drop(path)
        stage.alert(text)
        stage.progress_gone()
    stage.no_alert("more")


def test_a_reset_or_truncated_reply_shows_no_alert(stage):
    stage.paired()
    path = stage.file("a.png", 12 * MIB)
    for mode in ("reset", "cut"):
        stage.answer(mode)
        before = stage.arrivals()
        assert stage.drop(path) == "copy", "the drop was not taken as a copy"
        stage.no_alert(f"about {mode}")
        stage.progress_gone()
        assert mode == "reset" or stage.arrivals() == before + 1, "nothing arrived"


def test_a_panel_may_answer_late(stage):
    stage.paired()
    stage.answer("silence")
    stage.drop(stage.file("patience.png"))
    stage.wait_for_progress()
    stage.no_alert("before there is an answer", 2)
    assert stage.progress(), "the progress bar has gone before the answer"
    stage.answer("ok")
    stage.alert(SUCCESS)
    stage.progress_gone()


def read_to_its_end(connection):
    while connection.recv(1 << 20):
        pass


def test_an_upload_that_is_given_up_ends_without_a_word(stage):
    stage.start_at_raw_panel()
    server = RawPanel(RAW_ADDRESS, read_to_its_end)
    stage.drop(stage.file("unwanted.mov", 2 * MIB))
    stage.wait_for_progress()
    window = stage.companion.window
    window.find(window.BUTTON, "Stop uploading unwanted.mov").press()
    stage.progress_gone()
    server.wait()
    stage.no_alert("about an upload that was given up")
    stage.end_programs()


def test_ten_uploads_at_once_stay_inside_the_drop_area(stage):
    stage.paired()
    stage.answer("silence")
    before = stage.arrivals()
    paths = [stage.file(f"part {number}.png", 400_000 + number) for number in range(10)]
    for path in paths:
        stage.drop(path)
    wait_until(lambda: stage.arrivals() == before + 10, "ten uploads at the panel")
    for shown in paths[:2]:  # the third line counts the others
        stage.companion.window.find("progress bar", shown.name)
    x, y, width, height = stage.area().area()

    def outside():
        areas = [(part.name, part.area()) for part in stage.area().everything() if part.has("showing")]
        return [(name, place) for name, place in areas if place[0] < x or place[1] < y
                or place[0] + place[2] > x + width or place[1] + place[3] > y + height]

    wait_until(lambda: not outside(), f"everything inside the drop area, not {outside()}")
    stage.desktop.screenshot(stage.folder / "ten.png")
    stage.answer("ok")
    for _ in paths:  # the next alert follows at once
        stage.companion.expect_alert(SUCCESS)
        button = stage.companion.window.find(stage.companion.window.BUTTON, "OK")
        button.press()
        wait_until(lambda b=button: not b.has("showing"), "an alert closed")
    stage.progress_gone()
    stage.no_alert("more")
    got = sorted(upload["sha256"] for upload in stage.arrived()[-10:])
    assert got == sorted(hashlib.sha256(path.read_bytes()).hexdigest() for path in paths), "other bytes"


def test_a_large_file_is_in_memory_once_and_freed_afterwards(stage):
    stage.start()
    size = 300 * MIB
    path = stage.file("recording.mov", size)
    before = stage.companion.memory()
    with open(f"/proc/{stage.companion.process.pid}/clear_refs", "w", encoding="ascii") as peak:
        peak.write("5")  # the peak begins anew
    stage.drop(path)
    stage.alert(SUCCESS, 60)
    expect_same(stage, path, "video/mov", 0)
    with open(f"/proc/{stage.companion.process.pid}/status", encoding="ascii") as status:
        peak = int(re.search(r"VmHWM:\s+(\d+)", status.read()).group(1)) * 1024
    grown = peak - before - size
    assert grown <= 8 * MIB, f"memory grew by {grown / MIB:.1f} MiB more than the file has"
    after = stage.companion.memory() - before
    assert after <= 8 * MIB, f"{after / MIB:.1f} MiB are kept after the upload"
    print(f"{before / MIB:.1f} MiB before; at the peak the file and {grown / MIB:.1f} MiB more; {after / MIB:.1f} MiB kept")


def progress_is_told(stage, path):
    """Drops the file; a screen reader is told how far its progress bar is."""
    from gi.repository import Atspi, GLib
    values = []

    def told(event, *_):
        if (event.source.get_role_name(), event.source.get_name()) == ("progress bar", path.name):
            values.append(Atspi.Value.get_current_value(event.source))

    def enough():
        GLib.MainContext.default().iteration(False)
        return values

    listener, kind = Atspi.EventListener.new(told), "object:property-change:accessible-value"
    listener.register(kind)
    try:
        assert stage.drop(path) == "copy", "the drop was not taken as a copy"
        wait_until(enough, "a value of the progress bar", interval=0.01)
    finally:
        listener.deregister(kind)
    assert 0 < values[0] < 100, f"what is told is {values}"


def test_a_slow_panel_shows_progress_until_it_quits(stage):
    panel = stage.paired()
    stage.answer("slow")
    path = stage.file("lecture.mp4", 8 * MIB)
    progress_is_told(stage, path)
    spoken, _ = stage.wait_for_progress()
    assert "lecture.mp4" in spoken, f"a screen reader says {spoken!r}"
    stage.desktop.screenshot(stage.folder / "progress.png")
    stage.companion.open_list()  # the window is not held up
    stage.companion.close_list()
    assert stage.progress(), "the progress bar has gone before the upload"
    panel.process.end()
    stage.progress_gone()
    stage.no_alert("about an upload that was never answered")
    stage.end_programs()


def test_a_panel_that_has_quit_shows_no_alert(stage):
    stage.paired().process.end()
    assert stage.drop(stage.file("a.png")) == "copy", "the drop was not taken as a copy"
    stage.no_alert("about a panel that is not there", 2)
    stage.progress_gone()
    stage.end_programs()


def test_a_panel_with_a_full_disk_shows_an_alert(stage):
    """The panel may write no file of more than a few KiB."""
    limited = stage.folder / "limited-panel"
    limited.write_text(f'#!/bin/sh\nulimit -f 64\nexec "{stage.programs}/panel-simulator" "$@"\n', encoding="utf-8")
    limited.chmod(0o755)
    stage.start(program=limited)
    stage.drop(stage.file("large.png", 3 * MIB))
    stage.alert(SERVER_ERROR)
    assert not list(stage.uploads.iterdir()), "a piece of the file is left at the panel"
    small = stage.file("small.png", 1000)
    stage.drop(small)
    stage.alert(SUCCESS)
    expect_same(stage, small, "image/png", stage.arrivals() - 1)
    stage.end_programs()


def test_the_request_is_framed_by_its_length(stage):
    stage.start_at_raw_panel()
    content = bytes(range(256)) * 9000 + b"\r\n--\r\n"
    path = stage.files / "Ä \"quoted\".mov"
    path.write_bytes(content)

    def answers(connection):
        head, body = read_upload(connection)
        check_upload(head, body, path.name, "video/mov", content)
        connection.sendall(b"HTTP/1.1 200 Fine\r\nContent-Length: 0\r\n\r\n")

    server = RawPanel(RAW_ADDRESS, answers)
    stage.drop(path)
    server.wait()
    stage.alert(SUCCESS)


def test_a_panel_that_quits_during_the_body_shows_no_alert(stage):
    def leaves(connection):
        read_head(connection)
        connection.recv(1 << 16)

    if stage.panel is not None or stage.companion is None:
        stage.start_at_raw_panel()
    server = RawPanel(RAW_ADDRESS, leaves)
    stage.drop(stage.file("a.mov", 24 * MIB))
    server.wait()
    stage.progress_gone()
    stage.no_alert("about an upload that broke off")


def test_a_panel_that_quits_after_the_body_shows_no_alert(stage):
    if stage.panel is not None or stage.companion is None:
        stage.start_at_raw_panel()
    server = RawPanel(RAW_ADDRESS, lambda connection: read_upload(connection) and None)
    stage.drop(stage.file("a.mov"))
    server.wait()
    stage.progress_gone()
    stage.no_alert("about an upload without an answer")
    stage.end_programs()
