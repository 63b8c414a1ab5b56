#pragma once

#include "platform/SharedBytes.h"

#include <optional>
#include <string>

namespace companion {

using FileBytes = SharedBytes;

/// Why a file cannot be read: it is missing, no regular file or forbidden, or it does not fit into memory.
enum class FileProblem { unreadable, tooLarge };

/// Reads files into memory. Any thread.
class FileReader {
public:
    virtual ~FileReader() = default;

    /// What would keep `readFile` from reading the file at `path` now; nothing as far as can be told without opening it.
    /// Waits for no lease.
    virtual std::optional<FileProblem> problemWith(const std::string& path) = 0;

    /// The whole file at `path`, or null when it cannot be read or is no regular file. Takes as long as the disk
    /// does, and waits for a lease that another process holds, but never for the other end of a FIFO.
    virtual FileBytes readFile(const std::string& path) = 0;
};

} // namespace companion
