#pragma once

#include "ui/SvgImage.h"

#include <QWidget>

namespace companion {

/// A view whose contents is one of the program's images, behind its children.
class ImageView : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QString imageName READ imageName WRITE setImageName)

public:
    explicit ImageView(QWidget* parent = nullptr);

    QString imageName() const { return m_image.name(); }
    void setImageName(const QString& name);

    /// As large as its image, unless it has children; where there is less room, the image is drawn smaller, or left out.
    QSize sizeHint() const override;

protected:
    const SvgImage& image() const { return m_image; }
    void paintEvent(QPaintEvent* event) override;

private:
    SvgImage m_image;
};

} // namespace companion
