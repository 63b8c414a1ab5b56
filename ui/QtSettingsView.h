#pragma once

#include "ui/ColoredView.h"

#include <memory>

class QComboBox;

namespace Ui {
class SettingsScene;
}

namespace companion {

class RelaySettingsViewController;
struct PopUpItems;

/// The casting options, as they stand in the popover.
class QtSettingsView : public ColoredView {
    Q_OBJECT

public:
    explicit QtSettingsView(QWidget* parent = nullptr);
    ~QtSettingsView() override;

    QString heading() const;

    /// Shows the controller's items; what the user chooses is stored there, so it must outlive the view.
    void showItems(RelaySettingsViewController& controller);

private:
    void setFonts();
    void connectPopUp(QComboBox& button, PopUpItems& items);

    std::unique_ptr<Ui::SettingsScene> m_scene;
};

} // namespace companion
