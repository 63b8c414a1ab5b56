#include "bench/touch-path/WaylandPointerObserver.h"

#include "xdg-shell-protocol-client.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>

namespace companion::bench {

namespace {

constexpr int width = 1280;
constexpr int height = 800;

} // namespace

/// What the compositor calls.
struct WaylandPointerObserver::Callbacks {
    static WaylandPointerObserver& self(void* data) { return *static_cast<WaylandPointerObserver*>(data); }

    static void global(
        void* data, wl_registry* registry, std::uint32_t number, const char* interface, std::uint32_t)
    {
        const std::string_view name = interface;
        const auto bind = [&](const wl_interface& wanted) {
            return wl_registry_bind(registry, number, &wanted, /*version=*/1);
        };
        if (name == wl_compositor_interface.name)
            self(data).m_compositor = static_cast<wl_compositor*>(bind(wl_compositor_interface));
        else if (name == wl_shm_interface.name)
            self(data).m_shm = static_cast<wl_shm*>(bind(wl_shm_interface));
        else if (name == xdg_wm_base_interface.name)
            self(data).m_shell = static_cast<xdg_wm_base*>(bind(xdg_wm_base_interface));
        else if (name == wl_seat_interface.name) {
            self(data).m_seat = static_cast<wl_seat*>(bind(wl_seat_interface));
            wl_seat_add_listener(self(data).m_seat, &seatListener, data);
        }
    }

    static void globalRemove(void*, wl_registry*, std::uint32_t) { }

    /// A seat may have its first pointer later.
    static void capabilities(void* data, wl_seat* seat, std::uint32_t what)
    {
        if (!(what & WL_SEAT_CAPABILITY_POINTER) || self(data).m_pointer)
            return;
        self(data).m_pointer = wl_seat_get_pointer(seat);
        wl_pointer_add_listener(self(data).m_pointer, &pointerListener, data);
    }

    static void seatName(void*, wl_seat*, const char*) { }
    static void ping(void*, xdg_wm_base* shell, std::uint32_t serial) { xdg_wm_base_pong(shell, serial); }

    static void configure(void* data, xdg_surface* surface, std::uint32_t serial)
    {
        xdg_surface_ack_configure(surface, serial);
        self(data).paint();
    }

    static void configureWindow(void*, xdg_toplevel*, int, int, wl_array*) { }
    static void close(void*, xdg_toplevel*) { }
    static void enter(void*, wl_pointer*, std::uint32_t, wl_surface*, wl_fixed_t, wl_fixed_t) { }
    static void leave(void*, wl_pointer*, std::uint32_t, wl_surface*) { }

    static void motion(void* data, wl_pointer*, std::uint32_t, wl_fixed_t x, wl_fixed_t y)
    {
        const auto pixel = [](wl_fixed_t value) {
            return static_cast<int>(std::lround(wl_fixed_to_double(value)));
        };
        self(data).m_motions.push_back({pixel(x), pixel(y)});
    }

    static void button(
        void* data, wl_pointer*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t state)
    {
        ++(state == WL_POINTER_BUTTON_STATE_PRESSED ? self(data).m_presses : self(data).m_releases);
    }

    static void axis(void*, wl_pointer*, std::uint32_t, std::uint32_t, wl_fixed_t) { }

    static constexpr wl_registry_listener registryListener{global, globalRemove};
    static constexpr wl_seat_listener seatListener{capabilities, seatName};
    static constexpr xdg_wm_base_listener shellListener{ping};
    static constexpr xdg_surface_listener surfaceListener{configure};
    static constexpr xdg_toplevel_listener windowListener{configureWindow, close, nullptr, nullptr};
    static constexpr wl_pointer_listener pointerListener{
        enter, leave, motion, button, axis, nullptr, nullptr, nullptr, nullptr, nullptr};
};

WaylandPointerObserver::WaylandPointerObserver()
    : m_display(wl_display_connect(nullptr))
{
    if (!m_display)
        throw std::runtime_error("cannot connect to the compositor");
    wl_registry_add_listener(wl_display_get_registry(m_display), &Callbacks::registryListener, this);
    wl_display_roundtrip(m_display);
    if (!m_compositor || !m_shm || !m_seat || !m_shell)
        throw std::runtime_error("the compositor lacks what a window needs");
    showWindow();
    wl_display_roundtrip(m_display);
}

WaylandPointerObserver::~WaylandPointerObserver()
{
    wl_display_disconnect(m_display);
}

void WaylandPointerObserver::showWindow()
{
    xdg_wm_base_add_listener(m_shell, &Callbacks::shellListener, this);
    m_surface = wl_compositor_create_surface(m_compositor);
    xdg_surface* const surface = xdg_wm_base_get_xdg_surface(m_shell, m_surface);
    xdg_surface_add_listener(surface, &Callbacks::surfaceListener, this);
    xdg_toplevel* const window = xdg_surface_get_toplevel(surface);
    xdg_toplevel_add_listener(window, &Callbacks::windowListener, this);
    xdg_toplevel_set_title(window, "Observer");
    xdg_toplevel_set_fullscreen(window, nullptr);
    wl_surface_commit(m_surface);
}

void WaylandPointerObserver::paint()
{
    constexpr int size = width * height * 4;
    const int fd = memfd_create("window", MFD_CLOEXEC);
    if (fd < 0 || ftruncate(fd, size) != 0)
        throw std::runtime_error("no memory for the window");
    wl_shm_pool* const pool = wl_shm_create_pool(m_shm, fd, size);
    wl_buffer* const buffer =
        wl_shm_pool_create_buffer(pool, 0, width, height, width * 4, WL_SHM_FORMAT_XRGB8888);
    wl_shm_pool_destroy(pool);
    close(fd);
    wl_surface_attach(m_surface, buffer, 0, 0);
    wl_surface_damage(m_surface, 0, 0, width, height);
    wl_surface_commit(m_surface);
}

std::optional<PointerObserver::Motion> WaylandPointerObserver::next(TimePoint deadline)
{
    for (;;) {
        if (!m_motions.empty()) {
            const Motion motion = m_motions.front();
            m_motions.pop_front();
            return motion;
        }
        while (wl_display_prepare_read(m_display) != 0)
            wl_display_dispatch_pending(m_display);
        wl_display_flush(m_display);
        if (!m_motions.empty() || !waitReadable(wl_display_get_fd(m_display), deadline)) {
            wl_display_cancel_read(m_display);
            if (m_motions.empty())
                return std::nullopt;
            continue;
        }
        wl_display_read_events(m_display);
        if (wl_display_dispatch_pending(m_display) < 0)
            throw std::runtime_error("the compositor has gone");
    }
}

} // namespace companion::bench
