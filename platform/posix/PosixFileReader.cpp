#include "platform/posix/PosixFileReader.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace companion {

namespace {

/// Of the usual processors; on others the hint covers less than it could.
constexpr std::uintptr_t hugePage = 2 << 20;

constexpr std::size_t firstPieceOfUnknownLength = 64 << 10;
constexpr std::uint64_t maxUnknownLength = 1 << 30;

class FileDescriptor {
public:
    FileDescriptor(const std::string& path, int flags)
    {
        do { // opening a leased file waits, and may be interrupted
            m_descriptor = open(path.c_str(), flags | O_CLOEXEC);
        } while (m_descriptor < 0 && errno == EINTR);
    }
    ~FileDescriptor()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    /// A path that leads to the open file whatever its own path names by now.
    std::string path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

    /// Nothing when it is no regular file.
    std::optional<std::uint64_t> lengthOfRegularFile() const
    {
        struct stat status = {};
        if (m_descriptor < 0 || fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode))
            return std::nullopt;
        return static_cast<std::uint64_t>(status.st_size);
    }

    /// The number of bytes read, 0 at the end, negative on an error.
    ssize_t readInto(char* bytes, std::size_t size) const
    {
        ssize_t count = 0;
        do {
            count = read(m_descriptor, bytes, size);
        } while (count < 0 && errno == EINTR);
        return count;
    }

private:
    int m_descriptor = -1;
};

/// Has the system provide a large file's memory at once and in huge pages. Faulting the pages in one by one while reading
/// takes longer than reading a cached file. Both are hints that may fail, the second one before Linux 5.14.
void provideMemory(const char* memory, std::size_t size)
{
    const auto begin = (reinterpret_cast<std::uintptr_t>(memory) + hugePage - 1) / hugePage * hugePage;
    const auto end = (reinterpret_cast<std::uintptr_t>(memory) + size) / hugePage * hugePage;
    if (begin >= end)
        return;
    madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
    madvise(reinterpret_cast<void*>(begin), end - begin, MADV_POPULATE_WRITE);
}

/// Reads into `memory` from offset `size` on, up to `capacity` or the file's end. Returns the number of bytes in `memory`
/// then, or nothing on an error.
std::optional<std::size_t> fill(
    char* memory, std::size_t size, std::size_t capacity, const FileDescriptor& file)
{
    while (size < capacity) {
        const ssize_t count = file.readInto(memory + size, capacity - size);
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            break;
        size += static_cast<std::size_t>(count);
    }
    return size;
}

/// The first `length` bytes, fewer where the file ends before, null on an error.
FileBytes readFirst(std::size_t length, const FileDescriptor& file)
{
    auto memory = std::make_unique_for_overwrite<char[]>(length);
    provideMemory(memory.get(), length);
    const auto size = fill(memory.get(), 0, length, file);
    return size ? sharedBytes(std::move(memory), *size) : nullptr;
}

/// All bytes, null on an error and where there are more than `limit`.
FileBytes readToTheEnd(std::size_t limit, const FileDescriptor& file)
{
    std::string bytes(std::min(firstPieceOfUnknownLength, limit + 1), '\0');
    auto size = fill(bytes.data(), 0, bytes.size(), file);
    while (size && *size == bytes.size() && *size <= limit) {
        bytes.resize(std::min(2 * bytes.size(), limit + 1));
        size = fill(bytes.data(), *size, bytes.size(), file);
    }
    if (!size || *size > limit)
        return nullptr;
    bytes.resize(*size);
    return sharedBytes(std::move(bytes));
}

} // namespace

std::uint64_t availableMemory()
{
    std::ifstream file("/proc/meminfo");
    std::uint64_t kibibytes = 0;
    for (std::string name; file >> name;) {
        std::uint64_t value = 0;
        if ((name == "MemAvailable:" || name == "SwapFree:") && file >> value)
            kibibytes += value;
    }
    return kibibytes > 0 ? kibibytes * 1024 / 8 * 7 : std::numeric_limits<std::uint64_t>::max();
}

PosixFileReader::PosixFileReader(std::function<std::uint64_t()> memory)
    : m_memory(std::move(memory))
{
}

std::optional<FileProblem> PosixFileReader::problemWith(const std::string& path)
{
    const FileDescriptor found(path, O_PATH);
    const std::optional<std::uint64_t> length = found.lengthOfRegularFile();
    if (!length || access(found.path().c_str(), R_OK) != 0)
        return FileProblem::unreadable;
    if (*length > m_memory())
        return FileProblem::tooLarge;
    return std::nullopt;
}

FileBytes PosixFileReader::readFile(const std::string& path)
{
    // O_PATH neither waits for the other end of a FIFO nor breaks a lease. The second open waits until another process gives
    // up its lease on the file (F_SETLEASE in fcntl(2)), which the kernel enforces after 45 s; it cannot meet a FIFO.
    const FileDescriptor found(path, O_PATH);
    if (!found.lengthOfRegularFile())
        return nullptr;
    const FileDescriptor file(found.path(), O_RDONLY);
    const std::optional<std::uint64_t> length = file.lengthOfRegularFile();
    const std::uint64_t memory = m_memory();
    if (!length || *length > memory)
        return nullptr;
    try {
        return *length == 0 ? readToTheEnd(std::min(memory, maxUnknownLength), file)
                            : readFirst(*length, file);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace companion
