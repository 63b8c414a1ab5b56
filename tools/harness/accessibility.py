"""Reads and works a program through the accessibility bus, as a screen reader would."""

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

from .processes import wait_until  # noqa: E402

Atspi.init()
Atspi.set_timeout(2000, 5000)  # milliseconds: a program that is busy holds a question up for no longer


class Element:
    """One accessible element. A question about an element that has gone is answered with nothing."""

    def __init__(self, accessible):
        self._accessible = accessible
        self._press_action = None  # asked for once: a press costs one question then

    def _ask(self, question, otherwise=None):
        try:
            return question(self._accessible)
        except GLib.Error:
            return otherwise

    @property
    def name(self):
        return self._ask(lambda a: a.get_name(), "")

    @property
    def description(self):
        return self._ask(lambda a: a.get_description(), "")

    @property
    def role(self):
        return self._ask(lambda a: a.get_role_name(), "")

    @property
    def text(self):
        return self._ask(lambda a: Atspi.Text.get_text(a, 0, -1), "")

    def has(self, state):
        return bool(self._ask(lambda a: a.get_state_set().contains(getattr(Atspi.StateType, state.upper()))))

    def child_count(self):
        return self._ask(lambda a: a.get_child_count(), 0)

    def children(self):
        found = (self._ask(lambda a, i=i: a.get_child_at_index(i)) for i in range(self.child_count()))
        return [Element(child) for child in found if child is not None]

    def everything(self):
        """This element and all below it."""
        yield self
        for child in self.children():
            yield from child.everything()

    def center(self):
        """On the screen, in pixels."""
        area = self._ask(lambda a: a.get_extents(Atspi.CoordType.SCREEN))
        return (area.x + area.width // 2, area.y + area.height // 2) if area else (0, 0)

    def area(self):
        area = self._ask(lambda a: a.get_extents(Atspi.CoordType.SCREEN))
        return (area.x, area.y, area.width, area.height) if area else (0, 0, 0, 0)

    def write(self, text):
        """Replaces the text of a field."""
        return bool(self._ask(lambda a: Atspi.EditableText.set_text_contents(a, text)))

    def press(self):
        """The first of the actions that stand for a press; returns before what it opens is closed."""
        if self._press_action is None:
            count = self._ask(lambda a: a.get_n_actions(), 0)
            actions = [self._ask(lambda a, i=i: a.get_action_name(i), "") for i in range(count)]
            self._press_action = next((actions.index(name) for name in ("Press", "Toggle") if name in actions), None)
        return self._press_action is not None and bool(self._ask(lambda a: a.do_action(self._press_action)))


class Announcements:
    """What screen readers are told of changed names, in the `with` block."""

    EVENT = "object:property-change:accessible-name"

    def __init__(self):
        self._heard = []
        self._listener = Atspi.EventListener.new(
            lambda event, *_: self._heard.append((event.source.get_role_name(), event.source.get_name())))

    def __enter__(self):
        self._listener.register(self.EVENT)
        return self

    def __exit__(self, *_):
        self._listener.deregister(self.EVENT)

    def take(self):
        """(role, name) of every change so far."""
        while GLib.MainContext.default().iteration(False):
            pass
        return self._heard


class Program:
    """A running program that is found by the name of its main window."""

    BUTTON = "push button|button"  # which of them depends on the version of at-spi2-core

    def __init__(self, window_name, timeout=20.0):
        self._root = wait_until(lambda: self._find_program(window_name), f"a window named {window_name!r}", timeout, .1)

    @staticmethod
    def _find_program(window_name):
        desktop = Atspi.get_desktop(0)
        desktop.clear_cache()
        for program in Element(desktop).children():
            if any(window.name == window_name for window in program.children()):
                # The cache of the bindings misses some of Qt's changes: always ask the program.
                program._ask(lambda a: a.set_cache_mask(Atspi.Cache.NONE))
                return program
        return None

    def find_all(self, role=None, name=None):
        """What is showing and fits; `role` may be several, parted by "|"."""
        roles = role.split("|") if role else None
        return [element for element in self._root.everything()
                if (roles is None or element.role in roles) and (name is None or element.name == name)
                and element.has("showing")]

    def find(self, role=None, name=None, timeout=5.0):
        what = " ".join(part for part in (role, repr(name) if name is not None else None) if part)
        return wait_until(lambda: self.find_all(role, name), f"{what} showing", timeout)[0]

    def is_showing(self, role=None, name=None):
        return bool(self.find_all(role, name))

    def gone(self, role=None, name=None, timeout=5.0):
        wait_until(lambda: not self.find_all(role, name), f"{role or ''} {name or ''} closed", timeout)

    def press(self, name, role=f"{BUTTON}|toggle button|check box"):
        self.find(role, name).press()

    def alert_texts(self, timeout=5.0):
        """The texts of the alert that is open, once one is."""
        alert = self.find("alert", timeout=timeout)
        return [alert.name] + [part.name for part in alert.everything() if part.role == "label"]

    def dismiss_alert(self):
        self.press("OK")
        self.gone("alert")

    def describe(self):
        """Everything that is showing, an element a line: for the log of a failure."""
        return "\n".join(f"{e.role} {e.name!r} {e.area()}" for e in self._root.everything() if e.has("showing"))
