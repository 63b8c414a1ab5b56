#pragma once

#include "ui/SvgImage.h"

#include <QAbstractButton>

namespace companion {

/// A round button drawn by one image; only the circle takes clicks.
class RoundButton : public QAbstractButton {
    Q_OBJECT
    Q_PROPERTY(QString imageName READ imageName WRITE setImageName)
    Q_PROPERTY(double cornerRadius READ cornerRadius)
    Q_PROPERTY(bool active READ isActive WRITE setActive)

public:
    explicit RoundButton(QWidget* parent = nullptr);

    QString imageName() const { return m_image.name(); }
    void setImageName(const QString& name);

    double cornerRadius() const { return m_cornerRadius; }

    /// Half of the present width.
    void makeRound();

    /// Whether what the button stands for is running; a screen reader tells it as "pressed".
    bool isActive() const { return m_isActive; }
    void setActive(bool isActive);

protected:
    bool hitButton(const QPoint& position) const override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

private:
    SvgImage m_image;
    double m_cornerRadius = 0;
    bool m_isActive = false;
};

} // namespace companion
