#include "ui/PopUpButton.h"

#include <QPainter>
#include <QStyle>

namespace companion {

PopUpButton::PopUpButton(QWidget* parent)
    : QComboBox(parent)
{
    m_arrow.setName(QStringLiteral("dropDown"));
}

void PopUpButton::paintEvent(QPaintEvent* event)
{
    QComboBox::paintEvent(event);
    QPainter painter(this);
    const QRect arrow(width() - 28, (height() - 16) / 2, 16, 16);
    m_arrow.paint(painter, QStyle::visualRect(layoutDirection(), rect(), arrow));
}

} // namespace companion
