#include "ui/ImageView.h"

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

void ImageView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    m_image.paint(painter, rect());
}

} // namespace companion
