#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace companion {

/// Immutable bytes with shared ownership; null when there are none. Any thread.
using SharedBytes = std::shared_ptr<const std::string_view>;

/// Takes ownership of the text; long text is not copied.
SharedBytes sharedBytes(std::string text);

/// Takes ownership of the memory, of which the first `size` bytes count.
SharedBytes sharedBytes(std::unique_ptr<const char[]> memory, std::size_t size);

} // namespace companion
