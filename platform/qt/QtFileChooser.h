#pragma once

#include "platform/Alerts.h"
#include "platform/FileChooser.h"
#include "platform/qt/WidgetMainQueue.h"

class QWidget;

namespace companion {

/// The desktop's own file dialog where there is one, Qt's otherwise.
class QtFileChooser : public FileChooser {
public:
    /// All must outlive the chooser; `mainQueue` is blocked while the dialog is open.
    QtFileChooser(WidgetMainQueue& mainQueue, Alerts& alerts, QWidget& mainWindow);

    /// A name of another type that was typed in counts as no choice, and the user is told. The file may be unreadable.
    std::optional<FileUrl> runOpenPanel(
        const std::vector<std::string>& allowedFileTypes, UserFolder startingFolder) override;

private:
    WidgetMainQueue& m_mainQueue;
    Alerts& m_alerts;
    QWidget& m_mainWindow;
};

} // namespace companion
