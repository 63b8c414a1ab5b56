#include "platform/posix/StandardDescriptors.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace companion {

void openStandardDescriptors()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) == -1 && errno == EBADF)
            open("/dev/null", O_RDONLY); // takes the lowest free number, which is this one
    }
}

} // namespace companion
