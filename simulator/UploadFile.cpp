#include "simulator/UploadFile.h"

#include "simulator/UploadName.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace companion::simulator {

namespace {

constexpr unsigned maxNumber = 10'000;

}

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
    // Some file systems tell only now that there was no room.
    if (close(std::exchange(m_fd, -1)) != 0) {
        fail();
        return {};
    }
    const std::string stored = reserveName(name);
    if (stored.empty())
        return {};
    // What is replaced here is the empty file that reserves the name.
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
    std::string path = m_folder + "/.upload-XXXXXX";
    m_fd = mkostemp(path.data(), O_CLOEXEC);
    if (m_fd < 0)
        return fail();
    m_temporaryPath = path;
    fchmod(m_fd, 0644);
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
        const int fd = ::open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC | O_NOFOLLOW, 0644);
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

} // namespace companion::simulator
