"""The application as it is while a panel is in use: started, paired with a simulated panel on this computer by real
clicks, and taking touches on UDP port 41863."""

import os
import pathlib
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True  # nothing is left behind in the source tree
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))
from harness import network  # noqa: E402
from harness.companion import Companion  # noqa: E402
from harness.desktop import Desktop  # noqa: E402
from harness.panel import Panel  # noqa: E402
from harness.processes import Processes, wait_until  # noqa: E402,F401

TOUCH_PORT = 41863


def isolate():
    """Starts this script anew in a network of its own, since ports 5000 and 41863 are fixed."""
    if "PANEL_COMPANION_ISOLATION" not in os.environ:
        launcher = pathlib.Path(__file__).resolve().parents[2] / "tools/lib/isolated.sh"
        os.execv(launcher, [str(launcher), "/usr/bin/python3", *sys.argv])
    network.loopback_up()


class Session:
    """`programs`: the folder of the built programs. `wrapper`: what stands before the application on its command
    line. One that is not driven is started and left to itself, without the accessibility bus."""

    def __init__(self, programs, environment=None, wrapper=(), is_driven=True):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="panel-companion-bench."))
        self.processes = Processes(self.folder)
        self.desktop = Desktop(self.processes, 1280, 800)
        self.panel = Panel(self.processes, programs / "panel-simulator", arguments=["--no-announce"])
        command = [*wrapper, programs / "panel-companion", "--panel", self.panel.service_name]
        if is_driven:
            self.companion = Companion(self.processes, self.desktop, command[0], command[1:], environment)
            self.pid = self.companion.process.pid
        else:
            quiet = {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "0"}
            self.pid = self.processes.start(command, environment=quiet).pid

    def pair(self):
        self.companion.pair(self.panel)

    def switch_touch(self):
        """Turns wireless touch on, or off again."""
        self.desktop.click(*self.companion.window.find("check box", "Wireless touch").center())

    def start_touch(self):
        self.pair()
        self.switch_touch()
        wait_until(self.panel.touch_enabled_at, "the panel is asked for touches", 30)
        time.sleep(1)  # the switch's animation is over

    def minimize(self):
        """Puts the window out of the way, as where another program is worked: else the moves that are measured would
        be the window's as well, and keep the program busy."""
        subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^Panel Companion$", "windowminimize", "%@"],
                       check=True, timeout=5)
        wait_until(lambda: subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^Panel Companion$"],
                                          stdout=subprocess.DEVNULL, check=False).returncode != 0, "it is out of the way")

    def end(self):
        self.processes.end()
