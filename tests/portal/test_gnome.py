"""Touches on GNOME, by its own portal: its dialog is answered as a person does, and another program says what it gets."""

import itertools
import pathlib
import re
import signal
import sys
import time

import gnome
import pytest
from harness import network
from harness.companion import Companion
from harness.panel import Panel, panel_coordinate
from harness.processes import Failure, Processes, wait_until

ALLOWED = "The desktop lets touches control the pointer"
KEY_DOWN, KEY_RETURN = 108, 28
GTK_REPORTER = pathlib.Path(__file__).parents[1] / "wayland/pointer_reporter.py"


class Stage:
    """The session, and on it the application, casting to a simulated panel with the desktop's permission."""

    def __init__(self, programs, folder):
        self.programs = programs
        self.processes = Processes(folder)
        network.loopback_up()
        self.session = gnome.GnomeSession(self.processes, folder)
        self.panel = Panel(self.processes, programs / "panel-simulator", name="Room 204", arguments=["--no-announce"])
        self.seat = gnome.Seat()
        self._own = self.processes.started()
        self.app = None

    def start(self):
        self.app = Companion(self.processes, self.session, self.programs / "panel-companion",
                             ["--panel", self.panel.service_name], timeout=30)
        self.app.wait_for_row(self.panel.name)
        self.seat.press(KEY_DOWN, KEY_RETURN)
        self.app.window.find("label", f"Paired to {self.panel.hex}", timeout=20)
        self.app.close_list()

    def cast(self):
        self.app.start_casting()
        wait_until(self.panel.touch_enabled_at, "the panel sends touches")

    def start_with_permission(self):
        """GNOME's backend ends by itself now and then, in the middle of its dialog: then touch is turned on again."""
        self.start()
        self.cast()
        gnome.Dialog().allow()
        wait_until(lambda: ALLOWED in self.app.process.output() or not self.session.portals_run(), "an answer", 30)
        if not self.session.portals_run():
            self.session.start_portals()
            self.app.stop_casting()
            self.cast()
            gnome.Dialog().allow()
        self.expect_log(ALLOWED)

    def expect_log(self, line):
        wait_until(lambda: line in self.app.process.output(), f"the line {line!r}", 30)

    def reporter(self, kind="qt"):
        """Another program that covers the screen, once it gets what the panel sends."""
        command = [sys.executable, "-B", GTK_REPORTER] if kind == "gtk" else [self.programs / "pointer-reporter"]
        reporter = Reporter(self.processes.start(command, name=f"{kind}-reporter"))
        places = itertools.count(10)

        def gets_moves():
            self.touch(("MOVE", next(places) % 1000, 10))
            return reporter.events("move")

        try:
            wait_until(gets_moves, "moves arrive", 30, .2)
        except Failure:
            self._skip_unless_mouse_reaches(reporter)
            raise
        return reporter

    def _skip_unless_mouse_reaches(self, reporter):
        """Without its own mouse either, it is not the touches that are at fault."""
        for _ in range(20):
            self.seat.nudge_mouse()
            time.sleep(.1)
        if not reporter.events("move"):
            pytest.skip("the compositor does not even deliver its own mouse's motion to the other program")

    def touch(self, *events):
        """("DOWN", x, y[, pause]) in pixels, the pause before it in milliseconds."""
        self.panel.touch(*(f"{kind} {panel_coordinate(x, self.session.width)} {panel_coordinate(y, self.session.height)} "
                           + "".join(map(str, pause)) for kind, x, y, *pause in events))

    def end_programs(self):
        self.processes.end(list(self._own))
        self.app = None


class Reporter:
    def __init__(self, process):
        self._process = process
        wait_until(lambda: "ready" in process.output(), "the window that covers the screen", 30)

    def is_running(self):
        return self._process.running()

    def events(self, *kinds):
        """(what, x, y) of those kinds."""
        found = re.findall(r"^(\w+) (\S+) (\S+)$", self._process.output(), re.MULTILINE)
        return [(what, float(x), float(y)) for what, x, y in found if what in kinds]

    def wait_for(self, kind, count=1):
        wait_until(lambda: len(self.events(kind)) >= count, f"{count} {kind}", 20)
        return self.events(kind)[count - 1]


@pytest.fixture(scope="module")
def shared_stage(programs, module_output):
    missing = gnome.missing()
    if missing:
        pytest.skip(f"not installed: {missing}")
    made = Stage(programs, module_output)
    yield made
    made.processes.end()


@pytest.fixture
def stage(shared_stage, has_failed):
    if not shared_stage.session.portals_run():
        shared_stage.session.start_portals()
    yield shared_stage
    if has_failed() and shared_stage.app:
        print(shared_stage.app.process.output())
        print(shared_stage.app.window.describe())
    shared_stage.end_programs()


def expect_place(event, x, y):
    assert abs(event[1] - x) <= 1 and abs(event[2] - y) <= 1, event


def test_a_drag_reaches_a_native_program_where_it_was_made(stage):
    stage.start_with_permission()
    reporter = stage.reporter()
    stage.touch(("DOWN", 211, 607), ("MOVE", 1003, 97, 30), ("UP", 1003, 97, 30))
    expect_place(reporter.wait_for("press"), 211, 607)
    expect_place(reporter.wait_for("release"), 1003, 97)
    stage.touch(("DOWN", 1280, 800, 1000), ("UP", 1280, 800, 30))
    expect_place(reporter.wait_for("press", 2), 1279, 799)


@pytest.mark.parametrize("kind", ["qt", "gtk"])
@pytest.mark.parametrize("gap", [120, 600])
def test_a_double_tap_is_one_double_click(stage, kind, gap):
    stage.start_with_permission()
    reporter = stage.reporter(kind)
    stage.touch(("DOWN", 640, 400), ("UP", 640, 400, 50), ("DOWN", 641, 401, gap - 50), ("UP", 641, 401, 50))
    reporter.wait_for("double")
    # What follows the double click arrives after anything that belongs to it.
    stage.touch(("DOWN", 100, 100, 1500), ("UP", 100, 100, 50))
    wait_until(lambda: any(event[1] < 200 for event in reporter.events("release")), "the tap elsewhere", 20)
    assert len(reporter.events("double")) == 1
    assert not reporter.events("triple")


def test_the_compositor_releases_the_button_of_a_killed_program(stage):
    stage.start_with_permission()
    reporter = stage.reporter()
    stage.touch(("DOWN", 640, 400))
    reporter.wait_for("press")
    assert not reporter.events("release")
    stage.app.process.send(signal.SIGKILL)
    reporter.wait_for("release")


def test_a_cancelled_dialog_is_told_and_comes_again_at_the_next_touch_on(stage):
    stage.start()
    stage.cast()
    gnome.Dialog().cancel()
    sentence = "No touch: the desktop's dialog was cancelled; turn touch on again to be asked again"
    stage.app.window.find("label", sentence, timeout=20)
    stage.app.stop_casting()
    stage.cast()
    gnome.Dialog().allow()
    stage.expect_log(ALLOWED)
    reporter = stage.reporter()
    stage.touch(("DOWN", 640, 400))
    reporter.wait_for("press")
