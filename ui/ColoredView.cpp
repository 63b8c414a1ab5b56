#include "ui/ColoredView.h"

#include <QPainter>

namespace companion {

ColoredView::ColoredView(QWidget* parent)
    : QWidget(parent)
{
}

void ColoredView::setBackgroundColor(const QColor& color)
{
    m_backgroundColor = color;
    update();
}

void ColoredView::paintEvent(QPaintEvent*)
{
    if (m_backgroundColor.isValid())
        QPainter(this).fillRect(rect(), m_backgroundColor);
}

} // namespace companion
