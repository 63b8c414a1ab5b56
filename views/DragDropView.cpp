#include "views/DragDropView.h"

#include <algorithm>
#include <utility>

namespace companion {

namespace {

bool offers(const std::vector<DragType>& types, DragType type)
{
    return std::find(types.begin(), types.end(), type) != types.end();
}

} // namespace

DragDropView::DragDropView(Alerts& alerts, SystemLog& log, MainQueue& mainQueue)
    : m_alerts(alerts)
    , m_log(log)
    , m_mainQueue(mainQueue)
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
    const std::vector<DragType> types = pasteboard.types();
    const auto first = std::find_if(m_registeredDraggedTypes.begin(), m_registeredDraggedTypes.end(),
        [&](DragType type) { return offers(types, type); });
    // Only the first registered type needs to have data, whichever type the drop is then taken for.
    if (first == m_registeredDraggedTypes.end() || pasteboard.dataForType(*first).value_or("").empty()) {
        m_mainQueue.async(
            [&alerts = m_alerts] { alerts.runModal("Paste Error", "Sorry, but the past operation failed"); });
        return false;
    }
    if (offers(types, DragType::pngImage)) // even beside the file that it was dragged from
        m_log.log("PNG image");
    else if (offers(types, DragType::fileUrl))
        uploadLater(pasteboard.dataForType(DragType::fileUrl));
    else if (offers(types, DragType::pdf))
        m_log.log("PDF");
    else
        m_log.log("URL");
    return true;
}

void DragDropView::uploadLater(const std::optional<std::string>& urlText)
{
    const std::optional<FileUrl> url = FileUrl::fromText(urlText.value_or(""));
    if (!url)
        return;
    m_mainQueue.async([delegate = m_delegate, url = *url] {
        if (const auto listener = delegate.lock())
            listener->uploadFileURL(url);
    });
}

} // namespace companion
