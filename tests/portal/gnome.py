"""A GNOME session without hardware: mutter with a screen that exists only in software, PipeWire, and the desktop's portals
with their real dialogs, which are answered through the accessibility bus."""

import os
import pathlib
import shutil
import subprocess

from harness.desktop import start_session_bus
from harness.processes import Failure, wait_until

PORTAL = pathlib.Path("/usr/libexec/xdg-desktop-portal")
GNOME_BACKEND = pathlib.Path("/usr/libexec/xdg-desktop-portal-gnome")
_DIALOG = "xdg-desktop-portal-gnome"


def missing():
    """What is not installed of what the session needs, if anything."""
    needed = {"mutter": shutil.which("mutter"), "pipewire": shutil.which("pipewire"),
              "wireplumber": shutil.which("wireplumber"), "xdg-desktop-portal": PORTAL.exists(),
              "xdg-desktop-portal-gnome": GNOME_BACKEND.exists()}
    return ", ".join(name for name, found in needed.items() if not found)


def owns(name):
    """Whether somebody has this name on the session bus."""
    done = subprocess.run(["dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/",
                           "org.freedesktop.DBus.GetNameOwner", f"string:{name}"],
                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    return done.returncode == 0


class GnomeSession:
    """Its programs are ended with the `processes` that they belong to. The environment is set for this script too, so it
    must be made before the accessibility bindings are used."""

    def __init__(self, processes, folder, width=1280, height=800):
        self.width, self.height = width, height
        self._processes = processes
        self._portals = []
        runtime = pathlib.Path(folder) / "run"
        runtime.mkdir(mode=0o700)
        os.environ.update({
            "XDG_RUNTIME_DIR": str(runtime), "XDG_SESSION_TYPE": "wayland", "XDG_CURRENT_DESKTOP": "GNOME",
            "GSETTINGS_BACKEND": "memory", "GIO_USE_VFS": "local", "GSK_RENDERER": "cairo", "GDK_BACKEND": "wayland",
            "LIBGL_ALWAYS_SOFTWARE": "1", "QT_QPA_PLATFORM": "wayland", "QT_QPA_PLATFORMTHEME": "",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "NO_AT_BRIDGE": "0", "LC_ALL": "C.UTF-8"})
        for name in ("DISPLAY", "WAYLAND_DISPLAY"):
            os.environ.pop(name, None)
        start_session_bus(processes)
        self._start_compositor(runtime)
        self.start_portals()

    def _start_compositor(self, runtime):
        self._processes.start(["pipewire"])
        wait_until(lambda: (runtime / "pipewire-0").exists(), "PipeWire's socket")
        self._processes.start(["wireplumber"])
        self.compositor = self._processes.start(
            ["mutter", "--headless", "--wayland", "--no-x11", "--wayland-display", "wayland-test",
             "--virtual-monitor", f"{self.width}x{self.height}"])
        wait_until(lambda: (runtime / "wayland-test").exists() or not self.compositor.running(), "mutter's socket", 30)
        if not self.compositor.running():
            raise Failure(f"mutter did not start: {self.compositor.output()[-500:]}")
        os.environ["WAYLAND_DISPLAY"] = "wayland-test"
        for service in ("RemoteDesktop", "ScreenCast", "DisplayConfig"):
            wait_until(lambda name=service: owns(f"org.gnome.Mutter.{name}"), f"mutter's {service}", 30)

    def start_portals(self):
        """The backend first: the portal takes what it finds."""
        for portal in self._portals:
            portal.end()
        self._portals = []
        for program, name in ((GNOME_BACKEND, "org.freedesktop.impl.portal.desktop.gnome"),
                              (PORTAL, "org.freedesktop.portal.Desktop")):
            started = self._processes.start([program])
            wait_until(lambda n=name, p=started: owns(n) or not p.running(), f"{name} on the bus", 30)
            if not started.running():
                raise Failure(f"{program} did not start: {started.output()[-500:]}")
            self._portals.append(started)

    def portals_run(self):
        return all(portal.running() for portal in self._portals)


class Dialog:
    """The dialog in which a person lets a program share a screen and control the pointer."""

    def __init__(self, timeout=30):
        self._frame = wait_until(self._find, "the dialog about sharing the screen", timeout)

    def _is_open(self):
        return self._find() is not None

    @staticmethod
    def _find():
        from harness.accessibility import Atspi, Element  # only where there is a desktop there is a bus for it
        desktop = Atspi.get_desktop(0)
        desktop.clear_cache()
        for program in Element(desktop).children():
            if program.name == _DIALOG:
                program._ask(lambda a: a.set_cache_mask(Atspi.Cache.NONE))  # pylint: disable=protected-access
                return next((window for window in program.children() if window.name == "Remote desktop"), None)
        return None

    def _part(self, role, name):
        return next((part for part in self._frame.everything() if part.role == role and part.name.endswith(name)), None)

    def allow(self):
        """Picks the first screen, allows remote interaction and presses "Share"."""
        from harness.accessibility import Atspi
        wait_until(lambda: self._part("push button", "Share"), "a button \"Share\"")
        screens = next(part for part in self._frame.everything() if part.role == "list")
        screens._ask(lambda a: Atspi.Selection.select_child(a, 0))  # pylint: disable=protected-access
        interaction = self._part("check box", "Allow remote interaction")
        if not interaction.has("checked"):
            self._do(interaction)
            wait_until(lambda: interaction.has("checked"), "remote interaction is allowed")
        wait_until(lambda: self._part("push button", "Share").has("sensitive"), "\"Share\" can be pressed")
        self._do(self._part("push button", "Share"))
        wait_until(lambda: not self._is_open(), "the dialog is closed")

    def cancel(self):
        wait_until(lambda: self._part("push button", "Cancel"), "a button \"Cancel\"")
        self._do(self._part("push button", "Cancel"))
        wait_until(lambda: not self._is_open(), "the dialog is closed")

    @staticmethod
    def _do(part):
        part._ask(lambda a: a.do_action(0))  # pylint: disable=protected-access


class Seat:
    """The keyboard and the mouse of the person at this desktop, as mutter itself offers them. Without them programs would
    have to notice first that there is a pointer when touches come."""

    _SESSION = "org.gnome.Mutter.RemoteDesktop.Session"
    _LEFT_SHIFT = 42

    def __init__(self):
        from gi.repository import Gio, GLib
        self._variant = GLib.Variant
        self._bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        self._session = self._call("/org/gnome/Mutter/RemoteDesktop", "org.gnome.Mutter.RemoteDesktop", "CreateSession")[0]
        self._call(self._session, self._SESSION, "Start")
        self.press(self._LEFT_SHIFT)
        self.nudge_mouse()

    def nudge_mouse(self):
        self._call(self._session, self._SESSION, "NotifyPointerMotionRelative", self._variant("(dd)", (1, 1)))

    def _call(self, path, interface, method, arguments=None):
        return self._bus.call_sync("org.gnome.Mutter.RemoteDesktop", path, interface, method, arguments, None, 0, -1)

    def press(self, *keys):
        """Codes of linux/input-event-codes.h."""
        for key in keys:
            for is_down in (True, False):
                self._call(self._session, self._SESSION, "NotifyKeyboardKeycode",
                           self._variant("(ub)", (key, is_down)))
