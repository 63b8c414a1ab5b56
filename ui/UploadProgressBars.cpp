#include "ui/UploadProgressBars.h"

#include "ui/Theme.h"

#include <algorithm>
#include <QPainter>
#include <QProgressBar>
#include <QStyle>
#include <utility>

namespace companion {

namespace {

constexpr int textHeight = 20;
constexpr int barHeight = 4;
constexpr int percentageWidth = 56;
constexpr int smallestLineHeight = textHeight + barHeight;
constexpr int lineHeight = smallestLineHeight + 10;
constexpr int fewLines = 3;    // have their place in any case
constexpr int sideMargin = 32; // from the drop area's dashed border
constexpr int percentBetweenAnnouncements = 25;

} // namespace

/// One upload under way: the file's name and percentage above a slim bar. To a screen reader it is a progress bar that
/// has the file's name, and tells of its value as it changes.
class UploadProgressBars::UploadBar : public QProgressBar {
public:
    UploadBar(const QString& fileName, std::weak_ptr<const UploadPercent> percent, QWidget* parent);

    /// False when the upload is over.
    bool refresh();

    /// "photo.png 42 %"
    QString text() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void drawBar(QPainter& painter, const QRect& bar, const QColor& color) const;
    void drawText(QPainter& painter, const QRect& area, Qt::Alignment alignment, const QString& text) const;

    const std::weak_ptr<const UploadPercent> m_percent;
};

UploadProgressBars::UploadBar::UploadBar(
    const QString& fileName, std::weak_ptr<const UploadPercent> percent, QWidget* parent)
    : QProgressBar(parent)
    , m_percent(std::move(percent))
{
    setFont(Theme::font(Theme::FontFace::regular, 12));
    setRange(0, 100);
    setAccessibleName(fileName);
    refresh();
}

bool UploadProgressBars::UploadBar::refresh()
{
    const auto percent = m_percent.lock();
    if (percent)
        setValue(*percent);
    return percent != nullptr;
}

QString UploadProgressBars::UploadBar::text() const
{
    return QStringLiteral("%1 %2 %").arg(accessibleName(), QString::number(value()));
}

void UploadProgressBars::UploadBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRect name(0, 0, width() - percentageWidth, textHeight);
    const QRect percentage(width() - percentageWidth, 0, percentageWidth, textHeight);
    const QString elided = painter.fontMetrics().elidedText(accessibleName(), Qt::ElideMiddle, name.width());
    drawText(painter, name, Qt::AlignLeft, elided);
    drawText(painter, percentage, Qt::AlignRight, QStringLiteral("%1 %").arg(value()));

    QRect bar(0, textHeight, width(), barHeight);
    drawBar(painter, bar, Theme::line);
    bar.setWidth(bar.width() * value() / 100);
    drawBar(painter, bar, Theme::accent);
}

void UploadProgressBars::UploadBar::drawBar(QPainter& painter, const QRect& bar, const QColor& color) const
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(
        QStyle::visualRect(layoutDirection(), rect(), bar), barHeight / 2.0, barHeight / 2.0);
}

/// At the place that `area` and `alignment` have when read from left to right, whatever the text's own direction is.
void UploadProgressBars::UploadBar::drawText(
    QPainter& painter, const QRect& area, Qt::Alignment alignment, const QString& text) const
{
    const Qt::Alignment onScreen = QStyle::visualAlignment(layoutDirection(), alignment);
    painter.setPen(QColor(Theme::text));
    painter.drawText(QStyle::visualRect(layoutDirection(), rect(), area),
        static_cast<int>(onScreen | Qt::AlignVCenter | Qt::AlignAbsolute), text);
}

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

UploadProgressBars::~UploadProgressBars() = default;

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
