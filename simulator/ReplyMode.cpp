#include "simulator/ReplyMode.h"

#include "simulator/Text.h"

#include <array>
#include <utility>

namespace companion::simulator {

namespace {

using Kind = ReplyMode::Kind;

constexpr std::uint64_t maxDelayMs = 3'600'000;
constexpr std::uint64_t maxMegabytes = 1'000'000;

constexpr std::array<std::pair<std::string_view, Kind>, 8> plainKinds{
    {{"ok", Kind::Ok}, {"cast-off", Kind::CastOff}, {"busy", Kind::Busy}, {"silence", Kind::Silence},
        {"close", Kind::Close}, {"invalid", Kind::Invalid}, {"cut", Kind::Cut}, {"endless", Kind::Endless}}};

constexpr std::array<std::pair<std::string_view, UploadMode::Kind>, 6> plainUploadKinds{
    {{"ok", UploadMode::Kind::Ok}, {"reset", UploadMode::Kind::Reset}, {"cut", UploadMode::Kind::Cut},
        {"silence", UploadMode::Kind::Silence}, {"slow", UploadMode::Kind::Slow},
        {"disk-full", UploadMode::Kind::DiskFull}}};

std::string_view trimmed(std::string_view text)
{
    const auto start = text.find_first_not_of(" \t\r\n");
    if (start == std::string_view::npos)
        return {};
    return text.substr(start, text.find_last_not_of(" \t\r\n") - start + 1);
}

/// Removes the first word, and the blanks after it, from `text`.
std::string_view takeWord(std::string_view& text)
{
    const auto end = std::min(text.find_first_of(" \t"), text.size());
    const std::string_view word = text.substr(0, end);
    text = trimmed(text.substr(end));
    return word;
}

/// Not 1xx: an interim status is no answer.
std::optional<unsigned> parseStatus(std::string_view text)
{
    const auto status = parseCount(text, 599);
    return status && *status >= 200 ? std::optional(static_cast<unsigned>(*status)) : std::nullopt;
}

std::optional<ReplyMode> parseUndelayed(std::string_view text)
{
    std::string_view rest = text;
    const std::string_view word = takeWord(rest);
    if (word == "text" && !rest.empty())
        return ReplyMode{Kind::Text, 0, std::string(rest)};
    if (word == "status") {
        const auto status = parseStatus(takeWord(rest));
        return status ? std::optional(ReplyMode{Kind::Status, *status, std::string(rest)}) : std::nullopt;
    }
    if (word == "huge") {
        const auto megabytes = parseCount(rest, maxMegabytes);
        return megabytes ? std::optional(ReplyMode{Kind::Huge, *megabytes}) : std::nullopt;
    }
    for (const auto& [name, kind] : plainKinds)
        if (text == name)
            return ReplyMode{kind};
    return std::nullopt;
}

} // namespace

std::optional<ReplyMode> ReplyMode::parse(std::string_view text)
{
    text = trimmed(text);
    std::string_view rest = text;
    const bool isDelayed = takeWord(rest) == "delay";
    const auto delay = isDelayed ? parseCount(takeWord(rest), maxDelayMs) : 0;
    auto mode = parseUndelayed(!isDelayed ? text : rest.empty() ? "ok" : rest);
    if (!delay || !mode)
        return std::nullopt;
    mode->delay = std::chrono::milliseconds(*delay);
    mode->description = text;
    return mode;
}

std::optional<UploadMode> UploadMode::parse(std::string_view text)
{
    text = trimmed(text);
    const std::string description(text);
    for (const auto& [name, kind] : plainUploadKinds)
        if (text == name)
            return UploadMode{kind, 0, description};
    if (takeWord(text) != "status")
        return std::nullopt;
    const auto status = parseStatus(takeWord(text));
    if (!status || (!text.empty() && text != "early"))
        return std::nullopt;
    return UploadMode{text.empty() ? Kind::Status : Kind::StatusEarly, *status, description};
}

} // namespace companion::simulator
