"""A monkey at the computer, at the panel and at its answers; what it does follows from a seed.

PANEL_COMPANION_MONKEY_SECONDS and PANEL_COMPANION_MONKEY_SEED set how long it plays, and how."""

import os
import random
import signal
import socket
import time
import urllib.error
from collections import Counter

import Xlib.display
import Xlib.ext.xtest
import Xlib.XK
from harness.drag import Drag
from harness.panel import panel_coordinate
from harness.processes import Failure, wait_until
from harness.xserver import XServer
from test_lab import expect_touches_work
from Xlib import X

KEYS = ["Tab", "Return", "Escape", "space", "Up", "Down", "Left", "Right", "Home", "End", "Page_Down", "BackSpace", "Delete",
        "F2", "F10", "a", "z", "7", "slash"]
REPLIES = ["ok", "ok", "ok", "busy", "cast-off", "status 500", "status 204", "silence", "close", "cut", "huge 3", "endless",
           "delay 300", "text \u202e\u2028"]
UPLOAD_REPLIES = ["ok", "ok", "status 500", "status 404", "reset", "cut", "status 413 early"]


class Monkey:
    """At a window without a title bar, since its buttons would end the play."""

    def __init__(self, lab, seed):
        self.lab, self.random, self.done = lab, random.Random(seed), Counter()
        self.panel = lab.start_panel()
        self.companion = lab.start_companion(self.panel)
        self.companion.pair(self.panel)
        self.display = Xlib.display.Display()
        self.window = self._find_window()
        self._take_title_bar_off()
        self.file = lab.folder / "banana.png"
        self.file.write_bytes(b"banana" * 1000)

    def _find_window(self):
        found = self.lab.processes.run(["xdotool", "search", "--onlyvisible", "--name", "^Panel Companion$"]).split()
        return self.display.create_resource_object("window", int(found[0]))

    def _take_title_bar_off(self):
        hints, frame = (self.display.intern_atom(name) for name in ("_MOTIF_WM_HINTS", "_NET_FRAME_EXTENTS"))
        self.window.change_property(hints, hints, 32, [2, 0, 0, 0, 0])  # what counts is "decorations", and there are none
        self.display.sync()
        wait_until(lambda: self.window.get_full_property(frame, X.AnyPropertyType).value[2] < 5, "no title bar")

    def place(self):
        """In the content of the main window, on the screen."""
        area, corner = self.window.get_geometry(), self.window.query_tree().root.translate_coords(self.window, 0, 0)
        desktop = self.lab.desktop
        left, top = max(0, -corner.x), max(0, -corner.y)
        return (self.random.randint(left, min(desktop.width, left + area.width) - 1),
                self.random.randint(top, min(desktop.height, top + area.height) - 1))

    def input(self, kind, detail=0, place=(0, 0)):
        Xlib.ext.xtest.fake_input(self.display, kind, detail, x=place[0], y=place[1])
        self.display.sync()

    # What it does.

    def click(self):
        button = self.random.choice([1, 1, 1, 1, 2, 3, 4, 5])
        self.input(X.MotionNotify, place=self.place())
        self.input(X.ButtonPress, button)
        self.input(X.ButtonRelease, button)

    def key(self):
        code = self.display.keysym_to_keycode(Xlib.XK.string_to_keysym(self.random.choice(KEYS)))
        self.input(X.KeyPress, code)
        self.input(X.KeyRelease, code)

    def drag(self):
        self.input(X.MotionNotify, place=self.place())
        self.input(X.ButtonPress, 1)
        for _ in range(self.random.randint(1, 9)):
            self.input(X.MotionNotify, place=self.place())
        self.input(X.ButtonRelease, 1)

    def drop(self):
        """Somewhere; the source may be covered by what else is open."""
        try:
            drag = Drag(self.lab.processes, self.lab.programs, self.file)
            drag.to(*self.place(), steps=3)
            drag.drop()
            drag.end()
        except Failure:
            self.input(X.ButtonRelease, 1)

    def resize(self):
        self.window.configure(width=self.random.randint(1, 1500), height=self.random.randint(1, 900))
        self.display.sync()

    def stop_and_go_on(self):
        self.companion.process.send(signal.SIGSTOP)
        time.sleep(self.random.uniform(0.05, 0.4))
        self.companion.process.send(signal.SIGCONT)

    def touches(self):
        lines = []
        for _ in range(self.random.randint(1, 12)):
            x, y = self.place()
            word = self.random.choice(["DOWN", "UP", "MOVE"])
            lines.append(f"{word} {panel_coordinate(x, self.lab.desktop.width)} {panel_coordinate(y, self.lab.desktop.height)} "
                         f"{self.random.choice([0, 0, 5, 40])}")
        try:
            self.panel.touch(*lines)
        except urllib.error.HTTPError:
            self.done["touches that nobody wants"] += 1

    def nonsense(self):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender:
            for _ in range(20):
                sender.sendto(self.random.randbytes(self.random.randint(0, 200)), (self.lab.computer_address, 41863))

    def answers(self):
        self.panel.reply(self.random.choice(REPLIES))
        self.panel.reply_to_uploads(self.random.choice(UPLOAD_REPLIES))

    def press_something(self):
        """By the accessibility bus, so that sessions and dialogs begin more often than clicks have it."""
        name = self.random.choice(["Cast", "Cast", "Wireless touch", "Devices", "Settings", "Upload a file", "Disconnect", "OK"])
        found = self.companion.window.find_all(None, name)
        if found:
            found[0].press()

    def pair(self):
        row = self.companion.row(self.panel.name)
        x, y = row.center() if row else (-1, -1)
        if 0 <= x < self.lab.desktop.width and 0 <= y < self.lab.desktop.height:
            self.lab.desktop.click(x, y)

    def play(self, seconds):
        deeds = [self.click] * 20 + [self.key] * 14 + [self.drag] * 6 + [self.touches] * 10 + [self.press_something] * 6 + [
            self.resize, self.resize, self.stop_and_go_on, self.nonsense, self.answers, self.answers, self.pair, self.pair]
        ends, next_drop = time.monotonic() + seconds, time.monotonic() + 5
        while time.monotonic() < ends:
            deed = self.random.choice(deeds)
            if time.monotonic() >= next_drop:
                deed, next_drop = self.drop, time.monotonic() + 8
            deed()
            self.done[deed.__name__] += 1
            self.companion.expect_alive()

    def tidy(self):
        """Back to where a person begins: whatever is open is closed, the panel answers well."""
        self.panel.reply("ok")
        self.panel.reply_to_uploads("ok")
        self.window.configure(width=960, height=640)
        self.display.sync()
        window = self.companion.window

        def nothing_open():
            self.lab.desktop.key("Escape")  # closes menus and popovers
            answers = [each for name in ("OK", "Cancel", "No") for each in window.find_all(window.BUTTON, name)]
            for answer in answers:
                answer.press()
            return not answers
        # The last touches may still be on their way.
        wait_until(lambda: nothing_open() and not time.sleep(1) and nothing_open(), "every alert and dialog closed", 20, 0.3)


def test_a_monkey_breaks_nothing(lab):
    seconds = float(os.environ.get("PANEL_COMPANION_MONKEY_SECONDS", "25"))
    seed = int(os.environ.get("PANEL_COMPANION_MONKEY_SEED", "1"))
    monkey = Monkey(lab, seed)
    companion, panel = monkey.companion, monkey.panel
    try:
        monkey.play(seconds)
        monkey.tidy()
        if companion.window.is_showing(name="Cast") and companion.is_casting():
            companion.stop_casting()
        switch = companion.window.find_all("check box", "Wireless touch")
        if switch and switch[0].has("checked"):
            switch[0].press()
        x_server = XServer()
        wait_until(lambda: not x_server.is_button_held(), "no button held", 10)
        companion.open_list()
        if companion.window.is_showing(name="Disconnect"):
            companion.window.press("Disconnect")
            companion.window.find("label", "*No Device Connected")
        companion.close_list()
        companion.pair(panel)
        companion.start_casting()
        wait_until(lambda: panel.touch_enabled_at() == lab.computer_address, "the panel is asked for touches")
        expect_touches_work(lab, panel, 1359, 761)
        companion.process.send(signal.SIGTERM)
        status = companion.process.wait(5)
        assert status == 0, f"it ended with status {status}"
    except (AssertionError, Failure) as failure:
        raise Failure(f"seed {seed} after {dict(monkey.done)}: {failure}\n{companion.window.describe()}\n"
                      f"{companion.process.output()[-500:]}") from None
    print(f"seed {seed}, {seconds:g} s: {dict(sorted(monkey.done.items()))}")
