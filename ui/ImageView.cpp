#include "ui/ImageView.h"

#include <QEvent>
#include <QPainter>

namespace companion {

ImageView::ImageView(QWidget* parent)
    : QWidget(parent)
{
}

void ImageView::setImageName(const QString& name)
{
    m_image.setName(name);
    update();
}

void ImageView::setTiled(bool isTiled)
{
    m_isTiled = isTiled;
    update();
}

bool ImageView::event(QEvent* event)
{
    const bool isHandled = QWidget::event(event);
    if (event->type() == QEvent::LayoutRequest && m_isTiled)
        update(); // children have moved, and the pattern has with them
    return isHandled;
}

void ImageView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_isTiled)
        m_image.paintTiled(painter, rect(), childrenRegion().boundingRect());
    else
        m_image.paint(painter, rect());
}

} // namespace companion
