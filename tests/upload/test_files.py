"""Files that cannot be sent, and files that take long to read."""

import os
import shutil

import pytest
from harness.companion import UPLOADED as SUCCESS
from lease import Lease
from stage import expect_same, pixels_of, still_pixels_of

TERABYTE = 1 << 40
KINDS = ("Choose one file on this computer that is of one of these kinds: png, jpg, jpeg, psd, svg, gof, mp3, mov, mp4, "
         "doc, docx, ppt, pptx, pdf, key, pps, xls, xlsx.")


def expect_refused(stage, text):
    before = stage.arrivals()
    stage.alert(text)
    stage.no_alert("more")
    assert stage.arrivals() == before, "something was uploaded"
    assert not stage.progress(), "a progress bar"


def make_sparse(path, size):
    path.touch()
    try:
        os.truncate(path, size)
    except OSError:
        pytest.skip("this file system holds no sparse file of 1 TB")


def test_a_file_of_a_terabyte_that_is_dropped_or_picked_is_refused_with_a_message(stage):
    stage.paired()
    dropped, picked = stage.files / "dropped.mov", stage.downloads / "picked.mov"
    for path in (dropped, picked):
        make_sparse(path, TERABYTE)
    assert stage.drop(dropped) == "copy", "the drop was not taken as a copy"
    expect_refused(stage, '"dropped.mov" does not fit into the free memory of this computer.')
    stage.companion.pick_file(picked.name)
    expect_refused(stage, '"picked.mov" does not fit into the free memory of this computer.')


def test_a_file_of_another_kind_that_is_typed_in_is_refused_with_a_message(stage):
    stage.paired()
    stage.file("notes.txt", folder=stage.downloads)
    stage.companion.pick_file("notes.txt", button=None)  # "Open" is disabled
    expect_refused(stage, KINDS)


def test_a_file_without_read_permission_is_refused_with_a_message(stage):
    """The program may not override permissions, even if the tests run as root."""
    if not shutil.which("setpriv"):
        pytest.skip("setpriv (util-linux) is not installed")
    wrapper = [] if os.geteuid() else ["setpriv", "--bounding-set=-all", "--inh-caps=-all"]
    stage.start(wrapper=wrapper)
    path = stage.file("secret.png")
    path.chmod(0)
    assert stage.drop(path) == "copy", "the drop was not taken as a copy"
    expect_refused(stage, '"secret.png" cannot be read.')
    stage.end_programs()


def test_the_window_says_so_while_a_file_is_being_read(stage):
    """The main thread waits for the file's lease, as it would for a slow disk."""
    stage.paired()
    before = stage.arrivals()
    path = stage.file("lecture.mp4")
    place = stage.place_of_names()
    rest = still_pixels_of(*place)
    lease = Lease(path)
    try:
        stage.drop(path)
        lease.wait_for_reader()
        reading = pixels_of(*place)
        stage.desktop.screenshot(stage.folder / "reading.png")
    finally:
        lease.give_up()
    assert reading != rest, "nothing shows that the file is being read"
    stage.alert(SUCCESS)
    expect_same(stage, path, "video/mp4", before)
