#pragma once

#include "platform/Log.h"

#include <functional>
#include <vector>

namespace companion {

/// A direct subview of a `MaskingView`.
class MaskedSubview {
public:
    virtual ~MaskedSubview() = default;

    /// False for what has no enabled state, such as an image.
    virtual bool canBeEnabled() const = 0;

    /// Called only where it has one; reaches no view inside it.
    virtual void setEnabled(bool enabled) = 0;
};

/// The model of an overlay that disables its direct subviews at every redraw and, while masking, lets no click reach
/// what it holds. Main thread only.
class MaskingView {
public:
    /// The direct subviews in their order, asked for anew each time; valid during the call.
    using Subviews = std::function<std::vector<MaskedSubview*>()>;

    MaskingView(SystemLog& log, Subviews subviews);

    bool maskEnabled() const { return m_maskEnabled; }
    void setMaskEnabled(bool enabled) { m_maskEnabled = enabled; }

    /// drawRect:
    /// Called after the base view has drawn.
    void didDraw() { disableSubViews(); }

    /// hitTest:
    /// The view under the pointer, given the base view's answer; null lets the click through to what lies below.
    template <typename View> View* hitTest(View* baseAnswer) const
    {
        return m_maskEnabled ? nullptr : baseAnswer;
    }

    /// mouseDown:
    /// The event goes no further.
    void mouseDown();

    void disableSubViews() { setSubViewsEnabled(false); }

    /// Lasts until the next redraw.
    void enableSubViews() { setSubViewsEnabled(true); }
    void setSubViewsEnabled(bool enabled);

private:
    SystemLog& m_log;
    Subviews m_subviews;
    bool m_maskEnabled = false;
};

} // namespace companion
