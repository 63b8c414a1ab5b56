#include "ui/Popover.h"

#include "ui/Theme.h"

#include <numbers>
#include <QApplication>
#include <QBitmap>
#include <QCursor>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QVBoxLayout>
#include <utility>

namespace companion {

namespace {

constexpr int arrowHeight = 10;
constexpr int arrowHalfWidth = arrowHeight; // slopes of 45 degrees
constexpr int border = 1;
constexpr int cornerRadius = 12;
constexpr double tipRadius = 2;                                // of the arrow
constexpr int arrowMargin = cornerRadius + arrowHalfWidth + 1; // of its middle, from the corners
constexpr int marginInWindow = 8;

/// The part of `bounds` that a popover is kept in: the window's, unless that is too narrow.
QRect horizontalBounds(const QRect& window, const QRect& screen, int width)
{
    const QRect inWindow = window.adjusted(marginInWindow, 0, -marginInWindow, 0) & screen;
    return inWindow.width() >= width ? inWindow : screen;
}

} // namespace

Popover::Popover(QWidget& anchor, QWidget& content)
    : QWidget(anchor.window(), Qt::Tool | Qt::FramelessWindowHint)
    , m_anchor(&anchor)
    , m_content(content)
{
    auto* layout = new QVBoxLayout(this);
    // The content has square corners, which stay clear of the round ones.
    layout->setContentsMargins(border, arrowHeight + cornerRadius, border, cornerRadius);
    layout->addWidget(&content);
}

void Popover::present()
{
    if (!m_anchor)
        return;
    adjustSize();
    placeBelowAnchor();
    focusContent();
    show();
    raise();
    activateWindow();
}

/// Who works with the keyboard sees where it is; who opened the popover with the mouse needs no ring.
void Popover::focusContent()
{
    const bool isByKeyboard = m_anchor->window()->testAttribute(Qt::WA_KeyboardFocusChange);
    setAttribute(Qt::WA_KeyboardFocusChange, isByKeyboard);
    m_content.setFocus(isByKeyboard ? Qt::TabFocusReason : Qt::PopupFocusReason);
}

void Popover::placeBelowAnchor()
{
    const QPoint below = m_anchor->mapToGlobal(QPoint(m_anchor->width() / 2, m_anchor->height()));
    const QRect bounds =
        horizontalBounds(m_anchor->window()->geometry(), m_anchor->screen()->availableGeometry(), width());
    const int left =
        qBound(bounds.left(), below.x() - width() / 2, qMax(bounds.left(), bounds.right() - width() + 1));
    move(left, below.y());
    m_arrowX = qBound(arrowMargin, below.x() - left, width() - arrowMargin);
    setMask(shape());
}

/// The pixels that the outline covers for the better part.
QBitmap Popover::shape() const
{
    QBitmap shape(size());
    shape.clear();
    QPainter(&shape).fillPath(outline(-0.2), Qt::color1);
    return shape;
}

/// `inset` from the popover's edge. The arrow has a round tip.
QPainterPath Popover::outline(double inset) const
{
    const QRectF body = QRectF(rect()).adjusted(inset, arrowHeight + inset, -inset, -inset);
    QPainterPath path;
    path.addRoundedRect(body, cornerRadius - inset, cornerRadius - inset);

    const double tip = inset * std::numbers::sqrt2;
    const double foot = body.top() + 1; // within the body, so that they overlap
    QPainterPath arrow(QPointF(m_arrowX - foot + tip, foot));
    arrow.lineTo(m_arrowX - tipRadius, tip + tipRadius);
    arrow.quadTo(m_arrowX, tip, m_arrowX + tipRadius, tip + tipRadius);
    arrow.lineTo(m_arrowX + foot - tip, foot);
    arrow.closeSubpath();
    return path.united(arrow);
}

bool Popover::eventFilter(QObject* watched, QEvent* event)
{
    if (!m_anchor)
        return false;
    if (isUseOfAnchorsWindow(watched, *event))
        hide();
    // The anchor moves in a window that is resized, once that has laid its contents out.
    const bool isMoved = event->type() == QEvent::Move || event->type() == QEvent::Resize;
    if (isMoved && (watched == m_anchor->window() || watched == m_anchor))
        placeBelowAnchor();
    return QWidget::eventFilter(watched, event);
}

bool Popover::isUseOfAnchorsWindow(const QObject* watched, const QEvent& event)
{
    const auto* widget = qobject_cast<const QWidget*>(watched);
    if (!widget || widget->window() != m_anchor->window())
        return false;
    switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::KeyPress:
        return widget != m_anchor;
    case QEvent::WindowActivate: // by its title bar, or by a way that leads to it without a click
        return widget == m_anchor->window() && isActivatedByUser();
    default:
        return false;
    }
}

/// A window becomes active as well when an alert is closed; and a click on the anchor says by itself what it is for.
bool Popover::isActivatedByUser()
{
    if (std::exchange(m_wasUnderAlert, false) || QApplication::activeModalWidget())
        return false;
    return !m_anchor->rect().contains(m_anchor->mapFromGlobal(QCursor::pos()));
}

bool Popover::event(QEvent* event)
{
    if (event->type() == QEvent::WindowBlocked)
        m_wasUnderAlert = true;
    if (event->type() == QEvent::WindowActivate)
        m_wasUnderAlert = false;
    return QWidget::event(event);
}

void Popover::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        hide();
    else
        QWidget::keyPressEvent(event);
}

void Popover::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(
        rect(), QColor(Theme::outline)); // up to the mask's edge: not every desktop blends windows
    painter.fillPath(outline(border), Qt::white);
}

void Popover::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (m_anchor)
        placeBelowAnchor();
}

void Popover::showEvent(QShowEvent* event)
{
    qApp->installEventFilter(this);
    QWidget::showEvent(event);
}

void Popover::hideEvent(QHideEvent* event)
{
    qApp->removeEventFilter(this);
    m_wasUnderAlert = false;
    QWidget::hideEvent(event);
}

} // namespace companion
