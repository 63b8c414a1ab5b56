#pragma once

#include <memory>
#include <string>

namespace companion {

/// The bytes of a file, held once however many use them; null when there are none.
using FileBytes = std::shared_ptr<const std::string>;

/// Reads files into memory. Any thread.
class FileReader {
public:
    virtual ~FileReader() = default;

    /// The whole file at `path`, or null when it cannot be read or is no regular file. Takes as long as the disk
    /// does, but never waits for somebody to write.
    virtual FileBytes readFile(const std::string& path) = 0;
};

} // namespace companion
