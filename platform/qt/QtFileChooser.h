#pragma once

#include "platform/FileChooser.h"
#include "platform/Log.h"
#include "platform/qt/WidgetMainQueue.h"

class QWidget;

namespace companion {

/// The desktop's own file dialog where there is one, Qt's otherwise.
class QtFileChooser : public FileChooser {
public:
    /// All must outlive the chooser; `mainQueue` is blocked while the dialog is open.
    QtFileChooser(WidgetMainQueue& mainQueue, SystemLog& log, QWidget& mainWindow);

    /// A choice that is no readable file, or that was typed in and is of another type, counts as none and is logged.
    std::optional<FileUrl> runOpenPanel(
        const std::vector<std::string>& allowedFileTypes, UserFolder startingFolder) override;

private:
    WidgetMainQueue& m_mainQueue;
    SystemLog& m_log;
    QWidget& m_mainWindow;
};

} // namespace companion
