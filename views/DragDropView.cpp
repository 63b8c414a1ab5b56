#include "views/DragDropView.h"

#include "platform/FatalError.h"

#include <algorithm>
#include <utility>

namespace companion {

namespace {

bool offers(const std::vector<DragType>& types, DragType type)
{
    return std::find(types.begin(), types.end(), type) != types.end();
}

/// An image outranks the file that it was dragged from.
Drop::Kind kindOf(const std::vector<DragType>& types)
{
    if (offers(types, DragType::pngImage))
        return Drop::Kind::pngImage;
    if (offers(types, DragType::fileUrl))
        return Drop::Kind::fileUrl;
    if (offers(types, DragType::pdf))
        return Drop::Kind::pdf;
    if (offers(types, DragType::url))
        return Drop::Kind::url;
    return Drop::Kind::other;
}

} // namespace

DragDropView::DragDropView(Alerts& alerts, SystemLog& log)
    : m_alerts(alerts)
    , m_log(log)
{
}

void DragDropView::init()
{
    m_registeredDraggedTypes = {DragType::pngImage, DragType::pdf, DragType::url, DragType::fileUrl};
}

void DragDropView::setDelegate(std::weak_ptr<DragDropViewDelegate> delegate)
{
    m_delegate = std::move(delegate);
}

bool DragDropView::takesDrag(const DragPasteboard& pasteboard) const
{
    const std::vector<DragType> types = pasteboard.types();
    return std::any_of(m_registeredDraggedTypes.begin(), m_registeredDraggedTypes.end(),
        [&](DragType type) { return offers(types, type); });
}

unsigned DragDropView::draggingEntered()
{
    if (const auto delegate = m_delegate.lock())
        delegate->draggingBegin();
    return everyDragOperation;
}

unsigned DragDropView::draggingUpdated()
{
    if (const auto delegate = m_delegate.lock())
        delegate->draggingInprogress();
    return everyDragOperation;
}

void DragDropView::draggingEnded()
{
    m_log.log("draggingEnded");
    draggingExited();
}

void DragDropView::draggingExited()
{
    if (const auto delegate = m_delegate.lock())
        delegate->draggingFinished();
}

bool DragDropView::performDragOperation(const DragPasteboard& pasteboard)
{
    const Drop drop = readDrop(pasteboard);
    carryOut(drop);
    return drop.isAccepted();
}

Drop DragDropView::readDrop(const DragPasteboard& pasteboard) const
{
    if (!hasData(pasteboard))
        return {Drop::Kind::pasteError, std::nullopt};
    Drop drop{kindOf(pasteboard.types()), std::nullopt};
    if (drop.kind == Drop::Kind::fileUrl)
        drop.fileUrl = FileUrl::fromText(pasteboard.dataForType(DragType::fileUrl).value_or(""));
    return drop;
}

/// Only the first registered type that is offered counts, whichever type the drop is then taken for.
bool DragDropView::hasData(const DragPasteboard& pasteboard) const
{
    const std::vector<DragType> types = pasteboard.types();
    const auto first = std::find_if(m_registeredDraggedTypes.begin(), m_registeredDraggedTypes.end(),
        [&](DragType type) { return offers(types, type); });
    return first != m_registeredDraggedTypes.end() && !pasteboard.dataForType(*first).value_or("").empty();
}

void DragDropView::carryOut(const Drop& drop)
{
    switch (drop.kind) {
    case Drop::Kind::pasteError:
        m_alerts.runModal("Paste Error", "Sorry, but the past operation failed");
        break;
    case Drop::Kind::pngImage:
        m_log.log("PNG image");
        break;
    case Drop::Kind::fileUrl:
        if (const auto delegate = m_delegate.lock(); delegate && drop.fileUrl)
            delegate->uploadFileURL(*drop.fileUrl);
        break;
    case Drop::Kind::pdf:
        m_log.log("PDF");
        break;
    case Drop::Kind::url:
        m_log.log("URL");
        break;
    case Drop::Kind::other:
        break;
    }
}

void DragDropView::carryOutLater(const Drop& drop)
{
    if (!m_mainQueue)
        fatalError("The drop area has no main queue");
    m_mainQueue->async([weakSelf = std::weak_ptr<DragDropView>(m_checkedSelf), drop] {
        const auto self = weakSelf.lock();
        if (!self)
            return;
        self->carryOut(drop);
        self->draggingEnded();
    });
}

} // namespace companion
