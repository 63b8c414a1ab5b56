#include "ui/Popover.h"

#include "ui/Fade.h"
#include "ui/Theme.h"

#include <cmath>
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace companion {

namespace {

constexpr int arrowHeight = 10; // with slopes of 45 degrees
constexpr int cornerRadius = 12;
constexpr double tipRadius = 2;   // of the arrow
constexpr int shadowMargin = 24;  // around the body, but for its upper edge
constexpr int shadowOffset = 6;   // downwards
constexpr int marginInWindow = 8; // of the body
constexpr int arrowMargin = shadowMargin + cornerRadius + arrowHeight + 1; // of its middle, from the edges

/// Soft: many layers, each fainter than an eye tells from none, which crowd together towards the body.
void paintShadow(QPainter& painter, const QRectF& body)
{
    constexpr int layers = 12;
    const QRectF cast = body.translated(0, shadowOffset);
    painter.setBrush(QColor(0, 0, 0, 4));
    for (int layer = layers; layer > 0; --layer) {
        const double spread = (shadowMargin - shadowOffset) * std::pow(layer / double(layers), 2);
        painter.drawRoundedRect(
            cast.adjusted(-spread, -spread, spread, spread), cornerRadius + spread, cornerRadius + spread);
    }
}

} // namespace

Popover::Popover(QWidget& view, QWidget& anchor, QWidget& content, const QString& heading)
    : QWidget(&view, Qt::SubWindow) // which Tab does not leave
    , m_anchor(anchor)
    , m_content(content)
{
    setAccessibleName(heading);
    setAttribute(Qt::WA_NoMousePropagation);
    auto* layout = new QVBoxLayout(this);
    // The content has square corners, which stay clear of the round ones.
    layout->setContentsMargins(
        shadowMargin, arrowHeight + cornerRadius, shadowMargin, cornerRadius + shadowMargin);
    layout->setSizeConstraint(QLayout::SetFixedSize); // it grows and shrinks with the content
    layout->addWidget(&content);
    // Opaque, so that its changes repaint neither the shadow nor what lies below.
    content.setBackgroundRole(QPalette::Base);
    content.setAutoFillBackground(true);
    content.show();
    hide();
}

void Popover::present()
{
    if (isHidden())
        m_focusBefore = window()->focusWidget();
    layout()->activate();
    placeBelowAnchor();
    fade(*parentWidget(), geometry(), [this] {
        show();
        raise();
    });
    m_content.setFocus(Qt::PopupFocusReason);
}

void Popover::dismiss()
{
    if (isAncestorOf(window()->focusWidget())) {
        const bool isStillThere = m_focusBefore && m_focusBefore->isVisible();
        (isStillThere ? m_focusBefore.data() : &m_anchor)->setFocus(Qt::PopupFocusReason);
    }
    fade(*parentWidget(), geometry(), [this] { hide(); });
}

void Popover::placeBelowAnchor()
{
    const QPoint below = m_anchor.mapTo(parentWidget(), QPoint(m_anchor.width() / 2, m_anchor.height()));
    const int first = marginInWindow - shadowMargin;
    const int last = parentWidget()->width() - width() - first;
    const int left = qBound(first, below.x() - width() / 2, qMax(first, last));
    move(left, below.y());
    m_arrowX = qBound(arrowMargin, below.x() - left, width() - arrowMargin);
    update();
}

QRectF Popover::body() const
{
    return QRectF(rect()).adjusted(shadowMargin, arrowHeight, -shadowMargin, -shadowMargin);
}

/// The body and its arrow, which has a round tip.
QPainterPath Popover::outline() const
{
    QPainterPath path;
    path.addRoundedRect(body(), cornerRadius, cornerRadius);
    const double foot = arrowHeight + 1; // within the body, so that they overlap
    QPainterPath arrow(QPointF(m_arrowX - foot, foot));
    arrow.lineTo(m_arrowX - tipRadius, tipRadius);
    arrow.quadTo(m_arrowX, 0, m_arrowX + tipRadius, tipRadius);
    arrow.lineTo(m_arrowX + foot, foot);
    arrow.closeSubpath();
    return path.united(arrow);
}

void Popover::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    paintShadow(painter, body());
    const QPainterPath shape = outline();
    painter.strokePath(shape, QPen(QColor(Theme::outline), 1)); // its inner half is painted over
    painter.fillPath(shape, Qt::white);
}

bool Popover::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == &m_anchor && (event->type() == QEvent::Move || event->type() == QEvent::Resize))
        placeBelowAnchor();
    if (isVisible() && isUseOfOtherView(watched, *event))
        dismiss();
    return QWidget::eventFilter(watched, event);
}

bool Popover::isUseOfOtherView(const QObject* watched, const QEvent& event) const
{
    if (event.type() != QEvent::MouseButtonPress && event.type() != QEvent::KeyPress)
        return false;
    const auto* widget = qobject_cast<const QWidget*>(watched);
    return widget && widget != &m_anchor && widget != this && !isAncestorOf(widget)
        && widget->window() == window();
}

/// Keys that nothing in it takes end here.
void Popover::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        dismiss();
}

void Popover::mousePressEvent(QMouseEvent* event)
{
    if (!body().contains(event->position())) // only its shadow lies there
        dismiss();
}

void Popover::resizeEvent(QResizeEvent*)
{
    placeBelowAnchor();
}

void Popover::showEvent(QShowEvent*)
{
    qApp->installEventFilter(this);
}

void Popover::hideEvent(QHideEvent*)
{
    qApp->removeEventFilter(this);
}

} // namespace companion
