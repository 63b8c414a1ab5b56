"""The application against a portal that refuses, keeps silent, answers late, closes sessions and goes away."""

import json
import os
import pathlib
import re
import signal
import stat
import subprocess
import time

import pytest
from harness import network
from harness.companion import Companion
from harness.desktop import Desktop
from harness.panel import Panel, panel_coordinate
from harness.processes import Processes, wait_until

STAND_IN = pathlib.Path(__file__).with_name("portal_stand_in.py")
ALLOWED = "The desktop lets touches control the pointer"
AGAIN = "; turn touch on again to be asked again"
# A display where nobody answers: to the application this is a Wayland session that has a portal and nothing else.
WAYLAND = {"WAYLAND_DISPLAY": "panel-companion-no-such-display"}


class Portal:
    def __init__(self, processes, version=2, mode="allow"):
        self.process = processes.start(["/usr/bin/python3", "-B", STAND_IN, version, mode], name="portal")
        self.wait_for({"what": "ready"})

    def seen(self, *kinds):
        lines = (json.loads(line) for line in self.process.output().splitlines() if line.startswith("{"))
        return [line for line in lines if not kinds or line["what"] in kinds]

    def wait_for(self, line, timeout=20):
        wait_until(lambda: line in self.seen(), f"the portal sees {line}", timeout)

    def ask(self, method, arguments=None):
        from gi.repository import Gio
        Gio.bus_get_sync(Gio.BusType.SESSION).call_sync(
            "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", "test.StandIn", method, arguments, None, 0,
            20_000)

    def hold(self, holds):
        from gi.repository import GLib
        self.ask("Hold", GLib.Variant("(b)", (holds,)))

    def lock(self, session="closed"):
        """With what becomes of the session."""
        from gi.repository import GLib
        self.ask("Lock", GLib.Variant("(bs)", (True, session)))

    def unlock(self, mode="allow"):
        from gi.repository import GLib
        self.ask("Mode", GLib.Variant("(s)", (mode,)))
        self.ask("Lock", GLib.Variant("(bs)", (False, "open")))


class Stage:
    def __init__(self, processes, programs):
        self.processes, self.programs = processes, programs
        network.loopback_up()
        self.desktop = Desktop(processes)
        self.panel = Panel(processes, programs / "panel-simulator", arguments=["--no-announce"])
        self.app = None

    def start(self, *options):
        self.app = Companion(self.processes, self.desktop, self.programs / "panel-companion",
                             ["--panel", self.panel.service_name, *options], WAYLAND)
        self.app.pair(self.panel)

    def cast(self):
        self.app.start_casting()
        wait_until(lambda: self.panel.touch_enabled_at(), "the panel sends touches")

    def cast_again(self):
        self.app.stop_casting()
        self.cast()

    def log_count(self, line):
        return self.app.process.output().count(line)

    def expect_log(self, line, count=1):
        wait_until(lambda: self.log_count(line) >= count, f"the line {line!r}", 30)

    def expect_told(self, sentence):
        """In the log and on the dashboard."""
        self.expect_log(sentence)
        self.app.window.find("label", sentence, timeout=20)

    def touch(self, *events):
        """Each is "DOWN", x, y in pixels of the portal's screen of 1920 by 1080."""
        self.panel.touch(*(f"{kind} {panel_coordinate(x, 1920)} {panel_coordinate(y, 1080)}" for kind, x, y in events))

    def end(self):
        self.processes.end()


@pytest.fixture
def stage(programs, output, has_failed):
    made = Stage(Processes(output), programs)
    yield made
    if has_failed() and made.app:
        print(made.app.process.output())
    made.end()


def test_permission_is_asked_for_when_touch_is_turned_on_and_touches_land_on_the_picked_screen(stage):
    portal = Portal(stage.processes)
    stage.start()
    stage.expect_log("Touches are injected through the desktop's RemoteDesktop portal")
    assert portal.seen() == [{"what": "ready"}]
    stage.cast()
    stage.expect_log(ALLOWED)
    assert portal.seen()[1:] == [{"what": "create"}, {"what": "devices", "types": 2, "mode": 1, "token": None},
                                 {"what": "sources", "types": 1}, {"what": "start"}]
    stage.touch(("DOWN", 960, 540), ("MOVE", 1920, 1080), ("UP", 1920, 1080))
    portal.wait_for({"what": "button", "button": 0x110, "state": 0})
    at_press, press, at_edge, release = portal.seen("motion", "button")
    assert abs(at_press["x"] - 960) < 0.1 and abs(at_press["y"] - 540) < 0.1 and at_press["stream"] == 42
    assert press["state"] == 1
    assert (at_edge["x"], at_edge["y"]) == (1919, 1079)
    assert release["state"] == 0


def test_without_remote_desktop_touches_reach_x11_programs_which_is_told(stage):
    Portal(stage.processes, version=0)
    stage.start()
    x11_only = "On Wayland touches reach X11 programs only"
    stage.expect_log(x11_only)
    stage.cast()
    stage.expect_told(re.search(f"{x11_only}.*", stage.app.process.output()).group(0))


def test_a_refusal_is_told_and_the_next_touch_on_asks_again(stage):
    portal = Portal(stage.processes, mode="deny")
    stage.start()
    stage.cast()
    stage.expect_told("No touch: the desktop's dialog was cancelled" + AGAIN)
    stage.touch(("DOWN", 960, 540), ("UP", 960, 540))
    stage.cast_again()
    stage.expect_log("No touch: the desktop's dialog was cancelled" + AGAIN, count=2)
    assert len(portal.seen("start")) == 2
    assert not portal.seen("motion", "button")


def test_touches_before_a_late_answer_are_dropped_and_so_is_the_release_of_a_dropped_press(stage):
    portal = Portal(stage.processes, mode="silent")
    stage.start()
    stage.cast()
    stage.expect_told("Waiting for permission: pick a screen and allow remote interaction in the desktop's dialog")
    stage.touch(("DOWN", 960, 540))
    stage.expect_log("::: Mouse Down")
    portal.ask("Answer")
    stage.expect_log(ALLOWED)
    stage.touch(("UP", 960, 540), ("MOVE", 480, 270))
    wait_until(lambda: portal.seen("motion"), "the move arrives")
    assert not portal.seen("button")


def test_a_session_closed_in_mid_drag_is_told_and_restored_by_its_token(stage):
    portal = Portal(stage.processes)
    stage.start()
    stage.cast()
    stage.expect_log(ALLOWED)
    stage.touch(("DOWN", 960, 540), ("MOVE", 480, 270))
    wait_until(lambda: len(portal.seen("motion")) == 2, "the drag arrives")
    portal.ask("Close")
    stage.expect_told("No touch: the desktop stopped sharing the screen" + AGAIN)
    stage.touch(("MOVE", 960, 540), ("UP", 960, 540))
    stage.cast_again()
    stage.expect_log(ALLOWED, count=2)
    assert [line["token"] for line in portal.seen("devices")] == [None, "token-1"]
    assert len(portal.seen("button")) == 1
    stage.touch(("DOWN", 960, 540))
    wait_until(lambda: len(portal.seen("button")) == 2, "the press after it arrives")


def cast_with_permission(stage, version=2):
    portal = Portal(stage.processes, version)
    stage.start()
    stage.cast()
    stage.expect_log(ALLOWED)
    return portal


def expect_press(stage, portal):
    """One more."""
    count = len(portal.seen("button"))
    stage.touch(("DOWN", 960, 540))
    wait_until(lambda: len(portal.seen("button")) > count, "the press arrives")


def test_what_the_lock_screen_closes_is_restored_by_its_token_after_unlocking(stage):
    portal = cast_with_permission(stage)
    portal.lock()
    stage.expect_told("No touch: the desktop stopped sharing the screen" + AGAIN)
    portal.unlock()
    stage.expect_log(ALLOWED, count=2)
    assert [line["token"] for line in portal.seen("devices")] == [None, "token-1"]
    expect_press(stage, portal)


def test_what_the_lock_screen_closes_silently_is_restored_at_the_first_touch_after_unlocking(stage):
    portal = cast_with_permission(stage)
    portal.lock("closed silently")
    portal.unlock()
    stage.touch(("DOWN", 960, 540), ("UP", 960, 540))
    stage.expect_log(ALLOWED, count=2)
    assert [line["token"] for line in portal.seen("devices")] == [None, "token-1"]
    expect_press(stage, portal)


def test_without_a_token_the_next_touch_on_asks_after_unlocking(stage):
    portal = cast_with_permission(stage, version=1)
    portal.lock()
    portal.unlock()
    stage.expect_told("No touch: the desktop stopped sharing the screen" + AGAIN)
    stage.touch(("DOWN", 960, 540))
    stage.expect_log("::: Mouse Down")
    assert len(portal.seen("start")) == 1
    stage.cast_again()
    stage.expect_log(ALLOWED, count=2)
    expect_press(stage, portal)


def test_a_restore_after_unlocking_that_is_refused_is_told_and_not_tried_again(stage):
    portal = cast_with_permission(stage)
    portal.lock()
    portal.unlock("deny")
    stage.expect_told("No touch: the desktop's dialog was cancelled" + AGAIN)
    portal.lock("open")
    portal.unlock()
    stage.touch(("DOWN", 960, 540))
    stage.expect_log("::: Mouse Down")
    assert len(portal.seen("start")) == 2
    stage.cast_again()
    stage.expect_log(ALLOWED, count=2)


def test_what_was_stopped_before_the_screen_was_locked_stays_stopped(stage):
    portal = cast_with_permission(stage)
    portal.ask("Close")
    time.sleep(6)  # a desktop that locks the screen says so within 5 seconds of closing the session
    portal.lock("open")
    portal.unlock()
    stage.touch(("DOWN", 960, 540))
    stage.expect_log("::: Mouse Down")
    assert len(portal.seen("start")) == 1
    assert stage.log_count(ALLOWED) == 1


def test_only_the_portal_answers_and_closes(stage):
    portal = Portal(stage.processes, mode="silent")
    stage.start()
    stage.cast()
    portal.wait_for({"what": "start"})
    portal.ask("Forge")
    portal.ask("Answer")
    stage.expect_log(ALLOWED)
    assert stage.log_count("No touch:") == 0
    portal.ask("Forge")
    stage.touch(("DOWN", 960, 540))
    wait_until(lambda: portal.seen("button"), "the press arrives")
    assert stage.log_count("No touch:") == 0


def test_a_portal_of_version_1_is_given_no_token_and_asked_once_a_run(stage):
    portal = Portal(stage.processes, version=1)
    stage.start()
    stage.cast()
    stage.expect_log(ALLOWED)
    stage.cast_again()
    stage.touch(("DOWN", 960, 540))
    wait_until(lambda: portal.seen("button"), "the press arrives")
    assert portal.seen("devices") == [{"what": "devices", "types": 2, "mode": None, "token": None}]
    stage.app.process.send(signal.SIGTERM)
    portal.wait_for({"what": "closed by the client"})


def test_a_portal_that_goes_away_is_told_and_asked_when_it_is_back(stage):
    portal = Portal(stage.processes)
    stage.start()
    stage.cast()
    stage.expect_log(ALLOWED)
    portal.process.end()
    stage.expect_told("No touch: the desktop's portal has gone or was restarted" + AGAIN)
    stage.touch(("DOWN", 960, 540), ("UP", 960, 540))
    portal = Portal(stage.processes)
    stage.cast_again()
    stage.expect_log(ALLOWED, count=2)
    stage.touch(("DOWN", 960, 540))
    wait_until(lambda: portal.seen("button"), "the press arrives")


def test_screen_access_is_remembered_on_request_only_for_this_user(stage):
    state = pathlib.Path(stage.processes.folder) / "state"
    os.environ["XDG_STATE_HOME"] = str(state)
    portal = Portal(stage.processes)
    for run in (1, 2):
        stage.start("--remember-screen-access")
        stage.cast()
        stage.expect_log(ALLOWED)
        kept = state / "panel-companion/screen-access"
        assert kept.read_text(encoding="ascii") == f"token-{run}\n"
        assert stat.S_IMODE(kept.stat().st_mode) == 0o600
        stage.app.process.end()
    assert [(line["mode"], line["token"]) for line in portal.seen("devices")] == [(2, None), (2, "token-1")]


def test_10000_touches_in_a_burst_lose_no_press_while_the_portal_is_slow(stage):
    portal = Portal(stage.processes)
    stage.start()
    stage.cast()
    stage.expect_log(ALLOWED)
    portal.hold(True)
    tap = (("DOWN", 960, 540), ("MOVE", 950, 530), ("MOVE", 940, 530), ("MOVE", 930, 530), ("UP", 960, 540))
    stage.touch(*(tap * 2000), ("MOVE", 480, 270))
    stage.expect_log("::: Mouse Down", count=2000)
    assert len(portal.seen("motion", "button")) == 1  # portals may handle two calls at the same time in any order
    portal.hold(False)

    def has_arrived():
        motions = portal.seen("motion")
        return abs(motions[-1]["x"] - 480) < 0.1 and abs(motions[-1]["y"] - 270) < 0.1

    wait_until(has_arrived, "the last move arrives", 60)
    states = [line["state"] for line in portal.seen("button")]
    assert states == [1, 0] * (len(states) // 2)
    assert len(states) >= 2 * 2000
    stage.app.expect_alive()


def test_a_session_bus_that_is_silent_at_the_start_is_done_without(stage):
    bus = next(process for process in stage.processes.started() if process.name == "session-bus")
    bus.send(signal.SIGSTOP)
    app = stage.processes.start([stage.programs / "panel-companion"], environment=WAYLAND)
    try:
        wait_until(lambda: "no RemoteDesktop portal: there is no session bus" in app.output(), "the dashboard, which has looked for a portal", 20)
        shown = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^Panel Companion$"], check=False)
        assert shown.returncode == 0
        assert "the session bus does not answer; starting without it" in app.output()
        app.send(signal.SIGTERM)
        assert app.wait() == 0
    finally:
        bus.send(signal.SIGCONT)


def test_doctor_says_that_the_portal_is_used_and_asks(stage):
    Portal(stage.processes)
    doctor = stage.processes.start([stage.programs / "panelctl", "doctor", "--timeout", "10"], environment=WAYLAND)
    doctor.wait(90)
    assert f"ok    display: Wayland display {WAYLAND['WAYLAND_DISPLAY']}; Touches are injected through the desktop's " \
           "RemoteDesktop portal, which asks when touch is turned on" in doctor.output()


def test_doctor_says_what_to_install_where_touches_reach_x11_programs_only(stage):
    Portal(stage.processes, version=0)
    doctor = stage.processes.start([stage.programs / "panelctl", "doctor", "--timeout", "10"], environment=WAYLAND)
    doctor.wait(90)
    assert "On Wayland touches reach X11 programs only" in doctor.output()
    assert "install xdg-desktop-portal and its backend for this desktop" in doctor.output()
