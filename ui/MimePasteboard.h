#pragma once

#include "views/DragDropView.h"

class QMimeData;

namespace companion {

/// What a drag of this desktop offers, in the drop area's terms: "image/png" and "application/pdf" as they are; the
/// first URL as a URL, and as a file URL where it names a regular file that can be read. Files that a sandboxed
/// program hands over by the FileTransfer portal (org.freedesktop.portal.FileTransfer) are file URLs, too.
class MimePasteboard : public DragPasteboard {
public:
    enum class Stage {
        drag, ///< The portal's key counts as a file.
        drop, ///< The portal is asked, and waited for up to a second; it forgets a key with its first answer.
    };

    /// Examines the file that is offered, once. `mimeData` must outlive this object.
    MimePasteboard(const QMimeData& mimeData, Stage stage);

    std::vector<DragType> types() const override;
    std::optional<std::string> dataForType(DragType type) const override;

private:
    const QMimeData& m_mimeData;
    std::optional<std::string> m_url;
    std::optional<std::string> m_fileUrl; ///< Empty while the portal has not been asked.
};

} // namespace companion
