#pragma once

#include <cstdlib>

/// Reports a finding: fuzzers stop where the process aborts.
inline void require(bool condition)
{
    if (!condition)
        std::abort();
}
