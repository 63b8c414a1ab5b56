#include "cli/SystemProbes.h"

#include <arpa/inet.h>
#include <fstream>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace companion::cli::testing {

namespace fs = std::filesystem;

/// A folder as /proc is, with sockets on port 41863 (A387) and others.
class ProcUdpPortHolderTest : public ::testing::Test {
protected:
    ProcUdpPortHolderTest()
    {
        std::string name = fs::temp_directory_path() / "panelctl-proc-XXXXXX";
        root = mkdtemp(name.data());
        write("net/udp",
            columns
                + "    1: 00000000:A387 00000000:0000 07 00000000:00000000 00:00000000 00000000     0        0 1111 2\n"
                  "    2: 0100007F:A388 00000000:0000 07 00000000:00000000 00:00000000 00000000     0        0 2222 2\n");
        write("net/udp6",
            columns
                + "    1: 00000000000000000000000000000000:A387 00000000000000000000000000000000:0000 07 "
                  "00000000:00000000 00:00000000 00000000     0        0 3333 2\n");
    }
    ~ProcUdpPortHolderTest() override { fs::remove_all(root); }

    void write(const std::string& path, const std::string& text) const
    {
        fs::create_directories((root / path).parent_path());
        std::ofstream(root / path) << text;
    }

    void addProcess(const std::string& id, const std::string& program, const std::string& socket) const
    {
        write(id + "/comm", program + "\n");
        fs::create_directories(root / id / "fd");
        fs::create_symlink("/dev/null", root / id / "fd/0");
        fs::create_symlink(socket, root / id / "fd/5");
    }

    std::string holders(std::uint16_t port) const { return holdersText(udpPortHolders(port, root)); }

    const std::string columns =
        "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid\n";
    fs::path root;
};

TEST_F(ProcUdpPortHolderTest, HoldersOverIPv4AndIPv6AreFoundByTheirOpenFiles)
{
    addProcess("200", "panel-companion", "socket:[3333]");
    addProcess("30", "socat", "socket:[1111]");
    addProcess("31", "other", "socket:[2222]");
    addProcess("self", "myself", "socket:[1111]");
    EXPECT_EQ(holders(41863), "socat (process 30) and panel-companion (process 200)");
    EXPECT_EQ(holders(41864), "other (process 31)");
}

TEST_F(ProcUdpPortHolderTest, HolderThatIsNotToBeSeenIsNobody)
{
    EXPECT_TRUE(udpPortHolders(41863, root).empty());
    EXPECT_TRUE(udpPortHolders(41863, "/nonexistent").empty());
}

TEST_F(ProcUdpPortHolderTest, TablesThatAreCutOffAreRead)
{
    write("net/udp", columns + "    1: 00000000:A387 00000\n\nnonsense\n 2: :A387");
    EXPECT_TRUE(udpPortHolders(41863, root).empty());
}

TEST(ProcUdpPortHolderOfThisSystemTest, OwnSocketIsOurs)
{
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), size), 0);
    getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
    const auto holders = udpPortHolders(ntohs(address.sin_port));
    close(fd);
    ASSERT_EQ(holders.size(), 1U);
    EXPECT_EQ(holders.front().processId, getpid());
}

} // namespace companion::cli::testing
