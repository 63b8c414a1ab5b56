#include "ui/QtSettingsView.h"

#include "dashboard/RelaySettingsViewController.h"
#include "ui/Theme.h"
#include "ui_Settings.h"

#include <QComboBox>
#include <QStyledItemDelegate>

namespace companion {

namespace {

constexpr int smallestWidth = 360; // that of the list of panels

} // namespace

QtSettingsView::QtSettingsView(QWidget* parent)
    : ColoredView(parent)
    , m_scene(std::make_unique<Ui::SettingsScene>())
{
    m_scene->setupUi(this);
    setBackgroundColor(Qt::white);
    setFocusProxy(m_scene->fpsButton);
    for (QComboBox* button : findChildren<QComboBox*>())
        button->setItemDelegate(new QStyledItemDelegate(button)); // the default one knows no style sheet
    Theme::followTextScale(*this, [this] { setFonts(); });
}

QtSettingsView::~QtSettingsView() = default;

void QtSettingsView::setFonts()
{
    setMinimumWidth(Theme::scaled(smallestWidth)); // some languages need more
    for (QWidget* view : findChildren<QWidget*>())
        view->setFont(Theme::font(Theme::FontFace::regular, 14)); // with a style sheet they inherit none
    m_scene->settingsHeaderLabel->setFont(Theme::font(Theme::FontFace::medium, 20));
    for (QLabel* label : {m_scene->fpsLabel, m_scene->sessionPresentLabel, m_scene->switchDeviceLabel,
             m_scene->switchAudioDeviceLabel})
        label->setMinimumHeight(m_scene->fpsButton->sizeHint().height()); // for their texts to be on one line
}

QString QtSettingsView::heading() const
{
    return m_scene->settingsHeaderLabel->text();
}

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
