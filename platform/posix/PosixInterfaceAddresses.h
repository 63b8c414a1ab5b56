#pragma once

#include "platform/InterfaceAddresses.h"

namespace companion {

/// The list of getifaddrs(3). An entry without an address, such as a tunnel's, is a link and left out.
class PosixInterfaceAddresses : public InterfaceAddresses {
public:
    std::optional<std::vector<InterfaceAddress>> list() const override;
};

} // namespace companion
