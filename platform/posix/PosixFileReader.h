#pragma once

#include "platform/FileReader.h"

#include <cstdint>
#include <functional>

namespace companion {

/// The memory that programs can still have without others being killed for it, in bytes: seven eighths of what is
/// available (MemAvailable and SwapFree in proc(5)). No limit when the system does not say.
std::uint64_t availableMemory();

/// Reads a regular file into memory with one pass over it and no second copy.
///
/// A file is as long as it was when it was opened: bytes appended meanwhile are left out, and a file that shrinks ends where
/// it ends. Files that the kernel or a server generates may report a length of 0; those are read to their end, up to 1 GiB.
/// A file that does not fit into `memory` cannot be read.
class PosixFileReader : public FileReader {
public:
    explicit PosixFileReader(std::function<std::uint64_t()> memory = availableMemory);

    std::optional<FileProblem> problemWith(const std::string& path) override;
    FileBytes readFile(const std::string& path) override;

private:
    const std::function<std::uint64_t()> m_memory;
};

} // namespace companion
