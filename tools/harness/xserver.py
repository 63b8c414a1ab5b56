"""What the X server knows of a program and of the pointer, over a connection of one's own."""

import Xlib.display
import Xlib.ext.res
from Xlib import X


class XServer:
    def __init__(self):
        self._display = Xlib.display.Display()
        self._root = self._display.screen().root

    def is_button_held(self):
        return bool(self._root.query_pointer().mask & (X.Button1Mask | X.Button2Mask | X.Button3Mask))

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
