"""One running program for each desktop session: what a second start and the desktop ask of it over the session bus."""

import os
import pathlib
import signal
import subprocess

import pytest
from gi.repository import Gio, GLib
from harness import network
from harness.companion import UPLOADED, Companion
from harness.desktop import Desktop
from harness.panel import Panel
from harness.processes import Processes, wait_until

NAME, PATH, INTERFACE = "arpa.home.PanelCompanion", "/arpa/home/PanelCompanion", "org.freedesktop.Application"
TITLE = "Panel Companion"
BUS_WITHOUT_SOCKET = {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"}


class Session:
    def __init__(self, programs, folder):
        network.loopback_up()
        self.program, self.folder = programs / "panel-companion", folder
        self.processes = Processes(folder)
        self.uploads = folder / "uploads"
        self.uploads.mkdir()
        self._allow_activation()
        self.desktop = Desktop(self.processes)
        self.panel = Panel(self.processes, programs / "panel-simulator", name="Room 204",
                           arguments=["--no-announce", "--uploads", self.uploads])
        self.companion = None

    def _allow_activation(self):
        """The bus starts this build's program by its service file."""
        services = pathlib.Path(os.environ["XDG_RUNTIME_DIR"]) / "dbus-1/services"
        services.mkdir(parents=True, exist_ok=True)
        (services / f"{NAME}.service").write_text(
            f"[D-BUS Service]\nName={NAME}\nExec={self.program} --no-restart --panel 'Meridian 65|Room 204|7F000001'\n",
            encoding="utf-8")

    def start(self, *options, **settings):
        self.companion = Companion(self.processes, self.desktop, self.program,
                                   ["--panel", self.panel.service_name, *options], **settings)
        return self.companion

    def start_again(self, *arguments, environment=None):
        return subprocess.run([self.program, *arguments], cwd=self.folder, check=False, timeout=30, text=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              env={**os.environ, **(environment or {})})

    def ask(self, method, arguments):
        bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        return bus.call_sync(NAME, PATH, INTERFACE, method, arguments, None, Gio.DBusCallFlags.NONE, 20_000)

    def file(self, name):
        path = self.folder / name
        path.write_bytes(os.urandom(70_001))
        return path

    def pick_panel(self):
        """In the list that has opened by itself; the alert about what is sent then comes over it."""
        self.companion.wait_for_row(self.panel.name)
        self.desktop.click(*self.companion.row(self.panel.name).center())

    def sent(self):
        return [upload["srcfilename"] for upload in self.panel.state()["uploads"]["list"]]

    def expect_waiting(self, sentence):
        self.companion.window.find("label", sentence)
        self.companion.window.find("list|table", "Panels")


@pytest.fixture
def session(programs, output, has_failed):
    session = Session(programs, output)
    yield session
    if has_failed():
        session.desktop.screenshot(output / "failed.png")
    session.processes.end()


def test_files_of_a_second_start_are_sent_one_after_the_other_by_the_running_program(session):
    companion = session.start()
    companion.pair(session.panel)
    session.desktop.minimize(TITLE)
    wait_until(lambda: session.desktop.active_window_name() != TITLE, "the window is minimised")
    session.file("a.png"), session.file("plan b.pdf")
    second = session.start_again("a.png", session.folder / "plan b.pdf", session.folder / "gone.doc")
    assert (second.returncode, second.stderr) == (0, "")
    wait_until(lambda: session.desktop.active_window_name() == TITLE, "the window is in front again")
    for name in ("a.png", "plan b.pdf"):
        wait_until(lambda name=name: session.sent()[-1:] == [name], f"{name} arrives")
        companion.expect_alert(UPLOADED, 10)
        companion.window.press("OK")
    wait_until(lambda: '"gone.doc" cannot be read.' in companion.window.alert_texts(), "the alert that comes at once")
    assert session.sent() == ["a.png", "plan b.pdf"]
    assert session.desktop.visible_windows(TITLE) == 2, "more than the window and its alert"


def test_without_a_panel_the_files_wait_for_the_one_that_is_picked(session):
    companion = session.start()
    session.file("plan.pdf")
    assert session.start_again("plan.pdf").returncode == 0
    session.expect_waiting('"plan.pdf" will be sent to the panel that you pick.')
    session.file("b.png")
    assert session.start_again("b.png").returncode == 0
    session.expect_waiting("2 files will be sent to the panel that you pick.")
    assert session.sent() == []
    session.pick_panel()
    for _ in range(2):
        companion.expect_alert(UPLOADED, 10)
        companion.window.dismiss_alert()
    assert session.sent() == ["plan.pdf", "b.png"]


def test_files_of_the_first_start_wait_for_a_panel_too(session):
    session.start(session.file("plan.pdf"))
    session.expect_waiting('"plan.pdf" will be sent to the panel that you pick.')


def test_a_desktop_has_the_bus_start_the_program_with_files(session):
    subprocess.run(["dbus-update-activation-environment", "--all"], check=True, timeout=10)
    url = session.file("plan.pdf").as_uri()
    session.ask("Open", GLib.Variant("(asa{sv})", ([url], {})))
    from harness.accessibility import Program
    window = Program(TITLE)
    window.find("label", '"plan.pdf" will be sent to the panel that you pick.', timeout=15)
    session.ask("Activate", GLib.Variant("(a{sv})", ({},)))
    with pytest.raises(GLib.Error, match="no action"):
        session.ask("ActivateAction", GLib.Variant("(sava{sv})", ("explode", [], {})))
    assert session.desktop.visible_windows(TITLE) == 1


def test_a_url_of_another_computer_is_refused_with_a_sentence(session):
    companion = session.start()
    assert session.start_again("smb://server/plan.pdf").returncode == 0
    companion.expect_alert('"smb://server/plan.pdf" is not a file on this computer.')


def test_options_of_a_second_start_do_not_count_and_are_answered(session):
    session.start()
    told = session.start_again("--touch-from", "panel")
    assert told.returncode == 0
    assert "it runs already, with the options that it was started with" in told.stderr
    assert session.start_again("--version").stdout.startswith("panel-companion ")
    assert session.start_again("--help").stdout.startswith("Usage: panel-companion [OPTION]... [FILE]...\n")
    assert session.start_again("--colour").returncode == 2
    assert session.desktop.visible_windows(TITLE) == 1


def test_a_new_instance_leaves_the_running_program_alone(session):
    session.start()
    session.processes.start([session.program, "--no-restart", "--new-instance"], name="another")
    wait_until(lambda: session.desktop.visible_windows(TITLE) == 2, "a second window", 20)


def test_without_a_session_bus_every_start_is_a_program_of_its_own(session):
    for count in (1, 2):
        session.processes.start([session.program, "--no-restart"], environment=BUS_WITHOUT_SOCKET)
        wait_until(lambda count=count: session.desktop.visible_windows(TITLE) == count, f"{count} windows", 20)


def test_a_running_program_that_does_not_answer_is_told(session):
    companion = session.start()
    companion.process.send(signal.SIGSTOP)
    second = session.start_again()
    companion.process.send(signal.SIGCONT)
    assert second.returncode == 1
    assert "it runs already, but does not answer" in second.stderr


def test_a_fresh_run_after_a_fatal_error_takes_the_files_of_later_starts_and_not_its_own(session):
    """Its command line names a file that the run before it took."""
    first = session.start(session.file("old.pdf"), restarts=True)
    session.pick_panel()
    first.expect_alert(UPLOADED, 10)
    first.window.dismiss_alert()
    first.close_list()
    first.start_casting()
    session.panel.reply("invalid")
    first.process.wait(15)
    session.panel.reply("ok")
    fresh = first.of_fresh_run()
    fresh.window.dismiss_alert()
    assert not fresh.window.is_showing("label", '"old.pdf" will be sent to the panel that you pick.')
    session.file("plan.pdf")
    assert session.start_again("plan.pdf").returncode == 0
    fresh.window.find("label", '"plan.pdf" will be sent to the panel that you pick.')
