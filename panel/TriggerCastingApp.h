#pragma once

#include "panel/PanelService.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace companion {

/// Asks a panel to open its casting receiver. A request in flight keeps its instance alive.
class TriggerCastingApp : public std::enable_shared_from_this<TriggerCastingApp> {
public:
    static std::shared_ptr<TriggerCastingApp> make(const PanelRequestHost& host);

    TriggerCastingApp(const TriggerCastingApp&) = delete;
    TriggerCastingApp& operator=(const TriggerCastingApp&) = delete;

    /// triggerCastServiceWithSelectedDeviceIP:
    /// Sends one request and returns at once; any complete answer, whatever its status, ends up in
    /// `obtainedDeviceIP`. An absent address is a fatal error. Main thread only.
    void triggerCastService(const std::optional<std::string>& selectedDeviceIP);

    /// The panel address of the last trigger, or the text of the last answer, whichever came last; "" initially. An
    /// answer changes it on the delivery thread. Any thread.
    std::optional<std::string> obtainedDeviceIP() const;
    void setObtainedDeviceIP(std::optional<std::string> text);

private:
    explicit TriggerCastingApp(const PanelRequestHost& host);

    const PanelRequestHost m_host;
    mutable std::mutex m_mutex;
    std::optional<std::string> m_obtainedDeviceIP = ""; ///< Guarded.
};

} // namespace companion
