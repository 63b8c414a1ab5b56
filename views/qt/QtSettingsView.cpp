#include "views/qt/QtSettingsView.h"

#include "dashboard/RelaySettingsViewController.h"
#include "ui_Settings.h"

#include <QComboBox>

namespace companion {

QtSettingsView::QtSettingsView(QWidget* parent)
    : ColoredView(parent)
    , m_scene(std::make_unique<Ui::SettingsScene>())
{
    m_scene->setupUi(this);
    setBackgroundColor(Qt::white);
    setMinimumWidth(320);
    setFocusProxy(m_scene->fpsButton);
}

QtSettingsView::~QtSettingsView() = default;

void QtSettingsView::showItems(RelaySettingsViewController& controller)
{
    connectPopUp(*m_scene->fpsButton, controller.fpsButton());
    connectPopUp(*m_scene->sessionPresentButton, controller.sessionPresentButton());
}

void QtSettingsView::connectPopUp(QComboBox& button, PopUpItems& items)
{
    button.disconnect(this);
    button.clear();
    for (const std::string& title : items.titles)
        button.addItem(QString::fromStdString(title));
    button.setCurrentIndex(static_cast<int>(items.selectedIndex));
    connect(&button, &QComboBox::currentIndexChanged, this,
        [&items](int index) { items.selectedIndex = static_cast<std::size_t>(qMax(index, 0)); });
}

} // namespace companion
