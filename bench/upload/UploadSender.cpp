// bench_upload_sender ADDRESS FILE: reads a file and uploads it to a panel at an IPv4 address as the application does.
// Prints, in seconds: the time to read, the time to send, the processor time of each; and the peak of its resident
// memory in bytes.
#include "panel/UploadDataToHost.h"
#include "platform/curl/CurlHttpSession.h"
#include "platform/posix/PosixFileReader.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <future>
#include <stdexcept>
#include <sys/resource.h>

namespace {

using namespace companion;

class NoLog : public SystemLog, public Console {
public:
    void log(std::string_view) override { }
    void print(std::string_view) override { }
};

/// Jobs run where they are handed in; there is no delay in an upload.
class DirectQueue : public MainQueue {
public:
    void async(Job job) override { job(); }
    void after(std::chrono::nanoseconds, Job job) override { job(); }
    std::unique_ptr<RepeatingTimer> repeat(std::chrono::nanoseconds, Job) override
    {
        throw std::logic_error("an upload repeats nothing");
    }
};

/// Holds what the user would be told.
class OutcomeAlerts : public Alerts {
public:
    bool runModal(const std::string& message, const std::string&) override
    {
        m_outcome.set_value(message);
        return true;
    }
    std::string wait() { return m_outcome.get_future().get(); }

private:
    std::promise<std::string> m_outcome;
};

struct Effort {
    double seconds;
    double processorSeconds;
};

double processorSeconds()
{
    timespec used{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

template <typename Action> Effort effortOf(Action action)
{
    const double processor = processorSeconds();
    const auto start = std::chrono::steady_clock::now();
    action();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    return {taken.count(), processorSeconds() - processor};
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    NoLog log;
    DirectQueue queue;
    OutcomeAlerts alerts;
    CurlHttpSession session(log);

    FileBytes data;
    const Effort reading = effortOf([&] { data = PosixFileReader().readFile(argv[2]); });
    if (!data)
        return 1;
    std::string outcome;
    const Effort sending = effortOf([&] {
        UploadDataToHost upload({session, log, queue, alerts});
        upload.initWith("video/mp4", std::move(data), "lecture.mp4", argv[1]);
        upload.upload();
        outcome = alerts.wait();
    });
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%f %f %f %f %ld\n", reading.seconds, sending.seconds, reading.processorSeconds,
        sending.processorSeconds, usage.ru_maxrss * 1024);
    return outcome == "Success" ? 0 : 1;
}
