#pragma once

#include "platform/FileReader.h"

namespace companion {

/// Reads regular files with one read of the disk and no second copy in memory. A file is as long as it was when it was
/// opened: what is appended meanwhile is left out, and one that shrinks ends where it ends.
class PosixFileReader : public FileReader {
public:
    FileBytes readFile(const std::string& path) override;
};

} // namespace companion
