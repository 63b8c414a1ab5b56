#pragma once

#include "platform/Alerts.h"
#include "platform/FileUrl.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace companion {

/// What a drag may carry, as far as the drop area knows it.
enum class DragType { pngImage, pdf, url, fileUrl };

/// What one drag offers. Valid while the drag is.
class DragPasteboard {
public:
    virtual ~DragPasteboard() = default;

    /// In the drag's own order; other formats are left out.
    virtual std::vector<DragType> types() const = 0;

    /// Nothing, or no bytes, when the drag does not give what it offers. A file URL is its text.
    virtual std::optional<std::string> dataForType(DragType type) const = 0;
};

class DragDropViewDelegate {
public:
    virtual ~DragDropViewDelegate() = default;

    /// uploadFileURL:
    /// A file was dropped.
    virtual void uploadFileURL(const FileUrl& url) = 0;

    /// A drag came over the drop area.
    virtual void draggingBegin() = 0;

    /// It moved there.
    virtual void draggingInprogress() = 0;

    /// It left, or ended anywhere; may come twice for one drag.
    virtual void draggingFinished() = 0;
};

/// The drop area's model: which drags it takes, and what a drop leads to. Main thread only.
class DragDropView {
public:
    /// A set of operations with all its bits set.
    static constexpr unsigned everyDragOperation = ~0u;

    /// All of them must outlive this object.
    DragDropView(Alerts& alerts, SystemLog& log, MainQueue& mainQueue);
    DragDropView(const DragDropView&) = delete;
    DragDropView& operator=(const DragDropView&) = delete;

    /// Registers the types that may be dragged here; before, no drag is taken.
    void init();
    const std::vector<DragType>& registeredDraggedTypes() const { return m_registeredDraggedTypes; }

    void setDelegate(std::weak_ptr<DragDropViewDelegate> delegate);

    /// Whether a drag is for this view at all; the other calls are for such drags only.
    bool takesDrag(const DragPasteboard& pasteboard) const;

    /// draggingEntered:, draggingUpdated:
    /// The operations that the view allows.
    unsigned draggingEntered();
    unsigned draggingUpdated();

    /// draggingEnded:, draggingExited:
    void draggingEnded();
    void draggingExited();

    /// performDragOperation:
    /// Whether the drop is accepted. What may open an alert is left to the main queue, since the drag's source waits for
    /// the answer.
    bool performDragOperation(const DragPasteboard& pasteboard);

private:
    void uploadLater(const std::optional<std::string>& urlText);

    Alerts& m_alerts;
    SystemLog& m_log;
    MainQueue& m_mainQueue;
    std::vector<DragType> m_registeredDraggedTypes;
    std::weak_ptr<DragDropViewDelegate> m_delegate;
};

} // namespace companion
