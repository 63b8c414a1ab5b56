"""Works the application's screens with a real pointer and a real keyboard, and reads them through the accessibility bus."""

import pathlib
import subprocess
import time

import pytest
from harness import mdns, network
from harness.companion import ENABLED, Companion
from harness.desktop import ClickWindow, Desktop
from harness.panel import Panel
from harness.processes import Processes, wait_until

PANELS = ["Meridian 65|Room 204|7F000001", "Tandem 86|Physics lab|7F000002", "Meridian 65|Hall|7F000003"]
WINDOW = "Panel Companion"


def xdotool(*arguments):
    done = subprocess.run(["xdotool", *map(str, arguments)], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                          text=True, check=False, timeout=10)
    return done.stdout.split()


def keys(*names):
    xdotool("key", "--delay", "40", *names)


class Screens:
    def __init__(self, processes, programs, output):
        self.processes, self.programs, self.output = processes, programs, output
        self.desktop = Desktop(processes)
        from harness import accessibility  # noqa: F401  # so that its bus runs before the application looks for it
        self.panel = Panel(processes, programs / "panel-simulator", name="Room 204", arguments=["--no-announce"])
        self.app = None

    def start(self, wrapper=(), environment=None):
        options = [part for panel in PANELS for part in ("--panel", panel)]
        program, *arguments = [*wrapper, self.programs / "panel-companion", *options]
        self.app = Companion(self.processes, self.desktop, program, arguments, environment)

    def click(self, name):
        self.desktop.click(*self.app.window.find(name=name).center())

    def click_row(self, name):
        self.desktop.click(*self.app.wait_for_row(name).center())

    def open_list(self):
        self.click("Devices")
        self.app.window.find("list", "Panels")

    def list_is_open(self):
        return self.app.window.is_showing("list", "Panels")

    def expect_list_closed(self):
        self.app.window.gone("list", "Panels", timeout=3)

    def expect_status(self, text):
        self.app.window.find("label", text, timeout=3)

    def pair(self):
        self.open_list()
        self.click_row("Room 204")
        self.expect_status("Paired to 7F000001")
        self.click("Devices")
        self.expect_list_closed()

    def expect_picked(self, name):
        """What a screen reader says of the rows: that one is picked, or none."""
        for panel in PANELS:
            row = self.app.wait_for_row(panel.split("|")[1])
            is_picked = name is not None and row.name.startswith(name)
            assert (row.has("checked"), row.description) == (is_picked, "Picked" if is_picked else ""), row.name

    def main_windows(self):
        """X's ids of the windows of that title, whatever they show."""
        return xdotool("search", "--onlyvisible", "--name", f"^{WINDOW}$")

    def close_window(self):
        """By the button in its title bar: a key would go to whatever has the focus just then."""
        window = self.main_windows()[0]
        geometry = dict(line.split("=") for line in xdotool("getwindowgeometry", "--shell", window))
        xdotool("mousemove", "--window", window, int(geometry["WIDTH"]) - 10, -10, "click", 1)

    def focused(self):
        """The name of what the keyboard works; a row counts as its list, as it says so in a closed popover, too."""
        found = [e for e in self.app.window.find_all() if e.has("focused") and e.role != "list item"]
        return found[-1].name if found else None

    def tab(self):
        """The name of what the keyboard works after another press of Tab."""
        before = self.focused()
        keys("Tab")
        return wait_until(lambda: self.focused() not in (None, before) and self.focused(), f"Tab leaves {before}")

    def wake_ups(self, seconds):
        """Of all threads: how often one of them waited for something, proc(5)."""
        def count():
            total = 0
            for task in pathlib.Path(f"/proc/{self.app.process.pid}/task").iterdir():
                status = (task / "status").read_text(encoding="ascii")
                total += int(status.split("voluntary_ctxt_switches:")[1].split()[0])
            return total
        before = count()
        time.sleep(seconds)
        return count() - before


@pytest.fixture
def screens(programs, output, has_failed):
    network.loopback_up()
    processes = Processes(output)
    screens = Screens(processes, programs, output)
    yield screens
    if has_failed():
        screens.desktop.screenshot(output / "failed.png")
        if screens.app:
            print(screens.app.window.describe())
    processes.end()


def test_splash_hands_its_window_over_after_two_seconds(screens):
    from harness.accessibility import Program  # only where there is a desktop there is a bus for it
    process = screens.processes.start([screens.programs / "panel-companion"], name="splash")
    began = time.monotonic()
    window = Program(WINDOW)
    window.find("label", "Cast, touch and send files to your panel", timeout=2)
    splash = screens.main_windows()
    window.find("push button|button", "Devices", timeout=5)
    seconds = time.monotonic() - began
    dashboard = screens.main_windows()
    assert len(splash) == 1 and splash == dashboard, f"windows {splash} became {dashboard}"
    assert 1.9 <= seconds <= 4, f"after {seconds:.1f} s"
    print(f"window {splash[0]}, {seconds:.1f} s after the start")


def test_closing_the_splash_ends_the_program(screens):
    process = screens.processes.start([screens.programs / "panel-companion"], name="splash")
    wait_until(screens.main_windows, "the window")
    screens.close_window()
    assert process.wait(1.5) == 0, f"status {process.status()}"


def test_closing_the_dashboard_ends_the_program(screens):
    screens.start()
    screens.close_window()
    assert screens.app.process.wait(5) == 0, f"status {screens.app.process.status()}"


def test_closing_with_an_open_popover_ends_the_program(screens):
    screens.start()
    screens.pair()
    screens.open_list()
    screens.close_window()
    assert screens.app.process.wait(5) == 0, f"status {screens.app.process.status()}"


def test_pick_repick_and_disconnect(screens):
    screens.start()
    screens.open_list()
    assert not screens.app.window.is_showing(name="Disconnect"), "Disconnect is there before a pick"
    screens.expect_picked(None)
    screens.click_row("Room 204")
    screens.expect_status("Paired to 7F000001")
    screens.expect_picked("Room 204")
    screens.app.window.find(name="Disconnect")
    screens.click_row("Hall")
    screens.expect_status("Paired to 7F000003")
    screens.expect_picked("Hall")
    screens.click("Disconnect")
    screens.expect_status("*No Device Connected")
    screens.expect_picked(None)
    screens.app.window.gone(name="Disconnect")
    screens.click_row("Hall")
    screens.expect_status("Paired to 7F000003")


def test_the_list_keeps_its_rows_and_its_pick(screens):
    screens.start()
    screens.pair()
    screens.open_list()
    for panel in PANELS:
        name, address = panel.split("|")[1:]
        screens.app.window.find("list item", f"{name}, {address}")
    screens.app.window.find(name="Disconnect")


def test_a_click_below_the_rows_leaves_the_pairing(screens):
    screens.start()
    screens.open_list()
    screens.click_row("Room 204")
    x, y, width, height = screens.app.window.find("list", "Panels").area()
    screens.desktop.click(x + width // 2, y + height - 8)
    screens.expect_status("Paired to 7F000001")
    assert screens.list_is_open(), "the list closed"
    screens.click_row("Room 204")  # no row is picked any more, so this is a new pick
    screens.app.window.find(name="Disconnect")


def test_settings_are_kept(screens):
    screens.start()
    screens.click("Settings")
    screens.app.window.find("combo box", "Frame rate")
    keys("Down", "Down", "Tab", "Down")
    keys("Escape")
    screens.app.window.gone("combo box", "Frame rate")
    screens.click("Settings")
    rate = screens.app.window.find("combo box", "Frame rate").description
    resolution = screens.app.window.find("combo box", "Resolution").description
    assert (rate, resolution) == ("30", "720P"), f"it shows {rate} and {resolution}"


def test_a_click_into_the_window_closes_the_popover(screens):
    screens.start()
    screens.open_list()
    x, y, width, height = screens.app.window.find("frame", WINDOW).area()
    screens.desktop.click(x + width - 40, y + height - 40)
    screens.expect_list_closed()


def test_a_second_click_on_the_icon_closes_the_popover(screens):
    screens.start()
    screens.open_list()
    screens.click("Devices")
    screens.expect_list_closed()
    time.sleep(0.3)
    assert not screens.list_is_open(), "it opened again"


def test_escape_closes_the_popover(screens):
    screens.start()
    screens.open_list()
    keys("Escape")
    screens.expect_list_closed()


def test_the_popover_stays_while_another_program_is_used(screens):
    screens.start()
    other = ClickWindow(screens.desktop, screens.processes, screens.desktop.width - 180, screens.desktop.height - 140, 160, 100)
    screens.open_list()
    screens.desktop.click(other.x + 80, other.y + 50)
    wait_until(lambda: other.presses(), "the other program's click")
    time.sleep(0.5)
    assert screens.list_is_open(), "it closed"
    screens.click_row("Hall")
    screens.expect_status("Paired to 7F000003")


def test_an_alert_blocks_clicks_and_return_and_escape_close_it(screens):
    screens.start()
    screens.pair()
    screens.click("Cast")
    screens.app.expect_alert(ENABLED)
    screens.click("Settings")
    keys("Return")
    screens.app.window.gone("alert|dialog")
    assert not screens.app.window.is_showing("combo box"), "the settings opened under the alert"
    screens.click("Cast")
    screens.app.window.find("alert|dialog")
    keys("Escape")
    screens.app.window.gone("alert|dialog")


def test_the_keyboard_alone_pairs_and_casts(screens):
    screens.start()
    xdotool("windowfocus", "--sync", screens.main_windows()[0])
    order = [screens.tab() for _ in range(4)]
    start = order.index("Devices") if "Devices" in order else 0
    assert (sorted(order[:3]) == ["Connect", "Devices", "Settings"]
           and [*order, *order][start:start + 3] == ["Devices", "Settings", "Connect"]), f"Tab went to {order}"
    while screens.focused() != "Devices":
        screens.tab()
    keys("space")
    screens.app.window.find("list", "Panels")
    keys("Down", "Return")
    status = wait_until(lambda: [e for e in screens.app.window.find_all("label") if e.name.startswith("Paired to")],
                        "a pick")[0].name
    assert (name := screens.tab()) == "Disconnect", f"Tab in the list went to {name}"
    keys("Escape")
    screens.expect_list_closed()
    order = []
    while len(order) < 6 and (not order or order[-1] != "Cast"):
        order.append(screens.tab())
    assert order[-1] == "Cast", f"Tab went to {order}"
    keys("space")
    screens.app.expect_alert(ENABLED)
    keys("Return")
    screens.app.window.gone("alert|dialog")
    assert screens.app.is_casting(), "casting has not started"
    print(f"{status}; Tab went to {', '.join(order)}")


def test_the_status_label_announces_each_change_once(screens):
    from harness.accessibility import Announcements
    screens.start()
    with Announcements() as announcements:
        screens.open_list()
        screens.click_row("Room 204")
        wait_until(lambda: ("label", "Paired to 7F000001") in announcements.take(), "an announcement", 5, 0.01)
        time.sleep(0.5)
        times = announcements.take().count(("label", "Paired to 7F000001"))
        assert times == 1, f"it was announced {times} times"


def test_nothing_wakes_up_while_idle(screens):
    screens.start()
    time.sleep(2)
    count = screens.wake_ups(5)
    assert count <= 2, f"{count} wake-ups in 5 s"
    print(f"{count} wake-ups in 5 s")


def test_few_wake_ups_while_the_heartbeat_runs(screens):
    # As on a desktop: there is a system bus, and lines go to something that takes them at once.
    bus = mdns.SystemBus(screens.processes, screens.output)
    screens.start(["sh", "-c", 'exec "$0" "$@" >/dev/null 2>&1'], {"DBUS_SYSTEM_BUS_ADDRESS": bus.address})
    screens.pair()
    screens.click("Cast")
    screens.app.window.dismiss_alert()
    time.sleep(3)
    # Four heartbeats, each of about three waits of the HTTP thread and one for each destination of its lines.
    count = screens.wake_ups(16)
    assert count <= 32, f"the program's threads waited {count} times in 16 s"
    print(f"the program's threads waited {count} times in 16 s")
