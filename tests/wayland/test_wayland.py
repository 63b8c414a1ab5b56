"""The whole application on a Wayland compositor, with touches that other programs report."""

import os
import re
import signal
import sys

import pytest
from harness import network, wayland
from harness.companion import ENABLED, UPLOADED, Companion
from harness.panel import Panel, panel_coordinate
from harness.processes import Processes, wait_until

PANEL = "Room 204"
GTK_REPORTER = [sys.executable, os.path.join(os.path.dirname(__file__), "pointer_reporter.py")]


class Reporter:
    """Another program over a whole output. It begins to count when the pointer has reached it."""

    def __init__(self, processes, desktop, command, output):
        self._process = processes.start(command, name="reporter", environment={"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "0"})
        self._first = 0
        wait_until(lambda: "ready" in self._process.output(), "the reporting window", 30)
        if output != desktop.outputs[0]:
            desktop.tell(f'[title="^Touches$"] move container to output {output.name}')
        wait_until(lambda: self._reached(desktop.mouse, output), "the pointer in the reporting window", 30)
        self._first = len(self.events())

    def _reached(self, mouse, output):
        """In the lower right corner too, so that it covers the output."""
        mouse.move(output, 7, 5)
        mouse.move(output, output.width - 9, output.height - 11)
        return any(near(event[1:], output.width - 9, output.height - 11) for event in self.events())

    def is_running(self):
        return self._process.running()

    def events(self):
        """[(what, x, y)] since it came up."""
        return [(what, float(x), float(y)) for what, x, y in re.findall(
            r"^(press|double|triple|move|release) (\S+) (\S+)$", self._process.output(), re.MULTILINE)][self._first:]

    def count(self, what):
        return sum(event[0] == what for event in self.events())

    def wait_for(self, what, number=1):
        """The place of that one of these events."""
        def found():
            events = [event for event in self.events() if event[0] == what]
            return events[number - 1] if len(events) >= number else None
        return wait_until(found, f"{what} number {number}", 20)[1:]


class Session:
    """A desktop and a panel; `start` brings the application, paired and casting."""

    def __init__(self, programs, output, outputs=(wayland.Output(),)):
        network.loopback_up()
        self.programs = programs
        self.processes = Processes(output)
        self.desktop = wayland.WaylandDesktop(self.processes, programs / "wayland-pointer", outputs)
        self.panel = Panel(self.processes, programs / "panel-simulator", name=PANEL, arguments=["--no-announce", "--uploads", output])
        self.app = None

    def start(self, *options):
        self.app = Companion(self.processes, self.desktop, self.programs / "panel-companion",
                             ["--panel", self.panel.service_name, *options], timeout=30)

    def cast(self, *options):
        self.start(*options)
        self.app.pair(self.panel)
        self.app.start_casting()
        wait_until(self.panel.touch_enabled_at, "the panel sends touches")

    def reporter(self, kind, output=None):
        """Once it covers the output, the first one unless one is given."""
        command = GTK_REPORTER if kind == "gtk" else [self.programs / "pointer-reporter"]
        return Reporter(self.processes, self.desktop, command, output or self.desktop.outputs[0])

    def touch(self, *touches, output=None):
        """("DOWN", x, y[, pause]): in points of the output, by the panel, as datagrams."""
        output = output or self.desktop.outputs[0]
        self.panel.touch(*(f"{what} {panel_coordinate(x, output.width)} {panel_coordinate(y, output.height)}"
                           + "".join(f" {part}" for part in pause) for what, x, y, *pause in touches))


def near(place, x, y):
    return abs(place[0] - x) <= 1 and abs(place[1] - y) <= 1


@pytest.fixture
def make_session(programs, output, has_failed):
    reason = wayland.why_not()
    if reason:
        pytest.skip(reason)
    sessions = []

    def make(*outputs):
        sessions.append(Session(programs, output, outputs or (wayland.Output(),)))
        return sessions[-1]

    yield make
    for session in sessions:
        if has_failed():
            session.desktop.screenshot(output / "failed.png")
            if session.app:
                print(session.app.window.describe())
        session.processes.end()


def reports_a_drag(session, kind):
    session.cast()
    reporter = session.reporter(kind)
    session.touch(("DOWN", 300, 200), ("MOVE", 501, 302))
    assert near(reporter.wait_for("press"), 300, 200)
    wait_until(lambda: near(reporter.events()[-1][1:], 501, 302), "the move", 20)  # GTK may join moves
    session.touch(("MOVE", 1002, 603), ("UP", 1002, 603))
    assert near(reporter.wait_for("release"), 1002, 603)
    assert (reporter.count("press"), reporter.count("release")) == (1, 1)
    assert "Touches are injected with the compositor's virtual pointer" in session.app.process.output()


def test_a_gtk_program_gets_a_drag(make_session):
    reports_a_drag(make_session(), "gtk")


def test_a_qt_program_gets_a_drag(make_session):
    reports_a_drag(make_session(), "qt")


def test_doctor_names_the_virtual_pointer(make_session):
    session = make_session()
    doctor = session.processes.start([session.programs / "panelctl", "doctor"])
    doctor.wait(90)
    assert "Touches are injected with the compositor's virtual pointer" in doctor.output()


def test_the_list_opens_below_its_icon_inside_the_window(make_session):
    session = make_session()
    session.start()
    left, top, width, height = session.app.open_list().area()
    window = session.app.window
    icon_x, icon_y = window.find(name="Devices").center()
    window_width, window_height = window.find("frame", "Panel Companion").area()[2:]
    assert 0 <= left < icon_x < left + width <= window_width
    assert icon_y < top < top + height <= window_height
    session.desktop.click(left + width + 40, top + height // 2)  # beside it
    window.gone("dialog", "Panels nearby")
    assert len(session.desktop.windows("Panel Companion")) == 1


def reports_one_double_click(session, kind):
    session.cast()
    reporter = session.reporter(kind)
    session.touch(("DOWN", 640, 400), ("UP", 640, 400, 20), ("DOWN", 642, 401, 60), ("UP", 642, 401, 20),
                  ("DOWN", 200, 100, 900), ("UP", 200, 100, 900))
    wait_until(lambda: reporter.events()[-1:] and reporter.events()[-1][0] == "release"
               and near(reporter.events()[-1][1:], 200, 100), "the last touch", 20)
    assert (reporter.count("double"), reporter.count("triple")) == (1, 0)
    return reporter


def test_a_double_tap_is_one_double_click_to_a_gtk_program(make_session):
    reporter = reports_one_double_click(make_session(), "gtk")
    assert reporter.count("press") == 3  # GTK reports one besides the double one


def test_a_double_tap_is_one_double_click_to_a_qt_program(make_session):
    reporter = reports_one_double_click(make_session(), "qt")
    assert reporter.count("press") == 2


def hold(session):
    """A finger is down on the other program."""
    session.cast()
    reporter = session.reporter("gtk")
    session.touch(("DOWN", 300, 200))
    reporter.wait_for("press")
    assert reporter.count("release") == 0
    return reporter


def test_the_end_of_casting_releases_the_button(make_session):
    session = make_session()
    reporter = hold(session)
    session.app.stop_casting()
    reporter.wait_for("release")


def test_the_end_of_the_program_releases_the_button(make_session):
    session = make_session()
    reporter = hold(session)
    session.app.process.send(signal.SIGTERM)
    assert session.app.process.wait() == 0
    reporter.wait_for("release")


def test_a_fatal_error_releases_the_button(make_session):
    session = make_session()
    reporter = hold(session)
    session.panel.reply("invalid")
    assert session.app.process.wait(20) == 128 + signal.SIGABRT
    reporter.wait_for("release")


def test_the_next_run_releases_what_a_killed_one_left_held(make_session):
    session = make_session()
    reporter = hold(session)
    session.app.process.send(signal.SIGKILL)
    session.app.process.wait()
    session.desktop.tell("workspace 2")  # the reporter covers the first one
    session.cast()
    reporter.wait_for("release")
    session.desktop.tell("workspace 1")
    session.touch(("DOWN", 500, 400), ("UP", 500, 400, 20))
    assert near(reporter.wait_for("press", 2), 500, 400)
    wait_until(lambda: reporter.events()[-1][0] == "release", "the release")


def test_the_program_ends_with_its_compositor(make_session):
    session = make_session()
    session.cast()
    session.desktop.compositor.send(signal.SIGKILL)
    assert session.app.process.wait(20) == 1  # Qt's way; no abort


def reaches_the_last_pixel(session, output):
    """Of that output, and neither the other one nor the pixel after it."""
    reporter = session.reporter("qt", output)
    session.touch(("DOWN", 200, 100), ("MOVE", output.width, output.height), ("UP", output.width, output.height, 50),
                  output=output)
    assert near(reporter.wait_for("press"), 200, 100)
    x, y = reporter.wait_for("release")
    assert output.width - 1 <= x < output.width and output.height - 1 <= y < output.height


def test_touches_go_to_the_first_of_two_outputs(make_session):
    first = wayland.Output()
    session = make_session(first, wayland.Output("HEADLESS-2", "1024x768", x=1280))
    session.cast()
    reaches_the_last_pixel(session, first)


def touches_go_to_the_output_that_is_named(session_maker, scale):
    named = wayland.Output("HEADLESS-2", f"{1024 * scale:.0f}x{768 * scale:.0f}", scale, x=1280)
    session = session_maker(wayland.Output(), named)
    session.cast("--screen", named.name)
    reaches_the_last_pixel(session, named)


def test_touches_go_to_the_output_that_is_named(make_session):
    touches_go_to_the_output_that_is_named(make_session, 1)


def test_touches_go_to_a_named_output_at_scale_1_5(make_session):
    touches_go_to_the_output_that_is_named(make_session, 1.5)


def test_touches_go_to_a_named_output_at_scale_2(make_session):
    touches_go_to_the_output_that_is_named(make_session, 2)


def taps_land_on_the_only_output(make_session, scale):
    only = wayland.Output(mode="1920x1080", scale=scale)
    session = make_session(only)
    session.cast()
    reaches_the_last_pixel(session, only)


def test_taps_land_on_an_only_output_at_scale_1_5(make_session):
    taps_land_on_the_only_output(make_session, 1.5)


def test_taps_land_on_an_only_output_at_scale_2(make_session):
    taps_land_on_the_only_output(make_session, 2)


def test_a_file_is_picked_in_the_dialog(make_session, output):
    session = make_session()
    session.cast()
    file = note(output)
    session.app.pick_file(file)
    is_uploaded(session, file)


def test_a_file_is_dropped_from_another_program(make_session, output):
    session = make_session()
    session.cast()
    file = note(output)
    session.desktop.tell('for_window [title="^drag-source$"] floating enable')
    source = session.processes.start([session.programs / "drag-source", file],
                                     environment={"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "0"})
    wait_until(lambda: "ready" in source.output() and session.desktop.windows("drag-source"), "the other program's window")
    session.desktop.tell('[title="^drag-source$"] move position 0 0')
    area = session.app.window.find("label", "Drag and drop a file here to send it to the panel").center()
    session.desktop.drag((20, 20), area, lambda: "started" in source.output(), lambda: "would copy" in source.output())
    wait_until(lambda: "ended copy" in source.output(), "the end of the drag")
    is_uploaded(session, file)


def note(folder):
    file = folder / "note.pdf"
    file.write_bytes(b"%PDF-1.4 a note\n")
    return file


def is_uploaded(session, file):
    session.app.expect_alert(UPLOADED, timeout=20)
    session.app.window.dismiss_alert()
    assert session.panel.state()["uploads"]["list"][-1]["size"] == file.stat().st_size


def test_a_second_start_brings_the_running_program_to_the_front_with_its_token(make_session):
    session = make_session()
    session.desktop.tell("focus_on_window_activation focus")
    session.start()
    session.desktop.tell("workspace 2")
    launcher = session.processes.start([session.programs / "pointer-reporter"], name="launcher")
    wait_until(lambda: "ready" in launcher.output(), "another program's window", 30)
    token = wait_until(lambda: re.search(r"^token (\S+)$", launcher.output(), re.MULTILINE), "a token")[1]
    for environment, title in (({}, "Touches"), ({"XDG_ACTIVATION_TOKEN": token}, "Panel Companion")):
        second = session.processes.start([session.programs / "panel-companion"], name="second", environment=environment)
        assert second.wait() == 0
        wait_until(lambda title=title: session.desktop.focused_window() == title, f"the focus in {title}", 20)


def test_an_alert_behind_another_program_asks_for_attention(make_session):
    session = make_session()
    session.start()
    session.app.pair(session.panel)
    session.desktop.tell("workspace 2")
    other = session.processes.start([session.programs / "pointer-reporter"])
    wait_until(lambda: "ready" in other.output(), "another program's window", 30)
    assert not session.desktop.urgent_windows()
    session.app.window.press("Cast")
    session.app.expect_alert(ENABLED)
    assert wait_until(session.desktop.urgent_windows, "a window that asks for attention", 20) == ["Panel Companion"]
