#pragma once

#include "platform/SharedBytes.h"

#include <string>

namespace companion {

using FileBytes = SharedBytes;

/// Reads files into memory. Any thread.
class FileReader {
public:
    virtual ~FileReader() = default;

    /// The whole file at `path`, or null when it cannot be read or is no regular file. Takes as long as the disk
    /// does, and waits for a lease that another process holds, but never for the other end of a FIFO.
    virtual FileBytes readFile(const std::string& path) = 0;
};

} // namespace companion
