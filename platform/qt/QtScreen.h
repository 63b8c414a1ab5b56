#pragma once

#include "platform/Screen.h"
#include "platform/ScreenMapping.h"

#include <string>
#include <vector>

#include <QString>

class QScreen;

namespace companion {

/// The main screen: the one of the given name as long as it is there, else the desktop's primary one. Asked anew at
/// every call, since screens come and go. Main thread only.
class QtScreen : public Screen {
public:
    explicit QtScreen(const std::optional<std::string>& screenName = std::nullopt);

    /// Whether there is a screen of the given name, or none was given.
    bool isFound() const;

    /// Of the screens that there are, the primary one first.
    static std::vector<std::string> names();

    std::optional<Size> mainScreenSize() const override;

    /// "" when there is no screen.
    std::string mainScreenName() const;

    /// Where the screen lies in the window server's root window; nothing when there is no screen.
    std::optional<ScreenMapping> mapping() const;

private:
    QScreen* namedScreen() const;
    QScreen* mainScreen() const;

    QString m_screenName;
};

} // namespace companion
