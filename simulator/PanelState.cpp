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

void PanelState::setPorts(std::uint16_t service, std::uint16_t upload)
{
    const std::lock_guard lock(m_mutex);
    m_values.servicePort = service;
    m_values.uploadPort = upload;
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

bool PanelState::isReplaying() const
{
    const std::lock_guard lock(m_mutex);
    return m_values.replay && m_values.replay->isPlaying;
}

bool PanelState::setTouchTarget(TouchTarget target)
{
    const std::lock_guard lock(m_mutex);
    const auto& before = m_values.touchTarget;
    const bool isNewReceiver = target.enabled && !(before && before->enabled && before->ip == target.ip);
    m_values.touchTarget = std::move(target);
    return isNewReceiver;
}

std::optional<std::string> PanelState::touchReceiver() const
{
    const std::lock_guard lock(m_mutex);
    const auto& target = m_values.touchTarget;
    return target && target->enabled ? std::optional(target->ip) : std::nullopt;
}

} // namespace companion::simulator
