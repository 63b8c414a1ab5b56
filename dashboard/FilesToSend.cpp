#include "dashboard/FilesToSend.h"

#include "platform/Text.h"

#include <utility>

namespace companion {

namespace {

constexpr std::size_t longestUrlShown = 200;

} // namespace

FilesToSend::FilesToSend(FileUploads& uploads, Alerts& alerts, DashboardView& view, const PairedPanel& panel)
    : m_uploads(uploads)
    , m_alerts(alerts)
    , m_view(view)
    , m_panel(panel)
{
}

void FilesToSend::add(const std::vector<std::string>& urls)
{
    for (const std::string& url : urls) {
        if (std::optional<FileUrl> file = FileUrl::fromText(url))
            m_files.push_back(std::move(*file));
        else if (!m_alerts.runModal("Cannot upload",
                     "\"" + printable(url, longestUrlShown) + "\" is not a file on this computer."))
            return;
    }
    sendNext();
}

void FilesToSend::sendNext()
{
    while (!m_isSending && !m_files.empty() && m_panel.ipAddress) {
        const FileUrl file = std::move(m_files.front());
        m_files.pop_front();
        const auto whenEnded = [weakSelf = weak_from_this()] {
            if (const auto self = weakSelf.lock()) {
                self->m_isSending = false;
                self->sendNext();
            }
        };
        if (!m_uploads.passesUploadGate())
            m_files.clear(); // the panel takes none of them, which needs saying once
        else
            m_isSending = m_uploads.uploadReadable(file, whenEnded);
    }
    showWhatWaits();
}

bool FilesToSend::waitsForPanel() const
{
    return !m_files.empty() && !m_panel.ipAddress;
}

void FilesToSend::showWhatWaits()
{
    const bool doWait = waitsForPanel();
    m_view.setFilesWaiting(doWait ? m_files.size() : 0, doWait ? m_files.front().lastPathComponent() : "");
}

} // namespace companion
