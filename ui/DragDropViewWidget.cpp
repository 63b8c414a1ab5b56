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

constexpr double cornerRadius = 14;

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

void DragDropViewWidget::paintEvent(QPaintEvent*)
{
    const bool isActive = image().name() == QLatin1String("fileUploadGridActive");
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(isActive ? QPen(QColor(Theme::accent), 2) : dashes(size(), QColor(Theme::outline)));
    painter.setBrush(image().pixmap({1, 1}).toImage().pixelColor(0, 0));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), cornerRadius, cornerRadius);
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
