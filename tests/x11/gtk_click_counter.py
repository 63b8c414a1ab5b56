#!/usr/bin/python3 -Wignore
"""ClickCounter.cpp with GTK 3: a text view that says what its clicks count as, each with the text that is selected then.
GTK reports the second press of a double click twice, as a press and as a double click: it is said once, with its
release."""

import sys

try:
    import gi
    gi.require_version("Gdk", "3.0")
    gi.require_version("Gtk", "3.0")
    from gi.repository import Gdk, GLib, Gtk, Pango
except (ImportError, ValueError) as problem:
    sys.exit(f"missing: {problem}")

NAMES = {Gdk.EventType.BUTTON_PRESS: "press", Gdk.EventType._2BUTTON_PRESS: "doubleclick",
         Gdk.EventType._3BUTTON_PRESS: "tripleclick"}
last = "press"


def selected(buffer):
    bounds = buffer.get_selection_bounds()
    return buffer.get_text(*bounds, False) if bounds else ""


def note(view, event):
    global last
    if event.type in NAMES:
        last = NAMES[event.type]
    elif event.type == Gdk.EventType.BUTTON_RELEASE:
        for what in (last, "release"):
            print(f"{what} [{selected(view.get_buffer())}]", flush=True)


view = Gtk.TextView()
view.override_font(Pango.FontDescription("monospace 30"))
view.get_buffer().set_text("abcdefghij klmnopqrst uvwxyz")
view.connect("event-after", note)
window = Gtk.Window(type=Gtk.WindowType.POPUP)  # without a window manager
window.set_default_size(800, 60)
window.add(view)
window.connect("map-event", lambda *_: GLib.idle_add(print, "ready", priority=GLib.PRIORITY_LOW) and None)  # once painted
sys.stdout.reconfigure(line_buffering=True)
window.show_all()
Gtk.main()
