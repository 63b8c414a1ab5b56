#include "platform/qt/QtAlerts.h"

#include "platform/qt/QtApplicationActivation.h"
#include "translations/Language.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFontInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLayout>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <utility>

namespace companion {

namespace {

constexpr int margin = 24;
constexpr int width = 440;
constexpr int usualFontSize = 14;
constexpr int messageFontSize = 16;
constexpr int gapAboveButton = 12; // besides the layout's own

/// A length that grows with the texts of the program.
int scaled(int points)
{
    return qRound(points * QFontInfo(QApplication::font()).pixelSize() / double(usualFontSize));
}

/// A message may quote what came from outside; it is text, never mark-up.
void showAsPlainText(QMessageBox& box)
{
    for (QLabel* label : box.findChildren<QLabel*>())
        label->setTextFormat(Qt::PlainText);
    if (auto* message = box.findChild<QLabel*>("qt_msgbox_label")) {
        QFont font = message->font();
        // The boldest that is embedded: what lies above would be smeared from it.
        font.setWeight(QFont::DemiBold);
        font.setPixelSize(scaled(messageFontSize));
        message->setFont(font);
    }
}

/// Not a standard button, which has a word of the toolkit's where our translations are not in use.
void addOkButton(QMessageBox& box)
{
    QPushButton* ok = box.addButton(QCoreApplication::translate("Alert", "OK"), QMessageBox::AcceptRole);
    ok->setAccessibleName(QStringLiteral("OK"));
    ok->setObjectName(QStringLiteral("alertOKButton"));
    box.setDefaultButton(ok);
    box.setEscapeButton(ok);
}

/// The box takes the least width that its layout allows, so that has to be the one.
void makeWide(QMessageBox& box)
{
    for (QLabel* label : box.findChildren<QLabel*>()) {
        if (label->objectName() != QLatin1String("qt_msgboxex_icon_label"))
            label->setWordWrap(true);
    }
    if (auto* layout = qobject_cast<QGridLayout*>(box.layout()))
        layout->addItem(
            new QSpacerItem(scaled(width) - 2 * margin, 0), layout->rowCount(), 0, 1, layout->columnCount());
}

QMessageBox* makeBox(QWidget& parent, const QString& message, const QString& informativeText)
{
    auto* box = new QMessageBox(&parent);
    box->setWindowModality(Qt::ApplicationModal);
    box->setWindowTitle(QGuiApplication::applicationDisplayName());
    box->setText(message);
    box->setInformativeText(informativeText);
    box->setAccessibleName(message);
    box->setAccessibleDescription(informativeText);
    box->setIconPixmap(QApplication::windowIcon().pixmap(64));
    showAsPlainText(*box);
    addOkButton(*box);
    // Last, since the layout is made anew by all of the above.
    box->layout()->setContentsMargins(margin, margin, margin, margin);
    box->findChild<QDialogButtonBox*>()->setContentsMargins(0, gapAboveButton, 0, 0);
    makeWide(*box);
    return box;
}

} // namespace

QtAlerts::QtAlerts(WidgetMainQueue& mainQueue, QWidget& mainWindow, std::function<void()> askForAttention)
    : m_mainQueue(mainQueue)
    , m_mainWindow(mainWindow)
    , m_askForAttention(std::move(askForAttention))
{
}

bool QtAlerts::runModal(const std::string& message, const std::string& informativeText)
{
    const QtMainQueue::Blocker blocker(m_mainQueue);
    // The window that it belongs to may be destroyed, and the box with it, while it is open.
    const QPointer<QMessageBox> box = makeBox(m_mainWindow, shown(message), shown(informativeText));
    if (!m_mainWindow.isActiveWindow()) {
        bringToFront(m_mainWindow);
        QApplication::alert(&m_mainWindow);
        m_askForAttention();
    }
    box->exec();
    delete box;
    return !m_doesProgramEnd;
}

} // namespace companion
