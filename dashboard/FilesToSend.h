#pragma once

#include "dashboard/FileUploads.h"

#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace companion {

/// Files that another program hands over. They are sent one after the other, the next one when the one before has
/// ended; without a panel they wait for one to be paired. Main thread only.
///
/// Everything it refers to outlives it.
class FilesToSend : public std::enable_shared_from_this<FilesToSend> {
public:
    FilesToSend(FileUploads& uploads, Alerts& alerts, DashboardView& view, const PairedPanel& panel);

    /// What is no file of this computer is refused with an alert.
    void add(const std::vector<std::string>& urls);

    /// Sends the next one, unless one is on its way or no panel is paired.
    void sendNext();

    bool waitsForPanel() const;

    /// Says on the dashboard what waits for a panel.
    void showWhatWaits();

private:
    FileUploads& m_uploads;
    Alerts& m_alerts;
    DashboardView& m_view;
    const PairedPanel& m_panel;
    std::deque<FileUrl> m_files;
    bool m_isSending = false;
};

} // namespace companion
