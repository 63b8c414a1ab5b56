#include "ui/PopUpButton.h"

#include <QAbstractItemView>
#include <QPainter>
#include <QStyle>

namespace companion {

namespace {

constexpr int gap = 5; // of which the style takes one back

} // namespace

PopUpButton::PopUpButton(QWidget* parent)
    : QComboBox(parent)
{
    m_arrow.setName(QStringLiteral("dropDown"));
    // The gap belongs to the pop-up's window: a window that is open cannot be moved on every desktop.
    QWidget* const popUp = view()->parentWidget();
    popUp->setAttribute(Qt::WA_TranslucentBackground);
    popUp->setContentsMargins(0, gap, 0, gap);
}

void PopUpButton::paintEvent(QPaintEvent* event)
{
    QComboBox::paintEvent(event);
    QPainter painter(this);
    const QRect arrow(width() - 28, (height() - 16) / 2, 16, 16);
    m_arrow.paint(painter, QStyle::visualRect(layoutDirection(), rect(), arrow));
}

} // namespace companion
