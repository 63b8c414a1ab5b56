#include "views/qt/DragDropViewWidget.h"

#include "views/qt/MimePasteboard.h"

#include <QDragEnterEvent>
#include <QDropEvent>

namespace companion {

namespace {

/// The model allows every operation, but a source that is told "move" deletes its file.
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
    if (!m_model || !m_model->takesDrag(MimePasteboard(*event->mimeData()))) {
        event->ignore();
        return;
    }
    m_model->draggingEntered();
    allowCopy(*event);
}

void DragDropViewWidget::dragMoveEvent(QDragMoveEvent* event)
{
    m_model->draggingUpdated();
    allowCopy(*event);
}

void DragDropViewWidget::dragLeaveEvent(QDragLeaveEvent*)
{
    m_model->draggingExited();
}

/// The source waits for the answer, so what follows, which may be an alert, comes after it.
void DragDropViewWidget::dropEvent(QDropEvent* event)
{
    const Drop drop = m_model->readDrop(MimePasteboard(*event->mimeData()));
    if (drop.isAccepted())
        allowCopy(*event);
    else
        event->ignore();
    QMetaObject::invokeMethod(
        this,
        [this, drop] {
            m_model->carryOut(drop);
            m_model->draggingEnded();
        },
        Qt::QueuedConnection);
}

} // namespace companion
