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

protected:
    const SvgImage& image() const { return m_image; }
    void paintEvent(QPaintEvent* event) override;

private:
    SvgImage m_image;
};

} // namespace companion
