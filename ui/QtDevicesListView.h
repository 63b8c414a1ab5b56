#pragma once

#include "discovery/DevicesListView.h"

#include <memory>
#include <QWidget>

namespace Ui {
class DevicesListScene;
}

namespace companion {

class DevicesListViewController;

/// The list of panels with its header and its disconnect button, as it stands in the popover.
class QtDevicesListView : public QWidget, public DevicesListView {
    Q_OBJECT

public:
    explicit QtDevicesListView(QWidget* parent = nullptr);
    ~QtDevicesListView() override;

    QString heading() const;

    /// Whom clicks are told to and where rows come from; it is replaced by null before it goes, unless the view is neither
    /// shown nor clicked any more.
    void setController(DevicesListViewController* controller);

    void reloadData() override;
    void setIconOfCell(std::int64_t column, std::int64_t row, const std::string& imageName) override;
    void setDisconnectButtonHeight(double height) override;
    std::int64_t clickedRow() const override { return m_clickedRow; }
    std::int64_t clickedColumn() const override { return m_clickedColumn; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    void style();
    void setFonts();
    void fitRows();

    std::unique_ptr<Ui::DevicesListScene> m_scene;
    DevicesListViewController* m_controller = nullptr;
    bool m_hasBeenShown = false;
    std::int64_t m_clickedRow = -1;
    std::int64_t m_clickedColumn = -1;
};

} // namespace companion
