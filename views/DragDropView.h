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

/// What a drop leads to; keeps nothing of the pasteboard.
struct Drop {
    enum class Kind { pasteError, pngImage, fileUrl, pdf, url, other };

    Kind kind = Kind::other;
    std::optional<FileUrl> fileUrl;

    bool isAccepted() const { return kind != Kind::pasteError && kind != Kind::other; }
};

/// The drop area's model: which drags it takes, and what becomes of a drop. Main thread only.
class DragDropView {
public:
    /// A set of operations with all its bits set.
    static constexpr unsigned everyDragOperation = ~0u;

    DragDropView(Alerts& alerts, SystemLog& log);
    DragDropView(const DragDropView&) = delete;
    DragDropView& operator=(const DragDropView&) = delete;

    /// Registers the types that may be dragged here; before, no drag is taken.
    void init();
    const std::vector<DragType>& registeredDraggedTypes() const { return m_registeredDraggedTypes; }

    void setDelegate(std::weak_ptr<DragDropViewDelegate> delegate);

    /// Where drops are carried out later; it must outlive this object.
    void setMainQueue(MainQueue& mainQueue) { m_mainQueue = &mainQueue; }

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
    /// Whether the drop was accepted; an alert has been dismissed by then.
    bool performDragOperation(const DragPasteboard& pasteboard);

    // Its two halves, for platforms on which the drag's source waits for the answer: it is told
    // `Drop::isAccepted()` between them, before an alert can hold it up.
    Drop readDrop(const DragPasteboard& pasteboard) const;
    void carryOut(const Drop& drop);

    /// Carries the drop out and ends its drag when the main queue comes to it, so not while an alert is open; never
    /// when this object is gone by then.
    void carryOutLater(const Drop& drop);

private:
    bool hasData(const DragPasteboard& pasteboard) const;

    Alerts& m_alerts;
    SystemLog& m_log;
    MainQueue* m_mainQueue = nullptr;
    std::vector<DragType> m_registeredDraggedTypes;
    std::weak_ptr<DragDropViewDelegate> m_delegate;
    const std::shared_ptr<DragDropView> m_checkedSelf{
        this, [](DragDropView*) {}}; ///< Only to be held weakly.
};

} // namespace companion
