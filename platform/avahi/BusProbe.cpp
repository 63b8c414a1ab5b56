#include "platform/avahi/BusProbe.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace companion {

namespace {

// A client's first byte is a NUL; "AUTH" without a mechanism is answered by the list of those that the bus knows (D-Bus
// Specification, "Authentication Protocol").
constexpr char greeting[] = "\0AUTH\r\n";
constexpr std::size_t greetingSize = sizeof greeting - 1;

} // namespace

std::optional<UnixSocketAddress> UnixSocketAddress::ofBus(const QByteArray& busAddress)
{
    static const QByteArray transport = "unix:";
    if (!busAddress.startsWith(transport) || busAddress.contains(';'))
        return std::nullopt;
    UnixSocketAddress address = {};
    address.name.sun_family = AF_UNIX;
    for (const QByteArray& pair : busAddress.mid(transport.size()).split(',')) {
        const auto equals = pair.indexOf('=');
        const QByteArray key = pair.left(equals);
        const bool isAbstract = key == "abstract";
        if (!isAbstract && key != "path")
            continue;
        QByteArray name = QByteArray::fromPercentEncoding(pair.mid(equals + 1));
        // As unix(7) has it: a NUL begins an abstract name, and ends a path.
        name.insert(isAbstract ? 0 : name.size(), '\0');
        if (std::size_t(name.size()) > sizeof address.name.sun_path)
            return std::nullopt;
        std::copy(name.begin(), name.end(), address.name.sun_path);
        address.length = socklen_t(offsetof(sockaddr_un, sun_path) + std::size_t(name.size()));
        return address;
    }
    return std::nullopt;
}

BusProbe::BusProbe(std::function<void(Result)> onResult)
    : m_onResult(std::move(onResult))
{
    m_patience.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this, [this] { finish(Result::silent); });
}

BusProbe::~BusProbe()
{
    close();
}

void BusProbe::start(const QByteArray& busAddress)
{
    const auto address = UnixSocketAddress::ofBus(busAddress);
    if (!address)
        return finish(Result::answers);
    m_fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (m_fd < 0 || ::connect(m_fd, reinterpret_cast<const sockaddr*>(&address->name), address->length) != 0)
        return finish(errno == EAGAIN ? Result::silent : Result::missing); // EAGAIN: too many are waiting
    if (send(m_fd, greeting, greetingSize, MSG_NOSIGNAL) != ssize_t(greetingSize))
        return finish(Result::missing);
    m_answer = new QSocketNotifier(m_fd, QSocketNotifier::Read, this);
    connect(m_answer, &QSocketNotifier::activated, this, &BusProbe::readAnswer);
    m_patience.start(patience);
}

void BusProbe::readAnswer()
{
    char first = 0;
    const ssize_t count = recv(m_fd, &first, 1, 0);
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    finish(count > 0 ? Result::answers : Result::missing);
}

void BusProbe::finish(Result result)
{
    close();
    m_onResult(result);
}

void BusProbe::close()
{
    m_patience.stop();
    if (m_answer) {
        m_answer->setEnabled(false);
        std::exchange(m_answer, nullptr)->deleteLater(); // this may be called by it
    }
    if (m_fd >= 0)
        ::close(std::exchange(m_fd, -1));
}

} // namespace companion
