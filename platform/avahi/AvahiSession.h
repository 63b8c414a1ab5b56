#pragma once

#include "platform/avahi/AvahiClient.h"
#include "platform/avahi/TurnQueue.h"

namespace companion {

/// What a browser and the services that it found share; it lives as long as the last of them. Main thread only.
struct AvahiSession {
    explicit AvahiSession(SystemLog& log)
        : client(log)
    {
    }

    AvahiClient client;

    /// A thousand services are resolved three times as fast sixteen at a time as all at once, and the daemon keeps
    /// at most 1,024 objects for a client.
    TurnQueue resolutions{16, 512};
};

} // namespace companion
