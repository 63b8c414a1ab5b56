#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace companion {

/// Bytes that change no more, held once however many use them; null when there are none. Any thread.
using SharedBytes = std::shared_ptr<const std::string_view>;

/// Takes the text over, without a copy where it is long.
SharedBytes sharedBytes(std::string text);

/// Takes the memory over, of which the first `size` bytes are meant.
SharedBytes sharedBytes(std::unique_ptr<const char[]> memory, std::size_t size);

} // namespace companion
