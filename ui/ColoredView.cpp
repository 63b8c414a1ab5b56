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

void ColoredView::setHairline(Qt::Edge edge)
{
    m_hairline = edge;
    update();
}

void ColoredView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (m_backgroundColor.isValid())
        painter.fillRect(rect(), m_backgroundColor);
    const QColor line(52, 73, 94, 56);
    if (m_hairline == Qt::TopEdge)
        painter.fillRect(0, 0, width(), 1, line);
    if (m_hairline == Qt::BottomEdge)
        painter.fillRect(0, height() - 1, width(), 1, line);
}

} // namespace companion
