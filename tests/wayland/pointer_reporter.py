"""Another program, made with GTK, over the whole screen, that prints each mouse event as "press X Y", "move X Y", "double X
Y", "triple X Y" or "release X Y", in its window's coordinates; "ready" comes first."""

import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk  # noqa: E402

NAMES = {
    Gdk.EventType.BUTTON_PRESS: "press", Gdk.EventType._2BUTTON_PRESS: "double",
    Gdk.EventType._3BUTTON_PRESS: "triple", Gdk.EventType.BUTTON_RELEASE: "release",
    Gdk.EventType.MOTION_NOTIFY: "move"}


def report(_window, event):
    if event.type in NAMES:
        print(NAMES[event.type], f"{event.x:.2f} {event.y:.2f}", flush=True)
    return True


def say_ready(window, allocation):
    monitor = window.get_display().get_monitor(0).get_geometry()
    if allocation.width == monitor.width and not window.is_ready:
        window.is_ready = True
        print("ready", flush=True)


window = Gtk.Window(title="Touches")
window.is_ready = False
window.add_events(Gdk.EventMask.BUTTON_PRESS_MASK | Gdk.EventMask.BUTTON_RELEASE_MASK | Gdk.EventMask.POINTER_MOTION_MASK)
for signal in ("button-press-event", "button-release-event", "motion-notify-event"):
    window.connect(signal, report)
window.connect("size-allocate", say_ready)
window.fullscreen()
window.show_all()
Gtk.main()
