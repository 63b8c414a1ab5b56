#include "views/qt/SvgImage.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

namespace companion {

SvgImage::SvgImage() = default;
SvgImage::~SvgImage() = default;

QString SvgImage::path(const QString& name)
{
    return QStringLiteral(":/images/%1.svg").arg(name);
}

void SvgImage::setName(const QString& name)
{
    m_name = name;
    m_renderer.reset();
    if (QFile::exists(path(name)))
        m_renderer = std::make_unique<QSvgRenderer>(path(name));
}

void SvgImage::paint(QPainter& painter, const QRectF& bounds, Qt::AspectRatioMode mode) const
{
    if (!m_renderer)
        return;
    QRectF target(QPointF(), QSizeF(m_renderer->defaultSize()).scaled(bounds.size(), mode));
    target.moveCenter(bounds.center());
    m_renderer->render(&painter, target);
}

} // namespace companion
