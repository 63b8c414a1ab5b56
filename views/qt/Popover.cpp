#include "views/qt/Popover.h"

#include "views/qt/Theme.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>

namespace companion {

namespace {

constexpr int arrowHeight = 10;
constexpr int arrowHalfWidth = 11;
constexpr int border = 1;

} // namespace

Popover::Popover(QWidget& anchor, QWidget& content)
    : QWidget(anchor.window(), Qt::Tool | Qt::FramelessWindowHint)
    , m_anchor(anchor)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(border, arrowHeight + border, border, border);
    layout->addWidget(&content);
}

void Popover::present()
{
    if (isVisible()) {
        hide();
        return;
    }
    adjustSize();
    placeBelowAnchor();
    show();
    activateWindow();
}

void Popover::placeBelowAnchor()
{
    const QPoint below = m_anchor.mapToGlobal(QPoint(m_anchor.width() / 2, m_anchor.height()));
    const QRect screen = m_anchor.screen()->availableGeometry();
    const int left =
        qBound(screen.left(), below.x() - width() / 2, qMax(screen.left(), screen.right() - width() + 1));
    move(left, below.y());
    m_arrowX = qBound(2 * arrowHalfWidth, below.x() - left, width() - 2 * arrowHalfWidth);
    setMask(QRegion(outline()));
}

QPolygon Popover::outline() const
{
    const int right = width();
    const int bottom = height();
    return QPolygon({{0, arrowHeight}, {m_arrowX - arrowHalfWidth, arrowHeight}, {m_arrowX, 0},
        {m_arrowX + arrowHalfWidth, arrowHeight}, {right, arrowHeight}, {right, bottom}, {0, bottom}});
}

bool Popover::eventFilter(QObject* watched, QEvent* event)
{
    const bool isUse = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::KeyPress;
    auto* widget = qobject_cast<QWidget*>(watched);
    if (isUse && widget && widget != &m_anchor && widget->window() == m_anchor.window())
        hide();
    const bool isMoved = event->type() == QEvent::Move || event->type() == QEvent::Resize;
    if (isMoved && watched == m_anchor.window())
        placeBelowAnchor();
    return QWidget::eventFilter(watched, event);
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
    painter.fillRect(rect(), Qt::white);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0x8797a6), 2)); // half of it lies outside the mask
    painter.drawPolygon(outline());
}

void Popover::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (isVisible())
        setMask(QRegion(outline()));
}

void Popover::showEvent(QShowEvent* event)
{
    qApp->installEventFilter(this);
    QWidget::showEvent(event);
}

void Popover::hideEvent(QHideEvent* event)
{
    qApp->removeEventFilter(this);
    QWidget::hideEvent(event);
}

} // namespace companion
