#include "platform/posix/PosixFileReader.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
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
             "/dev/zero"s, "/dev/null"s, "/dev/tty"s, (folder / "missing").string(), ""s})
        EXPECT_EQ(reader.readFile(path), nullptr) << path;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    close(listener);
}

TEST_F(PosixFileReaderTest, FileWithoutReadPermissionIsRefused)
{
    const std::string path = write("secret", "content");
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
    EXPECT_TRUE(holdsInChild([&] {
        if (geteuid() == 0 && setuid(65534) != 0)
            return false;
        return !reader.readFile(path);
    }));
}

TEST_F(PosixFileReaderTest, FileThatIsLongerThanMemoryCanBeIsRefused)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers cannot do with so little memory";
#endif
    const std::string path = write("sparse", "");
    if (truncate(path.c_str(), 1LL << 43) != 0)
        GTEST_SKIP() << "this file system holds no sparse file of 8 TiB";
    EXPECT_TRUE(holdsInChild([&] {
        const rlimit limit{1 << 30, 1 << 30};
        return setrlimit(RLIMIT_AS, &limit) == 0 && !reader.readFile(path);
    }));
}

TEST_F(PosixFileReaderTest, FileOfTheKernelThatTellsNoLengthIsRead)
{
    EXPECT_NE(read("/proc/self/status").find("VmPeak"), std::string::npos);
}

TEST_F(PosixFileReaderTest, FileThatTellsNoLengthIsReadToItsEnd)
{
    const std::string path = "/proc/kallsyms"; // some megabytes, always the same
    std::ostringstream expected;
    expected << std::ifstream(path).rdbuf();
    const std::string content = expected.str();
    if (content.size() < (1 << 20))
        GTEST_SKIP() << "the kernel does not show its symbols here";
    EXPECT_TRUE(read(path) == content);
    EXPECT_NE(PosixFileReader(content.size()).readFile(path), nullptr);
    EXPECT_EQ(PosixFileReader(content.size() - 1).readFile(path), nullptr);
    EXPECT_EQ(PosixFileReader(1000).readFile(path), nullptr);
}

TEST_F(PosixFileReaderTest, FileThatGrowsIsReadAsLongAsItWasAndOneThatShrinksAsFarAsItGoes)
{
    constexpr std::size_t size = 8 << 20;
    const std::string path = write("changing", std::string(size, 'a'));
    std::atomic<bool> isDone = false;
    std::thread writer([&] {
        std::ofstream file(path, std::ios::app | std::ios::binary);
        const std::string more(64 << 10, 'b');
        for (int count = 0; count < 500 && !isDone; ++count)
            file << more << std::flush;
    });
    std::string bytes = read(path);
    isDone = true;
    writer.join();
    EXPECT_GE(bytes.size(), size);
    EXPECT_EQ(bytes.find_first_not_of('a'), bytes.size() == size ? std::string::npos : size);

    std::thread shrinker([&] {
        for (off_t length = size; length > 0; length -= 64 << 10) {
            if (truncate(path.c_str(), length) != 0)
                break;
        }
    });
    bytes = read(path);
    shrinker.join();
    EXPECT_LE(bytes.size(), size + 500 * (64 << 10));
    EXPECT_NE(bytes, "unreadable");
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
