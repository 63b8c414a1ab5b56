#include "platform/curl/TcpActivity.h"

#include <algorithm>
#include <linux/tcp.h> // the C library's own tcp_info ends before the byte counts
#include <netinet/in.h>
#include <sys/socket.h>

namespace companion {

namespace {

/// Nothing is on its way although there is something to send: the window is closed. The system probes it ever less
/// often; while the other side lives, at most the last probe has no answer yet.
bool isHeldBack(const tcp_info& info)
{
    return info.tcpi_notsent_bytes > 0 && info.tcpi_unacked == 0 && info.tcpi_probes <= 1;
}

} // namespace

TcpActivity tcpActivity(int socket)
{
    tcp_info info{};
    socklen_t size = sizeof info;
    if (getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size) != 0)
        return {};
    return {info.tcpi_bytes_received + info.tcpi_bytes_acked,
        std::chrono::milliseconds(std::min(info.tcpi_last_data_recv, info.tcpi_last_ack_recv)),
        isHeldBack(info)};
}

} // namespace companion
