#include "simulator/PanelState.h"

#include <chrono>
#include <utility>

namespace companion::simulator {

namespace {

template <typename T> void keepLast(std::deque<T>& list, T item)
{
    list.push_back(std::move(item));
    if (list.size() > Occurrences::kept)
        list.pop_front();
}

void happened(Occurrences& occurrences, const std::string& ip)
{
    ++occurrences.count;
    occurrences.lastIp = ip;
    keepLast(occurrences.times, nowMs());
}

} // namespace

std::int64_t nowMs()
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count();
}

PanelState::PanelState(PanelSnapshot start)
    : m_values(std::move(start))
{
}

PanelSnapshot PanelState::snapshot() const
{
    const std::lock_guard lock(m_mutex);
    return m_values;
}

void PanelState::setPorts(std::uint16_t service, std::uint16_t upload)
{
    const std::lock_guard lock(m_mutex);
    m_values.servicePort = service;
    m_values.uploadPort = upload;
}

void PanelState::setAnnouncedAs(std::optional<std::string> instance)
{
    const std::lock_guard lock(m_mutex);
    m_values.announcedAs = std::move(instance);
}

void PanelState::recordPing(const std::string& ip)
{
    const std::lock_guard lock(m_mutex);
    happened(m_values.pings, ip);
}

void PanelState::recordTrigger(const std::string& ip)
{
    const std::lock_guard lock(m_mutex);
    happened(m_values.triggers, ip);
}

void PanelState::recordUpload(UploadRecord upload)
{
    const std::lock_guard lock(m_mutex);
    ++m_values.uploadCount;
    keepLast(m_values.uploads, std::move(upload));
}

void PanelState::recordTouch()
{
    const std::lock_guard lock(m_mutex);
    ++m_values.touchesSent;
}

void PanelState::setReplay(ReplayState replay)
{
    const std::lock_guard lock(m_mutex);
    m_values.replay = replay;
}

void PanelState::setTouchTarget(TouchTarget target)
{
    const std::lock_guard lock(m_mutex);
    m_values.touchTarget = std::move(target);
}

std::optional<std::string> PanelState::touchReceiver() const
{
    const std::lock_guard lock(m_mutex);
    const auto& target = m_values.touchTarget;
    return target && target->enabled ? std::optional(target->ip) : std::nullopt;
}

ReplyMode PanelState::reply(PanelRequest request) const
{
    const std::lock_guard lock(m_mutex);
    return m_values.replies[static_cast<std::size_t>(request)];
}

void PanelState::setReply(PanelRequest request, ReplyMode mode)
{
    const std::lock_guard lock(m_mutex);
    m_values.replies[static_cast<std::size_t>(request)] = std::move(mode);
}

UploadMode PanelState::uploadReply() const
{
    const std::lock_guard lock(m_mutex);
    return m_values.uploadReply;
}

void PanelState::setUploadReply(UploadMode mode)
{
    const std::lock_guard lock(m_mutex);
    m_values.uploadReply = mode;
}

} // namespace companion::simulator
