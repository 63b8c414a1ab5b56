#include "ui/RoundButton.h"

#include <cmath>
#include <QAccessible>
#include <QEvent>
#include <QKeyEvent>
#include <QPainter>

namespace companion {

RoundButton::RoundButton(QWidget* parent)
    : QAbstractButton(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setProperty("focusRingOnDark", true);
}

void RoundButton::setImageName(const QString& name)
{
    m_image.setName(name);
    update();
}

void RoundButton::makeRound()
{
    m_cornerRadius = width() / 2.0;
    setProperty("focusRingRadius", m_cornerRadius);
    update();
}

void RoundButton::setActive(bool isActive)
{
    if (m_isActive == isActive)
        return;
    m_isActive = isActive;
    QAccessible::State changed;
    changed.pressed = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
}

bool RoundButton::hitButton(const QPoint& position) const
{
    const QPointF fromMiddle = QPointF(position) - QRectF(rect()).center();
    return std::hypot(fromMiddle.x(), fromMiddle.y()) <= m_cornerRadius;
}

void RoundButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(isDown() ? 0.8 : underMouse() ? 0.92 : 1.0);
    // Clear of the edges, which need not fall on whole pixels and would cut the circle off.
    m_image.paint(painter, QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
}

void RoundButton::keyPressEvent(QKeyEvent* event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!isReturn)
        QAbstractButton::keyPressEvent(event);
    else if (!event->isAutoRepeat()) // a key that is held is one press
        click();
}

bool RoundButton::event(QEvent* event)
{
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverLeave)
        update();
    return QAbstractButton::event(event);
}

} // namespace companion
