#!/usr/bin/python3
"""Works the application's screens with a real pointer and a real keyboard, and reads them through the accessibility bus."""

import argparse
import pathlib
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))
from harness import mdns, network  # noqa: E402
from harness.companion import ENABLED, Companion  # noqa: E402
from harness.desktop import ClickWindow, Desktop  # noqa: E402
from harness.panel import Panel  # noqa: E402
from harness.processes import Failure, Processes, wait_until  # noqa: E402
from harness.report import Report  # noqa: E402

PANELS = ["Meridian 65|Room 204|7F000001", "Tandem 86|Physics lab|7F000002", "Meridian 65|Hall|7F000003"]
WINDOW = "Panel Companion"


def xdotool(*arguments):
    done = subprocess.run(["xdotool", *map(str, arguments)], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                          text=True, check=False, timeout=10)
    return done.stdout.split()


def keys(*names):
    xdotool("key", "--delay", "40", *names)


def expect(condition, what):
    if not condition:
        raise Failure(what)


class Screens:
    def __init__(self, processes, programs, output):
        self.processes, self.programs, self.output = processes, programs, output
        self.desktop = Desktop(processes)
        from harness import accessibility  # noqa: F401  # so that its bus runs before the application looks for it
        self.panel = Panel(processes, programs / "panel-simulator", name="Room 204", arguments=["--no-announce"])
        self.app = None
        self.splash = None

    # What scenarios are made of.

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

    def main_windows(self):
        """X's ids of the windows of that title, whatever they show."""
        return xdotool("search", "--onlyvisible", "--name", f"^{WINDOW}$")

    def close_window(self):
        """As the user does, by the window manager."""
        xdotool("windowfocus", "--sync", self.main_windows()[0])
        keys("alt+F4")

    def title_bar(self):
        """A point of the window's title bar, above its contents."""
        x, y, width, _ = self.app.window.find("frame", WINDOW).area()
        return x + width // 2, y - 10

    def focused(self):
        """The name of what the keyboard works; a row counts as its list, as it says so in a closed popover, too."""
        time.sleep(0.15)
        found = [e for e in self.app.window.find_all() if e.has("focused") and e.role != "list item"]
        return found[-1].name if found else None

    # Scenarios.

    def splash_hands_its_window_over_after_two_seconds(self):
        from harness.accessibility import Program  # only where there is a desktop there is a bus for it
        self.splash = self.processes.start([self.programs / "panel-companion"], name="splash")
        began = time.monotonic()
        window = Program(WINDOW)
        window.find("label", "Your computer at the panel", timeout=2)
        splash = self.main_windows()
        window.find("push button|button", "Devices", timeout=5)
        seconds = time.monotonic() - began
        dashboard = self.main_windows()
        expect(len(splash) == 1 and splash == dashboard, f"windows {splash} became {dashboard}")
        expect(1.9 <= seconds <= 4, f"after {seconds:.1f} s")
        return f"window {splash[0]}, {seconds:.1f} s after the start"

    def closing_the_splash_ends_the_program(self):
        self.splash = self.processes.start([self.programs / "panel-companion"], name="splash")
        wait_until(self.main_windows, "the window")
        self.close_window()
        expect(self.splash.wait(1.5) == 0, f"status {self.splash.status()}")

    def closing_the_dashboard_ends_the_program(self):
        self.start()
        self.close_window()
        expect(self.app.process.wait(5) == 0, f"status {self.app.process.status()}")

    def closing_with_an_open_popover_ends_the_program(self):
        self.start()
        self.pair()
        self.open_list()
        self.close_window()
        expect(self.app.process.wait(5) == 0, f"status {self.app.process.status()}")

    def pick_repick_and_disconnect(self):
        self.start()
        self.open_list()
        expect(not self.app.window.is_showing(name="Disconnect"), "Disconnect is there before a pick")
        self.click_row("Room 204")
        self.expect_status("Paired to 7F000001")
        self.app.window.find(name="Disconnect")
        self.click_row("Hall")
        self.expect_status("Paired to 7F000003")
        self.click("Disconnect")
        self.expect_status("*No Device Connected")
        self.app.window.gone(name="Disconnect")
        self.click_row("Hall")
        self.expect_status("Paired to 7F000003")

    def the_list_keeps_its_rows_and_its_pick(self):
        self.start()
        self.pair()
        self.open_list()
        for panel in PANELS:
            name, address = panel.split("|")[1:]
            self.app.window.find("list item", f"{name}, {address}")
        self.app.window.find(name="Disconnect")

    def a_click_below_the_rows_leaves_the_pairing(self):
        self.start()
        self.open_list()
        self.click_row("Room 204")
        x, y, width, height = self.app.window.find("list", "Panels").area()
        self.desktop.click(x + width // 2, y + height - 8)
        self.expect_status("Paired to 7F000001")
        expect(self.list_is_open(), "the list closed")
        self.click_row("Room 204")  # no row is picked any more, so this is a new pick
        self.app.window.find(name="Disconnect")

    def settings_are_kept(self):
        self.start()
        self.click("Settings")
        self.app.window.find("combo box", "Frame rate")
        keys("Down", "Down", "Tab", "Down")
        keys("Escape")
        self.app.window.gone("combo box", "Frame rate")
        self.click("Settings")
        rate = self.app.window.find("combo box", "Frame rate").description
        resolution = self.app.window.find("combo box", "Resolution").description
        expect((rate, resolution) == ("30", "720P"), f"it shows {rate} and {resolution}")

    def a_click_into_the_window_closes_the_popover(self):
        self.start()
        self.open_list()
        x, y, width, height = self.app.window.find("frame", WINDOW).area()
        self.desktop.click(x + width - 40, y + height - 40)
        self.expect_list_closed()

    def a_click_on_the_title_bar_closes_the_popover(self):
        self.start()
        self.open_list()
        self.desktop.click(*self.title_bar())
        self.expect_list_closed()

    def a_second_click_on_the_icon_closes_the_popover(self):
        self.start()
        self.open_list()
        self.click("Devices")
        self.expect_list_closed()
        time.sleep(0.3)
        expect(not self.list_is_open(), "it opened again")

    def escape_closes_the_popover(self):
        self.start()
        self.open_list()
        keys("Escape")
        self.expect_list_closed()

    def the_popover_stays_while_another_program_is_used(self):
        self.start()
        other = ClickWindow(self.desktop, self.processes, self.desktop.width - 180, self.desktop.height - 140, 160, 100)
        self.open_list()
        self.desktop.click(other.x + 80, other.y + 50)
        wait_until(lambda: other.presses(), "the other program's click")
        time.sleep(0.5)
        expect(self.list_is_open(), "it closed")
        self.click_row("Hall")
        self.expect_status("Paired to 7F000003")

    def an_alert_blocks_clicks_and_return_and_escape_close_it(self):
        self.start()
        self.pair()
        self.click("Cast")
        self.app.expect_alert(ENABLED)
        self.click("Settings")
        time.sleep(0.5)
        expect(not self.app.window.is_showing("combo box"), "the settings opened under the alert")
        keys("Return")
        self.app.window.gone("alert|dialog")
        self.click("Cast")
        self.app.window.find("alert|dialog")
        keys("Escape")
        self.app.window.gone("alert|dialog")

    def the_keyboard_alone_pairs_and_casts(self):
        self.start()
        xdotool("windowfocus", "--sync", self.main_windows()[0])
        order = []
        for _ in range(4):
            keys("Tab")
            order.append(self.focused())
        start = order.index("Devices") if "Devices" in order else 0
        expect(sorted(order[:3]) == ["Connect", "Devices", "Settings"]
               and [*order, *order][start:start + 3] == ["Devices", "Settings", "Connect"], f"Tab went to {order}")
        while self.focused() != "Devices":
            keys("Tab")
        keys("space")
        self.app.window.find("list", "Panels")
        keys("Down", "Return")
        status = wait_until(lambda: [e for e in self.app.window.find_all("label") if e.name.startswith("Paired to")],
                            "a pick")[0].name
        keys("Tab")
        expect(self.focused() == "Disconnect", f"Tab in the list went to {self.focused()}")
        keys("Escape")
        self.expect_list_closed()
        order = []
        while len(order) < 6 and (not order or order[-1] != "Cast"):
            keys("Tab")
            order.append(self.focused())
        expect(order[-1] == "Cast", f"Tab went to {order}")
        keys("space")
        self.app.expect_alert(ENABLED)
        keys("Return")
        self.app.window.gone("alert|dialog")
        expect(self.app.is_casting(), "casting has not started")
        return f"{status}; Tab went to {', '.join(order)}"

    def the_status_label_announces_each_change_once(self):
        from gi.repository import Atspi, GLib
        self.start()
        heard = []
        listener = Atspi.EventListener.new(lambda event, *_: heard.append((event.source.get_role_name(), event.source.get_name())))
        listener.register("object:property-change:accessible-name")
        try:
            self.open_list()
            self.click_row("Room 204")

            def times():
                while GLib.MainContext.default().iteration(False):
                    pass
                return heard.count(("label", "Paired to 7F000001"))
            wait_until(times, f"an announcement; heard was {heard}", 5, 0.01)
            time.sleep(0.5)
            expect(times() == 1, f"it was announced {times()} times")
        finally:
            listener.deregister("object:property-change:accessible-name")

    def nothing_wakes_up_while_idle(self):
        self.start()
        time.sleep(2)
        count = self.wake_ups(5)
        expect(count <= 2, f"{count} wake-ups in 5 s")
        return f"{count} wake-ups in 5 s"

    def few_wake_ups_while_the_heartbeat_runs(self):
        # As on a desktop: there is a system bus, and lines go to something that takes them at once.
        bus = mdns.SystemBus(self.processes, self.output)
        self.start(["sh", "-c", 'exec "$0" "$@" >/dev/null 2>&1'], {"DBUS_SYSTEM_BUS_ADDRESS": bus.address})
        self.pair()
        self.click("Cast")
        self.app.window.dismiss_alert()
        time.sleep(3)
        count = self.wake_ups(16)
        expect(count <= 16, f"the program's threads waited {count} times in 16 s")
        return f"the program's threads waited {count} times in 16 s"

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


SCENARIOS = [
    "splash_hands_its_window_over_after_two_seconds", "closing_the_splash_ends_the_program",
    "closing_the_dashboard_ends_the_program", "closing_with_an_open_popover_ends_the_program",
    "pick_repick_and_disconnect", "the_list_keeps_its_rows_and_its_pick", "a_click_below_the_rows_leaves_the_pairing",
    "settings_are_kept", "a_click_into_the_window_closes_the_popover", "a_click_on_the_title_bar_closes_the_popover",
    "a_second_click_on_the_icon_closes_the_popover", "escape_closes_the_popover",
    "the_popover_stays_while_another_program_is_used", "an_alert_blocks_clicks_and_return_and_escape_close_it",
    "the_keyboard_alone_pairs_and_casts", "the_status_label_announces_each_change_once", "nothing_wakes_up_while_idle",
    "few_wake_ups_while_the_heartbeat_runs"]


def play(arguments):
    """One scenario; prints what was seen or what went wrong."""
    processes = Processes(arguments.output)
    network.loopback_up()
    screens = Screens(processes, arguments.programs, arguments.output)
    try:
        print(getattr(screens, arguments.scenarios[0])() or "")
        return 0
    except Exception as problem:  # pylint: disable=broad-except  # whatever it is, the scenario failed
        print(problem if isinstance(problem, Failure) else repr(problem))
        screens.desktop.screenshot(arguments.output / "failed.png")
        if screens.app:
            print(screens.app.window.describe())
        return 1
    finally:
        processes.end()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", required=True, type=pathlib.Path, help="the folder of the built programs")
    parser.add_argument("--output", required=True, type=pathlib.Path, help="for screenshots and logs")
    parser.add_argument("--inside", action="store_true", help="play the one scenario, without the protocol")
    parser.add_argument("scenarios", nargs="*", help="all of them where none is named")
    arguments = parser.parse_args()

    if arguments.inside:
        return play(arguments)
    report = Report(as_tap=True)
    for name in arguments.scenarios or SCENARIOS:
        # A desktop of its own for each: what one leaves behind disturbs no other.
        done = subprocess.run([sys.executable, __file__, "--inside", "--programs", arguments.programs, "--output",
                               arguments.output / name, name], stdout=subprocess.PIPE, text=True, check=False)
        tell = report.failed if done.returncode else report.passed
        tell(name.replace("_", " "), done.stdout.strip())
    return report.end()


sys.exit(main())
