#include "simulator/StateJson.h"

#include <nlohmann/json.hpp>

namespace companion::simulator {

namespace {

using Json = nlohmann::ordered_json;

template <typename T> Json orNull(const std::optional<T>& value)
{
    return value ? Json(*value) : Json(nullptr);
}

} // namespace

// The library finds these by argument-dependent lookup.

static void to_json(Json& json, const TouchTarget& target)
{
    json = {{"ip", target.ip}, {"enabled", target.enabled}, {"hidemenu", target.hidemenu},
        {"isHDMI", target.isHDMI}};
}

static void to_json(Json& json, const Occurrences& occurrences)
{
    json = {{"count", occurrences.count}, {"lastIp", occurrences.lastIp}, {"times", occurrences.times}};
}

static void to_json(Json& json, const UploadRecord& upload)
{
    json = {{"storedName", upload.storedName}, {"fileName", upload.fileName},
        {"srcfilename", upload.srcfilename}, {"filetype", upload.filetype},
        {"contentType", upload.contentType}, {"size", upload.size}, {"sha256", upload.sha256},
        {"picture", !upload.pictureType.empty()}, {"time", upload.time}, {"from", upload.from}};
}

static void to_json(Json& json, const ReplayState& replay)
{
    json = {{"datagrams", replay.datagrams}, {"playing", replay.isPlaying}};
}

static Json replyJson(const PanelSnapshot& state)
{
    const auto description = [&state](PanelRequest request) {
        return state.replies[static_cast<std::size_t>(request)].description;
    };
    return {{"heartbeat", description(PanelRequest::Heartbeat)},
        {"touchback", description(PanelRequest::Touchback)}, {"trigger", description(PanelRequest::Trigger)},
        {"upload", state.uploadReply.description}};
}

std::string stateJson(const PanelSnapshot& state)
{
    const Json json{{"model", state.model}, {"name", state.name}, {"address", state.address},
        {"announced", state.announcedAs.has_value()}, {"announcedAs", orNull(state.announcedAs)},
        {"servicePort", state.servicePort}, {"uploadPort", state.uploadPort}, {"touchPort", state.touchPort},
        {"touchTarget", orNull(state.touchTarget)}, {"touchesSent", state.touchesSent},
        {"pings", state.pings}, {"triggers", state.triggers},
        {"uploads", {{"count", state.uploadCount}, {"list", state.uploads}}},
        {"replay", orNull(state.replay)}, {"reply", replyJson(state)}};
    // Strangers' texts may be no UTF-8; such bytes are replaced by U+FFFD.
    return json.dump(/*indent=*/4, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace) + "\n";
}

} // namespace companion::simulator
