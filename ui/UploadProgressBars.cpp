#include "ui/UploadProgressBars.h"

#include "ui/Theme.h"

#include <algorithm>
#include <QPainter>
#include <QStyle>

namespace companion {

namespace {

constexpr int smallestLineHeight = UploadBar::textHeight + UploadBar::barHeight;
constexpr int lineHeight = smallestLineHeight + 10;
constexpr int fewLines = 3;    // have their place in any case
constexpr int sideMargin = 32; // from the drop area's dashed border
constexpr int percentBetweenAnnouncements = 25;

} // namespace

UploadProgressBars::UploadProgressBars(QWidget* parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFont(Theme::font(Theme::FontFace::regular, 12));
    setContentsMargins(sideMargin, 0, sideMargin, 0);
    hide();
    m_timer.setInterval(100);
    connect(&m_timer, &QTimer::timeout, this, &UploadProgressBars::refresh);
}

void UploadProgressBars::add(const QString& fileName, std::weak_ptr<const UploadPercent> percent)
{
    m_bars.push_back(std::make_unique<UploadBar>(fileName, std::move(percent), this));
    countHasChanged();
    announce(tr("Uploading %1").arg(fileName));
}

void UploadProgressBars::refresh()
{
    const int before = count();
    std::erase_if(m_bars, [this](const std::unique_ptr<UploadBar>& bar) {
        const int old = bar->value();
        const bool isUnderWay = bar->refresh();
        if (bar->value() / percentBetweenAnnouncements > old / percentBetweenAnnouncements)
            announce(bar->text());
        return !isUnderWay;
    });
    if (count() != before)
        countHasChanged();
}

void UploadProgressBars::countHasChanged()
{
    if (m_bars.empty())
        m_timer.stop();
    else if (!m_timer.isActive())
        m_timer.start();
    updateGeometry();
    setHidden(m_bars.empty());
    arrange();
    update();
}

/// Screen readers are told of a new name, and say it when they have the time.
void UploadProgressBars::announce(const QString& text)
{
    setAccessibleName(text);
}

QSize UploadProgressBars::sizeHint() const
{
    return {0, count() * lineHeight};
}

QSize UploadProgressBars::minimumSizeHint() const
{
    return {0, std::min(count(), fewLines) * smallestLineHeight};
}

/// Many lines move closer together; what does not fit even then is counted in the last one.
int UploadProgressBars::shownCount() const
{
    const int fitting = std::max(1, height() / smallestLineHeight);
    return count() <= fitting ? count() : fitting - 1;
}

QRect UploadProgressBars::place(int index) const
{
    const int step = std::clamp(height() / count(), smallestLineHeight, lineHeight);
    const QRect contents = contentsRect();
    return {contents.left(), contents.top() + index * step, contents.width(), smallestLineHeight};
}

void UploadProgressBars::arrange()
{
    const int shown = shownCount();
    for (int index = 0; index < count(); ++index) {
        UploadBar& bar = *m_bars[static_cast<std::size_t>(index)];
        bar.setGeometry(place(std::min(index, shown)));
        bar.setVisible(index < shown);
    }
}

void UploadProgressBars::resizeEvent(QResizeEvent*)
{
    arrange();
}

void UploadProgressBars::paintEvent(QPaintEvent*)
{
    const int shown = shownCount();
    if (shown == count())
        return;
    const Qt::Alignment onScreen = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft);
    QPainter painter(this);
    painter.setPen(QColor(Theme::text));
    painter.drawText(place(shown), static_cast<int>(onScreen | Qt::AlignVCenter | Qt::AlignAbsolute),
        QStringLiteral("and %1 more").arg(count() - shown));
}

} // namespace companion
