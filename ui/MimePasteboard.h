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

    /// What is offered by the portal's key counts as a file until the portal has been asked.
    std::vector<DragType> types() const override;

    /// Asks the portal, where its key is offered, and waits up to a second for it. It is asked once: it forgets a
    /// key with its first answer.
    std::optional<std::string> dataForType(DragType type) const override;

private:
    std::optional<std::string> url() const;
    std::optional<std::string> listedUrl() const;
    std::optional<std::string> fileUrl() const;
    bool mayBeFile() const;

    bool hasPortalKey() const;
    const std::optional<std::string>& portalUrl() const;
    std::optional<std::string> askPortal() const;

    const QMimeData& m_mimeData;
    mutable bool m_hasAskedPortal = false;
    mutable std::optional<std::string>
        m_portalUrl; ///< Nothing when the portal has not answered, or has no files.
};

} // namespace companion
