#include "simulator/StateJson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace companion::simulator {

namespace {

QString text(const std::string& utf8)
{
    return QString::fromStdString(utf8);
}

/// JSON numbers are doubles to many readers; counts here stay far below their 2^53.
qint64 number(std::uint64_t value)
{
    return static_cast<qint64>(value);
}

QJsonValue touchTargetJson(const std::optional<TouchTarget>& target)
{
    if (!target)
        return QJsonValue::Null;
    return QJsonObject{{"ip", text(target->ip)}, {"enabled", target->enabled}, {"hidemenu", target->hidemenu},
        {"isHDMI", target->isHDMI}};
}

QJsonValue replayStateJson(const std::optional<ReplayState>& replay)
{
    if (!replay)
        return QJsonValue::Null;
    return QJsonObject{{"datagrams", number(replay->datagrams)}, {"playing", replay->isPlaying}};
}

QJsonObject occurrencesJson(const Occurrences& occurrences)
{
    QJsonArray times;
    for (const std::int64_t time : occurrences.times)
        times.append(static_cast<qint64>(time));
    return {{"count", number(occurrences.count)}, {"lastIp", text(occurrences.lastIp)}, {"times", times}};
}

QJsonObject uploadJson(const UploadRecord& upload)
{
    return {{"storedName", text(upload.storedName)}, {"fileName", text(upload.fileName)},
        {"srcfilename", text(upload.srcfilename)}, {"filetype", text(upload.filetype)},
        {"contentType", text(upload.contentType)}, {"sha256", text(upload.sha256)},
        {"picture", upload.isPicture}, {"size", number(upload.size)},
        {"time", static_cast<qint64>(upload.time)}, {"from", text(upload.from)}};
}

QJsonObject uploadsJson(const PanelSnapshot& state)
{
    QJsonArray list;
    for (const UploadRecord& upload : state.uploads)
        list.append(uploadJson(upload));
    return {{"count", number(state.uploadCount)}, {"list", list}};
}

QJsonObject replyJson(const PanelSnapshot& state)
{
    const auto description = [&state](PanelRequest request) {
        return text(state.replies[static_cast<std::size_t>(request)].description());
    };
    return {{"heartbeat", description(PanelRequest::Heartbeat)},
        {"touchback", description(PanelRequest::Touchback)}, {"trigger", description(PanelRequest::Trigger)},
        {"upload", text(state.uploadReply.description())}};
}

} // namespace

std::string stateJson(const PanelSnapshot& state)
{
    const QJsonObject object{{"model", text(state.model)}, {"name", text(state.name)},
        {"address", text(state.address)}, {"announced", state.announcedAs.has_value()},
        {"announcedAs", state.announcedAs ? QJsonValue(text(*state.announcedAs)) : QJsonValue::Null},
        {"servicePort", state.servicePort}, {"uploadPort", state.uploadPort}, {"touchPort", state.touchPort},
        {"touchTarget", touchTargetJson(state.touchTarget)}, {"pings", occurrencesJson(state.pings)},
        {"triggers", occurrencesJson(state.triggers)}, {"uploads", uploadsJson(state)},
        {"reply", replyJson(state)}, {"touchesSent", number(state.touchesSent)},
        {"replay", replayStateJson(state.replay)}};
    return QJsonDocument(object).toJson(QJsonDocument::Indented).toStdString();
}

} // namespace companion::simulator
