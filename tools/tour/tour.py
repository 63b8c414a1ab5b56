#!/usr/bin/python3
"""Plays a session on a virtual desktop: finds the simulated panel, pairs, casts, touches, stops, sends a file. Prints what was
seen at each step; the exit status is 0 only if every step happened."""

import argparse
import os
import pathlib
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))
from harness import mdns, network  # noqa: E402
from harness.companion import DISABLED, ENABLED, UPLOADED, Companion  # noqa: E402
from harness.desktop import ClickWindow, Desktop  # noqa: E402
from harness.panel import Panel, panel_coordinate  # noqa: E402
from harness.processes import Failure, Processes, wait_until  # noqa: E402


class Tour:
    def __init__(self, programs, folder, options):
        self.programs, self.folder, self.options = programs, folder, options
        self.processes = Processes(folder)
        self.desktop = self.panel = self.companion = self.clicks = None
        self.uploads = folder / "uploads"
        self.pictures = 0

    def play(self):
        """Whether every step happened."""
        steps = [self.panel_waits, self.application_starts, self.pictures_drawn, self.panel_found, self.paired,
                 self.instructions, self.touch_enabled, self.pointer_follows, self.drag, self.double_click, self.heartbeat,
                 self.stopped, self.file_sent]
        for step in steps:
            name = step.__name__.replace("_", " ")
            try:
                seen = step()
            except Exception as problem:  # pylint: disable=broad-except  # whatever it is, the step did not happen
                self.picture("failed")
                print(f"  {name:<28} FAILED: {problem if isinstance(problem, Failure) else repr(problem)}", flush=True)
                self.keep_evidence()
                return False
            print(f"  {name:<28} {seen}", flush=True)
        return True

    # Steps, in order. Each returns what was seen, or raises.

    def panel_waits(self):
        network.loopback_up()
        announced = self.reach_mdns()
        self.uploads.mkdir(exist_ok=True)
        self.panel = Panel(self.processes, self.programs / "panel-simulator",
                           arguments=["--uploads", self.uploads] + ([] if announced else ["--no-announce"]))
        if announced:
            return f"announced as {self.panel.service_name}"
        self.options = ["--panel", self.panel.service_name, *self.options]
        return "there is no mDNS here, so the application is told of it by --panel"

    def application_starts(self):
        self.desktop = Desktop(self.processes)
        self.companion = Companion(self.processes, self.desktop, self.programs / "panel-companion", self.options)
        self.picture("dashboard")
        return f"window on a screen of {self.desktop.width}x{self.desktop.height}"

    def pictures_drawn(self):
        """A picture that cannot be drawn leaves its place in one colour, silently."""
        places = {}
        for name in ("Devices", "Settings"):
            x, y = self.companion.window.find(name=name).center()
            places[f"the icon {name!r}"] = (x - 12, y - 12, 24, 24)
        x, y, width, _ = self.companion.window.find("label", "No panel connected").area()
        places["the picture"] = (x + width // 2 - 80, y - 170, 160, 120)
        for name, place in places.items():
            wait_until(lambda place=place: self.desktop.colors(*place) > 4, f"pixels of {name}", 5)
        wait_until(lambda: self.desktop.has_icon("Panel Companion"), "pixels of the window's icon", 5)
        return f"{', '.join(places)}, the window's icon"

    def panel_found(self):
        row = self.companion.wait_for_row(self.panel.name)
        self.picture("panels")
        return row.name

    def paired(self):
        status = self.companion.pair(self.panel)
        self.picture("paired")
        return status

    def instructions(self):
        self.companion.window.press("Cast")
        self.companion.expect_alert(ENABLED)
        self.picture("instructions")
        self.companion.window.dismiss_alert()
        return ENABLED

    def touch_enabled(self):
        def asked():
            return self.panel.touch_enabled_at()
        where = wait_until(asked, "the panel is asked for touches")
        self.picture("casting")
        return f"the panel sends touches to {where}"

    def pointer_follows(self):
        self.clicks = ClickWindow(self.desktop, self.processes, self.desktop.width - 340, self.desktop.height - 260)
        x, y = self.clicks.x + 51, self.clicks.y + 37
        self.touch("DOWN", x, y)
        self.expect_pointer(x, y)
        self.touch("UP", x, y)
        wait_until(lambda: self.clicks.releases() == 1, "the release")
        return f"pressed and released at {x},{y}"

    def drag(self):
        time.sleep(1)  # so that this is no double tap
        start = (self.clicks.x + 40, self.clicks.y + 120)
        end = (self.clicks.x + 233, self.clicks.y + 61)
        self.touch("DOWN", *start)
        self.expect_pointer(*start)
        self.touch("MOVE", *end)
        self.expect_pointer(*end)
        self.touch("UP", *end)
        wait_until(lambda: self.clicks.releases() == 2, "the release")
        return f"from {start[0]},{start[1]} to {end[0]},{end[1]}"

    def double_click(self):
        time.sleep(1)
        x, y = self.clicks.x + 150, self.clicks.y + 90
        before = self.clicks.clicks()
        for _ in range(2):
            self.touch("DOWN", x, y)
            self.touch("UP", x, y)
            time.sleep(0.2)
        wait_until(lambda: self.clicks.clicks() > before, "a double click")
        time.sleep(0.5)  # a press too many would come by now
        self.picture("touched")
        if before != 1 or self.clicks.clicks() != 2:
            raise Failure(f"another program counted to {self.clicks.clicks()}, not 2")
        return f"another program counted two presses at {x},{y}"

    def heartbeat(self):
        wait_until(lambda: len(self.panel.ping_times()) >= 2, "two heartbeats", 10)
        first, second = self.panel.ping_times()[:2]
        if not 3.8 <= second - first <= 4.2:
            raise Failure(f"{second - first:.2f} s between the first two")
        return f"every {second - first:.1f} s"

    def stopped(self):
        self.companion.stop_casting()
        wait_until(lambda: not self.panel.touch_enabled_at(), "the panel is told to send no more touches")
        self.companion.expect_alive()
        self.picture("stopped")
        return f"{DISABLED} The panel was told."

    def file_sent(self):
        file = self.folder / "slides.pptx"
        file.write_bytes(os.urandom(300_007))
        self.companion.pick_file(file)
        self.companion.expect_alert(UPLOADED)
        self.picture("file-sent")
        self.companion.window.dismiss_alert()
        upload = self.panel.state()["uploads"]["list"][-1]
        if (self.uploads / upload["storedName"]).read_bytes() != file.read_bytes():
            raise Failure(f"the panel got other bytes than {file.name} has")
        self.companion.expect_alive()
        return f"{UPLOADED} The panel has the same {file.stat().st_size:,} bytes."

    # What the steps are made of.

    def reach_mdns(self):
        """Whether services can be announced; starts a daemon where there is none."""
        if mdns.system_mdns_answers():
            return True
        try:
            bus = mdns.SystemBus(self.processes, self.folder)
            os.environ["DBUS_SYSTEM_BUS_ADDRESS"] = bus.address
            mdns.AvahiDaemon(self.processes, self.folder, bus, "lo")
            return True
        except Failure as problem:
            print(f"  {problem}", flush=True)
            return False

    def touch(self, word, x, y):
        self.panel.touch(f"{word} {panel_coordinate(x, self.desktop.width)} {panel_coordinate(y, self.desktop.height)}")

    def expect_pointer(self, x, y):
        try:
            wait_until(lambda: self.desktop.pointer() == (x, y), "the pointer", 3)
        except Failure:
            raise Failure("the pointer is at {},{}, not {},{}".format(*self.desktop.pointer(), x, y)) from None

    def picture(self, name):
        if self.desktop:
            self.pictures += 1
            self.desktop.screenshot(self.folder / f"{self.pictures:02d}-{name}.png")

    def keep_evidence(self):
        if self.companion:
            (self.folder / "window.txt").write_text(self.companion.window.describe(), encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", required=True, type=pathlib.Path, help="the folder of the built programs")
    parser.add_argument("--output", required=True, type=pathlib.Path, help="for screenshots and logs")
    parser.add_argument("options", nargs="*", help="for panel-companion")
    arguments = parser.parse_args()

    tour = Tour(arguments.programs, arguments.output, arguments.options)
    happened = tour.play()
    tour.processes.end()
    print(f"  Screenshots and logs: {arguments.output}")
    return 0 if happened else 1


sys.exit(main())
