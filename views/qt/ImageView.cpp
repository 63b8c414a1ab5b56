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

void ImageView::setTiled(bool isTiled)
{
    m_isTiled = isTiled;
    update();
}

void ImageView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_isTiled)
        m_image.paintTiled(painter, rect());
    else
        m_image.paint(painter, rect());
}

} // namespace companion
