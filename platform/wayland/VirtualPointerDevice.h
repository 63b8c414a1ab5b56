#pragma once

#include "platform/PointerDevice.h"
#include "platform/RetryLimit.h"
#include "platform/ScreenMapping.h"
#include "platform/wayland/VirtualPointerConnection.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace companion {

/// The virtual pointer of a Wayland compositor, on the output of the main screen. Main thread only, which needs an
/// event loop of Qt's, but for `releaseWhenProgramFails`.
///
/// Nothing waits for the compositor but the opening and the destruction. A lost connection is opened again by `flush`, that
/// is at the next touch, at most once a second.
class VirtualPointerDevice : public PointerDevice {
public:
    /// The main screen as it is now; nothing when there is none. Asked at every event.
    using Mapping = std::function<std::optional<ScreenMapping>()>;
    /// Its name, by which the compositor's output is found. Asked when the mapping has changed.
    using ScreenName = std::function<std::string()>;

    /// An empty path stands for the session's compositor. Nothing, and why in one line, when it is not there, or does not
    /// offer a virtual pointer within a second. The log must outlive the device.
    static std::unique_ptr<VirtualPointerDevice> open(const std::string& socketPath, Mapping mapping,
        ScreenName screenName, SystemLog& log, std::string& whyNot);

    /// Waits until the compositor has processed what was posted, for a second at most: it would drop the rest.
    ~VirtualPointerDevice() override;

    /// In points, which Wayland programs count in: the last pixel of a scaled output may be rounded to a point outside.
    std::optional<Size> area() const override;

    void moveTo(Point at) override;
    void setLeftButtonDown(bool isDown) override;
    void flush() override;

    /// Releases a button that an earlier run of the program left held, as the opening does: wlroots 0.15 does not when a
    /// program is killed, and the real mouse then clicks nothing.
    void touchesBegin() override;

    /// Works on a short-lived connection of its own.
    void releaseWhenProgramFails() override;

private:
    VirtualPointerDevice(std::string socketPath, std::unique_ptr<VirtualPointerConnection> connection,
        Mapping mapping, ScreenName screenName, SystemLog& log);

    void use(std::unique_ptr<VirtualPointerConnection> connection);
    void reconnectIfLost();
    void selectOutput();

    const std::string m_socketPath;
    const Mapping m_mapping;
    const ScreenName m_screenName;
    SystemLog& m_log;
    std::unique_ptr<VirtualPointerConnection> m_connection;
    RetryLimit m_reconnects;
    std::optional<ScreenMapping> m_selected; ///< The screen that the output was selected for.
};

} // namespace companion
