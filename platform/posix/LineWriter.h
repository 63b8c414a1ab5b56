#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>

namespace companion {

/// Hands lines to a thread of its own that writes them out, so that no caller ever waits for a slow reader.
///
/// Up to 256 KiB wait; beyond that lines are lost, which a line of its own tells later. Any thread.
class LineWriter {
public:
    /// Writes one or more whole lines, each with its line end. Runs on the writer's thread, may take its time, and
    /// must use nothing that goes before the process does.
    using Sink = std::function<void(std::string_view lines)>;

    explicit LineWriter(Sink sink);

    /// Waits for what is left to be written, but for no more than half a second.
    ~LineWriter();
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    /// One line without its line end. Control characters in it are spelled out ("\x1b"), so that it stays one line
    /// and does nothing to a terminal; it is cut off after 8 KiB.
    void write(std::string_view line);

private:
    struct Shared;

    std::shared_ptr<Shared> m_shared;
};

/// A sink that writes to a file descriptor. When nobody reads it any more, lines go nowhere and no signal is raised.
LineWriter::Sink descriptorSink(int descriptor);

} // namespace companion
