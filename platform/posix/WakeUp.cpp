#include "platform/posix/WakeUp.h"

#include <cerrno>
#include <cstdint>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace companion {

WakeUp::WakeUp()
    : m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (m_descriptor < 0)
        throw std::system_error(errno, std::generic_category(), "No descriptor to wake a thread with");
}

WakeUp::~WakeUp()
{
    close(m_descriptor);
}

// Neither call can fail in a way that matters: a full counter is readable, an empty one is quiet (eventfd(2)).

void WakeUp::ring()
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(m_descriptor, &one, sizeof one);
}

void WakeUp::quiet()
{
    std::uint64_t count = 0;
    [[maybe_unused]] const auto taken = read(m_descriptor, &count, sizeof count);
}

} // namespace companion
