#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>

namespace companion {

/// Where lines go, one or more at a time, each with its line end. Must use nothing that goes before the process does.
struct LineSink {
    /// Writes them all. Runs on the writer's thread, and may take its time.
    std::function<void(std::string_view lines)> write;

    /// Writes as much as can be written without waiting, and tells how many bytes. Runs on the thread that has
    /// something to say, never at the same time as itself or as `write`. Without it every line takes the thread.
    std::function<std::size_t(std::string_view lines)> writeAtOnce = {};
};

/// Writes lines out so that no caller ever waits for a slow reader: at once where that takes no waiting, which wakes no
/// other thread, else by a thread of its own, which is started when it is first needed.
///
/// At most 16 lines in 10 ms are written at once: more than that is cheaper in one piece. Up to 256 KiB wait for the
/// thread; beyond that lines are lost, which a line of its own tells later. Any thread.
class LineWriter {
public:
    explicit LineWriter(LineSink sink);

    /// Waits for what is left to be written, but for no more than half a second.
    ~LineWriter();
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    /// One line without its line end. Control characters in it are spelled out ("\x1b"), so that it stays one line
    /// and does nothing to a terminal; it is cut off after 8 KiB.
    void write(std::string_view line);

private:
    struct Shared;

    void startThread();

    std::shared_ptr<Shared> m_shared;
};

/// A sink that writes to a file descriptor. When nobody reads it any more, lines go nowhere and no signal is raised.
/// Nothing is written at once to a file, which a busy disk may hold up at any time.
LineSink descriptorSink(int descriptor);

} // namespace companion
