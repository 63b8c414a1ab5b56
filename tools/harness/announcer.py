"""Announces services that nobody offers, by the mDNS daemon on a bus."""

from gi.repository import Gio, GLib

_ANY = -1  # every interface; either protocol
_PER_GROUP = 32  # services that the daemon takes into one group by default


class Announcer:
    """Everything announced is withdrawn at the end of the `with` block."""

    def __init__(self, bus):
        self._connection = Gio.DBusConnection.new_for_address_sync(
            bus.address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
            None, None)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._connection.close_sync(None)

    def announce(self, *names):
        for start in range(0, len(names), _PER_GROUP):
            group = self._call("/", "org.freedesktop.Avahi.Server", "EntryGroupNew")[0]
            for name in names[start:start + _PER_GROUP]:
                self._call(group, "org.freedesktop.Avahi.EntryGroup", "AddService", GLib.Variant(
                    "(iiussssqaay)", (_ANY, _ANY, 0, name, "_airplay._tcp", "", "", 7000, [])))
            self._call(group, "org.freedesktop.Avahi.EntryGroup", "Commit")

    def _call(self, path, interface, method, arguments=None):
        answer = self._connection.call_sync(
            "org.freedesktop.Avahi", path, interface, method, arguments, None, Gio.DBusCallFlags.NONE, 30000, None)
        return answer.unpack()
