#include "views/qt/DragDropViewWidget.h"

#include "views/qt/MimePasteboard.h"

#include <QDragEnterEvent>
#include <QDropEvent>

namespace companion {

namespace {

/// The model allows every operation, but a source that is told "move" deletes its file. An action that the source does
/// not offer cannot be chosen: the toolkit would put another one in its place.
bool mayBeCopied(const QDropEvent& event)
{
    return event.possibleActions().testFlag(Qt::CopyAction);
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

void DragDropViewWidget::dragEnterEvent(QDragEnterEvent* event)
{
    if (!m_model || !mayBeCopied(*event) || !m_model->takesDrag(MimePasteboard(*event->mimeData()))) {
        event->ignore();
        return;
    }
    m_model->draggingEntered();
    allowCopy(*event);
}

void DragDropViewWidget::dragMoveEvent(QDragMoveEvent* event)
{
    m_model->draggingUpdated();
    if (mayBeCopied(*event))
        allowCopy(*event);
    else
        event->ignore(); // a key that is held down may leave nothing but moving
}

void DragDropViewWidget::dragLeaveEvent(QDragLeaveEvent*)
{
    m_model->draggingExited();
}

/// The source waits for the answer, so what follows, which may be an alert, comes after it.
void DragDropViewWidget::dropEvent(QDropEvent* event)
{
    const Drop drop = mayBeCopied(*event) ? m_model->readDrop(MimePasteboard(*event->mimeData())) : Drop();
    if (drop.isAccepted())
        allowCopy(*event);
    else
        event->ignore();
    m_model->carryOutLater(drop);
}

} // namespace companion
