#include "ui/QtDashboardView.h"

#include "platform/FatalError.h"
#include "translations/Language.h"
#include "ui/Accessibility.h"
#include "ui/Fade.h"
#include "ui/QtDevicesListView.h"
#include "ui/QtSettingsView.h"
#include "ui/Theme.h"
#include "ui_Dashboard.h"

#include <algorithm>

namespace companion {

namespace {

constexpr int widestContent = 1100;
constexpr int smallestSideMargin = 32;
constexpr int widestFileName = 360;
constexpr int castCardWidth = 216;
constexpr int headingSize = 32;
constexpr int bottomMargin = 32;
constexpr Color switchTint{
    11 / 255.0, 122 / 255.0, 101 / 255.0, 1}; // Theme::accent: 5.3 to 1 on the white plate

} // namespace

QtDashboardView::QtDashboardView(Alerts& alerts, SystemLog& log, MainQueue& mainQueue, QWidget* parent)
    : ColoredView(parent)
    , m_scene(std::make_unique<Ui::DashboardScene>())
    , m_wirelessTouchSwitch(log)
    , m_fileUploadView(alerts, log, mainQueue)
{
    m_scene->setupUi(this);
    m_scene->wirelessTouchSwitch->setModel(m_wirelessTouchSwitch);
    m_scene->maskView->setLog(log);
    m_scene->maskView->hide();
    m_scene->touchStateLabel->hide();
    m_devicesListView = new QtDevicesListView(this);
    m_devicesListView->hide();
    style();
    m_scene->fileUploadView->setModel(m_fileUploadView);
    connectControls();
}

QtDashboardView::~QtDashboardView()
{
    // The switch's widget still draws the model, which goes before the base class deletes its children.
    delete m_scene->wirelessTouchSwitch;
}

void QtDashboardView::style()
{
    setBackgroundColor(Qt::white);
    m_scene->castButtonView->makeRound();
    m_scene->castButtonView->setImageName("castingInactive");
    m_scene->toolbarView->setBackgroundColor(QColor(52, 73, 94, qRound(0.25 * 255)));
    m_scene->hdmiToggleView->setBackgroundColor(QColor(34, 34, 34, qRound(0.25 * 255)));
    m_scene->uploadArrowImage->setImageName("uploadArrow");
    m_scene->emptyStateImage->setImageName("emptyState");
    m_scene->hdmiMessageImage->setImageName("touchOn");
    m_scene->toolbarView->setHairline(Qt::BottomEdge);
    m_scene->hdmiToggleView->setHairline(Qt::TopEdge);
    m_wirelessTouchSwitch.setTintColor(switchTint);
    m_scene->devicesListIcon->setIcon(SvgImage::icon("devices"));
    m_scene->settingsIcon->setIcon(SvgImage::icon("settings"));

    Theme::followTextScale(*this, [this] { setFonts(); });

    m_scene->touchStateLabel->setContentsMargins(smallestSideMargin, 0, smallestSideMargin, 0);
    for (QLabel* label : std::initializer_list<QLabel*>{
             m_scene->facingProblemLabel, m_scene->castHintLabel, m_scene->touchStateLabel}) {
        QPalette quiet = label->palette();
        quiet.setColor(QPalette::WindowText, QColor(Theme::secondaryText));
        label->setPalette(quiet);
    }
}

void QtDashboardView::setFonts()
{
    using Theme::FontFace;
    for (QLabel* label :
        std::initializer_list<QLabel*>{m_scene->emptyStateHeading, m_scene->fileUploadHeading})
        label->setFont(Theme::font(FontFace::semiBold, 22));
    for (QLabel* label : std::initializer_list<QLabel*>{
             m_scene->dragAndDropLabel, m_scene->emptyStateLabel, m_scene->castHintLabel})
        label->setFont(Theme::font(FontFace::regular, 12));
    m_scene->deviceStatusLabel->setFont(Theme::font(FontFace::regular, 16));
    for (QLabel* label : std::initializer_list<QLabel*>{m_scene->facingProblemLabel, m_scene->enableHDMILabel,
             m_scene->deviceHDMISubLabel, m_scene->wirelessTouchStatusLabel, m_scene->touchStateLabel})
        label->setFont(Theme::font(FontFace::regular, 16));
    m_scene->castCaptionLabel->setFont(Theme::font(FontFace::medium, 16));
    for (QPushButton* button : {m_scene->connectButton, m_scene->fileUploadButton})
        button->setFont(Theme::font(FontFace::regular, 14)); // views with a style sheet inherit none
    fitMessage();
}

void QtDashboardView::connectControls()
{
    using Signal = void (QtDashboardView::*)();
    const auto emitUnlessUnderAlert = [this](QAbstractButton* button, Signal signal) {
        connect(button, &QAbstractButton::clicked, this, [this, signal] {
            if (!isUnderAlert(*this))
                Q_EMIT(this->*signal)();
        });
    };
    emitUnlessUnderAlert(m_scene->connectButton, &QtDashboardView::connectButtonClicked);
    emitUnlessUnderAlert(m_scene->castButtonView, &QtDashboardView::castButtonClicked);
    emitUnlessUnderAlert(m_scene->fileUploadButton, &QtDashboardView::uploadFileAction);
    connect(m_scene->devicesListIcon, &QToolButton::clicked, this, [this] {
        if (!isUnderAlert(*this) && !closeIfOpen(m_devicesPopover))
            Q_EMIT devicesListIconClicked();
    });
    connect(m_scene->settingsIcon, &QToolButton::clicked, this, [this] {
        if (!isUnderAlert(*this) && !closeIfOpen(m_settingsPopover))
            Q_EMIT settingsIconClicked();
    });
}

/// A second click on what opened a popover closes it; whatever else asks for one that is open wants to see it.
bool QtDashboardView::closeIfOpen(Popover* popover)
{
    const bool isOpen = popover && popover->isVisible();
    if (isOpen)
        popover->dismiss();
    return isOpen;
}

QWidget& QtDashboardView::paneView(Pane pane) const
{
    switch (pane) {
    case Pane::fileUpload:
        return *m_scene->fileUploadView;
    case Pane::castButton:
        return *m_scene->castButtonView;
    case Pane::hdmiToggle:
        return *m_scene->hdmiToggleView;
    case Pane::hdmiMessage:
        return *m_scene->hdmiMessageView;
    case Pane::emptyStateImage:
        return *m_scene->emptyStateImageView;
    }
    fatalError("no such pane");
}

void QtDashboardView::setHidden(Pane pane, bool hidden)
{
    paneView(pane).setHidden(hidden);
    if (pane == Pane::castButton)
        m_scene->castCardView->setHidden(hidden);
    fitMessage();
    keepPlaceOfHdmiPane(m_scene->emptyStateImageView->isHidden());
    placeTouchState();
}

/// Beside the drop area there is no room for the message's picture, nor for what larger texts would like to have.
void QtDashboardView::fitMessage()
{
    const bool isAlone = m_scene->fileUploadView->isHidden();
    m_scene->hdmiMessageImage->setVisible(isAlone);
    const bool isMessageBeside = !isAlone && !m_scene->hdmiMessageView->isHidden();
    QFont heading = Theme::font(Theme::FontFace::semiBold, headingSize);
    const bool isHintHidden = isMessageBeside && heading.pixelSize() > headingSize;
    if (isHintHidden != m_scene->castHintLabel->isHidden())
        m_scene->castHintLabel->setHidden(isHintHidden);
    if (isMessageBeside)
        heading.setPixelSize(headingSize);
    m_scene->deviceHDMIMainLabel->setFont(heading);
    m_scene->castCardView->setFixedWidth(
        isMessageBeside ? castCardWidth : (castCardWidth + Theme::scaled(castCardWidth)) / 2);
}

/// Casting hides the pane, and the button that was just pressed must not move for it.
void QtDashboardView::keepPlaceOfHdmiPane(bool isKept)
{
    QSizePolicy policy = m_scene->hdmiToggleView->sizePolicy();
    policy.setRetainSizeWhenHidden(isKept);
    m_scene->hdmiToggleView->setSizePolicy(policy);
}

/// In the bar that casting leaves empty, or else below the panes.
void QtDashboardView::placeTouchState()
{
    const bool isBarEmpty = m_scene->hdmiToggleView->isHidden();
    m_scene->maskedLayout->addWidget(m_scene->touchStateLabel, isBarEmpty ? 2 : 1, 0);
    const bool isBelowPanes = !isBarEmpty && !m_scene->touchStateLabel->isHidden();
    QMargins margins = m_scene->panesLayout->contentsMargins();
    margins.setBottom(isBelowPanes ? 0 : bottomMargin);
    m_scene->panesLayout->setContentsMargins(margins);
}

/// In a wide window what belongs together stays together.
void QtDashboardView::resizeEvent(QResizeEvent*)
{
    const int side = std::max(smallestSideMargin, (width() - widestContent) / 2);
    for (QLayout* layout : {m_scene->panesLayout, m_scene->hdmiToggleLayout}) {
        const QMargins margins = layout->contentsMargins();
        layout->setContentsMargins(side, margins.top(), side, margins.bottom());
    }
}

void QtDashboardView::setDeviceStatus(const std::string& text)
{
    m_scene->deviceStatusLabel->setText(shown(text)); // which screen readers are told of by itself
}

QString QtDashboardView::touchText(TouchState state, const QString& sender)
{
    switch (state) {
    case TouchState::notExpected:
        return {};
    case TouchState::noPort:
        return tr("No touch: UDP port 41863 cannot be opened (panelctl doctor says why)");
    case TouchState::awaited:
        return tr("Waiting for the first touch");
    case TouchState::missing:
        return tr("No touch yet: a firewall may block UDP port 41863 (see panelctl doctor)");
    case TouchState::ignored:
        return tr("Touches from %1 are ignored, as that is not the panel").arg(sender);
    case TouchState::works:
        return tr("Touch works");
    case TouchState::worksFromElsewhere:
        return tr("Touch works, but from %1, which is not the panel's address").arg(sender);
    }
    fatalError("no such touch state");
}

void QtDashboardView::setTouchState(TouchState state, const std::string& sender)
{
    m_touchState = state;
    m_touchSender = QString::fromStdString(sender);
    showTouchText();
}

void QtDashboardView::setTouchObstacle(const std::string& sentence)
{
    m_touchObstacle = shown(sentence);
    showTouchText();
}

/// A label that is showing announces its new text to screen readers by itself.
void QtDashboardView::showTouchText()
{
    m_scene->touchStateLabel->setVisible(m_touchState != TouchState::notExpected);
    placeTouchState();
    m_scene->touchStateLabel->setText(
        m_touchObstacle.isEmpty() ? touchText(m_touchState, m_touchSender) : m_touchObstacle);
}

void QtDashboardView::setCastButtonImage(const std::string& imageName)
{
    if (imageName == m_scene->castButtonView->imageName().toStdString())
        return;
    fade(*m_scene->castCardView, m_scene->castCardView->rect(), [&] { showCastState(imageName); });
}

void QtDashboardView::showCastState(const std::string& imageName)
{
    m_scene->castButtonView->setImageName(QString::fromStdString(imageName));
    const bool isCasting = imageName == "castingActive";
    m_scene->castButtonView->setActive(isCasting);
    m_scene->castCaptionLabel->setText(isCasting ? tr("Stop casting") : tr("Start casting"));
    m_scene->castHintLabel->setText(isCasting ? tr("Touches on the panel work this computer")
                                              : tr("Show this screen on the panel and work it by touch"));
    m_scene->castButtonView->setToolTip(
        isCasting ? tr("Stop casting to the panel") : tr("Cast the screen to the panel"));
}

void QtDashboardView::setFileUploadViewImage(const std::string& imageName)
{
    changeDropArea(*m_scene->fileUploadView, imageName);
    m_scene->fileUploadHeading->setText(
        imageName == "fileUploadGridActive" ? tr("Drop it to send it") : tr("Send a file"));
}

void QtDashboardView::setUploadArrowImage(const std::string& imageName)
{
    changeDropArea(*m_scene->uploadArrowImage, imageName);
}

void QtDashboardView::changeDropArea(ImageView& image, const std::string& imageName)
{
    const QString name = QString::fromStdString(imageName);
    if (name == image.imageName()) // while a drag moves
        return;
    fade(*m_scene->fileUploadView, m_scene->fileUploadView->rect(), [&] { image.setImageName(name); });
}

void QtDashboardView::showUpload(const std::string& fileName, std::weak_ptr<UploadUnderWay> upload)
{
    m_scene->uploadProgressBars->add(QString::fromStdString(fileName), std::move(upload));
}

/// A file's name may be longer than the window is wide, and is text, whatever it holds.
void QtDashboardView::setFilesWaiting(std::size_t count, const std::string& firstName)
{
    QLabel& label = *m_scene->emptyStateLabel;
    if (m_emptyStateText.isEmpty())
        m_emptyStateText = label.text();
    label.setTextFormat(Qt::PlainText);
    if (count == 0)
        label.setText(m_emptyStateText);
    else if (count == 1)
        label.setText(tr("\"%1\" will be sent to the panel that you pick.")
                          .arg(label.fontMetrics().elidedText(QString::fromStdString(firstName),
                              Qt::ElideMiddle, Theme::scaled(widestFileName))));
    else
        label.setText(
            tr("%n files will be sent to the panel that you pick.", nullptr, static_cast<int>(count)));
}

void QtDashboardView::presentDevicesList(DevicesListViewController&)
{
    if (!m_devicesPopover)
        m_devicesPopover =
            new Popover(*this, *m_scene->devicesListIcon, *m_devicesListView, m_devicesListView->heading());
    m_devicesPopover->present();
}

void QtDashboardView::presentSettings(RelaySettingsViewController& controller)
{
    if (!m_settingsPopover) {
        m_settingsView = new QtSettingsView(this);
        m_settingsView->showItems(controller);
        m_settingsPopover =
            new Popover(*this, *m_scene->settingsIcon, *m_settingsView, m_settingsView->heading());
    }
    m_settingsPopover->present();
}

} // namespace companion
