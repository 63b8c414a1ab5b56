#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace companion {

/// The items of a pop-up button, and which of them is chosen.
struct PopUpItems {
    std::vector<std::string> titles;
    std::size_t selectedIndex = 0;

    bool operator==(const PopUpItems&) const = default;
};

/// The choices of the settings popover. They last as long as the program runs, and nothing reads them.
/// Main thread only.
class RelaySettingsViewController {
public:
    /// viewDidLoad
    /// Called once, when the popover is opened for the first time.
    void viewDidLoad();

    /// Frame rate and resolution; the view stores what the user chose. The items of the device pop-ups are the
    /// view's own.
    PopUpItems& fpsButton() { return m_fpsButton; }
    PopUpItems& sessionPresentButton() { return m_sessionPresentButton; }

private:
    void initUI();

    PopUpItems m_fpsButton;
    PopUpItems m_sessionPresentButton;
};

} // namespace companion
