#pragma once

#include "simulator/ReplyMode.h"

#include <array>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace companion::simulator {

/// The requests whose answers can be chosen.
enum class PanelRequest { Heartbeat, Touchback, Trigger };
constexpr std::size_t panelRequestCount = 3;

/// The last touchback request.
struct TouchTarget {
    std::string ip;
    bool enabled = false;
    bool hidemenu = false;
    bool isHDMI = false;
};

/// How often something happened, and when the last hundred times were, in milliseconds since 1970.
struct Occurrences {
    static constexpr std::size_t kept = 100;
    std::uint64_t count = 0;
    std::deque<std::int64_t> times;
    std::string lastIp; ///< "" before the first
};

struct UploadRecord {
    std::string storedName;  ///< "" if it was only counted
    std::string fileName;    ///< of the part
    std::string srcfilename; ///< the header field, "" if missing
    std::string filetype;    ///< the header field, "" if missing
    std::string contentType; ///< of the part
    std::string sha256;      ///< lower-case hexadecimal digits
    std::string pictureType; ///< its media type, judged by its first bytes; "" if it is no picture
    std::uint64_t size = 0;
    std::int64_t time = 0; ///< milliseconds since 1970
    std::string from;      ///< the sender's address
};

/// A recording that is being played or can be.
struct ReplayState {
    std::size_t datagrams = 0;
    bool isPlaying = false;
};

struct PanelSnapshot {
    std::string model;
    std::string name;
    std::string address;
    std::optional<std::string> announcedAs;
    std::uint16_t servicePort = 0;
    std::uint16_t uploadPort = 0;
    std::uint16_t touchPort = 0;
    std::optional<TouchTarget> touchTarget;
    Occurrences pings;
    Occurrences triggers;
    std::uint64_t uploadCount = 0;
    std::deque<UploadRecord> uploads; ///< the last hundred
    std::array<ReplyMode, panelRequestCount> replies;
    UploadMode uploadReply;
    std::uint64_t touchesSent = 0;
    std::optional<ReplayState> replay; ///< nothing before the first recording
};

/// The state of the panel, shared by the HTTP threads, the touch sender and the announcer. Any thread.
class PanelState {
public:
    explicit PanelState(PanelSnapshot start);

    PanelSnapshot snapshot() const { return get(m_values); }

    void setPorts(std::uint16_t service, std::uint16_t upload);
    void setAnnouncedAs(std::optional<std::string> name) { set(m_values.announcedAs, std::move(name)); }

    void recordPing(const std::string& ip);
    void recordTrigger(const std::string& ip);
    void recordUpload(UploadRecord upload);
    void recordTouch();

    void setReplay(ReplayState replay) { set(m_values.replay, std::optional(replay)); }
    bool isReplaying() const;

    /// Whether touches now go to a computer that got none before.
    bool setTouchTarget(TouchTarget target);
    /// Where touches go; nothing while nobody wants any.
    std::optional<std::string> touchReceiver() const;

    ReplyMode reply(PanelRequest request) const { return get(m_values.replies[index(request)]); }
    void setReply(PanelRequest request, ReplyMode mode)
    {
        set(m_values.replies[index(request)], std::move(mode));
    }
    UploadMode uploadReply() const { return get(m_values.uploadReply); }
    void setUploadReply(UploadMode mode) { set(m_values.uploadReply, mode); }

private:
    static std::size_t index(PanelRequest request) { return static_cast<std::size_t>(request); }

    template <typename T> T get(const T& value) const
    {
        const std::lock_guard lock(m_mutex);
        return value;
    }

    template <typename T> void set(T& member, T value)
    {
        const std::lock_guard lock(m_mutex);
        member = std::move(value);
    }

    mutable std::mutex m_mutex;
    PanelSnapshot m_values;
};

/// Milliseconds since 1970.
std::int64_t nowMs();

} // namespace companion::simulator
