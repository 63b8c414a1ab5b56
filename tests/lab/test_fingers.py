"""Fingers at the panel, from its datagrams to the events that other programs of the desktop get.

PANEL_COMPANION_FINGER_SECONDS and PANEL_COMPANION_FINGER_SEED set how long mixed work goes on, and which."""

import os
import pathlib
import random
import re
import signal
import time
from collections import Counter

from harness.desktop import ClickWindow
from harness.panel import panel_coordinate
from harness.processes import Failure, wait_until

PAIR = 0.8           # seconds: releases that are no further apart make a pair
KEY = 70             # pixels from key to key: further than the taps of a double tap may be apart
HELD = 50            # milliseconds that a tap takes


def click_counts(times):
    """What programs count presses at one place as that have these server's times: 1 for a click, 2 for a double click."""
    counts = []
    for before, time in zip([None, *times], times):
        counts.append(counts[-1] + 1 if counts and time - before < ClickWindow.INTERVAL else 1)
    return counts


class Witness:
    """Another program, which sees every event and can grab the X server; see Witness.cpp."""

    def __init__(self, lab):
        self._process = lab.processes.start([lab.programs / "x11-witness"])
        self._wait("ready", 1)
        self._taken = self._ends = 0
        self._read = len(self._process.output())

    def _wait(self, line, count, timeout=10):
        wait_until(lambda: self._process.output().count(line + "\n") >= count or not self._process.running(),
                   f"{line!r} of the witness", timeout, 0.02)
        if not self._process.running():
            raise Failure(f"the witness ended: {self._process.output()[-300:]}")

    def events(self):
        """(what, x, y, the server's milliseconds) of all events since the last call."""
        self._taken += 1
        self._process.send(signal.SIGUSR1)
        self._wait("taken", self._taken)
        new = self._process.output()[self._read:]
        self._read += len(new)
        return [(what, *map(int, numbers)) for what, *numbers in re.findall(r"(press|release|motion) (-?\d+) (-?\d+) (\d+)", new)]

    def grab_until_released(self):
        self._process.send(signal.SIGUSR2)
        self._ends += 1
        self._wait("grabbed", self._ends)

    def expect_release_seen(self):
        self._wait("released", self._ends, 5)


class Hand:
    """A finger on the panel of a session, and what comes of it. Places are pixels of the desktop."""

    def __init__(self, lab, seed=0, environment=None):
        self.lab, self.random = lab, random.Random(seed)
        self.panel = lab.start_panel()
        self.companion = lab.start_companion(self.panel, environment=environment)
        self.companion.pair(self.panel)
        self.witness = Witness(lab)
        self.screen = (0, 0, lab.desktop.width, lab.desktop.height)
        self.is_pair_begun = False
        self.last_up = 0.0
        self.done = Counter()
        self.start_casting()

    def start_casting(self):
        self.companion.start_casting()
        wait_until(lambda: self.panel.touch_enabled_at() == self.lab.computer_address, "the panel is asked for touches")
        self.witness.events()

    def line(self, word, x, y, pause=0):
        left, top, width, height = self.screen
        return f"{word} {panel_coordinate(x - left, width)} {panel_coordinate(y - top, height)} {pause}"

    def send(self, *lines):
        self.panel.touch(*lines)
        for line in lines:
            if line.startswith("UP"):
                self.is_pair_begun = not self.is_pair_begun
                self.last_up = time.monotonic()

    def tap_lines(self, place, pause=0):
        return self.line("DOWN", *place, pause), self.line("UP", *place, HELD)

    def keys(self, count):
        """Places that are no double tap, one after the other."""
        left, top, width, height = self.screen
        places = [(x, y) for x in range(left + 20, left + width - 20, KEY) for y in range(top + 20, top + height - 20, KEY)]
        return self.random.sample(places, count)

    def events_of(self, count, timeout=10):
        """All events once there are so many presses."""
        events = []

        def all_there():
            events.extend(self.witness.events())
            return len(self.pressed(events)) >= count
        try:
            wait_until(all_there, f"{count} presses", timeout)
        except Failure as failure:
            raise Failure(f"{failure}: {self.pressed(events)}") from None
        time.sleep(0.1)  # one too many would come with the last touch
        return events + self.witness.events()

    def expect(self, *presses):
        """These presses and no others, in this order; returns all events."""
        events = self.events_of(len(presses))
        assert self.pressed(events) == list(presses), f"pressed {self.pressed(events)}, not {list(presses)}: {events}"
        self.done["presses"] += len(presses)
        return events

    @staticmethod
    def pressed(events):
        return [(x, y) for what, x, y, _ in events if what == "press"]

    @staticmethod
    def is_held_after(events):
        return [what for what, *_ in events if what != "motion"][-1:] == ["press"]

    @staticmethod
    def dragged(events):
        """Where the pointer went with the button held."""
        places, is_held = [], False
        for what, x, y, _ in events:
            if what == "motion" and is_held:
                places.append((x, y))
            elif what != "motion":
                is_held = what == "press"
        return places

    def slow_tap(self):
        """Belongs to no pair with the tap before."""
        time.sleep(max(0.0, self.last_up + PAIR + 0.1 - time.monotonic()))
        place = self.keys(1)[0]
        self.send(*self.tap_lines(place))
        events = self.expect(place)
        assert not self.is_held_after(events), f"held after a slow tap: {events}"
        assert not self.dragged(events), f"a slow tap dragged: {events}"

    def rest(self):
        """Nothing is held and no pair is begun afterwards."""
        self.slow_tap()
        if self.is_pair_begun:
            self.slow_tap()
        time.sleep(PAIR + 0.1)

    # What a person does.

    def type_keys(self, count=None, gap=None):
        places = self.keys(count or self.random.randint(4, 12))
        lines = [line for place in places
                 for line in self.tap_lines(place, (gap or self.random.randint(120, 400)) - HELD)]
        self.send(*lines)
        events = self.expect(*places)
        assert not self.dragged(events), f"dragged from key to key: {self.dragged(events)}"
        self.done["taps"] += len(places)

    def drag(self):
        (x, y), (to_x, to_y) = self.keys(2)
        steps = [(x + (to_x - x) * i // 15, y + (to_y - y) * i // 15) for i in range(1, 16)]
        self.send(self.line("DOWN", x, y), *(self.line("MOVE", *step, 8) for step in steps), self.line("UP", to_x, to_y, 8))
        events = self.expect((x, y))
        assert not self.is_held_after(events), f"held after a drag: {events}"
        assert self.dragged(events) == steps, f"dragged by {self.dragged(events)}, not {steps}"

    def double_tap(self):
        place = self.keys(1)[0]
        gap = self.random.randint(120, 300)
        self.send(*self.tap_lines(place), *self.tap_lines(place, gap - HELD))
        events = self.events_of(2)
        assert not self.is_held_after(events), f"held after a double tap: {events}"
        pressed = self.pressed(events)
        assert set(pressed) == {place}, f"pressed {pressed}, not {place}: {events}"
        # On a computer that stops for a moment, presses are added until there is a double click, or the taps are two slow ones.
        clicks = click_counts([time for what, _, _, time in events if what == "press"])
        is_slow = clicks == [1, 1] and events[-1][3] - events[0][3] >= PAIR * 1000
        assert is_slow or clicks[-1] == 2 and clicks.count(2) == 1 and max(clicks) == 2, f"counted as {clicks}: {events}"
        self.done["presses"] += len(pressed)
        self.done["double taps" if clicks == [1, 2] else "double taps that came late"] += 1

    def drag_while_the_server_is_grabbed(self):
        (x, y), (to_x, to_y) = self.keys(2)
        self.send(self.line("DOWN", x, y))
        events = self.expect((x, y))
        self.witness.grab_until_released()
        self.send(self.line("MOVE", to_x, to_y), self.line("UP", to_x, to_y, 20))
        self.witness.expect_release_seen()
        events += self.expect()
        assert self.dragged(events) == [(to_x, to_y)], f"dragged by {self.dragged(events)}"

    def tap_under_a_dialog(self):
        """The tap waits until the dialog is closed."""
        place = self.keys(1)[0]
        window = self.companion.window
        window.press("Upload a file")
        window.find("dialog|file chooser", "Upload a file")
        self.send(*self.tap_lines(place))
        time.sleep(0.3)
        self.expect()
        window.press("Cancel")
        window.gone("dialog|file chooser", "Upload a file")
        self.expect(place)
        self.last_up = time.monotonic()

    def alert(self):
        """With a finger down: the button is released, the session is over."""
        self.send(self.line("DOWN", *self.keys(1)[0]))
        self.panel.reply("busy")
        self.companion.expect_alert("Device busy", 10)
        self.expect_released()
        self.panel.reply("ok")
        self.companion.window.dismiss_alert()
        self.start_casting()

    def expect_released(self):
        events = []

        def released():
            events.extend(self.witness.events())
            return any(what == "release" for what, *_ in events) and not self.is_held_after(events)
        wait_until(released, "the release")

    def panel_dies_and_comes_back(self):
        """With a finger down."""
        self.send(self.line("DOWN", *self.keys(1)[0]))
        self.panel.process.send(signal.SIGKILL)
        self.panel.process.end()
        self.panel = self.lab.start_panel()
        self.companion.stop_casting()
        self.expect_released()
        self.start_casting()

    def screen_changes(self):
        """The main one of two monitors is another part of the desktop, or the only one is all of it."""
        width, height = self.lab.desktop.width, self.lab.desktop.height
        self.screen, other = self.random.choice([
            ((0, 0, width, height), None),
            ((0, 0, 700, height), (700, 0, width - 700, height)), ((700, 0, width - 700, height), (0, 0, 700, height)),
            ((0, 0, width, 400), (0, 400, width, height - 400)), ((0, 400, width, height - 400), (0, 0, width, 400))])
        set_monitors(self.lab, self.screen, other)
        left, top, part_width, part_height = self.screen
        place = (left + part_width // 3, top + part_height // 3)

        def arrives():
            self.send(self.line("MOVE", *place))
            return self.lab.desktop.pointer() == place
        wait_until(arrives, f"touches on the screen {self.screen}")
        self.witness.events()


def set_monitors(lab, main, other=None):
    """Places in the root window, as (x, y, width, height)."""
    def run(*arguments):
        lab.processes.run(["xrandr", *arguments])
    for name in re.findall(r"^ *\d+: \+?\*?(MAIN|OTHER) ", lab.processes.run(["xrandr", "--listmonitors"]), re.MULTILINE):
        run("--delmonitor", name)
    for name, area, output in (("*MAIN", main, "screen"), ("OTHER", other, "none")):
        if area:
            x, y, width, height = area
            run("--setmonitor", name, f"{width}/{width // 4}x{height}/{height // 4}+{x}+{y}", output)


def test_nine_taps_on_nine_keys_are_nine_presses_and_drag_nothing(lab):
    hand = Hand(lab)
    hand.type_keys(count=9, gap=300)
    hand.slow_tap()
    hand.slow_tap()
    hand.companion.expect_alive()


def test_mixed_work_loses_no_tap_and_leaves_no_button_held(lab):
    seconds = float(os.environ.get("PANEL_COMPANION_FINGER_SECONDS", "60"))
    seed = int(os.environ.get("PANEL_COMPANION_FINGER_SEED", "1"))
    relay = lab.processes.start(["/usr/bin/python3", pathlib.Path(__file__).with_name("relay.py")])
    wait_until(lambda: relay.output().strip(), "the relay's display number")
    hand = Hand(lab, seed, {"DISPLAY": f":{relay.output().strip()}"})

    def connection_is_lost():
        """That of the touches: the toolkit itself cannot do without the X server."""
        relay.send(signal.SIGUSR1)
        losses = hand.done["connection_is_lost"] + 1
        wait_until(lambda: relay.output().count("dropped") == losses, "the loss")  # a tap before it would be lost with it
        hand.slow_tap()
        back = hand.companion.process.output().count('" is back')
        assert back == losses, f"it came back {back} times"

    work = [hand.type_keys] * 3 + [hand.drag] * 2 + [hand.double_tap] * 2 + [  # a minute is one round
        hand.drag_while_the_server_is_grabbed, hand.screen_changes, hand.tap_under_a_dialog, hand.alert,
        hand.panel_dies_and_comes_back, connection_is_lost]
    ends = time.monotonic() + seconds
    plan = []
    while time.monotonic() < ends:
        if not plan:
            plan = hand.random.sample(work, len(work))
        action = plan.pop()
        try:
            action()
            hand.rest()
        except (AssertionError, Failure) as failure:
            raise Failure(f"seed {seed}, {action.__name__} after {dict(hand.done)}: {failure}") from None
        hand.done[action.__name__] += 1
        hand.companion.expect_alive()
    print(f"seed {seed}, {seconds:g} s: {dict(sorted(hand.done.items()))}")
