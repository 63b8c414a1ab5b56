#include "platform/posix/PosixFileReader.h"

#include "tests/support/Pipe.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <sstream>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace companion::testing {

using namespace std::string_literals;

class PosixFileReaderTest : public ::testing::Test {
protected:
    PosixFileReaderTest()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "file-reader-XXXXXX").string();
        folder = mkdtemp(pattern.data());
    }
    ~PosixFileReaderTest() override { std::filesystem::remove_all(folder); }

    std::string write(const std::string& name, const std::string& content)
    {
        const std::string path = folder / name;
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }

    /// The file's bytes, or "unreadable".
    std::string read(const std::string& path)
    {
        const FileBytes bytes = reader.readFile(path);
        return bytes ? std::string(*bytes) : "unreadable";
    }

    std::filesystem::path folder;
    PosixFileReader reader;
};

namespace {

std::string patternOf(std::size_t size)
{
    std::string bytes(size, '\0');
    for (std::size_t index = 0; index < size; ++index)
        bytes[index] = static_cast<char>(index * 31 + index / 251);
    return bytes;
}

/// The most memory that this process has had, in bytes.
std::size_t peakMemory()
{
    std::ifstream lines("/proc/self/status");
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("VmHWM:"))
            return std::stoul(line.substr(6)) * 1024;
    }
    return 0;
}

/// Runs `child` in a process of its own; whether it says yes.
template <typename Function> bool holdsInChild(const Function& child)
{
    const pid_t pid = fork();
    if (pid == 0)
        _exit(child() ? 0 : 1);
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace

TEST_F(PosixFileReaderTest, WholeFileIsReadByteByByte)
{
    for (const std::size_t size : {0u, 1u, 4096u, 262143u, 262144u, 262145u, 1000003u}) {
        const std::string content = patternOf(size);
        const std::string path = write("file", content);
        EXPECT_TRUE(read(path) == content) << size;
    }
}

TEST_F(PosixFileReaderTest, NameIsAnyBytes)
{
    EXPECT_EQ(read(write("caf\xE9 |\"\n.png", "content")), "content");
}

TEST_F(PosixFileReaderTest, LinkToAFileIsRead)
{
    std::filesystem::create_symlink(write("file", "content"), folder / "link");
    EXPECT_EQ(read(folder / "link"), "content");
}

TEST_F(PosixFileReaderTest, WhatIsNoRegularFileIsRefusedWithoutWaiting)
{
    const std::string fifo = folder / "fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    std::filesystem::create_symlink(fifo, folder / "link to fifo");
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string socketPath = folder / "socket";
    socketPath.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);

    const auto start = std::chrono::steady_clock::now();
    for (const std::string& path : {fifo, (folder / "link to fifo").string(), socketPath, folder.string(),
             "/dev/zero"s, "/dev/null"s, "/dev/tty"s, (folder / "missing").string(), ""s}) {
        EXPECT_EQ(reader.readFile(path), nullptr) << path;
        EXPECT_EQ(reader.problemWith(path), FileProblem::unreadable) << path;
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    close(listener);
}

TEST_F(PosixFileReaderTest, FileWithoutReadPermissionIsRefused)
{
    const std::string readable = write("readable", "content");
    const std::string path = write("secret", "content");
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
    EXPECT_TRUE(holdsInChild([&] {
        if (geteuid() == 0
            && (setuid(65534) != 0 || prctl(PR_SET_DUMPABLE, 1) != 0)) // for its own /proc/self/fd
            return false;
        return !reader.problemWith(readable) && reader.readFile(readable)
            && reader.problemWith(path) == FileProblem::unreadable && !reader.readFile(path);
    }));
}

TEST_F(PosixFileReaderTest, FileThatFitsIntoMemoryIsReadAndOneOfAByteMoreIsRefused)
{
    const std::string path = write("file", "1234567");
    PosixFileReader fitting([] { return 7; });
    EXPECT_EQ(fitting.problemWith(path), std::nullopt);
    EXPECT_EQ(*fitting.readFile(path), "1234567");
    PosixFileReader tooSmall([] { return 6; });
    EXPECT_EQ(tooSmall.problemWith(path), FileProblem::tooLarge);
    EXPECT_EQ(tooSmall.readFile(path), nullptr);
}

TEST_F(PosixFileReaderTest, SparseFileOfATerabyteIsRefusedWhereMemoryIsShorter)
{
    const std::string path = write("sparse", "");
    if (truncate(path.c_str(), 1LL << 40) != 0)
        GTEST_SKIP() << "this file system holds no sparse file of 1 TiB";
    if (availableMemory() >= 1ULL << 40)
        GTEST_SKIP() << "this computer has as much memory";
    EXPECT_EQ(reader.problemWith(path), FileProblem::tooLarge);
    EXPECT_EQ(reader.readFile(path), nullptr);
}

TEST_F(PosixFileReaderTest, FileThatTheProcessMayNotHaveMemoryForIsRefused)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers cannot do with so little memory";
#endif
    const std::string path = write("sparse", "");
    ASSERT_EQ(truncate(path.c_str(), 2LL << 30), 0);
    PosixFileReader boundless([] { return std::numeric_limits<std::uint64_t>::max(); });
    EXPECT_TRUE(holdsInChild([&] {
        const rlimit limit{1 << 30, 1 << 30};
        return setrlimit(RLIMIT_AS, &limit) == 0 && !boundless.readFile(path);
    }));
}

TEST(AvailableMemoryTest, IsLessThanThisComputerHasAndMoreThanThisProcessNeeds)
{
    std::uint64_t all = 0;
    std::ifstream lines("/proc/meminfo");
    for (std::string name; lines >> name;) {
        std::uint64_t kibibytes = 0;
        if ((name == "MemTotal:" || name == "SwapTotal:") && lines >> kibibytes)
            all += kibibytes * 1024;
    }
    EXPECT_LT(availableMemory(), all);
    EXPECT_GT(availableMemory(), 1u << 20);
}

TEST_F(PosixFileReaderTest, FileOfTheKernelThatReportsNoLengthIsRead)
{
    EXPECT_NE(read("/proc/self/status").find("VmPeak"), std::string::npos);
}

TEST_F(PosixFileReaderTest, FileThatReportsNoLengthIsReadToItsEnd)
{
    const std::string path = "/proc/kallsyms"; // some megabytes, always the same
    std::ostringstream expected;
    expected << std::ifstream(path).rdbuf();
    const std::string content = expected.str();
    if (content.size() < (1 << 20))
        GTEST_SKIP() << "the kernel does not show its symbols here";
    EXPECT_TRUE(read(path) == content);
    EXPECT_NE(PosixFileReader([&] { return content.size(); }).readFile(path), nullptr);
    EXPECT_EQ(PosixFileReader([&] { return content.size() - 1; }).readFile(path), nullptr);
    EXPECT_EQ(PosixFileReader([] { return 1000; }).readFile(path), nullptr);
}

TEST_F(PosixFileReaderTest, FileThatGrowsAfterItWasOpenedIsReadAsLongAsItWas)
{
    const std::string path = write("growing", "as it was");
    PosixFileReader growing([&] {
        std::ofstream(path, std::ios::app) << " and more";
        return availableMemory();
    });
    EXPECT_EQ(*growing.readFile(path), "as it was");
    EXPECT_EQ(read(path), "as it was and more");
}

TEST_F(PosixFileReaderTest, FileThatShrinksAfterItWasOpenedIsReadToItsEnd)
{
    const std::string path = write("shrinking", "as it was");
    PosixFileReader shrinking([&] {
        EXPECT_EQ(truncate(path.c_str(), 2), 0);
        return availableMemory();
    });
    EXPECT_EQ(*shrinking.readFile(path), "as");
}

TEST_F(PosixFileReaderTest, FifoThatTakesTheFilesPlaceMeanwhileBlocksNobody)
{
    const std::string path = write("file", "content");
    const std::string fifo = folder / "fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    std::jthread swapper([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, fifo.c_str(), RENAME_EXCHANGE);
            std::this_thread::yield();
        }
    });
    std::string previous;
    for (int changes = 0; changes < 1000;) { // enough for one to fall between finding the file and opening it
        const std::string content = read(path);
        ASSERT_TRUE(content == "content" || content == "unreadable") << content;
        changes += content != previous;
        previous = content;
    }
}

/// Holds a lease on a file, and once another process opens the file, appends to it and gives up the lease.
class LeaseHolder {
public:
    explicit LeaseHolder(const std::string& path)
    {
        m_pid = fork();
        if (m_pid == 0)
            hold(path);
        m_started.closeWriter();
    }
    ~LeaseHolder() { waitpid(m_pid, nullptr, 0); }
    LeaseHolder(const LeaseHolder&) = delete;
    LeaseHolder& operator=(const LeaseHolder&) = delete;

    /// Blocks until it does, or cannot.
    bool holdsLease() const { return m_started.readAll() == "lease"; }

private:
    [[noreturn]] void hold(const std::string& path)
    {
        sigset_t leaseBreak;
        sigemptyset(&leaseBreak);
        sigaddset(&leaseBreak, SIGIO); // what the kernel sends by default
        sigprocmask(SIG_BLOCK, &leaseBreak, nullptr);
        const int file = open(path.c_str(), O_WRONLY | O_APPEND);
        if (fcntl(file, F_SETLEASE, F_WRLCK) != 0)
            _exit(1);
        const bool isToldOf = ::write(m_started.writer(), "lease", 5) == 5;
        m_started.closeWriter();
        siginfo_t info{};
        const bool isBroken = isToldOf && sigwaitinfo(&leaseBreak, &info) == SIGIO;
        const bool isWritten = isBroken && ::write(file, " and under the lease", 20) == 20;
        _exit(isWritten && fcntl(file, F_SETLEASE, F_UNLCK) == 0 ? 0 : 1);
    }

    Pipe m_started;
    pid_t m_pid = -1;
};

TEST_F(PosixFileReaderTest, FileThatAnotherProcessHoldsALeaseOnIsReadAsSoonAsThatGivesItUp)
{
    const std::string path = write("leased", "before");
    const LeaseHolder holder(path);
    if (!holder.holdsLease())
        GTEST_SKIP() << "this file system has no leases";
    EXPECT_EQ(read(path), "before and under the lease");
}

TEST_F(PosixFileReaderTest, MemoryPeaksAtTheFilesSizePlusLessThan8MiB)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers use memory of their own";
#endif
    constexpr std::size_t size = 100 << 20;
    const std::string path = write("large", std::string(size, 'x'));
    EXPECT_TRUE(holdsInChild([&] {
        std::ofstream("/proc/self/clear_refs") << 5; // from now on the peak is what is used from now on
        const std::size_t before = peakMemory();
        const FileBytes bytes = reader.readFile(path);
        const std::size_t used = peakMemory() - before;
        return bytes && bytes->size() == size && used > size / 2 && used < size + (8 << 20);
    }));
}

} // namespace companion::testing
