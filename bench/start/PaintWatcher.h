#pragma once

#include <chrono>
#include <optional>
#include <set>
#include <string>

struct _XDisplay;

namespace companion::bench {

/// Sees when a program that connects after it was made first draws into a window that it has mapped: by the RECORD
/// extension, so that the program itself is none the wiser.
class PaintWatcher {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// Throws std::runtime_error when the display or the extension is missing.
    explicit PaintWatcher(const std::string& display);
    ~PaintWatcher();
    PaintWatcher(const PaintWatcher&) = delete;
    PaintWatcher& operator=(const PaintWatcher&) = delete;

    /// When the server took the first paint in, to the millisecond; waited for until the deadline.
    std::optional<TimePoint> firstPaint(TimePoint deadline);

    /// For the recording to report to.
    void noteRequest(const unsigned char* request, std::size_t size, unsigned serverTime);

private:
    void record();

    _XDisplay* m_control;
    _XDisplay* m_data;
    unsigned long m_context = 0;
    int m_sharedMemoryOpcode = 0;
    std::set<unsigned> m_mapped;
    std::optional<TimePoint> m_firstPaint;
};

} // namespace companion::bench
