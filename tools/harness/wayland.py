"""A Wayland desktop without a screen: the compositor sway, with a session bus and accessibility."""

import glob
import json
import os
import shutil
import subprocess

from .desktop import start_session_bus
from .processes import Failure, wait_until


def why_not():
    """Why there can be none, in one line; nothing where it can."""
    for program, package in (("sway", "sway"), ("unshare", "util-linux")):
        if not shutil.which(program):
            return f"{program} (package {package}) is missing"
    if not glob.glob("/usr/lib/*/qt6/plugins/platforms/libqwayland-generic.so"):
        return "Qt's Wayland plugin (package qt6-wayland) is missing"
    done = subprocess.run(["unshare", "--user", "--map-user=1000", "true"], stderr=subprocess.PIPE, text=True, check=False)
    return f"sway refuses root, and cannot have another user: {done.stderr.strip()}" if done.returncode else None


class Output:
    """`mode` is in pixels, WIDTHxHEIGHT; `x` is where its left edge lies, in points."""

    def __init__(self, name="HEADLESS-1", mode="1280x800", scale=1, x=0):
        self.name, self.mode, self.scale, self.x = name, mode, scale, x
        width, height = map(int, mode.split("x"))
        self.width, self.height = width / scale, height / scale  # in points


class Mouse:
    """Of the person at the computer. Each call returns once the compositor has processed it."""

    def __init__(self, processes, program):
        reader, self._writer = os.pipe()
        self._process = processes.start([program, reader], pass_fds=(reader,))
        os.close(reader)
        self._count = 0
        wait_until(lambda: "ready" in self._process.output(), "the mouse", 30)

    def _say(self, line):
        os.write(self._writer, (line + "\n").encode("ascii"))
        self._count += 1
        wait_until(lambda: self._process.output().count("done") == self._count, f"the mouse's {line}", 30, 0.01)

    def move(self, output, x, y):
        """In points of that output."""
        self._say(f"{output.name} {output.width} {output.height} {x} {y}")

    def press(self):
        self._say("press")

    def release(self):
        self._say("release")


class WaylandDesktop:
    """Its programs are ended with the `processes` that they belong to. WAYLAND_DISPLAY and the like are set for this script
    too, so it must be made before the accessibility bindings are used."""

    def __init__(self, processes, mouse, outputs=(Output(),)):
        """`mouse` is the program that is one."""
        self._processes, self.outputs = processes, outputs
        os.environ.pop("DISPLAY", None)
        start_session_bus(processes)
        os.environ.update({
            "QT_QPA_PLATFORM": "wayland", "GDK_BACKEND": "wayland", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            "NO_AT_BRIDGE": "0", "GTK_USE_PORTAL": "0", "QT_QPA_PLATFORMTHEME": "", "LC_ALL": "C.UTF-8"})
        self._start_compositor()
        self.mouse = Mouse(processes, mouse)

    def _start_compositor(self):
        lines = [f"output {o.name} mode {o.mode} position {o.x} 0 scale {o.scale}" for o in self.outputs]
        configuration = self._processes.folder / "sway.conf"
        configuration.write_text("\n".join([*lines, "xwayland disable", "default_border none"]) + "\n", encoding="ascii")
        folder = os.environ["XDG_RUNTIME_DIR"]
        before = set(glob.glob(f"{folder}/wayland-*"))
        self.compositor = self._processes.start(
            ["unshare", "--user", "--map-user=1000", "sway", "-c", configuration], name="sway",
            environment={"WLR_BACKENDS": "headless", "WLR_LIBINPUT_NO_DEVICES": "1", "WLR_RENDERER": "pixman",
                         "WLR_HEADLESS_OUTPUTS": str(len(self.outputs))})

        def sockets():
            found = [name for name in glob.glob(f"{folder}/wayland-*") if name not in before and not name.endswith(".lock")]
            control = glob.glob(f"{folder}/sway-ipc.*.{self.compositor.pid}.sock")
            return (found[0], control[0]) if found and control else not self.compositor.running()

        found = wait_until(sockets, "the compositor", timeout=30)
        if found is True:
            raise Failure(f"sway did not start: {self.compositor.output()}")
        os.environ["WAYLAND_DISPLAY"], os.environ["SWAYSOCK"] = os.path.basename(found[0]), found[1]
        wait_until(lambda: all(self._has(output) for output in self.outputs), "the compositor's outputs")

    def _has(self, output):
        return any(found["name"] == output.name and abs(found["rect"]["width"] - output.width) < 1
                   for found in self.ask("get_outputs"))

    @staticmethod
    def ask(question):
        """What sway-ipc(7) answers."""
        done = subprocess.run(["swaymsg", "-r", "-t", question], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              check=False, timeout=20)
        return json.loads(done.stdout) if done.returncode == 0 else []

    @staticmethod
    def tell(command):
        subprocess.run(["swaymsg", command], check=True, timeout=20, stdout=subprocess.DEVNULL)

    def _nodes(self):
        """Those of sway-ipc(7)."""
        nodes = [self.ask("get_tree")]
        for node in nodes:
            nodes += (node["nodes"] + node["floating_nodes"]) if node else []
        return [node for node in nodes if node and node.get("pid")]

    def windows(self, title):
        """The nodes of the windows of that title."""
        return [node for node in self._nodes() if node["name"] == title]

    def focused_window(self):
        """The title of the one that gets what is typed."""
        return next((node["name"] for node in self._nodes() if node["focused"]), None)

    def urgent_windows(self):
        """The titles of those that ask for attention."""
        return [node["name"] for node in self._nodes() if node["urgent"]]

    def drag(self, start, end, has_started, is_welcome):
        """In points of the first output. Moves on once the program has begun its drag, and drops what is welcome."""
        output = self.outputs[0]
        self.mouse.move(output, *start)
        self.mouse.press()
        for step in range(1, 5):
            self.mouse.move(output, start[0] + 8 * step, start[1] + 5 * step)
        wait_until(has_started, "a drag", 20)
        for step in range(1, 9):
            self.mouse.move(output, *(a + (b - a) * step / 8 for a, b in zip(start, end)))
        wait_until(is_welcome, "the target's answer", 20)
        self.mouse.release()

    def click(self, x, y):
        """In points of the application's window, which the accessibility bus tells on Wayland."""
        window = self.windows("Panel Companion")[0]["rect"]
        self.mouse.move(self.outputs[0], window["x"] + x, window["y"] + y)
        self.mouse.press()
        self.mouse.release()

    def screenshot(self, file):
        if shutil.which("grim"):
            subprocess.run(["grim", str(file)], check=False, timeout=20, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
