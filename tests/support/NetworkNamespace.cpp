#include "tests/support/NetworkNamespace.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace companion::testing {

namespace {

std::string because(const std::string& what)
{
    const std::string words = std::strerror(errno); // looking for a remedy may change it
    return what + ": " + words + namespaceRemedy();
}

std::string settingOf(const std::string& path)
{
    std::string value;
    std::ifstream(path) >> value;
    return value;
}

bool writeFile(const std::string& path, const std::string& text)
{
    std::ofstream file(path);
    file << text << std::flush;
    return file.good();
}

/// The order is the kernel's: see user_namespaces(7) on setgroups and gid_map.
bool becomeRootOfUserNamespace()
{
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    return unshare(CLONE_NEWUSER) == 0 && writeFile("/proc/self/setgroups", "deny")
        && writeFile("/proc/self/uid_map", "0 " + user + " 1")
        && writeFile("/proc/self/gid_map", "0 " + group + " 1");
}

bool bringLoopbackUp()
{
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq request{};
    std::strcpy(request.ifr_name, "lo");
    request.ifr_flags = IFF_UP | IFF_LOOPBACK | IFF_RUNNING;
    const bool isUp = fd >= 0 && ioctl(fd, SIOCSIFFLAGS, &request) == 0;
    close(fd);
    return isUp;
}

} // namespace

std::string namespaceRemedy(const std::string& kernelSettings)
{
    std::string remedy = " (works as root";
    if (settingOf(kernelSettings + "/apparmor_restrict_unprivileged_userns") == "1")
        remedy += ", or after \"sudo sysctl kernel.apparmor_restrict_unprivileged_userns=0\"";
    else if (settingOf(kernelSettings + "/unprivileged_userns_clone") == "0")
        remedy += ", or after \"sudo sysctl kernel.unprivileged_userns_clone=1\"";
    return remedy + ")";
}

std::optional<std::string> enterNetworkNamespace()
{
    if (geteuid() != 0 && !becomeRootOfUserNamespace())
        return because("no user namespace");
    if (unshare(CLONE_NEWNET) != 0)
        return because("no network namespace");
    if (!bringLoopbackUp())
        return because("the loopback interface stays down");
    return std::nullopt;
}

} // namespace companion::testing
