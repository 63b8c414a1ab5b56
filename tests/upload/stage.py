"""The desktop, application and panel that upload tests share."""

import hashlib
import os
import pathlib
import random
import re
import subprocess
import time

import pytest
from harness.drag import Drag
from harness import network
from harness.companion import Companion
from harness.desktop import Desktop
from harness.panel import Panel
from harness.processes import Processes, wait_until

REJECTED = "File Upload failed."
SERVER_ERROR = "Server error while uploading. Please try again."
UNAVAILABLE = "File upload feature is not available for your device."
RAW_ADDRESS = "127.0.0.9"
DOCUMENTS_PORTAL = pathlib.Path("/usr/libexec/xdg-document-portal")
MIB = 1 << 20


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

    def start(self, name="Room 204", program=None, wrapper=()):
        """`wrapper` is what stands before the application on its command line."""
        self.end_programs()
        self.uploads = self.folder / f"uploads-{self._open_panels}"
        self._open_panels += 1
        self.uploads.mkdir()
        self.panel = Panel(self.processes, program or self.programs / "panel-simulator", name=name,
                           arguments=["--no-announce", "--uploads", self.uploads])
        self._start_companion(self.panel.service_name, self.panel, wrapper)

    def start_at_raw_panel(self):
        """The application, paired with a panel that has no services of its own."""
        self.end_programs()
        class Nobody:  # pylint: disable=too-few-public-methods
            name, hex = "Raw", "7F000009"
        self._start_companion("Meridian 65|Raw|7F000009", Nobody)

    def _start_companion(self, service, panel, wrapper=()):
        program, *options = [*wrapper, self.programs / "panel-companion", "--panel", service]
        self.companion = Companion(self.processes, self.desktop, program, options)
        self.companion.pair(panel)

    def end_programs(self):
        self.processes.end(list(self._own))
        self.panel = self.companion = None

    def start_portal(self):
        """The portal that a desktop hands files over to sandboxed programs by."""
        if not DOCUMENTS_PORTAL.exists():
            pytest.skip("xdg-desktop-portal is not installed")
        folder = self.folder / "portal"
        folder.mkdir(mode=0o700)
        portal = self.processes.start(
            [DOCUMENTS_PORTAL], environment={"XDG_RUNTIME_DIR": str(folder), "XDG_DATA_HOME": str(folder)})
        question = ["dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/org/freedesktop/DBus",
                    "org.freedesktop.DBus.GetNameOwner", "string:org.freedesktop.portal.Documents"]
        wait_until(lambda: not portal.running() or subprocess.run(
            question, check=False, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode == 0, "the portal")
        if not portal.running():
            pytest.skip(f"xdg-document-portal does not run here: {portal.output().strip()}")

    def answer(self, mode):
        self.panel.reply_to_uploads(mode)

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

    def no_alert(self, what, seconds=1):
        time.sleep(seconds)
        assert not self.companion.window.is_showing("alert|dialog"), f"an alert {what}"
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
        return still_pixels_of(x + 20, y + 12, width - 40, 16)

    def place_of_names(self):
        """Where the names of uploads begin, at the left of what stands in the drop area."""
        x, y, _, height = self.area().area()
        return x + 32, y + height // 2, 100, height // 2 - 20


def pixels_of(x, y, width, height):
    return subprocess.run(
        ["import", "-window", "root", "-crop", f"{width}x{height}+{x}+{y}", "-depth", "8", "rgb:-"],
        check=True, timeout=20, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout


def still_pixels_of(*place):
    """Once they no longer change: popovers and highlights go from the picture a little later than they are said to."""
    pictures = [pixels_of(*place)]

    def stands_still():
        pictures.append(pixels_of(*place))
        return pictures[-1] == pictures[-2]
    wait_until(stands_still, "a picture that stands still", interval=0.1)
    return pictures[-1]


def expect_same(stage, path, file_type, before):
    """The panel got the file, once, and the sender still has it."""
    assert stage.arrivals() == before + 1, f"{stage.arrivals() - before} uploads"
    upload = stage.arrived()[-1]
    assert path.exists(), "the sender's file has gone"
    content = path.read_bytes()
    assert upload["sha256"] == hashlib.sha256(content).hexdigest(), "other bytes"
    assert (stage.uploads / upload["storedName"]).read_bytes() == content, "other bytes are stored"
    assert upload["srcfilename"] == path.name, f"srcfilename is {upload['srcfilename']!r}"
    assert upload["filetype"] == upload["contentType"] == file_type, f"filetype is {upload['filetype']!r}"
