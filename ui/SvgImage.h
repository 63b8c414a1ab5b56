#pragma once

#include <memory>
#include <QIcon>
#include <QRectF>
#include <QString>

class QPainter;
class QSvgRenderer;

namespace companion {

/// One of the program's images by its name ("castingActive"), drawn sharply at any size, without an image plugin. Main
/// thread only.
class SvgImage {
public:
    explicit SvgImage(const QString& name = {});
    ~SvgImage();

    const QString& name() const { return m_name; }

    /// Loads the image; an unknown name leaves an empty one.
    void setName(const QString& name);

    /// As it was drawn, in points.
    QSize size() const;

    /// Draws it as large as fits into `bounds`, in its middle.
    void paint(QPainter& painter, const QRectF& bounds) const;

    /// On a transparent ground, in so many pixels.
    QPixmap pixmap(const QSize& pixels) const;

    static QIcon icon(const QString& name);

private:
    QString m_name;
    std::unique_ptr<QSvgRenderer> m_renderer;
};

} // namespace companion
