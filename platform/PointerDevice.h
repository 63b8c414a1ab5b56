#pragma once

#include "platform/Geometry.h"

#include <optional>

namespace companion {

/// A pointer that the window server lets this program drive, and that reports nothing back. Main thread only, but for
/// `releaseWhenProgramFails`.
class PointerDevice {
public:
    virtual ~PointerDevice() = default;

    /// The size of the screen that it moves on, in the device's own units; nothing while events cannot be delivered,
    /// and then nothing is held.
    virtual std::optional<Size> area() const = 0;

    /// `at` lies inside the area: from 0 to below its size.
    virtual void moveTo(Point at) = 0;
    virtual void setLeftButtonDown(bool isDown) = 0;

    /// Sends what may still wait in a buffer; waits for nothing.
    virtual void flush() = 0;

    /// Touches are expected from now on: the time to ask for what the device needs.
    virtual void touchesBegin() = 0;

    /// The program is about to end in an error with the button held: releases it, unless the server does so by itself when
    /// the connection to it is closed. Any thread, also while the main thread is stuck. Takes a second at most.
    virtual void releaseWhenProgramFails() { }
};

} // namespace companion
