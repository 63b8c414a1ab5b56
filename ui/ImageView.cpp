#include "ui/ImageView.h"

#include <QLayout>
#include <QPainter>

namespace companion {

ImageView::ImageView(QWidget* parent)
    : QWidget(parent)
{
}

void ImageView::setImageName(const QString& name)
{
    m_image.setName(name);
    updateGeometry();
    update();
}

QSize ImageView::sizeHint() const
{
    return layout() ? QWidget::sizeHint() : m_image.size();
}

void ImageView::paintEvent(QPaintEvent*)
{
    const bool isRecognisable = 2 * height() >= m_image.size().height();
    if (!isRecognisable)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    m_image.paint(painter, rect());
}

} // namespace companion
