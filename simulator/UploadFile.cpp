#include "simulator/UploadFile.h"

#include "platform/Text.h"
#include "simulator/Text.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace companion::simulator {

namespace {

constexpr unsigned maxNumber = 10'000;
constexpr std::size_t maxNameBytes = 200;
constexpr std::size_t maxExtensionBytes = 20;

/// With the permissions that the umask leaves.
int createNew(const std::string& path)
{
    return ::open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC | O_NOFOLLOW, 0666);
}

/// Stem, and extension with its "."; an extension that is too long counts as part of the stem.
std::pair<std::string, std::string> split(const std::string& name)
{
    const auto dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0 || name.size() - dot > maxExtensionBytes)
        return {name, ""};
    return {name.substr(0, dot), name.substr(dot)};
}

} // namespace

UploadFile::UploadFile(std::string folder)
    : m_folder(std::move(folder))
{
    if (!m_folder.empty())
        open();
}

UploadFile::~UploadFile()
{
    if (m_fd >= 0)
        close(m_fd);
    if (!m_temporaryPath.empty())
        unlink(m_temporaryPath.c_str());
}

void UploadFile::write(std::string_view data)
{
    while (m_fd >= 0 && m_problem.empty() && !data.empty()) {
        const ssize_t written = ::write(m_fd, data.data(), data.size());
        if (written >= 0)
            data.remove_prefix(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            fail();
    }
}

std::string UploadFile::finish(const std::string& name)
{
    if (m_fd < 0 || !m_problem.empty())
        return {};
    // Some file systems report a full disk only now.
    if (close(std::exchange(m_fd, -1)) != 0) {
        fail();
        return {};
    }
    const std::string stored = reserveName(name);
    if (stored.empty())
        return {};
    // This replaces the empty file that reserves the name.
    if (rename(m_temporaryPath.c_str(), (m_folder + "/" + stored).c_str()) != 0) {
        fail();
        unlink((m_folder + "/" + stored).c_str());
        return {};
    }
    m_temporaryPath.clear();
    return stored;
}

void UploadFile::open()
{
    // Not mkstemp(3), whose files are private whatever the umask.
    static std::atomic<unsigned> last = 0;
    const std::string prefix = m_folder + "/.upload-" + std::to_string(getpid()) + "-";
    std::string path;
    do {
        path = prefix + std::to_string(++last);
        m_fd = createNew(path);
    } while (m_fd < 0 && errno == EEXIST);
    if (m_fd < 0)
        return fail();
    m_temporaryPath = path;
}

void UploadFile::fail()
{
    m_problem = std::strerror(errno);
}

std::string UploadFile::reserveName(const std::string& name)
{
    for (unsigned number = 1; number <= maxNumber; ++number) {
        std::string candidate = numberedFileName(name, number);
        const std::string path = m_folder + "/" + candidate;
        const int fd = createNew(path);
        if (fd >= 0) {
            close(fd);
            return candidate;
        }
        if (errno != EEXIST)
            break;
    }
    fail();
    return {};
}

std::string safeFileName(std::string_view offered)
{
    if (const auto separator = offered.find_last_of("/\\"); separator != std::string_view::npos)
        offered.remove_prefix(separator + 1);
    std::string name = replaceControls(offered);
    if (name.empty())
        return "upload";
    if (name.front() == '.')
        name.insert(0, "_");
    const auto [stem, extension] = split(name);
    return std::string(cutAtCharacter(stem, maxNameBytes - extension.size())) + extension;
}

std::string numberedFileName(const std::string& name, unsigned number)
{
    if (number <= 1)
        return name;
    const auto [stem, extension] = split(name);
    return stem + " (" + std::to_string(number) + ")" + extension;
}

} // namespace companion::simulator
