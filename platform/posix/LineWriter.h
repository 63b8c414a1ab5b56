#pragma once

#include <functional>
#include <memory>
#include <string_view>

namespace companion {

/// Hands lines to a thread that writes them to one destination, so that no caller waits for a slow one. The thread starts
/// with the first line.
///
/// Up to 256 KiB wait for the thread. Lines beyond that are dropped and counted, and the count is written once the
/// destination takes lines again. Any thread.
class LineWriter {
public:
    /// Writes one or more lines, each with its line end, to the last byte. Runs on the writer's thread, and may block.
    using Sink = std::function<void(std::string_view lines)>;

    /// When `sink` blocks for good, the thread keeps it until the process ends.
    explicit LineWriter(Sink sink);

    /// Waits until all lines are written, for half a second at most.
    ~LineWriter();
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    /// One line without its line end. It is written as `printable` and cut after 8 KiB.
    void write(std::string_view line);

private:
    struct Shared;

    const std::shared_ptr<Shared> m_shared;
};

/// Writes to a duplicate of `descriptor`, which may be non-blocking. When nobody reads any more, lines are dropped without
/// a signal.
LineWriter::Sink descriptorSink(int descriptor);

} // namespace companion
