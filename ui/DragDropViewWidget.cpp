#include "ui/DragDropViewWidget.h"

#include "ui/MimePasteboard.h"
#include "ui/Theme.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QPainter>
#include <utility>

namespace companion {

namespace {

/// The model allows every operation, but a source that is told "move" deletes its file. An action that the source does
/// not offer cannot be chosen: the toolkit would put another one in its place.
bool mayBeCopied(const QDropEvent& event)
{
    return event.possibleActions().testFlag(Qt::CopyAction);
}

constexpr int tileSize = 40;
constexpr double cornerRadius = 14;

QPixmap tile(const SvgImage& image, double ratio)
{
    QPixmap tile = image.pixmap(QSize(tileSize, tileSize) * ratio);
    tile.setDevicePixelRatio(ratio);
    return tile;
}

/// As many of ten points and gaps of ten as go around the area without a rest.
QPen dashes(const QSize& area, const QColor& color)
{
    constexpr double width = 2;
    const double straight = 2 * (area.width() + area.height() - 2 * width - 4 * cornerRadius);
    const double length = straight + 2 * std::numbers::pi * cornerRadius;
    const double dash = length / (2 * std::max(1.0, std::round(length / 20))) / width;
    QPen pen(color, width);
    pen.setCapStyle(Qt::FlatCap);
    pen.setDashPattern({dash, dash});
    return pen;
}

void allowCopy(QDropEvent& event)
{
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

} // namespace

DragDropViewWidget::DragDropViewWidget(QWidget* parent)
    : ImageView(parent)
{
    setAcceptDrops(true);
}

/// Tiles that the children touch have no pattern, only the colour of its corner.
void DragDropViewWidget::paintEvent(QPaintEvent*)
{
    const QRect inner = rect().adjusted(tileSize, tileSize, -tileSize, -tileSize);
    const QPixmap pattern = tile(image(), devicePixelRatioF());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(dashes(size(),
        image().name() == QLatin1String("fileUploadGridActive") ? QColor(Theme::accent)
                                                                : QColor(Theme::outline)));
    painter.setBrush(pattern.toImage().pixelColor(0, 0));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), cornerRadius, cornerRadius);

    const QPoint origin = inner.topLeft() + QPoint(inner.width() % tileSize, inner.height() % tileSize) / 2;
    const QRect covered = childrenRegion().boundingRect();
    for (int y = origin.y(); y + tileSize <= inner.bottom() + 1; y += tileSize) {
        for (int x = origin.x(); x + tileSize <= inner.right() + 1; x += tileSize) {
            if (!covered.intersects(QRect(x, y, tileSize, tileSize)))
                painter.drawPixmap(x, y, pattern);
        }
    }
}

void DragDropViewWidget::dragEnterEvent(QDragEnterEvent* event)
{
    takeOrRefuse(*event);
}

void DragDropViewWidget::takeOrRefuse(QDragMoveEvent& event)
{
    if (!m_model || !mayBeCopied(event)
        || !m_model->takesDrag(MimePasteboard(*event.mimeData(), MimePasteboard::Stage::drag))) {
        event.ignore();
        return;
    }
    m_isDragInside = true;
    m_model->draggingEntered();
    allowCopy(event);
}

void DragDropViewWidget::dragMoveEvent(QDragMoveEvent* event)
{
    if (!m_isDragInside) // an alert was open meanwhile
        return takeOrRefuse(*event);
    m_model->draggingUpdated();
    if (mayBeCopied(*event))
        allowCopy(*event);
    else
        event->ignore(); // a key that is held down may leave nothing but moving
}

void DragDropViewWidget::dragLeaveEvent(QDragLeaveEvent*)
{
    endDrag();
}

void DragDropViewWidget::endDrag()
{
    if (std::exchange(m_isDragInside, false))
        m_model->draggingExited();
}

/// A window under an alert is told of drops, but neither of moves nor that the drag has left.
bool DragDropViewWidget::event(QEvent* event)
{
    if (event->type() == QEvent::WindowBlocked)
        endDrag();
    if (event->type() == QEvent::LayoutRequest)
        update(); // the pattern gives way to the children
    return ImageView::event(event);
}

void DragDropViewWidget::dropEvent(QDropEvent* event)
{
    m_isDragInside = false;
    if (mayBeCopied(*event)
        && m_model->performDragOperation(MimePasteboard(*event->mimeData(), MimePasteboard::Stage::drop)))
        allowCopy(*event);
    else
        event->ignore();
    m_model->draggingEnded();
}

} // namespace companion
