#pragma once

#include <memory>
#include <QString>

class QPainter;
class QRectF;
class QSvgRenderer;

namespace companion {

/// One of the program's images by its name ("castingActive"), drawn sharply at any size. Main thread only.
class SvgImage {
public:
    SvgImage();
    ~SvgImage();

    const QString& name() const { return m_name; }

    /// Loads the image; an unknown name leaves an empty one.
    void setName(const QString& name);

    /// Draws it as large as fits into `bounds`, in its middle, or stretched over all of it.
    void paint(QPainter& painter, const QRectF& bounds, Qt::AspectRatioMode mode = Qt::KeepAspectRatio) const;

    /// The path of the image's file in the program's resources.
    static QString path(const QString& name);

private:
    QString m_name;
    std::unique_ptr<QSvgRenderer> m_renderer;
};

} // namespace companion
