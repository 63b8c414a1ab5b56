#pragma once

#include "bench/touch-path/PointerObserver.h"

#include <string>

struct _XDisplay;

namespace companion::bench {

class X11PointerObserver : public PointerObserver {
public:
    explicit X11PointerObserver(const std::string& display);
    ~X11PointerObserver() override;
    X11PointerObserver(const X11PointerObserver&) = delete;
    X11PointerObserver& operator=(const X11PointerObserver&) = delete;

    std::optional<Motion> next(TimePoint deadline) override;

private:
    _XDisplay* m_display;
};

} // namespace companion::bench
