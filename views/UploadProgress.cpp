#include "views/UploadProgress.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <utility>

namespace companion {

namespace {

constexpr int percentBetweenAnnouncements = 25;

int percentOf(std::uint64_t bytes, std::uint64_t total)
{
    return total == 0 ? 0 : static_cast<int>(std::min(bytes, total) * 100 / total);
}

} // namespace

std::string UploadLine::text() const
{
    return fileName + " " + std::to_string(percent) + " %";
}

/// The lines, and between the threads what is news to them.
class UploadProgress::Lines : public std::enable_shared_from_this<Lines> {
public:
    Lines(MainQueue& mainQueue, UploadProgressView& view, Now now)
        : m_mainQueue(mainQueue)
        , m_view(&view)
        , m_now(std::move(now))
    {
    }

    // Main thread.
    std::uint64_t add(const std::string& fileName);
    void leaveView() { m_view = nullptr; }

    // Any thread.
    void note(std::uint64_t number, int percent);
    void removeLater(std::uint64_t number);

private:
    using Percents = std::map<std::uint64_t, int>;

    bool isUpdateDue(std::uint64_t number, int percent);
    void runOnMainQueue(std::function<void(Lines&)> change);

    void update();
    void remove(std::uint64_t number);

    MainQueue& m_mainQueue;
    UploadProgressView* m_view; ///< Main thread only, as the next two.
    std::vector<UploadLine> m_lines;
    std::uint64_t m_lastNumber = 0;

    const Now m_now;
    std::mutex m_mutex;
    Percents m_news; ///< Guarded, as the next two.
    TimePoint m_lastUpdate = TimePoint::min();
    bool m_isUpdateUnderWay = false;
};

std::uint64_t UploadProgress::Lines::add(const std::string& fileName)
{
    m_lines.push_back({++m_lastNumber, fileName, 0});
    m_view->showUploads(m_lines);
    m_view->announcePolitely("Uploading " + fileName);
    return m_lastNumber;
}

void UploadProgress::Lines::note(std::uint64_t number, int percent)
{
    if (isUpdateDue(number, percent))
        runOnMainQueue([](Lines& lines) { lines.update(); });
}

/// News that come too soon wait for the next ones: bytes flow, or else nothing changes. Only the last news of an
/// upload may have none after them.
bool UploadProgress::Lines::isUpdateDue(std::uint64_t number, int percent)
{
    const TimePoint now = m_now();
    const std::lock_guard lock(m_mutex);
    m_news[number] = percent;
    const bool isTooSoon = m_lastUpdate != TimePoint::min() && now - m_lastUpdate < shortestInterval;
    if (m_isUpdateUnderWay || (isTooSoon && percent < 100))
        return false;
    m_lastUpdate = now;
    m_isUpdateUnderWay = true;
    return true;
}

void UploadProgress::Lines::removeLater(std::uint64_t number)
{
    runOnMainQueue([number](Lines& lines) { lines.remove(number); });
}

void UploadProgress::Lines::runOnMainQueue(std::function<void(Lines&)> change)
{
    m_mainQueue.async([weakLines = weak_from_this(), change = std::move(change)] {
        const auto lines = weakLines.lock();
        if (lines && lines->m_view)
            change(*lines);
    });
}

void UploadProgress::Lines::update()
{
    Percents news;
    {
        const std::lock_guard lock(m_mutex);
        news.swap(m_news);
        m_isUpdateUnderWay = false;
    }
    std::vector<std::string> announcements;
    for (UploadLine& line : m_lines) {
        const auto found = news.find(line.number);
        if (found == news.end())
            continue;
        const int before = std::exchange(line.percent, found->second);
        if (line.percent / percentBetweenAnnouncements > before / percentBetweenAnnouncements)
            announcements.push_back(line.text());
    }
    m_view->showUploads(m_lines);
    for (const std::string& text : announcements)
        m_view->announcePolitely(text);
}

void UploadProgress::Lines::remove(std::uint64_t number)
{
    std::erase_if(m_lines, [number](const UploadLine& line) { return line.number == number; });
    m_view->showUploads(m_lines);
}

UploadProgress::UploadProgress(MainQueue& mainQueue, UploadProgressView& view, Now now)
    : m_lines(std::make_shared<Lines>(mainQueue, view, std::move(now)))
{
}

/// A report on another thread may hold the lines a moment longer.
UploadProgress::~UploadProgress()
{
    m_lines->leaveView();
}

std::shared_ptr<UploadProgress::Report> UploadProgress::begin(const std::string& fileName)
{
    return std::make_shared<Report>(m_lines, m_lines->add(fileName));
}

UploadProgress::Report::Report(std::weak_ptr<Lines> lines, std::uint64_t number)
    : m_lines(std::move(lines))
    , m_number(number)
{
}

UploadProgress::Report::~Report()
{
    end();
}

void UploadProgress::Report::sent(std::uint64_t bytes, std::uint64_t total)
{
    const int percent = percentOf(bytes, total);
    if (std::exchange(m_percent, percent) == percent)
        return;
    if (const auto lines = m_lines.lock())
        lines->note(m_number, percent);
}

void UploadProgress::Report::end()
{
    if (std::exchange(m_hasEnded, true))
        return;
    if (const auto lines = m_lines.lock())
        lines->removeLater(m_number);
}

} // namespace companion
