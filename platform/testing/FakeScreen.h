#pragma once

#include "platform/Screen.h"

namespace companion::testing {

/// A screen of 1366 × 768 points, unless the test changes it; counts how often it was asked.
class FakeScreen : public Screen {
public:
    std::optional<Size> mainScreenSize() const override
    {
        ++queries;
        return size;
    }

    std::optional<Size> size = Size{1366, 768};
    mutable int queries = 0;
};

} // namespace companion::testing
