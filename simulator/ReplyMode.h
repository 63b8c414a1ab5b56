#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace companion::simulator {

/// How a request on the service port is answered from now on.
struct ReplyMode {
    enum class Kind {
        Ok,      ///< 200 "OK"
        CastOff, ///< 200 "CAST_OFF"
        Busy,    ///< 200 "Device is busy"
        Text,    ///< 200 and `text`
        Status,  ///< `number` is the status, `text` the body
        Silence, ///< the connection stays open, unanswered until the mode changes
        Close,   ///< the connection is closed without an answer
        Invalid, ///< 200 and a body that is not UTF-8
        Cut,     ///< 200 and half of the promised body
        Huge,    ///< 200 and `number` megabytes
        Endless, ///< 200 and an endless body
    };

    Kind kind = Kind::Ok;
    std::uint64_t number = 0;
    std::string text{};
    std::chrono::milliseconds delay{0}; ///< before the answer
    std::string description = "ok";     ///< in the form that `parse` reads

    /// "ok", "cast-off", "busy", "text TEXT", "status N [TEXT]", "silence", "close", "invalid", "cut", "huge N",
    /// "endless", each with or without "delay MS" before it; "delay MS" alone is "delay MS ok".
    static std::optional<ReplyMode> parse(std::string_view text);
};

/// How an upload is answered from now on.
struct UploadMode {
    enum class Kind {
        Ok,          ///< stored; 200
        Status,      ///< `status`, after the body was read
        StatusEarly, ///< `status`, before the body was read
        Reset,       ///< the connection is reset as soon as part of the body has arrived
        Cut,         ///< stored; the answer breaks off half-way
        Silence,     ///< stored; unanswered until the mode changes
        Slow,        ///< reads one byte a second
        DiskFull,    ///< 500, as if nothing could be written
    };

    Kind kind = Kind::Ok;
    unsigned status = 0;
    std::string description = "ok"; ///< in the form that `parse` reads

    /// "ok", "status N", "status N early", "reset", "cut", "silence", "slow", "disk-full".
    static std::optional<UploadMode> parse(std::string_view text);
};

} // namespace companion::simulator
