#include "platform/posix/PosixFileReader.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace companion {

namespace {

/// Of the usual processors; on others the hint is for less than it could be.
constexpr std::uintptr_t largePage = 2 << 20;

constexpr std::size_t firstPieceOfUnknownLength = 64 << 10;

class FileDescriptor {
public:
    /// Does not wait for the other end of a FIFO, nor make a terminal the controlling one.
    explicit FileDescriptor(const std::string& path)
        : m_descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY))
    {
    }
    ~FileDescriptor()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    /// Nothing when it is no regular file.
    std::optional<std::uint64_t> lengthOfFile() const
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
    const int m_descriptor;
};

/// A large file's memory in large pages, where the system has them: most of the time of reading a file that the system
/// still knows goes into getting pages. A hint; it may fail.
void askForLargePages(const char* memory, std::size_t size)
{
    const auto begin = (reinterpret_cast<std::uintptr_t>(memory) + largePage - 1) / largePage * largePage;
    const auto end = (reinterpret_cast<std::uintptr_t>(memory) + size) / largePage * largePage;
    if (begin < end)
        madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

/// Reads behind the first `size` bytes of `memory`, to its end or to the file's. How many bytes there are then, or nothing
/// on an error.
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
    // Not cleared: for a large file that takes a third as long again as reading it.
    auto memory = std::make_unique_for_overwrite<char[]>(length);
    askForLargePages(memory.get(), length);
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

PosixFileReader::PosixFileReader(std::size_t longestOfUnknownLength)
    : m_longestOfUnknownLength(longestOfUnknownLength)
{
}

FileBytes PosixFileReader::readFile(const std::string& path)
{
    const FileDescriptor file(path);
    const std::optional<std::uint64_t> length = file.lengthOfFile();
    if (!length)
        return nullptr;
    try {
        return *length == 0 ? readToTheEnd(m_longestOfUnknownLength, file) : readFirst(*length, file);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace companion
