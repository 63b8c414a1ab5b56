#include "cli/SystemProbes.h"
#include "cli/WaylandFacts.h"

#include <cstdlib>
#include <dlfcn.h>

namespace companion::cli {

namespace {

using X = DisplayFacts::X;

std::string environmentText(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

template <typename Function> Function symbol(void* library, const char* name)
{
    return reinterpret_cast<Function>(dlsym(library, name));
}

/// libxcb as in its manual pages and xcb.h, found while the program runs: panelctl starts without it. A connection, an
/// extension's name and what is known of an extension are only handed on here.
struct Xcb {
    void* xcb = dlopen("libxcb.so.1", RTLD_NOW);
    void* xtest = dlopen("libxcb-xtest.so.0", RTLD_NOW);
    void* (*connect)(const char*, int*) = nullptr;
    void (*disconnect)(void*) = nullptr;
    int (*hasError)(void*) = nullptr;
    const unsigned char* (*extensionData)(void*, void*) = nullptr;
    void* testId = nullptr;

    bool load()
    {
        if (!xcb || !xtest)
            return false;
        connect = symbol<decltype(connect)>(xcb, "xcb_connect");
        disconnect = symbol<decltype(disconnect)>(xcb, "xcb_disconnect");
        hasError = symbol<decltype(hasError)>(xcb, "xcb_connection_has_error");
        extensionData = symbol<decltype(extensionData)>(xcb, "xcb_get_extension_data");
        testId = dlsym(xtest, "xcb_test_id");
        return connect && disconnect && hasError && extensionData && testId;
    }

    bool hasXTest(void* connection) const
    {
        // The server's reply to QueryExtension; its ninth byte is "present" (X Window System Protocol, appendix B).
        constexpr int present = 8;
        const unsigned char* const reply = extensionData(connection, testId);
        return reply && reply[present] != 0;
    }
};

X lookAtDisplay()
{
    Xcb xcb;
    if (!xcb.load())
        return X::noLibrary;
    void* const connection = xcb.connect(nullptr, nullptr);
    X found = X::cannotOpen;
    if (xcb.hasError(connection) == 0)
        found = xcb.hasXTest(connection) ? X::usable : X::noXTest;
    xcb.disconnect(connection);
    return found;
}

/// The best way that there is.
std::optional<InputWay> waylandWay(
    const std::string& waylandDisplay, std::chrono::milliseconds time, BoundedCalls& calls)
{
    if (waylandDisplay.empty())
        return std::nullopt;
    if (hasVirtualPointer(waylandDisplay, time))
        return InputWay::virtualPointer;
    return calls.call(time, hasRemoteDesktopPortal).value_or(false) ? std::optional(InputWay::portal)
                                                                    : std::nullopt;
}

} // namespace

DisplayFacts XTestDisplayProbe::look(std::chrono::milliseconds time)
{
    DisplayFacts facts;
    facts.display = environmentText("DISPLAY");
    facts.waylandDisplay = environmentText("WAYLAND_DISPLAY");
    facts.wayland = waylandWay(facts.waylandDisplay, time, m_calls);
    if (!facts.display.empty())
        facts.x = m_calls.call(time, lookAtDisplay).value_or(X::silent);
    return facts;
}

} // namespace companion::cli
