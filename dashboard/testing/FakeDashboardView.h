#pragma once

#include "dashboard/DashboardView.h"
#include "platform/testing/FakeLog.h"
#include "platform/testing/Transcript.h"

#include <map>

namespace companion::testing {

/// Writes "show castButton", "hide hdmiMessage", "status Paired to 0A00020F", "cast image castingActive", "switch on",
/// "present devices list" and "present settings". Panes are shown until they are hidden.
class FakeDashboardView : public DashboardView, public ITSwitchLayers {
public:
    explicit FakeDashboardView(Transcript& transcript)
        : m_transcript(transcript)
        , m_log(transcript)
    {
        m_switch.setLayers(this);
        m_transcript.clear();
    }

    void setHidden(Pane pane, bool hidden) override
    {
        isHidden[pane] = hidden;
        m_transcript.add((hidden ? "hide " : "show ") + nameOf(pane));
    }

    void setDeviceStatus(const std::string& text) override { m_transcript.add("status " + text); }
    void setCastButtonImage(const std::string& name) override { m_transcript.add("cast image " + name); }
    ITSwitch& wirelessTouchSwitch() override { return m_switch; }

    void presentDevicesList(DevicesListViewController& controller) override
    {
        devicesList = &controller;
        m_transcript.add("present devices list");
    }

    void presentSettings(RelaySettingsViewController& controller) override
    {
        settings = &controller;
        m_transcript.add("present settings");
    }

    void reloadLayerSize() override { }
    void reloadLayer() override
    {
        // One gesture draws several times; what matters is what it leads to.
        if (!m_switch.isActive())
            m_transcript.add(m_switch.checked() ? "switch on" : "switch off");
    }

    /// The names of the panes that are shown, in alphabetical order.
    std::string shownPanes() const
    {
        std::string names;
        for (const Pane pane : {Pane::castButton, Pane::emptyStateImage, Pane::fileUpload, Pane::hdmiMessage,
                 Pane::hdmiToggle}) {
            const auto found = isHidden.find(pane);
            if (found == isHidden.end() || !found->second)
                names += (names.empty() ? "" : " ") + nameOf(pane);
        }
        return names;
    }

    std::map<Pane, bool> isHidden;
    DevicesListViewController* devicesList = nullptr;
    RelaySettingsViewController* settings = nullptr;

private:
    static std::string nameOf(Pane pane)
    {
        switch (pane) {
        case Pane::fileUpload:
            return "fileUpload";
        case Pane::castButton:
            return "castButton";
        case Pane::hdmiToggle:
            return "hdmiToggle";
        case Pane::hdmiMessage:
            return "hdmiMessage";
        case Pane::emptyStateImage:
            return "emptyStateImage";
        }
        return "?";
    }

    Transcript& m_transcript;
    FakeSystemLog m_log;
    ITSwitch m_switch{m_log};
};

} // namespace companion::testing
