#include "platform/posix/PosixFileReader.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <memory>
#include <new>
#include <optional>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace companion {

namespace {

/// Of the usual processors; on others the hint is for less than it could be.
constexpr std::uintptr_t largePage = 2 << 20;

/// Files that the kernel or a server makes up as they are read may tell a length of 0.
constexpr std::uint64_t longestFileOfUnknownLength = 16 << 20;

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

/// The bytes up to the end or to `limit`, null on an error.
FileBytes readUpTo(std::uint64_t limit, const FileDescriptor& file)
{
    // Not cleared: for a large file that takes a third as long again as reading it.
    auto memory = std::make_unique_for_overwrite<char[]>(limit);
    askForLargePages(memory.get(), limit);
    std::size_t size = 0;
    while (size < limit) {
        const ssize_t count = file.readInto(memory.get() + size, limit - size);
        if (count < 0)
            return nullptr;
        if (count == 0)
            break;
        size += static_cast<std::size_t>(count);
    }
    return sharedBytes(std::move(memory), size);
}

} // namespace

FileBytes PosixFileReader::readFile(const std::string& path)
{
    const FileDescriptor file(path);
    const std::optional<std::uint64_t> length = file.lengthOfFile();
    if (!length)
        return nullptr;
    try {
        return readUpTo(*length == 0 ? longestFileOfUnknownLength : *length, file);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace companion
