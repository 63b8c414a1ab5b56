#include "cli/SystemProbes.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace companion::cli::testing {

namespace {

/// A TCP port of 127.0.0.1; whoever connects to one that does not listen is refused.
class Port {
public:
    explicit Port(bool listens)
        : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        inet_pton(AF_INET, "127.0.0.1", &address.sin_addr);
        socklen_t size = sizeof address;
        EXPECT_EQ(bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &size), 0);
        if (listens) {
            EXPECT_EQ(listen(m_socket, 0), 0);
        }
        number = ntohs(address.sin_port);
    }
    ~Port() { close(m_socket); }
    Port(const Port&) = delete;
    Port& operator=(const Port&) = delete;

    std::uint16_t number = 0;

private:
    const int m_socket;
};

using Errors = std::vector<std::string>;

Errors errorsOf(const std::vector<PortAnswer>& answers)
{
    Errors errors;
    for (const PortAnswer& answer : answers)
        errors.push_back(answer.error);
    return errors;
}

} // namespace

TEST(PosixTcpProbeTest, EachPortOfEachAddressHasAnAnswerInOrder)
{
    const Port open(/*listens=*/true);
    const Port closed(/*listens=*/false);
    const auto answers =
        connectToPorts({"127.0.0.1", "nowhere"}, {closed.number, open.number}, std::chrono::seconds(20));
    EXPECT_EQ(errorsOf(answers), (Errors{"Connection refused", "", "Invalid argument", "Invalid argument"}));
    EXPECT_EQ(answers[1].port, open.number);
    EXPECT_EQ(answers[2].address, "nowhere");
}

TEST(PosixTcpProbeTest, APortThatStaysSilentIsLeftWhenTheTimeIsOver)
{
    const Port full(/*listens=*/true);
    const Port closed(/*listens=*/false);
    // With nobody who accepts, one connection fills the queue, and the kernel leaves further ones unanswered.
    const int first = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(full.number);
    inet_pton(AF_INET, "127.0.0.1", &address.sin_addr);
    ASSERT_EQ(connect(first, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    const auto answers =
        connectToPorts({"127.0.0.1"}, {full.number, closed.number}, std::chrono::milliseconds(200));
    EXPECT_EQ(errorsOf(answers), (Errors{"no answer", "Connection refused"}));
    close(first);
}

TEST(PosixTcpProbeTest, HundredsOfPanelsNeedNeitherThreadsNorMemoryOfTheirOwn)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers cannot do with so little memory";
#endif
    const Port closed(/*listens=*/false);
    std::vector<std::string> addresses;
    for (int number = 1; number <= 400; ++number)
        addresses.push_back("127.1." + std::to_string(number / 200) + "." + std::to_string(number % 200 + 1));
    const auto askWithLittleMemory = [&] {
        rlimit limit{};
        getrlimit(RLIMIT_AS, &limit);
        limit.rlim_cur = rlim_t{512} << 20; // of threads' stacks, 64
        setrlimit(RLIMIT_AS, &limit);
        const Errors errors = errorsOf(connectToPorts(addresses, {closed.number}, std::chrono::seconds(20)));
        _exit(errors == Errors(400, "Connection refused") ? 0 : 1);
    };
    EXPECT_EXIT(askWithLittleMemory(), ::testing::ExitedWithCode(0), "");
}

} // namespace companion::cli::testing
