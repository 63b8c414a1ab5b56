#!/usr/bin/python3
"""Files on their way to a panel, as a user sends them: dragged from another program by a real pointer, or picked in the
real file dialog. Tells its results in the Test Anything Protocol."""

import argparse
import hashlib
import os
import pathlib
import random
import re
import subprocess
import sys
import time

sys.path[:0] = [str(pathlib.Path(__file__).resolve().parents[2] / "tools"), str(pathlib.Path(__file__).resolve().parent)]
from drag import Drag, pointer  # noqa: E402
from harness import network  # noqa: E402
from harness.companion import UPLOADED as SUCCESS, Companion  # noqa: E402
from harness.desktop import Desktop  # noqa: E402
from harness.panel import Panel  # noqa: E402
from harness.processes import Failure, Processes, wait_until  # noqa: E402
from harness.report import Report, Skip  # noqa: E402
from rawpanel import RawPanel, check_upload, read_head, read_upload  # noqa: E402

REJECTED = "File Upload failed."
SERVER_ERROR = "Server error while uploading. Please try again."
UNAVAILABLE = "File upload feature is not available for your device."
RAW_ADDRESS = "127.0.0.9"
DOCUMENTS_PORTAL = pathlib.Path("/usr/libexec/xdg-document-portal")
MIB = 1 << 20


def expect(condition, problem):
    if not condition:
        raise Failure(problem)


class Stage:
    """A desktop, and on it the application, paired with a simulated panel; the next scenario goes on with both unless
    it asks for others, or the one before failed."""

    def __init__(self, programs, folder):
        self.programs, self.folder = programs, folder
        self.processes = Processes(folder)
        network.loopback_up()
        self._make_home()
        self.desktop = Desktop(self.processes)
        self._own = self.processes.started()
        self._random = random.Random(20_417)
        self._open_panels = 0
        self._sources = []
        self.panel = self.companion = None

    def _make_home(self):
        """Its downloads are where the desktop's settings say."""
        home = self.folder / "home"
        self.downloads, self.files = home / "Fetched", self.folder / "files"
        for directory in (home / ".config", self.downloads, self.files):
            directory.mkdir(parents=True)
        (home / ".config/user-dirs.dirs").write_text('XDG_DOWNLOAD_DIR="$HOME/Fetched"\n', encoding="ascii")
        os.environ.update({"HOME": str(home), "XDG_CONFIG_HOME": str(home / ".config")})

    def paired(self):
        """The simulated panel, answering well; the application is paired with it."""
        if self.panel is None:
            self.start()
        self.answer("ok")
        return self.panel

    def start(self, name="Room 204", program=None):
        self.end_programs()
        self.uploads = self.folder / f"uploads-{self._open_panels}"
        self._open_panels += 1
        self.uploads.mkdir()
        self.panel = Panel(self.processes, program or self.programs / "panel-simulator", name=name,
                           arguments=["--no-announce", "--uploads", self.uploads])
        self._start_companion(self.panel.service_name, self.panel)

    def start_at_raw_panel(self):
        """The application, paired with a panel that has no services of its own."""
        self.end_programs()
        class Nobody:  # pylint: disable=too-few-public-methods
            name, hex = "Raw", "7F000009"
        self._start_companion("Meridian 65|Raw|7F000009", Nobody)

    def _start_companion(self, service, panel):
        self.companion = Companion(self.processes, self.desktop, self.programs / "panel-companion", ["--panel", service])
        self.companion.pair(panel)
        time.sleep(0.5)  # the list's popover has gone from the picture

    def end_programs(self):
        self.processes.end(list(self._own))
        self.panel = self.companion = None

    def start_portal(self):
        """The portal that a desktop hands files over to sandboxed programs by."""
        if not DOCUMENTS_PORTAL.exists():
            raise Skip("xdg-desktop-portal is not installed")
        folder = self.folder / "portal"
        folder.mkdir(mode=0o700)
        portal = self.processes.start(
            [DOCUMENTS_PORTAL], environment={"XDG_RUNTIME_DIR": str(folder), "XDG_DATA_HOME": str(folder)})
        question = ["dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/org/freedesktop/DBus",
                    "org.freedesktop.DBus.GetNameOwner", "string:org.freedesktop.portal.Documents"]
        wait_until(lambda: not portal.running() or subprocess.run(
            question, check=False, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode == 0, "the portal")
        if not portal.running():
            raise Skip(f"xdg-document-portal does not run here: {portal.output().strip()}")

    def answer(self, mode):
        self.panel._request("/simulator/upload-reply", mode.encode())  # pylint: disable=protected-access

    def file(self, name, size=70_001, folder=None):
        path = (folder or self.files) / name
        with open(path, "wb") as out:
            for start in range(0, size, MIB):
                out.write(self._random.randbytes(min(MIB, size - start)))
        return path

    def arrived(self):
        return self.panel.state()["uploads"]["list"]

    def arrivals(self):
        return self.panel.state()["uploads"]["count"]

    def area(self):
        return self.companion.window.find(name="File upload")

    def drag(self, *offers):
        """Its source stays to the end of the scenario, as the window of a file manager does: the target may ask it for
        what was dropped after its drag has ended."""
        drag = Drag(self.processes, self.programs, *offers)
        self._sources.append(drag)
        return drag

    def end_sources(self):
        for source in self._sources:
            source.end()
        self._sources = []

    def drop(self, *offers):
        """Onto the drop area; returns what the source was told."""
        drag = self.drag(*offers)
        drag.to(*self.area().center())
        return drag.drop()

    def alert(self, text, timeout=10):
        """Expects an alert that says so, and answers it."""
        self.companion.expect_alert(text, timeout)
        self.companion.window.dismiss_alert()

    def no_alert(self, what, seconds=1.5):
        time.sleep(seconds)
        expect(not self.companion.window.is_showing("alert|dialog"), f"an alert {what}")
        self.companion.expect_alive()

    def progress(self):
        """What shows of uploads on their way: (what a screen reader says, height in pixels)."""
        return [(part.name, part.area()[3]) for part in self.area().everything()
                if part.role in ("filler", "panel") and part.has("showing") and re.search(r"^Uploading | %$", part.name)]

    def wait_for_progress(self, timeout=10):
        return wait_until(self.progress, "a progress bar", timeout)[0]

    def progress_gone(self, timeout=10):
        wait_until(lambda: not self.progress(), "the progress bar gone", timeout)

    def pixels(self):
        """A strip at the upper edge of the drop area, away from the pointer and from what stands in it."""
        x, y, width, _ = self.area().area()
        return subprocess.run(
            ["import", "-window", "root", "-crop", f"{width - 40}x16+{x + 20}+{y + 12}", "-depth", "8", "rgb:-"],
            check=True, timeout=20, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout


def expect_same(stage, path, file_type, before):
    """The panel got the file, once, and the sender still has it."""
    expect(stage.arrivals() == before + 1, f"{stage.arrivals() - before} uploads")
    upload = stage.arrived()[-1]
    expect(path.exists(), "the sender's file has gone")
    content = path.read_bytes()
    expect(upload["sha256"] == hashlib.sha256(content).hexdigest(), "other bytes")
    expect((stage.uploads / upload["storedName"]).read_bytes() == content, "other bytes are stored")
    expect(upload["srcfilename"] == path.name, f"srcfilename is {upload['srcfilename']!r}")
    expect(upload["filetype"] == upload["contentType"] == file_type, f"filetype is {upload['filetype']!r}")


def a_dropped_file(stage):
    stage.paired()
    before = stage.arrivals()
    for name, file_type in (("photo.jpeg", "image/jpeg"), ("notes.tar.gz", "(null)/gz"),
                            ("Ünï|cødé \"x\" 100%.PNG", "(null)/PNG"), ("empty.pdf", "document/pdf")):
        path = stage.file(name, 0 if name.startswith("empty") else 1_234_567)
        told = stage.drop(path)
        expect(told == "copy", f"the source was told {told!r}")
        stage.alert(SUCCESS)
        expect_same(stage, path, file_type, before)
        before += 1
    stage.companion.expect_alive()


def the_highlight(stage):
    stage.paired()
    pointer("mousemove", 5, 5)
    time.sleep(0.3)
    rest = stage.pixels()
    drag = stage.drag(stage.file("a.png"))
    drag.to(*stage.area().center())
    over = stage.pixels()
    stage.desktop.screenshot(stage.folder / "highlight.png")
    drag.to(40, 700)
    left = stage.pixels()
    drag.to(*stage.area().center())
    expect(stage.pixels() == over, "a second visit looks different")
    expect(drag.drop() == "copy", "the drop was not taken as a copy")
    stage.alert(SUCCESS)
    time.sleep(0.3)
    dropped = stage.pixels()
    expect(over != rest, "the drop area looks the same while a drag is over it")
    expect(left == rest, "the drop area does not look as before once the drag has left")
    expect(dropped == rest, "the drop area does not look as before after the drop")


def a_refused_drag(stage):
    stage.paired()
    before = stage.arrivals()
    rest = stage.pixels()
    drag = stage.drag("--text", "only text")
    drag.to(*stage.area().center())
    expect(stage.pixels() == rest, "the drop area lights up for what it does not take")
    told = drag.drop()
    expect(told == "none", f"the source was told {told!r}")
    stage.no_alert("about a drag that was refused")
    expect(stage.arrivals() == before, "something was uploaded")


def a_drag_that_may_only_be_moved(stage):
    stage.paired()
    before = stage.arrivals()
    path = stage.file("only.png")
    rest = stage.pixels()
    drag = stage.drag("--move-only", path)
    drag.to(*stage.area().center())
    expect(stage.pixels() == rest, "the drop area lights up for what it may not copy")
    told = drag.drop()
    expect(told == "none", f"the source was told {told!r}")
    stage.no_alert("about a drag that was refused")
    expect(path.exists(), "the sender's file has gone")
    expect(stage.arrivals() == before, "something was uploaded")


def active_window():
    """The title of the window that the window manager calls the active one; "" when there is none."""
    return subprocess.run(["xdotool", "getactivewindow", "getwindowname"], check=False, timeout=5, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout.strip()


def an_alert_under_a_drag(stage):
    """The outcome of an upload is told while another drag is over the drop area."""
    stage.paired()
    pointer("mousemove", 5, 5)
    time.sleep(0.3)
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
    time.sleep(0.3)
    expect(stage.pixels() == rest, "the drop area is still lit")


def brought_to_the_front(stage):
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
    expect(0.45 < taken < 1.5, f"the window came to the front after {taken:.2f} s")
    stage.wait_for_progress()
    stage.answer("ok")
    stage.alert(SUCCESS)
    other.end()
    return f"after {taken:.2f} s"


def expect_accepted_without_upload(stage, *offers):
    before = stage.arrivals()
    told = stage.drop(*offers)
    expect(told == "copy", f"{offers}: the source was told {told!r}")
    stage.no_alert(f"about {offers}")
    expect(stage.arrivals() == before, f"{offers}: something was uploaded")
    expect(not stage.progress(), f"{offers}: a progress bar")


def what_is_no_file(stage):
    stage.paired()
    folder, pipe = stage.files / "folder.png", stage.files / "pipe.png"
    folder.mkdir()
    os.mkfifo(pipe)
    for path in (folder, pipe, "/dev/zero", stage.files / "missing.png"):
        expect_accepted_without_upload(stage, path)
    expect_accepted_without_upload(stage, "--url", "http://example.com/a.png")


def several_files(stage):
    stage.paired()
    before = stage.arrivals()
    first, second = stage.file("first.mp3"), stage.file("second.png")
    expect(stage.drop(first, second) == "copy", "the drop was not taken as a copy")
    stage.alert(SUCCESS)
    expect_same(stage, first, "video/mp3", before)
    stage.no_alert("about the second file")
    expect(stage.arrivals() == before + 1, "the second file was uploaded, too")


def a_file_from_the_portal(stage):
    stage.start_portal()
    stage.paired()
    before = stage.arrivals()
    path = stage.file("kept in a sandbox.png")
    told = stage.drop("--portal", path)
    expect(told == "copy", f"the source was told {told!r}")
    stage.alert(SUCCESS)
    expect_same(stage, path, "image/png", before)


def image_data(stage):
    stage.paired()
    expect_accepted_without_upload(stage, "--png", "bytes of an image", stage.file("beside.png"))


def an_empty_image(stage):
    stage.paired()
    before = stage.arrivals()
    stage.drop("--png", "", stage.file("beside.png"))
    texts = stage.companion.window.alert_texts()
    expect("Sorry, but the past operation failed" in texts, f"the alert says {texts}")
    stage.companion.window.dismiss_alert()
    stage.no_alert("more")
    expect(stage.arrivals() == before, "something was uploaded")


def a_picked_file(stage):
    stage.paired()
    before = stage.arrivals()
    path = stage.file("slides.key", folder=stage.downloads)
    stage.companion.pick_file("slides.key")  # without a folder: it is looked for where the dialog stands
    stage.alert(SUCCESS)
    expect_same(stage, path, "document/key", before)


def a_cancelled_choice(stage):
    stage.paired()
    before = stage.arrivals()
    stage.file("not-this.png", folder=stage.downloads)
    stage.companion.pick_file("not-this.png", "Cancel")
    stage.no_alert("after cancelling")
    expect(stage.arrivals() == before, "something was uploaded")


def a_panel_without_uploads(stage):
    stage.start(name="The Halcyon-X upstairs")
    rest = stage.pixels()
    stage.companion.window.press("Upload a file")
    stage.alert(UNAVAILABLE)
    drag = stage.drag(stage.file("a.png"))
    drag.to(*stage.area().center())
    expect(stage.pixels() == rest, "the drop area lights up although nothing can be uploaded")
    expect(drag.drop() == "copy", "the drop was not taken")
    stage.alert(UNAVAILABLE)
    stage.no_alert("more")
    expect(stage.arrivals() == 0, "something was uploaded")
    stage.end_programs()


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
        expect(stage.drop(path) == "copy", "the drop was not taken as a copy")
        wait_until(enough, "a value of the progress bar", interval=0.01)
    finally:
        listener.deregister(kind)
    expect(0 < values[0] < 100, f"what is told is {values}")


def progress_of_a_slow_panel(stage):
    panel = stage.paired()
    stage.answer("slow")
    path = stage.file("lecture.mp4", 8 * MIB)
    progress_is_told(stage, path)
    spoken, _ = stage.wait_for_progress()
    expect("lecture.mp4" in spoken, f"a screen reader says {spoken!r}")
    stage.desktop.screenshot(stage.folder / "progress.png")
    stage.companion.open_list()  # the window is not held up
    stage.companion.close_list()
    expect(stage.progress(), "the progress bar has gone before the upload")
    panel.process.end()
    stage.progress_gone()
    stage.no_alert("about an upload that was never answered")
    stage.end_programs()


def faults_in_answers(stage):
    stage.paired()
    path = stage.file("a.png", 3 * MIB)
    for mode, text in (("status 500", SERVER_ERROR), ("status 413 early", REJECTED), ("status 204", REJECTED),
                       ("disk-full", SERVER_ERROR)):
        stage.answer(mode)
        stage.drop(path)
        stage.alert(text)
        stage.progress_gone()
    stage.no_alert("more")


def faults_without_an_answer(stage):
    stage.paired()
    path = stage.file("a.png", 12 * MIB)
    for mode in ("reset", "cut"):
        stage.answer(mode)
        before = stage.arrivals()
        expect(stage.drop(path) == "copy", "the drop was not taken as a copy")
        stage.no_alert(f"about {mode}")
        stage.progress_gone()
        expect(mode == "reset" or stage.arrivals() == before + 1, "nothing arrived")


def memory(stage):
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
    expect(grown <= 8 * MIB, f"memory grew by {grown / MIB:.1f} MiB more than the file has")
    after = stage.companion.memory() - before
    expect(after <= 8 * MIB, f"{after / MIB:.1f} MiB are kept after the upload")
    return f"{before / MIB:.1f} MiB before; at the peak the file and {grown / MIB:.1f} MiB more; {after / MIB:.1f} MiB kept"


def a_silent_panel(stage):
    stage.paired()
    stage.answer("silence")
    stage.drop(stage.file("patience.png"))
    stage.wait_for_progress()
    stage.no_alert("before there is an answer", 2)
    expect(stage.progress(), "the progress bar has gone before the answer")
    stage.answer("ok")
    stage.alert(SUCCESS)
    stage.progress_gone()


def a_panel_that_is_gone(stage):
    stage.paired().process.end()
    expect(stage.drop(stage.file("a.png")) == "copy", "the drop was not taken as a copy")
    stage.no_alert("about a panel that is not there", 2)
    stage.progress_gone()
    stage.end_programs()


def ten_at_once(stage):
    stage.paired()
    stage.answer("silence")
    before = stage.arrivals()
    paths = [stage.file(f"part {number}.png", 400_000 + number) for number in range(10)]
    stage.drop(paths[0])
    _, one = stage.wait_for_progress()
    for path in paths[1:]:
        stage.drop(path)
    wait_until(lambda: stage.arrivals() == before + 10, "ten uploads at the panel")
    # Ten lines do not have the room of ten single ones and move closer; the picture shows them.
    wait_until(lambda: stage.wait_for_progress()[1] > 5 * one, "ten lines of progress")
    x, y, width, height = stage.area().area()
    inside = [part.area() for part in stage.area().everything()]
    expect(all(left >= x and top >= y and left + wide <= x + width and top + high <= y + height
               for left, top, wide, high in inside), "something sticks out of the drop area")
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
    expect(got == sorted(hashlib.sha256(path.read_bytes()).hexdigest() for path in paths), "other bytes")


def a_full_disk(stage):
    """The panel may write no file of more than a few KiB."""
    limited = stage.folder / "limited-panel"
    limited.write_text(f'#!/bin/sh\nulimit -f 64\nexec "{stage.programs}/panel-simulator" "$@"\n', encoding="utf-8")
    limited.chmod(0o755)
    stage.start(program=limited)
    stage.drop(stage.file("large.png", 3 * MIB))
    stage.alert(SERVER_ERROR)
    expect(not list(stage.uploads.iterdir()), "a piece of the file is left at the panel")
    small = stage.file("small.png", 1000)
    stage.drop(small)
    stage.alert(SUCCESS)
    expect_same(stage, small, "image/png", stage.arrivals() - 1)
    stage.end_programs()


def framing(stage):
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


def gone_during_the_body(stage):
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


def gone_after_the_body(stage):
    if stage.panel is not None or stage.companion is None:
        stage.start_at_raw_panel()
    server = RawPanel(RAW_ADDRESS, lambda connection: read_upload(connection) and None)
    stage.drop(stage.file("a.mov"))
    server.wait()
    stage.progress_gone()
    stage.no_alert("about an upload without an answer")
    stage.end_programs()


SCENARIOS = [
    ("a dropped file reaches the panel byte for byte, and its owner keeps it", a_dropped_file),
    ("the drop area lights up while a drag is over it", the_highlight),
    ("an alert that opens under a drag puts the drop area out", an_alert_under_a_drag),
    ("half a second after a drop the application is brought to the front", brought_to_the_front),
    ("a drag of text alone is refused at the door", a_refused_drag),
    ("a drag that may only be moved is refused at the door, and its file stays", a_drag_that_may_only_be_moved),
    ("folders, pipes, devices, missing files and web addresses upload nothing", what_is_no_file),
    ("of several files the first is uploaded", several_files),
    ("a file that is handed over by the desktop's portal reaches the panel", a_file_from_the_portal),
    ("an image's data are taken and lead to nothing, even beside a file", image_data),
    ("an empty image beside a file is a paste error", an_empty_image),
    ("a file picked in the dialog, which stands in the downloads folder, reaches the panel", a_picked_file),
    ("a cancelled choice leads to nothing", a_cancelled_choice),
    ("answers that are no success are told by their texts", faults_in_answers),
    ("a reset and an answer cut off stay silent", faults_without_an_answer),
    ("a panel that is silent for a while is waited for", a_silent_panel),
    ("ten uploads at once, ten lines of progress, ten outcomes", ten_at_once),
    ("a large file is held in memory once, and let go", memory),
    ("a slow panel shows progress, which goes with the panel", progress_of_a_slow_panel),
    ("a panel that is gone before the upload stays silent", a_panel_that_is_gone),
    ("a panel whose disk is full", a_full_disk),
    ("a panel without uploads says so, and nothing lights up", a_panel_without_uploads),
    ("a plain server reads a message that is framed by its length", framing),
    ("a panel that goes during the body stays silent", gone_during_the_body),
    ("a panel that goes after the body stays silent", gone_after_the_body),
]


def play(stage, name, scenario, report):
    try:
        report.passed(name, scenario(stage) or "")
    except Skip as reason:
        report.skipped(name, reason)
    except Exception as problem:  # pylint: disable=broad-except  # whatever it is, the scenario did not go through
        pointer("mouseup", 1)
        stage.desktop.screenshot(stage.folder / f"{scenario.__name__}.png")
        if stage.companion:
            (stage.folder / f"{scenario.__name__}.txt").write_text(stage.companion.window.describe(), encoding="utf-8")
        report.failed(name, problem if isinstance(problem, Failure) else repr(problem))
        stage.end_programs()
    stage.end_sources()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", required=True, type=pathlib.Path, help="the folder of the built programs")
    parser.add_argument("--output", required=True, type=pathlib.Path, help="for screenshots and logs")
    parser.add_argument("filter", nargs="?", default="", help="a regular expression for names of scenarios")
    arguments = parser.parse_args()

    report = Report(as_tap=True)
    stage = Stage(arguments.programs, arguments.output)
    for name, scenario in SCENARIOS:
        if re.search(arguments.filter, f"{name} {scenario.__name__}"):
            play(stage, name, scenario, report)
    stage.processes.end()
    return report.end()


sys.exit(main())
