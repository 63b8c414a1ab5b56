#include "platform/posix/PosixFileReader.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <new>
#include <optional>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace companion {

namespace {

/// Grown by so much at a time, so that the memory which is cleared before it is read into is still in the cache.
constexpr std::uint64_t stepSize = 256 << 10;

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
void askForLargePages(std::string& reserved)
{
    const auto begin =
        (reinterpret_cast<std::uintptr_t>(reserved.data()) + largePage - 1) / largePage * largePage;
    const auto end =
        (reinterpret_cast<std::uintptr_t>(reserved.data()) + reserved.capacity()) / largePage * largePage;
    if (begin < end)
        madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

/// The bytes up to the end or to `limit`, nothing on an error.
std::optional<std::string> readUpTo(std::uint64_t limit, std::uint64_t expected, const FileDescriptor& file)
{
    std::string bytes;
    bytes.reserve(expected);
    askForLargePages(bytes);
    while (bytes.size() < limit) {
        const std::size_t before = bytes.size();
        const std::size_t step = std::min(limit - before, stepSize);
        bytes.resize(before + step);
        const ssize_t count = file.readInto(bytes.data() + before, step);
        if (count < 0)
            return std::nullopt;
        bytes.resize(before + static_cast<std::size_t>(count));
        if (count == 0)
            break;
    }
    return bytes;
}

std::optional<std::string> readWhole(const std::string& path)
{
    const FileDescriptor file(path);
    const std::optional<std::uint64_t> length = file.lengthOfFile();
    if (!length)
        return std::nullopt;
    try {
        return readUpTo(*length == 0 ? longestFileOfUnknownLength : *length, *length, file);
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    } catch (const std::length_error&) {
        return std::nullopt;
    }
}

} // namespace

FileBytes PosixFileReader::readFile(const std::string& path)
{
    std::optional<std::string> bytes = readWhole(path);
    return bytes ? std::make_shared<const std::string>(std::move(*bytes)) : nullptr;
}

bool isReadableFile(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && access(path.c_str(), R_OK) == 0;
}

} // namespace companion
