#pragma once

#include <cstdint>
#include <string>

namespace companion {

/// The table of panels and its disconnect button, as far as their controller works them. Main thread only.
///
/// A row's icon is the view's: it belongs to the row's number, starts as "radioIcon" and stays what it was last
/// set to when rows are reloaded.
class DevicesListView {
public:
    virtual ~DevicesListView() = default;

    /// Asks the controller anew for the number of rows and for the texts of those on screen.
    virtual void reloadData() = 0;

    /// "radioIcon" or "connectedChain" for the cell of a row, scrolled out of sight or gone for the moment included;
    /// nothing happens when there never was one at that place, as for negative numbers.
    virtual void setIconOfCell(std::int64_t column, std::int64_t row, const std::string& imageName) = 0;

    /// Points; 0 hides the button, which is there otherwise.
    virtual void setDisconnectButtonHeight(double height) = 0;

    /// Where the click was that the controller is being told of, -1 outside the rows or columns.
    virtual std::int64_t clickedRow() const = 0;
    virtual std::int64_t clickedColumn() const = 0;
};

} // namespace companion
