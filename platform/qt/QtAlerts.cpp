#include "platform/qt/QtAlerts.h"

#include "platform/qt/ActiveWindow.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

namespace companion {

namespace {

/// A message may quote what came from outside; it is text, never mark-up.
void showAsPlainText(QMessageBox& box)
{
    for (QLabel* label : box.findChildren<QLabel*>())
        label->setTextFormat(Qt::PlainText);
    if (auto* message = box.findChild<QLabel*>("qt_msgbox_label")) {
        QFont bold = message->font();
        bold.setBold(true);
        message->setFont(bold);
    }
}

/// Not a standard button, since the toolkit translates those.
void addOkButton(QMessageBox& box)
{
    QPushButton* ok = box.addButton(QStringLiteral("OK"), QMessageBox::AcceptRole);
    ok->setObjectName(QStringLiteral("alertOKButton"));
    box.setDefaultButton(ok);
    box.setEscapeButton(ok);
}

QMessageBox* makeBox(const QString& message, const QString& informativeText)
{
    auto* box = new QMessageBox(windowForDialogs());
    box->setWindowModality(Qt::ApplicationModal);
    box->setWindowTitle(QGuiApplication::applicationDisplayName());
    box->setText(message);
    box->setInformativeText(informativeText);
    box->setAccessibleName(message);
    box->setAccessibleDescription(informativeText);
    box->setIconPixmap(QApplication::windowIcon().pixmap(64));
    showAsPlainText(*box);
    addOkButton(*box);
    return box;
}

} // namespace

QtAlerts::QtAlerts(QtMainQueue& mainQueue)
    : m_mainQueue(mainQueue)
{
}

void QtAlerts::runModal(const std::string& message, const std::string& informativeText)
{
    const QtMainQueue::Blocker blocker(m_mainQueue);
    // The window that it belongs to may be destroyed, and the box with it, while it is open.
    const QPointer<QMessageBox> box =
        makeBox(QString::fromStdString(message), QString::fromStdString(informativeText));
    box->exec();
    delete box;
}

} // namespace companion
