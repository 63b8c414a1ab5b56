#pragma once

#include <memory>
#include <QRectF>
#include <QString>

class QPainter;
class QRect;
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

    /// Draws it as large as fits into `bounds`, in its middle.
    void paint(QPainter& painter, const QRectF& bounds) const;

    /// Fills `bounds` with it in its own size: its corners, a third of it each way, stand in the corners, and what
    /// lies between them is repeated a whole number of times, so that a pattern fits at any proportions. Where `leftOut`
    /// is, the pattern is left out of what lies between all four corners.
    void paintTiled(QPainter& painter, const QRect& bounds, const QRectF& leftOut = {}) const;

    /// The path of the image's file in the program's resources.
    static QString path(const QString& name);

private:
    QString m_name;
    std::unique_ptr<QSvgRenderer> m_renderer;
};

} // namespace companion
