#include "views/MaskingView.h"

#include <utility>

namespace companion {

MaskingView::MaskingView(SystemLog& log, Subviews subviews)
    : m_log(log)
    , m_subviews(std::move(subviews))
{
}

void MaskingView::mouseDown()
{
    m_log.log("Mouse down");
}

void MaskingView::setSubViewsEnabled(bool enabled)
{
    for (MaskedSubview* subview : m_subviews()) {
        if (subview->canBeEnabled())
            subview->setEnabled(enabled);
    }
}

} // namespace companion
