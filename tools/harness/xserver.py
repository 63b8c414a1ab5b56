"""What the X server knows of a program and of the pointer, over a connection of one's own."""

import Xlib.display
import Xlib.ext.res
from Xlib import X, Xatom, Xutil

from .processes import wait_until


class XServer:
    def __init__(self):
        self._display = Xlib.display.Display()
        self._root = self._display.screen().root

    def is_button_held(self):
        return bool(self._root.query_pointer().mask & (X.Button1Mask | X.Button2Mask | X.Button3Mask))

    def states(self, title):
        """What the windows of that title are and want, by their numbers: ({"MODAL", "DEMANDS_ATTENTION"}, the window that
        they belong to)."""
        numbers = self._root.get_full_property(self._atom("_NET_CLIENT_LIST"), X.AnyPropertyType).value
        windows = [self._display.create_resource_object("window", number) for number in numbers]
        return {window.id: self._state(window) for window in windows if window.get_wm_name() == title}

    def _state(self, window):
        found = window.get_full_property(self._atom("_NET_WM_STATE"), X.AnyPropertyType)
        names = {self._display.get_atom_name(atom) for atom in found.value} if found else set()
        owner = window.get_wm_transient_for()
        return {name.removeprefix("_NET_WM_STATE_") for name in names}, owner and owner.id

    def _atom(self, name):
        return self._display.intern_atom(name)

    def resources(self, pid):
        """How many windows, pixmaps, contexts and the like the program has on all of its connections; see XRes(3)."""
        answer = self._display.res_query_client_ids([{"client": 0, "mask": Xlib.ext.res.LocalClientPIDMask}])
        clients = {found.spec.client for found in answer.ids if list(found.value) == [pid]}
        return sum(kind.count for client in clients
                   for kind in self._display.res_query_client_resources(client).types)


class Board:
    """A window above all others that counts the clicks it gets."""

    def __init__(self, x, y, width, height):
        self.x, self.y, self.width, self.height = x, y, width, height
        self._display = Xlib.display.Display()
        screen = self._display.screen()
        self._window = screen.root.create_window(
            x, y, width, height, 0, screen.root_depth, override_redirect=True, background_pixel=screen.white_pixel,
            event_mask=X.ButtonPressMask | X.ButtonReleaseMask)
        self._window.map()
        self._display.sync()
        self.presses = self.releases = 0

    def count(self):
        """(presses, releases) so far; the window is on top again."""
        self._window.raise_window()
        self._display.sync()
        while self._display.pending_events():
            event = self._display.next_event()
            self.presses += event.type == X.ButtonPress
            self.releases += event.type == X.ButtonRelease
        return self.presses, self.releases


class Presentation:
    """A window of another program that fills the screen and is in use."""

    TITLE = "Presentation"

    def __init__(self, desktop):
        self._desktop = desktop
        self._display = Xlib.display.Display()
        screen = self._display.screen()
        self._window = screen.root.create_window(
            0, 0, 600, 400, 0, screen.root_depth, background_pixel=screen.black_pixel, event_mask=X.KeyPressMask)
        self._window.set_wm_name(self.TITLE)
        self._window.set_wm_hints(flags=Xutil.InputHint, input=True)
        self._set("_NET_WM_STATE", Xatom.ATOM, self._display.intern_atom("_NET_WM_STATE_FULLSCREEN"))
        self._window.map()
        self._display.sync()
        wait_until(self.is_active, "the presentation is in front")
        self.turn_page()

    def is_active(self):
        return self._desktop.active_window_name() == self.TITLE

    def turn_page(self):
        """By a key, of which the window manager is told as toolkits do."""
        self._desktop.key("Right")
        key = wait_until(self._key_press, "the key")
        self._set("_NET_WM_USER_TIME", Xatom.CARDINAL, key.time)
        self._display.sync()

    def _key_press(self):
        while self._display.pending_events():
            event = self._display.next_event()
            if event.type == X.KeyPress:
                return event
        return None

    def _set(self, name, kind, value):
        self._window.change_property(self._display.intern_atom(name), kind, 32, [value])
