#pragma once

#include <array>
#include <cstdio>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace companion::testing {

class Pipe {
public:
    explicit Pipe(int flags = O_CLOEXEC)
    {
        if (pipe2(m_ends.data(), flags) != 0)
            m_ends = {-1, -1};
    }
    ~Pipe()
    {
        closeReader();
        closeWriter();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int reader() const { return m_ends[0]; }
    int writer() const { return m_ends[1]; }
    void closeReader() { closeEnd(0); }
    void closeWriter() { closeEnd(1); }

    /// All that comes until the last writer is gone.
    std::string readAll() const
    {
        std::string text;
        std::array<char, 65536> buffer{};
        for (ssize_t count = 1; count > 0;) {
            count = read(reader(), buffer.data(), buffer.size());
            if (count > 0)
                text.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return text;
    }

private:
    void closeEnd(std::size_t end)
    {
        if (m_ends[end] >= 0)
            close(m_ends[end]);
        m_ends[end] = -1;
    }

    std::array<int, 2> m_ends{};
};

/// Another descriptor in the place of standard output or standard error.
class Redirected {
public:
    Redirected(int standard, int replacement)
        : m_standard(standard)
        , m_saved(dup(standard))
    {
        std::fflush(nullptr);
        dup2(replacement, standard);
    }
    ~Redirected()
    {
        dup2(m_saved, m_standard);
        close(m_saved);
    }
    Redirected(const Redirected&) = delete;
    Redirected& operator=(const Redirected&) = delete;

private:
    int m_standard;
    int m_saved;
};

} // namespace companion::testing
