#pragma once

#include "discovery/DevicesListView.h"
#include "platform/testing/Transcript.h"

#include <map>

namespace companion::testing {

/// A table of one column in which a test clicks; it writes "reload", "icon 0,1 radioIcon" for a cell that is on
/// screen, and "disconnect button 48".
class FakeDevicesListView : public DevicesListView {
public:
    explicit FakeDevicesListView(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    void reloadData() override { m_transcript.add("reload"); }

    void setIconOfCell(std::int64_t column, std::int64_t row, const std::string& imageName) override
    {
        if (column != 0 || row < 0 || row >= rowsOnScreen)
            return;
        icons[row] = imageName;
        m_transcript.add("icon " + std::to_string(column) + "," + std::to_string(row) + " " + imageName);
    }

    void setDisconnectButtonHeight(double height) override
    {
        disconnectButtonHeight = height;
        m_transcript.add("disconnect button " + std::to_string(static_cast<int>(height)));
    }

    std::int64_t clickedRow() const override { return rowOfClick; }
    std::int64_t clickedColumn() const override { return columnOfClick; }

    std::int64_t rowOfClick = -1;
    std::int64_t columnOfClick = 0;
    std::int64_t rowsOnScreen = 7;
    double disconnectButtonHeight = -1;
    std::map<std::int64_t, std::string> icons;

private:
    Transcript& m_transcript;
};

} // namespace companion::testing
