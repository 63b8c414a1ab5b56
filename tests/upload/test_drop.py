"""Files that a user drags from another program with a real pointer, or picks in the real file dialog."""

import os
import subprocess
import time

from harness.drag import pointer
from harness.companion import UPLOADED as SUCCESS
from harness.processes import wait_until
from stage import UNAVAILABLE, expect_same


def test_a_dropped_file_reaches_the_panel_and_stays_with_its_owner(stage):
    stage.paired()
    before = stage.arrivals()
    for name, file_type in (("photo.jpeg", "image/jpeg"), ("notes.tar.gz", "(null)/gz"),
                            ("Ünï|cødé \"x\" 100%.PNG", "(null)/PNG"), ("empty.pdf", "document/pdf")):
        path = stage.file(name, 0 if name.startswith("empty") else 1_234_567)
        told = stage.drop(path)
        assert told == "copy", f"the source was told {told!r}"
        stage.alert(SUCCESS)
        expect_same(stage, path, file_type, before)
        before += 1
    stage.companion.expect_alive()


def test_the_drop_area_is_highlighted_under_a_drag(stage):
    stage.paired()
    pointer("mousemove", 5, 5)
    rest = stage.pixels()
    drag = stage.drag(stage.file("a.png"))
    drag.to(*stage.area().center())
    over = stage.pixels()
    stage.desktop.screenshot(stage.folder / "highlight.png")
    drag.to(40, 700)
    left = stage.pixels()
    drag.to(*stage.area().center())
    assert stage.pixels() == over, "a second visit looks different"
    assert drag.drop() == "copy", "the drop was not taken as a copy"
    stage.alert(SUCCESS)
    assert over != rest, "the drop area looks the same while a drag is over it"
    assert left == rest, "the drop area does not look as before once the drag has left"
    wait_until(lambda: stage.pixels() == rest, "the drop area looks as before after the drop")


def test_an_alert_that_opens_under_a_drag_removes_the_highlight(stage):
    """The outcome of an upload is told while another drag is over the drop area."""
    stage.paired()
    pointer("mousemove", 5, 5)
    rest = stage.pixels()
    stage.answer("silence")
    stage.drop(stage.file("first.png"))
    stage.wait_for_progress()
    drag = stage.drag(stage.file("second.png"))
    drag.to(*stage.area().center())
    stage.answer("ok")
    stage.companion.expect_alert(SUCCESS, 10)
    drag.to(40, 700)
    drag.drop()
    stage.companion.window.dismiss_alert()
    stage.progress_gone()
    wait_until(lambda: stage.pixels() == rest, "the drop area is lit no more")


def active_window():
    """The title of the window that the window manager calls the active one; "" when there is none."""
    return subprocess.run(["xdotool", "getactivewindow", "getwindowname"], check=False, timeout=5, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout.strip()


def test_the_application_comes_to_the_front_half_a_second_after_a_drop(stage):
    """The panel is silent, so no alert comes that would become the active window by itself."""
    stage.paired()
    stage.answer("silence")
    other = stage.processes.start(["xev", "-geometry", "150x120+20+560"], name="xev")
    drag = stage.drag(stage.file("a.png"))
    drag.to(*stage.area().center())
    pointer("search", "--sync", "--name", "Event Tester", "windowactivate")
    wait_until(lambda: active_window() == "Event Tester", "another program's window is the active one")
    dropped = time.monotonic()
    drag.drop()
    wait_until(lambda: active_window() == "Panel Companion", "the window is the active one", 5, 0.01)
    taken = time.monotonic() - dropped
    assert 0.45 < taken < 1.5, f"the window came to the front after {taken:.2f} s"
    stage.wait_for_progress()
    stage.answer("ok")
    stage.alert(SUCCESS)
    other.end()
    print(f"after {taken:.2f} s")


def test_a_drag_of_text_alone_is_refused(stage):
    stage.paired()
    before = stage.arrivals()
    rest = stage.pixels()
    drag = stage.drag("--text", "only text")
    drag.to(*stage.area().center())
    assert stage.pixels() == rest, "the drop area lights up for what it does not take"
    told = drag.drop()
    assert told == "none", f"the source was told {told!r}"
    stage.no_alert("about a drag that was refused")
    assert stage.arrivals() == before, "something was uploaded"


def test_a_drag_that_may_only_be_moved_is_refused(stage):
    stage.paired()
    before = stage.arrivals()
    path = stage.file("only.png")
    rest = stage.pixels()
    drag = stage.drag("--move-only", path)
    drag.to(*stage.area().center())
    assert stage.pixels() == rest, "the drop area lights up for what it may not copy"
    told = drag.drop()
    assert told == "none", f"the source was told {told!r}"
    stage.no_alert("about a drag that was refused")
    assert path.exists(), "the sender's file has gone"
    assert stage.arrivals() == before, "something was uploaded"


def expect_accepted_without_upload(stage, *offers):
    before = stage.arrivals()
    told = stage.drop(*offers)
    assert told == "copy", f"{offers}: the source was told {told!r}"
    stage.no_alert(f"about {offers}")
    assert stage.arrivals() == before, f"{offers}: something was uploaded"
    assert not stage.progress(), f"{offers}: a progress bar"


def test_folders_pipes_devices_missing_files_and_web_addresses_upload_nothing(stage):
    stage.paired()
    folder, pipe = stage.files / "folder.png", stage.files / "pipe.png"
    folder.mkdir()
    os.mkfifo(pipe)
    for path in (folder, pipe, "/dev/zero", stage.files / "missing.png"):
        expect_accepted_without_upload(stage, path)
    expect_accepted_without_upload(stage, "--url", "http://example.com/a.png")


def test_of_several_files_the_first_is_uploaded(stage):
    stage.paired()
    before = stage.arrivals()
    first, second = stage.file("first.mp3"), stage.file("second.png")
    assert stage.drop(first, second) == "copy", "the drop was not taken as a copy"
    stage.alert(SUCCESS)
    expect_same(stage, first, "video/mp3", before)
    stage.no_alert("about the second file")
    assert stage.arrivals() == before + 1, "the second file was uploaded, too"


def test_a_file_from_the_documents_portal_reaches_the_panel(stage):
    stage.start_portal()
    stage.paired()
    before = stage.arrivals()
    path = stage.file("kept in a sandbox.png")
    told = stage.drop("--portal", path)
    assert told == "copy", f"the source was told {told!r}"
    stage.alert(SUCCESS)
    expect_same(stage, path, "image/png", before)


def test_image_data_is_accepted_and_uploads_nothing(stage):
    stage.paired()
    expect_accepted_without_upload(stage, "--png", "bytes of an image", stage.file("beside.png"))


def test_an_empty_image_beside_a_file_is_a_paste_error(stage):
    stage.paired()
    before = stage.arrivals()
    stage.drop("--png", "", stage.file("beside.png"))
    texts = stage.companion.window.alert_texts()
    assert "Sorry, but the past operation failed" in texts, f"the alert says {texts}"
    stage.companion.window.dismiss_alert()
    stage.no_alert("more")
    assert stage.arrivals() == before, "something was uploaded"


def test_a_file_picked_in_the_downloads_folder_reaches_the_panel(stage):
    stage.paired()
    before = stage.arrivals()
    path = stage.file("slides.key", folder=stage.downloads)
    stage.companion.pick_file("slides.key")  # without a folder: it is looked for where the dialog stands
    stage.alert(SUCCESS)
    expect_same(stage, path, "document/key", before)


def test_a_cancelled_file_dialog_uploads_nothing(stage):
    stage.paired()
    before = stage.arrivals()
    stage.file("not-this.png", folder=stage.downloads)
    stage.companion.pick_file("not-this.png", "Cancel")
    stage.no_alert("after cancelling")
    assert stage.arrivals() == before, "something was uploaded"


def test_a_panel_without_uploads_opens_an_alert_and_shows_no_highlight(stage):
    stage.start(name="The Halcyon-X upstairs")
    rest = stage.pixels()
    stage.companion.window.press("Upload a file")
    stage.alert(UNAVAILABLE)
    drag = stage.drag(stage.file("a.png"))
    drag.to(*stage.area().center())
    assert stage.pixels() == rest, "the drop area lights up although nothing can be uploaded"
    assert drag.drop() == "copy", "the drop was not taken"
    stage.alert(UNAVAILABLE)
    stage.no_alert("more")
    assert stage.arrivals() == 0, "something was uploaded"
    stage.end_programs()
