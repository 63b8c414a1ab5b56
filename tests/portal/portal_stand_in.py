"""A RemoteDesktop portal that does what real ones do not do on request. Prints what it is asked, a JSON object a line.

    portal_stand_in.py VERSION MODE

MODE says what becomes of Start: "allow", "deny", or "silent". The interface test.StandIn has Mode(s) for another one,
Answer() for a Start that was left without an answer, Close() for the session, Lock(bs): what the desktop says when it is
locked or unlocked, with the session "open", "closed" or, as older portals do it, "closed silently", Hold(b): without an answer
to events while it is true, and Forge(): what another program does that pretends to be the portal."""

import json
import sys

from gi.repository import Gio, GLib

NAME, PATH = "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop"
INTERFACES = """<node>
<interface name="org.freedesktop.portal.RemoteDesktop">
 <property name="version" type="u" access="read"/>
 <method name="CreateSession"><arg type="a{sv}" direction="in"/><arg type="o" direction="out"/></method>
 <method name="SelectDevices"><arg type="o" direction="in"/><arg type="a{sv}" direction="in"/><arg type="o" direction="out"/></method>
 <method name="Start"><arg type="o" direction="in"/><arg type="s" direction="in"/><arg type="a{sv}" direction="in"/><arg type="o" direction="out"/></method>
 <method name="NotifyPointerMotionAbsolute"><arg type="o" direction="in"/><arg type="a{sv}" direction="in"/><arg type="u" direction="in"/><arg type="d" direction="in"/><arg type="d" direction="in"/></method>
 <method name="NotifyPointerButton"><arg type="o" direction="in"/><arg type="a{sv}" direction="in"/><arg type="i" direction="in"/><arg type="u" direction="in"/></method>
</interface>
<interface name="org.freedesktop.portal.ScreenCast">
 <method name="SelectSources"><arg type="o" direction="in"/><arg type="a{sv}" direction="in"/><arg type="o" direction="out"/></method>
</interface>
<interface name="test.StandIn"><method name="Mode"><arg type="s" direction="in"/></method><method name="Answer"/><method name="Close"/><method name="Forge"/><method name="Hold"><arg type="b" direction="in"/></method><method name="Lock"><arg type="b" direction="in"/><arg type="s" direction="in"/></method></interface>
</node>"""
SESSION = """<node><interface name="org.freedesktop.portal.Session"><method name="Close"/></interface></node>"""


class StandIn:
    def __init__(self, version, mode):
        self._version, self._mode = version, mode
        self._bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        self._session = self._session_id = self._client = self._unanswered = None
        self._consents, self._held, self._holds = 0, [], False
        for interface in Gio.DBusNodeInfo.new_for_xml(INTERFACES).interfaces:
            self._bus.register_object(PATH, interface, self._take, self._property, None)
        Gio.bus_own_name_on_connection(self._bus, NAME, Gio.BusNameOwnerFlags.NONE, lambda *_: self._say(what="ready"), None)

    @staticmethod
    def _say(**what):
        print(json.dumps(what), flush=True)

    def _property(self, *_):
        return GLib.Variant("u", self._version)

    def _take(self, _bus, sender, _path, _interface, method, arguments, call):
        getattr(self, "_on_" + method)(sender, call, *arguments.unpack())

    def _on_CreateSession(self, sender, call, options):
        self._client = sender.lstrip(":").replace(".", "_")
        self._session = f"{PATH}/session/{self._client}/{options['session_handle_token']}"
        info = Gio.DBusNodeInfo.new_for_xml(SESSION).interfaces[0]
        self._session_id = self._bus.register_object(self._session, info, self._take_session, None, None)
        self._respond(call, options, {"session_handle": GLib.Variant("s", self._session)}, what="create")

    def _on_SelectDevices(self, _sender, call, _session, options):
        self._respond(call, options, {}, what="devices", types=options["types"], mode=options.get("persist_mode"),
                      token=options.get("restore_token"))

    def _on_SelectSources(self, _sender, call, _session, options):
        self._respond(call, options, {}, what="sources", types=options["types"])

    def _on_Start(self, _sender, call, _session, _window, options):
        self._say(what="start")
        path = self._accept(call, options)
        if self._mode == "silent":
            self._unanswered = path
        elif self._mode == "deny":
            self._answer(path, 1, {})
        else:
            self._allow(path)

    def _allow(self, path):
        self._consents += 1
        stream = (42, {"size": GLib.Variant("(ii)", (1920, 1080)), "position": GLib.Variant("(ii)", (1366, 0))})
        given = {"devices": GLib.Variant("u", 2), "streams": GLib.Variant("a(ua{sv})", [stream])}
        if self._version >= 2:
            given["restore_token"] = GLib.Variant("s", f"token-{self._consents}")
        self._answer(path, 0, given)

    def _on_NotifyPointerMotionAbsolute(self, _sender, call, _session, _options, stream, x, y):
        self._event(call, what="motion", stream=stream, x=round(x, 2), y=round(y, 2))

    def _on_NotifyPointerButton(self, _sender, call, _session, _options, button, state):
        self._event(call, what="button", button=button, state=state)

    def _event(self, call, **what):
        self._say(**what)
        if self._session is None:
            call.return_dbus_error("org.freedesktop.DBus.Error.AccessDenied", "Invalid session")
        elif self._holds:
            self._held.append(call)
        else:
            call.return_value(None)

    def _on_Mode(self, _sender, call, mode):
        self._mode = mode
        call.return_value(None)

    def _on_Answer(self, _sender, call):
        self._allow(self._unanswered)
        call.return_value(None)

    def _on_Close(self, _sender, call):
        """As the desktop does it."""
        self._emit_closed(self._bus)
        self._end_session()
        call.return_value(None)

    def _on_Lock(self, _sender, call, is_locked, session):
        if session == "closed":
            self._emit_closed(self._bus)
        if session != "open":
            self._end_session()
        self._bus.emit_signal(None, "/org/gnome/ScreenSaver", "org.gnome.ScreenSaver", "ActiveChanged",
                              GLib.Variant("(b)", (is_locked,)))
        call.return_value(None)

    def _emit_closed(self, bus):
        bus.emit_signal(None, self._session, "org.freedesktop.portal.Session", "Closed", GLib.Variant("(a{sv})", ({},)))

    def _on_Forge(self, _sender, call):
        """A cancelled dialog and a closed session, both on their way to the client when this returns."""
        flags = Gio.DBusConnectionFlags
        stranger = Gio.DBusConnection.new_for_address_sync(
            Gio.dbus_address_get_for_bus_sync(Gio.BusType.SESSION),
            flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION, None, None)
        self._emit_response(stranger, self._unanswered, 1, {})
        self._emit_closed(stranger)
        bus = "org.freedesktop.DBus"
        stranger.call_sync(bus, "/", bus, "GetId", None, None, Gio.DBusCallFlags.NONE, -1)
        stranger.close_sync()
        call.return_value(None)

    def _on_Hold(self, _sender, call, holds):
        self._holds = holds
        for held in self._held if not holds else []:
            held.return_value(None)
        call.return_value(None)

    def _take_session(self, _bus, _sender, _path, _interface, _method, _arguments, call):
        self._say(what="closed by the client")
        self._end_session()
        call.return_value(None)

    def _end_session(self):
        self._bus.unregister_object(self._session_id)
        self._session = None

    def _accept(self, call, options):
        path = f"{PATH}/request/{self._client}/{options['handle_token']}"
        call.return_value(GLib.Variant("(o)", (path,)))
        return path

    def _respond(self, call, options, results, **what):
        self._say(**what)
        self._answer(self._accept(call, options), 0, results)

    def _answer(self, path, response, results):
        self._emit_response(self._bus, path, response, results)

    @staticmethod
    def _emit_response(bus, path, response, results):
        bus.emit_signal(None, path, "org.freedesktop.portal.Request", "Response",
                        GLib.Variant("(ua{sv})", (response, results)))


StandIn(int(sys.argv[1]), sys.argv[2])
GLib.MainLoop().run()
