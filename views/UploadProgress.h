#pragma once

#include "platform/MainQueue.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace companion {

/// One upload that is on its way.
struct UploadLine {
    std::uint64_t number = 0; ///< Of this upload alone, as long as the program runs.
    std::string fileName;
    int percent = 0; ///< 0 to 100, handed to the network.

    /// "photo.png 42 %"
    std::string text() const;

    bool operator==(const UploadLine&) const = default;
};

/// Shows the uploads that are on their way. Main thread only.
class UploadProgressView {
public:
    virtual ~UploadProgressView() = default;

    /// All uploads that run, the oldest first; none takes the display away.
    virtual void showUploads(const std::vector<UploadLine>& lines) = 0;

    /// Has a screen reader say `text` when it has finished what it is saying.
    virtual void announcePolitely(const std::string& text) = 0;
};

/// Which uploads run and how far they are. Main thread only, but for `Report`.
class UploadProgress {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    using Now = std::function<TimePoint()>;

    /// All uploads together change the view at most so often, but for those that reach 100 %.
    static constexpr std::chrono::milliseconds shortestInterval{100};

    /// How one upload tells of itself. Any thread, one at a time. It may outlive the `UploadProgress`.
    class Report;

    /// The view is told as long as this object lives, and outlives it.
    UploadProgress(MainQueue& mainQueue, UploadProgressView& view, Now now = std::chrono::steady_clock::now);
    ~UploadProgress();

    /// Adds a line, which stays until the report has ended or is gone.
    std::shared_ptr<Report> begin(const std::string& fileName);

private:
    class Lines;

    std::shared_ptr<Lines> m_lines;
};

class UploadProgress::Report {
public:
    Report(std::weak_ptr<Lines> lines, std::uint64_t number);
    ~Report();
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;

    /// So many bytes have been sent of so many in all.
    void sent(std::uint64_t bytes, std::uint64_t total);

    /// The upload is over, however it ended; nothing is said about that.
    void end();

private:
    std::weak_ptr<Lines> m_lines;
    std::uint64_t m_number;
    int m_percent = 0;
    bool m_hasEnded = false;
};

} // namespace companion
