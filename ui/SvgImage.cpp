#include "ui/SvgImage.h"

#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QSvgRenderer>

namespace companion {

namespace {

class SvgIconEngine : public QIconEngine {
public:
    explicit SvgIconEngine(const QString& name)
        : m_image(name)
    {
    }

    void paint(QPainter* painter, const QRect& bounds, QIcon::Mode, QIcon::State) override
    {
        m_image.paint(*painter, bounds);
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode, QIcon::State) override { return m_image.pixmap(size); }
    QIconEngine* clone() const override { return new SvgIconEngine(m_image.name()); }

private:
    const SvgImage m_image;
};

} // namespace

SvgImage::SvgImage(const QString& name)
{
    setName(name);
}

SvgImage::~SvgImage() = default;

void SvgImage::setName(const QString& name)
{
    m_name = name;
    m_renderer.reset();
    const QString path = QStringLiteral(":/images/%1.svg").arg(name);
    if (QFile::exists(path))
        m_renderer = std::make_unique<QSvgRenderer>(path);
}

QSize SvgImage::size() const
{
    return m_renderer ? m_renderer->defaultSize() : QSize();
}

void SvgImage::paint(QPainter& painter, const QRectF& bounds) const
{
    if (!m_renderer)
        return;
    QRectF target(QPointF(), QSizeF(m_renderer->defaultSize()).scaled(bounds.size(), Qt::KeepAspectRatio));
    target.moveCenter(bounds.center());
    m_renderer->render(&painter, target);
}

QPixmap SvgImage::pixmap(const QSize& pixels) const
{
    QPixmap pixmap(pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    paint(painter, pixmap.rect());
    return pixmap;
}

QIcon SvgImage::icon(const QString& name)
{
    return QIcon(new SvgIconEngine(name));
}

} // namespace companion
