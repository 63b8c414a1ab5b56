"""What follows a fatal error of the running program: a heartbeat's answer that is not UTF-8."""

import pathlib
import signal

import pytest
from harness import network
from harness.companion import Companion
from harness.desktop import Desktop
from harness.panel import Panel
from harness.processes import Processes, wait_until

ABORTED = 128 + signal.SIGABRT


class Room:
    def __init__(self, programs, folder):
        network.loopback_up()
        self.programs = programs
        self.processes = Processes(folder)
        self.desktop = Desktop(self.processes)
        self.panel = Panel(self.processes, programs / "panel-simulator", name="Room 204", arguments=["--no-announce"])
        self.first = None

    def start(self, *options, **settings):
        self.first = Companion(self.processes, self.desktop, self.programs / "panel-companion",
                               ["--panel", self.panel.service_name, *options], **settings)

    def fail(self, companion):
        companion.pair(self.panel)
        companion.start_casting()
        self.panel.reply("invalid")

    def fail_first(self):
        self.fail(self.first)
        assert self.first.process.wait(15) == ABORTED, f"it ended with status {self.first.process.status()}"

    def restarted(self):
        """The fresh run's window, which shows the alert."""
        self.panel.reply("ok")
        return self.first.of_fresh_run()

    def runs(self):
        """The process ids of what runs in the session of the first run, whose own process is not reaped yet."""
        found = []
        for folder in pathlib.Path("/proc").iterdir():
            try:
                state, _, _, session = (folder / "stat").read_text(encoding="utf-8").rsplit(")", 1)[1].split()[:4]
            except (OSError, ValueError):
                continue
            if int(session) == self.first.process.pid and state != "Z":
                found.append(int(folder.name))
        return found


@pytest.fixture
def room(programs, output, has_failed):
    room = Room(programs, output)
    yield room
    if has_failed():
        room.desktop.screenshot(output / "failed.png")
    room.processes.end()


def command_line(pid):
    return pathlib.Path(f"/proc/{pid}/cmdline").read_bytes()


def test_a_fresh_run_with_the_same_options_says_why_the_program_had_to_stop(room):
    room.start("--touch-from", "panel", restarts=True)
    options = command_line(room.first.process.pid)
    room.fail_first()
    assert room.first.process.output().count("Fatal error") == 1, "not one line about the error"
    (fresh,) = room.runs()
    assert command_line(fresh) == options
    assert pathlib.Path(f"/proc/{fresh}/comm").read_text(encoding="utf-8") == "panel-companion\n"

    companion = room.restarted()
    texts = companion.window.alert_texts(20)
    assert texts[0] == "Panel Companion had to stop", f"the alert says {texts}"
    assert any("The panel sent an answer that is not text." in text for text in texts), f"the alert says {texts}"
    companion.window.dismiss_alert()
    companion.pair(room.panel)


def test_a_second_fatal_error_within_a_minute_is_the_end(room):
    room.start(restarts=True)
    room.fail_first()
    companion = room.restarted()
    companion.expect_alert("Panel Companion had to stop", 20)
    companion.window.dismiss_alert()
    room.fail(companion)
    wait_until(lambda: not room.runs(), "the end of the fresh run", 15)
    assert room.first.process.output().count("Fatal error") == 2


def test_no_restart_leaves_it_at_the_fatal_error(room):
    room.start("--no-restart", restarts=True)
    room.fail_first()
    assert not room.runs()


def test_a_program_that_a_signal_ends_stays_ended(room):
    room.start(restarts=True)
    room.first.pair(room.panel)
    room.first.process.send(signal.SIGTERM)
    assert room.first.process.wait(10) == 0
    assert not room.runs()
