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

    /// Whether the image's middle is repeated to fill the view, which otherwise shows it as large as fits. The pattern
    /// stays clear of the view's children.
    void setTiled(bool isTiled);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    SvgImage m_image;
    bool m_isTiled = false;
};

} // namespace companion
