#pragma once

#include "dashboard/DashboardView.h"
#include "platform/testing/FakeAlerts.h"
#include "platform/testing/FakeLog.h"
#include "platform/testing/Transcript.h"

#include <functional>
#include <map>
#include <vector>

namespace companion::testing {

/// Writes "show castButton", "hide hdmiMessage", "status Paired to 0A00020F", "cast image castingActive", "switch on",
/// "drop image fileUploadGrid", "arrow image uploadArrow", "present devices list", "present settings" and
/// "show upload a.png". Panes are shown until they are hidden.
class FakeDashboardView : public DashboardView, public ITSwitchLayers {
public:
    FakeDashboardView(Transcript& transcript, MainQueue& mainQueue)
        : m_transcript(transcript)
        , m_log(transcript)
        , m_alerts(transcript)
        , m_dropArea(m_alerts, m_log, mainQueue)
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
    void setTouchState(TouchState state, const std::string& sender) override
    {
        static constexpr const char* names[] = {
            "not expected", "no port", "awaited", "missing", "ignored", "works", "works from elsewhere"};
        touchStates.add(names[static_cast<std::size_t>(state)] + (sender.empty() ? "" : " " + sender));
    }
    void setCastButtonImage(const std::string& name) override { m_transcript.add("cast image " + name); }
    void setFileUploadViewImage(const std::string& name) override { m_transcript.add("drop image " + name); }
    void setUploadArrowImage(const std::string& name) override { m_transcript.add("arrow image " + name); }
    DragDropView& fileUploadView() override { return m_dropArea; }
    ITSwitch& wirelessTouchSwitch() override { return m_switch; }

    void showUpload(const std::string& fileName, std::weak_ptr<UploadUnderWay> upload) override
    {
        m_transcript.add("show upload " + fileName);
        uploads.push_back(std::move(upload));
        if (whenUploadIsShown)
            whenUploadIsShown();
    }

    void setFilesWaiting(std::size_t count, const std::string& firstName) override
    {
        filesWaiting = count == 0 ? "" : std::to_string(count) + " " + firstName;
    }

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
    std::vector<std::weak_ptr<UploadUnderWay>> uploads;
    std::string filesWaiting; ///< "2 a.png"; empty for none
    Transcript touchStates;   ///< "awaited", "works from elsewhere 10.0.2.99"
    std::function<void()> whenUploadIsShown;

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
    FakeAlerts m_alerts;
    ITSwitch m_switch{m_log};
    DragDropView m_dropArea;
};

} // namespace companion::testing
