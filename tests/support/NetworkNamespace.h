#pragma once

#include <optional>
#include <string>

namespace companion::testing {

/// Moves this process, and all that it starts from now on, into a network of its own that has nothing but "lo", up,
/// so that fixed ports and multicast meet no other test. To be called first thing in `main`, before any thread.
/// A user other than root becomes root of a user namespace, where the system allows that.
///
/// Nothing on success, else the reason, for a test to skip with.
std::optional<std::string> enterNetworkNamespace();

/// What would let this user have namespaces of his own, for the end of a reason why he has none. `kernelSettings` is
/// where the kernel shows its settings.
std::string namespaceRemedy(const std::string& kernelSettings = "/proc/sys/kernel");

} // namespace companion::testing
