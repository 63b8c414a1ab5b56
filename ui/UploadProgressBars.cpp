#include "ui/UploadProgressBars.h"

#include "ui/Theme.h"
#include "ui/UploadBar.h"

#include <algorithm>
#include <QPainter>
#include <QStyle>

namespace companion {

namespace {

constexpr int smallestLineHeight = UploadBar::textHeight + UploadBar::barHeight;
constexpr int lineHeight = smallestLineHeight + 10;
constexpr int fewLines = 3;    // have their place in any case
constexpr int sideMargin = 32; // from the drop area's dashed border

} // namespace

UploadProgressBars::UploadProgressBars(QWidget* parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFont(Theme::font(Theme::FontFace::regular, 12));
    setContentsMargins(sideMargin, 0, sideMargin, 0);
    hide();
}

UploadProgressBars::~UploadProgressBars() = default;

/// An upload keeps its bar, so that a screen reader hears of its progress and not of new bars.
void UploadProgressBars::setLines(const std::vector<UploadLine>& lines)
{
    std::vector<std::unique_ptr<UploadBar>> bars;
    for (const UploadLine& line : lines) {
        bars.push_back(barFor(line));
        bars.back()->setValue(line.percent);
    }
    m_bars = std::move(bars);
    updateGeometry();
    setHidden(lines.empty());
    arrange();
    update();
}

/// That which the upload has, or a new one.
std::unique_ptr<UploadBar> UploadProgressBars::barFor(const UploadLine& line)
{
    for (auto& bar : m_bars) {
        if (bar && bar->number() == line.number)
            return std::move(bar);
    }
    return std::make_unique<UploadBar>(line, this);
}

void UploadProgressBars::announce(const QString& text)
{
    setAccessibleName(text); // which tells screen readers of the new name
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
