"""A desktop without a screen: X server, window manager, session bus with accessibility."""

import os
import re
import shutil
import subprocess

from .processes import Failure, wait_until


def start_session_bus(processes):
    bus = processes.start(["dbus-daemon", "--session", "--nofork", "--print-address=1"], name="session-bus")
    wait_until(lambda: "unix:" in bus.output() or not bus.running(), "the session bus's address")
    address = re.search(r"^unix:.*$", bus.output(), re.MULTILINE)
    if not address:
        raise Failure(f"the session bus did not start: {bus.output()}")
    os.environ["DBUS_SESSION_BUS_ADDRESS"] = address.group(0)


class Desktop:
    """Its programs are ended with the `processes` that they belong to. DISPLAY and the like are set for this script
    too, so it must be made before the accessibility bindings are used."""

    def __init__(self, processes, width=1366, height=768):
        self.width, self.height = width, height
        self._processes = processes
        self.start_display()
        start_session_bus(processes)
        os.environ.update({
            "QT_QPA_PLATFORM": "xcb", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "NO_AT_BRIDGE": "0",
            "GTK_USE_PORTAL": "0", "QT_QPA_PLATFORMTHEME": "", "LC_ALL": "C.UTF-8"})
        os.environ.pop("WAYLAND_DISPLAY", None)
        self.start_window_manager("openbox", "--sm-disable")

    def start_display(self):
        """Also in the place of one that was killed; programs that are started from then on get it."""
        reader, writer = os.pipe()
        server = self._processes.start(
            ["Xvfb", "-displayfd", writer, "-screen", "0", f"{self.width}x{self.height}x24", "-nolisten", "tcp",
             "-noreset", "-ac"], pass_fds=(writer,))
        os.close(writer)
        number = b""
        while not number.endswith(b"\n"):
            piece = os.read(reader, 16)
            if not piece:
                raise Failure(f"the X server did not start: {server.output()}")
            number += piece
        os.close(reader)
        os.environ["DISPLAY"] = ":" + number.decode().strip()

    def start_window_manager(self, *command, environment=None):
        """In the place of the one there is. Waits until it is at work: what asks to be shown while it still starts may have
        to wait for its next event."""
        before = self._root_property("_NET_SUPPORTING_WM_CHECK")
        manager = self._processes.start(command, environment=environment)

        def at_work():
            shown = self._root_property("_NET_SUPPORTING_WM_CHECK"), self._root_property("_NET_CLIENT_LIST")
            # The list is set when the windows that were there are managed.
            return all("window id" in value for value in shown) and shown[0] != before or not manager.running()

        wait_until(at_work, "the window manager")
        if not manager.running():
            raise Failure(f"the window manager did not start: {manager.output()}")

    @staticmethod
    def _root_property(name):
        return subprocess.run(["xprop", "-root", name], stdout=subprocess.PIPE, text=True, check=False).stdout

    def pointer(self):
        """Where the pointer is, in pixels."""
        shown = subprocess.run(["xdotool", "getmouselocation"], stdout=subprocess.PIPE, text=True, check=True).stdout
        place = dict(part.split(":") for part in shown.split())
        return int(place["x"]), int(place["y"])

    def active_window_name(self):
        """The title of the window that has the focus; "" while none has."""
        return subprocess.run(["xdotool", "getactivewindow", "getwindowname"], stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, text=True, check=False).stdout.strip()

    def minimize(self, title):
        subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$", "windowminimize", "--sync"],
                       check=True, timeout=5)

    def visible_windows(self, title):
        """How many windows with this title are shown."""
        return len(subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"], stdout=subprocess.PIPE,
                                  stderr=subprocess.DEVNULL, text=True, check=False).stdout.split())

    def click(self, x, y):
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", "1"], check=True, timeout=5,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def key(self, name):
        subprocess.run(["xdotool", "key", name], check=True, timeout=5, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def colors(self, x, y, width, height):
        """How many a part of the screen shows."""
        return int(subprocess.run(
            ["import", "-window", "root", "-crop", f"{width}x{height}+{x}+{y}", "-format", "%k", "info:"],
            check=True, timeout=20, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout)

    def has_icon(self, title):
        """Whether the window has one in which a pixel is drawn: width, height, and a number with the opacity on top each."""
        shown = subprocess.run(["xprop", "-name", title, "32c", "_NET_WM_ICON"], stdout=subprocess.PIPE, text=True,
                               check=False, timeout=10).stdout
        pixels = [int(number) for number in re.findall(r"\d+", shown.partition("=")[2])]
        return any(pixel >> 24 for pixel in pixels[2:])

    def screenshot(self, file):
        if shutil.which("import"):
            subprocess.run(["import", "-window", "root", str(file)], check=False, timeout=20,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


class ClickWindow:
    """A window of another program (xev), in which clicks are counted as toolkits count them: a press soon after and
    close to the one before it is the second of a double click, the third of a triple one, and so on."""

    INTERVAL = 400  # milliseconds, as Qt's default
    DISTANCE = 10   # pixels, as Qt's default

    def __init__(self, desktop, processes, x, y, width=300, height=200):
        self.x, self.y, self.width, self.height = x, y, width, height
        self._process = processes.start(
            ["xev", "-geometry", f"{width}x{height}+{x}+{y}", "-event", "button", "-event", "structure"], name="xev")
        wait_until(lambda: "MapNotify" in self._process.output(), "the window that clicks are counted in")

    def presses(self):
        """(time in milliseconds, x, y on the screen) of every press of the left button so far."""
        pattern = r"ButtonPress event.*?time (\d+), \(-?\d+,-?\d+\), root:\((-?\d+),(-?\d+)\),\s+state \w+, button 1,"
        return [tuple(map(int, found)) for found in re.findall(pattern, self._process.output(), re.DOTALL)]

    def releases(self):
        return len(re.findall(r"ButtonRelease event", self._process.output()))

    def clicks(self):
        """The highest click count that was reached: 1, 2 for a double click, 3 for a triple one."""
        highest = run = 0
        last = None
        for press in self.presses():
            near = last is not None and press[0] - last[0] <= self.INTERVAL \
                and abs(press[1] - last[1]) <= self.DISTANCE and abs(press[2] - last[2]) <= self.DISTANCE
            run = run + 1 if near else 1
            highest = max(highest, run)
            last = press
        return highest
