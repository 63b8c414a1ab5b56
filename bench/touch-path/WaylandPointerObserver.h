#pragma once

#include "bench/touch-path/PointerObserver.h"

#include <deque>

struct wl_compositor;
struct wl_display;
struct wl_pointer;
struct wl_seat;
struct wl_shm;
struct wl_surface;
struct xdg_wm_base;

namespace companion::bench {

/// On the compositor that $WAYLAND_DISPLAY names, which has one screen of 1280 × 800.
class WaylandPointerObserver : public PointerObserver {
public:
    WaylandPointerObserver();
    ~WaylandPointerObserver() override;
    WaylandPointerObserver(const WaylandPointerObserver&) = delete;
    WaylandPointerObserver& operator=(const WaylandPointerObserver&) = delete;

    std::optional<Motion> next(TimePoint deadline) override;

    /// Of all buttons, so far.
    int presses() const { return m_presses; }
    int releases() const { return m_releases; }

private:
    struct Callbacks;

    void showWindow();
    void paint();

    wl_display* m_display;
    wl_compositor* m_compositor = nullptr;
    wl_shm* m_shm = nullptr;
    wl_seat* m_seat = nullptr;
    wl_pointer* m_pointer = nullptr;
    xdg_wm_base* m_shell = nullptr;
    wl_surface* m_surface = nullptr;
    std::deque<Motion> m_motions;
    int m_presses = 0;
    int m_releases = 0;
};

} // namespace companion::bench
