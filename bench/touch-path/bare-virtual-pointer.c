/* The least that a program can do about a touch on a wlroots compositor: receive the datagram, read its two numbers,
   request a motion and a frame, flush. Prints its UDP port and goes on until it is ended. */
#include "bare-socket.h"
#include "virtual-pointer-protocol-client.h"

#include <time.h>
#include <wayland-client.h>

static struct zwlr_virtual_pointer_manager_v1* manager;

static void global(
    void* data, struct wl_registry* registry, uint32_t name, const char* interface, uint32_t version)
{
    (void)data;
    (void)version;
    if (strcmp(interface, zwlr_virtual_pointer_manager_v1_interface.name) == 0)
        manager = wl_registry_bind(registry, name, &zwlr_virtual_pointer_manager_v1_interface, 1);
}

static void globalRemove(void* data, struct wl_registry* registry, uint32_t name)
{
    (void)data;
    (void)registry;
    (void)name;
}

static const struct wl_registry_listener listener = {global, globalRemove};

static uint32_t milliseconds(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (uint32_t)(now.tv_sec * 1000 + now.tv_nsec / 1000000);
}

int main(void)
{
    struct wl_display* display = wl_display_connect(NULL);
    double x, y;
    if (!display)
        return 1;
    wl_registry_add_listener(wl_display_get_registry(display), &listener, NULL);
    wl_display_roundtrip(display);
    if (!manager)
        return 1;
    struct zwlr_virtual_pointer_v1* pointer =
        zwlr_virtual_pointer_manager_v1_create_virtual_pointer(manager, NULL);
    wl_display_roundtrip(display);
    int fd = openSocket();
    if (fd < 0)
        return 1;
    for (;;) {
        if (!receiveTouch(fd, &x, &y))
            continue;
        const uint32_t extent = 1u << 18;
        zwlr_virtual_pointer_v1_motion_absolute(
            pointer, milliseconds(), (uint32_t)(x * extent), (uint32_t)(y * extent), extent, extent);
        zwlr_virtual_pointer_v1_frame(pointer);
        wl_display_flush(display);
    }
}
