#pragma once

#include "views/DragDropView.h"

class QMimeData;

namespace companion {

/// What a drag of this desktop offers, in the drop area's terms: "image/png" and "application/pdf" as they are; the
/// first URL as a URL, and as a file URL where it names a regular file that can be read. Files that a sandboxed
/// program hands over by the FileTransfer portal (org.freedesktop.portal.FileTransfer) are file URLs, too.
class MimePasteboard : public DragPasteboard {
public:
    /// `mimeData` must outlive this object.
    explicit MimePasteboard(const QMimeData& mimeData)
        : m_mimeData(mimeData)
    {
    }

    std::vector<DragType> types() const override;

    /// Asks the portal, where its key is offered, and waits up to a second for it.
    std::optional<std::string> dataForType(DragType type) const override;

private:
    std::optional<std::string> firstUrl() const;
    std::optional<std::string> portalFileUrl() const;
    bool hasPortalKey() const;
    bool namesReadableFile() const;

    const QMimeData& m_mimeData;
};

} // namespace companion
