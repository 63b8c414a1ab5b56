#include "views/qt/ImageView.h"

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

void ImageView::setStretched(bool isStretched)
{
    m_isStretched = isStretched;
    update();
}

void ImageView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    m_image.paint(painter, rect(), m_isStretched ? Qt::IgnoreAspectRatio : Qt::KeepAspectRatio);
}

} // namespace companion
