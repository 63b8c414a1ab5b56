#include "platform/posix/RouteQuery.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <optional>
#include <utility>

#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

// Messages and macros as in rtnetlink(7), rtnetlink(3) and netlink(3).

namespace companion {

namespace {

struct Request {
    nlmsghdr header;
    rtmsg route;
    rtattr attribute;
    in_addr destination;
};

Request requestForRouteTo(in_addr destination)
{
    Request request{};
    request.header.nlmsg_len = sizeof request;
    request.header.nlmsg_type = RTM_GETROUTE;
    request.header.nlmsg_flags = NLM_F_REQUEST;
    request.route.rtm_family = AF_INET;
    request.route.rtm_dst_len = 32;
    request.attribute.rta_type = RTA_DST;
    request.attribute.rta_len = RTA_LENGTH(sizeof destination);
    request.destination = destination;
    return request;
}

Request requestForAllRoutes()
{
    Request request{};
    request.header.nlmsg_len = NLMSG_LENGTH(sizeof request.route);
    request.header.nlmsg_type = RTM_GETROUTE;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request.route.rtm_family = AF_INET;
    return request;
}

/// One exchange with the kernel.
class RouteSocket {
public:
    RouteSocket()
        : m_descriptor(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE))
    {
        // The answer lies there when the question was sent; this is for a kernel that owes it.
        const timeval oneSecond{1, 0};
        setsockopt(m_descriptor, SOL_SOCKET, SO_RCVTIMEO, &oneSecond, sizeof oneSecond);
    }
    ~RouteSocket() { close(m_descriptor); }
    RouteSocket(const RouteSocket&) = delete;
    RouteSocket& operator=(const RouteSocket&) = delete;

    using Visitor = std::function<void(const rtmsg& route, const rtattr* attributes, int length)>;

    /// Calls `visit` with each route of the answer.
    void ask(const Request& request, const Visitor& visit) const
    {
        if (send(m_descriptor, &request, request.header.nlmsg_len, 0) < 0)
            return;
        while (readAnswer(visit)) { }
    }

private:
    /// Tells whether there is more to come.
    bool readAnswer(const Visitor& visit) const
    {
        alignas(nlmsghdr) std::array<char, 32 * 1024>
            buffer; // netlink(7) recommends at least 8 KiB, for dumps 32
        const ssize_t received = recv(m_descriptor, buffer.data(), buffer.size(), 0);
        if (received <= 0)
            return false;
        auto left = static_cast<std::size_t>(received);
        bool hasMore = false;
        for (auto* message = reinterpret_cast<const nlmsghdr*>(buffer.data()); NLMSG_OK(message, left);
             message = NLMSG_NEXT(message, left)) {
            if (message->nlmsg_type != RTM_NEWROUTE)
                return false; // the dump's end, or an error such as "network is unreachable"
            const auto* route = static_cast<const rtmsg*>(NLMSG_DATA(message));
            visit(*route, RTM_RTA(route), static_cast<int>(RTM_PAYLOAD(message)));
            hasMore = (message->nlmsg_flags & NLM_F_MULTI) != 0;
        }
        return hasMore;
    }

    int m_descriptor;
};

struct RouteAttributes {
    std::optional<std::uint32_t> interfaceIndex;
    std::uint32_t metric = 0;
};

template <typename Value> Value valueOf(const rtattr* attribute)
{
    Value value{};
    std::memcpy(&value, RTA_DATA(attribute), sizeof value);
    return value;
}

/// Of a route with several next hops, the first one counts.
RouteAttributes read(const rtattr* attribute, int length)
{
    RouteAttributes attributes;
    for (; RTA_OK(attribute, length); attribute = RTA_NEXT(attribute, length)) {
        if (attribute->rta_type == RTA_OIF)
            attributes.interfaceIndex = valueOf<std::uint32_t>(attribute);
        else if (attribute->rta_type == RTA_MULTIPATH)
            attributes.interfaceIndex =
                static_cast<std::uint32_t>(valueOf<rtnexthop>(attribute).rtnh_ifindex);
        else if (attribute->rta_type == RTA_PRIORITY)
            attributes.metric = valueOf<std::uint32_t>(attribute);
    }
    return attributes;
}

std::string nameOfInterface(std::optional<std::uint32_t> index)
{
    std::array<char, IF_NAMESIZE> name{};
    if (!index || !if_indextoname(*index, name.data()))
        return "";
    return name.data();
}

bool isUsableDefaultRoute(const rtmsg& route)
{
    return route.rtm_dst_len == 0 && route.rtm_type == RTN_UNICAST && route.rtm_table == RT_TABLE_MAIN
        && (route.rtm_flags & (RTNH_F_DEAD | RTNH_F_LINKDOWN)) == 0;
}

} // namespace

std::string interfaceOfRouteTo(in_addr destination)
{
    std::optional<std::uint32_t> index;
    RouteSocket().ask(
        requestForRouteTo(destination), [&](const rtmsg&, const rtattr* attributes, int length) {
            index = read(attributes, length).interfaceIndex;
        });
    return nameOfInterface(index);
}

std::string interfaceOfDefaultRoute()
{
    std::optional<RouteAttributes> best;
    RouteSocket().ask(requestForAllRoutes(), [&](const rtmsg& route, const rtattr* first, int length) {
        const RouteAttributes attributes = read(first, length);
        if (isUsableDefaultRoute(route) && (!best || attributes.metric < best->metric))
            best = attributes;
    });
    return best ? nameOfInterface(best->interfaceIndex) : "";
}

} // namespace companion
