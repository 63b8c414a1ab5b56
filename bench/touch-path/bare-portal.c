/* The least that a program can do about a touch by the RemoteDesktop portal: receive the datagram, read its two numbers,
   call NotifyPointerMotionAbsolute, flush; what is answered is read and dropped. Prints its UDP port once the person has
   allowed it, and goes on until it is ended. */
#include "bare-socket.h"

#include <dbus/dbus.h>

static const char* const service = "org.freedesktop.portal.Desktop";
static const char* const desktop = "/org/freedesktop/portal/desktop";
static const char* const remoteDesktop = "org.freedesktop.portal.RemoteDesktop";

static DBusMessage* newCall(const char* interface, const char* method)
{
    return dbus_message_new_method_call(service, desktop, interface, method);
}

static void addOption(
    DBusMessageIter* options, const char* name, int type, const char* signature, const void* value)
{
    DBusMessageIter entry, variant;
    dbus_message_iter_open_container(options, DBUS_TYPE_DICT_ENTRY, NULL, &entry);
    dbus_message_iter_append_basic(&entry, DBUS_TYPE_STRING, &name);
    dbus_message_iter_open_container(&entry, DBUS_TYPE_VARIANT, signature, &variant);
    dbus_message_iter_append_basic(&variant, type, value);
    dbus_message_iter_close_container(&entry, &variant);
    dbus_message_iter_close_container(options, &entry);
}

/* Sends a call with its options, and returns the Response to it, if need be once the person has answered. */
static DBusMessage* request(DBusConnection* bus, DBusMessage* call, const char* name, int type,
    const char* signature, const void* value)
{
    DBusMessageIter arguments, options;
    dbus_message_iter_init_append(call, &arguments);
    dbus_message_iter_open_container(&arguments, DBUS_TYPE_ARRAY, "{sv}", &options);
    if (name)
        addOption(&options, name, type, signature, value);
    dbus_message_iter_close_container(&arguments, &options);
    dbus_connection_send(bus, call, NULL);
    dbus_message_unref(call);
    while (dbus_connection_read_write(bus, -1)) {
        DBusMessage* message;
        while ((message = dbus_connection_pop_message(bus))) {
            if (dbus_message_is_signal(message, "org.freedesktop.portal.Request", "Response"))
                return message;
            if (dbus_message_get_type(message) == DBUS_MESSAGE_TYPE_ERROR)
                exit(1);
            dbus_message_unref(message);
        }
    }
    exit(1);
}

static DBusMessage* newSessionCall(const char* interface, const char* method, const char* session)
{
    DBusMessage* call = newCall(interface, method);
    dbus_message_append_args(call, DBUS_TYPE_OBJECT_PATH, &session, DBUS_TYPE_INVALID);
    return call;
}

/* The number of the stream: the first one in a(ua{sv}). */
static dbus_uint32_t streamOf(DBusMessage* response)
{
    DBusMessageIter arguments, results;
    dbus_uint32_t node = 0;
    dbus_message_iter_init(response, &arguments);
    dbus_message_iter_next(&arguments);
    for (dbus_message_iter_recurse(&arguments, &results);
         dbus_message_iter_get_arg_type(&results) == DBUS_TYPE_DICT_ENTRY; dbus_message_iter_next(&results)) {
        DBusMessageIter entry, variant, streams, stream;
        const char* name;
        dbus_message_iter_recurse(&results, &entry);
        dbus_message_iter_get_basic(&entry, &name);
        if (strcmp(name, "streams") != 0)
            continue;
        dbus_message_iter_next(&entry);
        dbus_message_iter_recurse(&entry, &variant);
        dbus_message_iter_recurse(&variant, &streams);
        dbus_message_iter_recurse(&streams, &stream);
        dbus_message_iter_get_basic(&stream, &node);
    }
    return node;
}

static void move(DBusConnection* bus, const char* session, dbus_uint32_t stream, double x, double y)
{
    DBusMessage* call = newSessionCall(remoteDesktop, "NotifyPointerMotionAbsolute", session);
    DBusMessageIter arguments, options;
    dbus_message_iter_init_append(call, &arguments);
    dbus_message_iter_open_container(&arguments, DBUS_TYPE_ARRAY, "{sv}", &options);
    dbus_message_iter_close_container(&arguments, &options);
    dbus_message_iter_append_basic(&arguments, DBUS_TYPE_UINT32, &stream);
    dbus_message_iter_append_basic(&arguments, DBUS_TYPE_DOUBLE, &x);
    dbus_message_iter_append_basic(&arguments, DBUS_TYPE_DOUBLE, &y);
    dbus_connection_send(bus, call, NULL);
    dbus_connection_flush(bus);
    dbus_message_unref(call);
}

int main(void)
{
    DBusConnection* bus = dbus_bus_get(DBUS_BUS_SESSION, NULL);
    const char* token = "bare";
    char session[256];
    char client[64];
    double x, y;
    dbus_uint32_t pointer = 2, monitor = 1;
    if (!bus)
        return 1;
    dbus_bus_add_match(
        bus, "type='signal',interface='org.freedesktop.portal.Request',member='Response'", NULL);
    snprintf(client, sizeof client, "%s", dbus_bus_get_unique_name(bus) + 1);
    *strchr(client, '.') = '_';
    snprintf(session, sizeof session, "%s/session/%s/%s", desktop, client, token);

    dbus_message_unref(request(
        bus, newCall(remoteDesktop, "CreateSession"), "session_handle_token", DBUS_TYPE_STRING, "s", &token));
    dbus_message_unref(request(bus, newSessionCall(remoteDesktop, "SelectDevices", session), "types",
        DBUS_TYPE_UINT32, "u", &pointer));
    dbus_message_unref(
        request(bus, newSessionCall("org.freedesktop.portal.ScreenCast", "SelectSources", session), "types",
            DBUS_TYPE_UINT32, "u", &monitor));
    DBusMessage* start = newSessionCall(remoteDesktop, "Start", session);
    const char* noWindow = "";
    dbus_message_append_args(start, DBUS_TYPE_STRING, &noWindow, DBUS_TYPE_INVALID);
    DBusMessage* response = request(bus, start, NULL, 0, NULL, NULL);
    const dbus_uint32_t stream = streamOf(response);
    dbus_message_unref(response);

    int fd = openSocket();
    if (fd < 0 || stream == 0)
        return 1;
    for (;;) {
        DBusMessage* message;
        if (receiveTouch(fd, &x, &y))
            move(bus, session, stream, x * 1280, y * 800);
        while (dbus_connection_read_write(bus, 0) && (message = dbus_connection_pop_message(bus)))
            dbus_message_unref(message);
    }
}
