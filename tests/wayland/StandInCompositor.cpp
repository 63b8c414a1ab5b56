// stand-in-compositor SOCKET VERSION OUTPUT...: offers a virtual pointer of that version and these outputs at a socket in
// $XDG_RUNTIME_DIR, and prints what it is asked for, a line each: "pointer OUTPUT", "motion X Y WIDTH HEIGHT", "press",
// "release"; "ready" comes first.
#include "virtual-pointer-protocol-server.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <wayland-server-core.h>
#include <wayland-server-protocol.h>

namespace {

void destroyResource(wl_client*, wl_resource* resource)
{
    wl_resource_destroy(resource);
}

void motion(wl_client*, wl_resource*, std::uint32_t, wl_fixed_t, wl_fixed_t) { }

void motionAbsolute(wl_client*, wl_resource*, std::uint32_t, std::uint32_t x, std::uint32_t y,
    std::uint32_t width, std::uint32_t height)
{
    std::printf("motion %u %u %u %u\n", x, y, width, height);
}

void button(wl_client*, wl_resource*, std::uint32_t, std::uint32_t, std::uint32_t state)
{
    std::puts(state == WL_POINTER_BUTTON_STATE_PRESSED ? "press" : "release");
}

void axis(wl_client*, wl_resource*, std::uint32_t, std::uint32_t, wl_fixed_t) { }
void frame(wl_client*, wl_resource*) { }
void axisSource(wl_client*, wl_resource*, std::uint32_t) { }
void axisStop(wl_client*, wl_resource*, std::uint32_t, std::uint32_t) { }
void axisDiscrete(wl_client*, wl_resource*, std::uint32_t, std::uint32_t, wl_fixed_t, std::int32_t) { }

constexpr struct zwlr_virtual_pointer_v1_interface pointerRequests = {
    motion, motionAbsolute, button, axis, frame, axisSource, axisStop, axisDiscrete, destroyResource};

void createPointerWithOutput(
    wl_client* client, wl_resource* manager, wl_resource*, wl_resource* output, std::uint32_t id)
{
    std::printf(
        "pointer %s\n", output ? static_cast<const char*>(wl_resource_get_user_data(output)) : "anywhere");
    wl_resource* const pointer =
        wl_resource_create(client, &zwlr_virtual_pointer_v1_interface, wl_resource_get_version(manager), id);
    wl_resource_set_implementation(pointer, &pointerRequests, nullptr, nullptr);
}

void createPointer(wl_client* client, wl_resource* manager, wl_resource* seat, std::uint32_t id)
{
    createPointerWithOutput(client, manager, seat, nullptr, id);
}

constexpr struct zwlr_virtual_pointer_manager_v1_interface managerRequests = {
    createPointer, destroyResource, createPointerWithOutput};

void bindManager(wl_client* client, void*, std::uint32_t version, std::uint32_t id)
{
    wl_resource* const manager =
        wl_resource_create(client, &zwlr_virtual_pointer_manager_v1_interface, static_cast<int>(version), id);
    wl_resource_set_implementation(manager, &managerRequests, nullptr, nullptr);
}

constexpr struct wl_output_interface outputRequests = {destroyResource};

void bindOutput(wl_client* client, void* name, std::uint32_t version, std::uint32_t id)
{
    wl_resource* const output =
        wl_resource_create(client, &wl_output_interface, static_cast<int>(version), id);
    wl_resource_set_implementation(output, &outputRequests, name, nullptr);
    wl_output_send_name(output, static_cast<const char*>(name));
    wl_output_send_done(output);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3)
        return 2;
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    wl_display* const display = wl_display_create();
    if (wl_display_add_socket(display, argv[1]) != 0)
        return 1;
    wl_global_create(
        display, &zwlr_virtual_pointer_manager_v1_interface, std::atoi(argv[2]), nullptr, bindManager);
    for (int i = 3; i < argc; ++i)
        wl_global_create(display, &wl_output_interface, 4, argv[i], bindOutput);
    std::puts("ready");
    wl_display_run(display);
    return 0;
}
