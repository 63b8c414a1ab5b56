#pragma once

#include "platform/FileReader.h"

#include <cstddef>

namespace companion {

/// Reads regular files with one read of the disk and no second copy in memory. A file is as long as it was when it was
/// opened: what is appended meanwhile is left out, and one that shrinks ends where it ends. Files that the kernel or a
/// server makes up as they are read may tell a length of 0; those are read to their end, and one that has none within
/// `longestOfUnknownLength` bytes cannot be read.
class PosixFileReader : public FileReader {
public:
    explicit PosixFileReader(std::size_t longestOfUnknownLength = 1 << 30);

    FileBytes readFile(const std::string& path) override;

private:
    const std::size_t m_longestOfUnknownLength;
};

} // namespace companion
