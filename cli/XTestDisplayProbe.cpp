#include "cli/XTestDisplayProbe.h"

#include <cstdlib>
#include <dlfcn.h>
#include <unistd.h>

namespace companion::cli {

namespace {

using X = DisplayFacts::X;

std::string environmentText(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

/// Xlib ends the process after a lost connection unless its handler does not return.
int waitForEver(void* /*display*/)
{
    for (;;)
        pause();
}

template <typename Function> Function symbol(void* library, const char* name)
{
    return reinterpret_cast<Function>(dlsym(library, name));
}

/// Signatures as in XOpenDisplay(3), XCloseDisplay(3), XSetIOErrorHandler(3) and XTestQueryExtension(3).
struct Xlib {
    void* x11 = dlopen("libX11.so.6", RTLD_NOW);
    void* xtst = dlopen("libXtst.so.6", RTLD_NOW);
    void* (*openDisplay)(const char*) = nullptr;
    int (*closeDisplay)(void*) = nullptr;
    void* (*setIOErrorHandler)(int (*)(void*)) = nullptr;
    int (*queryXTest)(void*, int*, int*, int*, int*) = nullptr;

    bool load()
    {
        if (!x11 || !xtst)
            return false;
        openDisplay = symbol<decltype(openDisplay)>(x11, "XOpenDisplay");
        closeDisplay = symbol<decltype(closeDisplay)>(x11, "XCloseDisplay");
        setIOErrorHandler = symbol<decltype(setIOErrorHandler)>(x11, "XSetIOErrorHandler");
        queryXTest = symbol<decltype(queryXTest)>(xtst, "XTestQueryExtension");
        return openDisplay && closeDisplay && setIOErrorHandler && queryXTest;
    }
};

/// The libraries stay loaded: libXtst leaves hooks in libX11.
X lookAtDisplay()
{
    Xlib xlib;
    if (!xlib.load())
        return X::noLibrary;
    xlib.setIOErrorHandler(waitForEver);
    void* display = xlib.openDisplay(nullptr);
    if (!display)
        return X::cannotOpen;
    int ignored = 0;
    const bool hasXTest = xlib.queryXTest(display, &ignored, &ignored, &ignored, &ignored) != 0;
    xlib.closeDisplay(display);
    return hasXTest ? X::usable : X::noXTest;
}

} // namespace

DisplayFacts XTestDisplayProbe::look(std::chrono::milliseconds time)
{
    DisplayFacts facts;
    facts.display = environmentText("DISPLAY");
    facts.waylandDisplay = environmentText("WAYLAND_DISPLAY");
    if (!facts.display.empty())
        facts.x = m_calls.call(time, lookAtDisplay).value_or(X::silent);
    return facts;
}

} // namespace companion::cli
