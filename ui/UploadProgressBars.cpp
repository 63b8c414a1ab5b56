#include "ui/UploadProgressBars.h"

#include "ui/Accessibility.h"
#include "ui/SvgImage.h"
#include "ui/Theme.h"

#include <algorithm>
#include <QCoreApplication>
#include <QEvent>
#include <QPainter>
#include <QProgressBar>
#include <QStyle>
#include <QToolButton>
#include <utility>

namespace companion {

namespace {

constexpr int barHeight = 4;
constexpr int buttonGap = 8;
constexpr int gapBetweenLines = 10; // where there is room
constexpr int heightInAnyCase = 80; // the place in the drop area
constexpr int sideMargin = 32;      // from the drop area's dashed border
constexpr int percentBetweenAnnouncements = 25;

int textHeight()
{
    return Theme::scaled(20);
}

int percentageWidth()
{
    return Theme::scaled(56);
}

int smallestLineHeight()
{
    return textHeight() + barHeight;
}

} // namespace

/// One upload under way: the file's name and percentage above a slim bar, and the button that gives it up beside both.
/// To a screen reader it is a progress bar that has the file's name, and tells of its value as it changes.
class UploadProgressBars::UploadBar : public QProgressBar {
public:
    UploadBar(const QString& fileName, std::weak_ptr<UploadUnderWay> upload, QWidget* parent);

    /// False when the upload is over or given up.
    bool refresh();

    /// "Uploading photo.png" or, before that, "Reading photo.png".
    QString activity() const;

    /// "photo.png 42 %"
    QString text() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    int barWidth() const { return width() - smallestLineHeight() - buttonGap; }
    QString shownName() const;
    void giveUp();
    void drawBar(QPainter& painter, const QRect& bar, const QColor& color) const;
    void drawText(QPainter& painter, const QRect& area, Qt::Alignment alignment, const QString& text) const;

    const std::weak_ptr<UploadUnderWay> m_upload;
    bool m_isFileBeingRead = false;
    QToolButton m_giveUpButton{this};
};

UploadProgressBars::UploadBar::UploadBar(
    const QString& fileName, std::weak_ptr<UploadUnderWay> upload, QWidget* parent)
    : QProgressBar(parent)
    , m_upload(std::move(upload))
{
    Theme::followTextScale(*this, [this] { setFont(Theme::font(Theme::FontFace::regular, 12)); });
    setRange(0, 100);
    setAccessibleName(fileName);
    m_giveUpButton.setIcon(SvgImage::icon(QStringLiteral("giveUp")));
    m_giveUpButton.setIconSize({12, 12});
    m_giveUpButton.setAccessibleName(UploadProgressBars::tr("Stop uploading %1").arg(fileName));
    m_giveUpButton.setToolTip(UploadProgressBars::tr("Stop this upload"));
    connect(&m_giveUpButton, &QToolButton::clicked, this, &UploadBar::giveUp);
    refresh();
}

bool UploadProgressBars::UploadBar::refresh()
{
    const auto upload = m_upload.lock();
    if (upload) {
        const int percent = upload->percent;
        m_isFileBeingRead = percent == UploadUnderWay::fileIsBeingRead;
        setValue(std::max(percent, 0));
    }
    return upload && !upload->isGivenUp;
}

void UploadProgressBars::UploadBar::giveUp()
{
    const auto upload = m_upload.lock();
    if (upload && !isUnderAlert(*this))
        upload->isGivenUp = true;
}

void UploadProgressBars::UploadBar::resizeEvent(QResizeEvent*)
{
    const QRect atTheEnd(width() - smallestLineHeight(), 0, smallestLineHeight(), smallestLineHeight());
    m_giveUpButton.setGeometry(QStyle::visualRect(layoutDirection(), rect(), atTheEnd));
}

QString UploadProgressBars::UploadBar::activity() const
{
    return (m_isFileBeingRead ? UploadProgressBars::tr("Reading %1") : UploadProgressBars::tr("Uploading %1"))
        .arg(accessibleName());
}

QString UploadProgressBars::UploadBar::text() const
{
    return QStringLiteral("%1 %2 %").arg(accessibleName(), QString::number(value()));
}

/// Of a long name the end tells as much as the beginning.
QString UploadProgressBars::UploadBar::shownName() const
{
    return fontMetrics().elidedText(
        m_isFileBeingRead ? activity() : accessibleName(), Qt::ElideMiddle, barWidth() - percentageWidth());
}

bool UploadProgressBars::UploadBar::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip)
        setToolTip(shownName().contains(accessibleName()) ? QString() : accessibleName().toHtmlEscaped());
    return QProgressBar::event(event);
}

void UploadProgressBars::UploadBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRect name(0, 0, barWidth() - percentageWidth(), textHeight());
    const QRect percentage(barWidth() - percentageWidth(), 0, percentageWidth(), textHeight());
    drawText(painter, name, Qt::AlignLeft, shownName());
    if (!m_isFileBeingRead)
        drawText(painter, percentage, Qt::AlignRight, QStringLiteral("%1 %").arg(value()));

    QRect bar(0, textHeight(), barWidth(), barHeight);
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
    Theme::followTextScale(*this, [this] {
        setFont(Theme::font(Theme::FontFace::regular, 12));
        updateGeometry();
    });
    setContentsMargins(sideMargin, 0, sideMargin, 0);
    hide();
    m_timer.setInterval(100);
    connect(&m_timer, &QTimer::timeout, this, &UploadProgressBars::refresh);
}

UploadProgressBars::~UploadProgressBars() = default;

void UploadProgressBars::add(const QString& fileName, std::weak_ptr<UploadUnderWay> upload)
{
    m_bars.push_back(std::make_unique<UploadBar>(fileName, std::move(upload), this));
    countHasChanged();
    announce(m_bars.back()->activity());
    paintNow();
}

/// The main thread may be about to read the file, for seconds.
void UploadProgressBars::paintNow()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    parentWidget()->repaint();
}

void UploadProgressBars::refresh()
{
    const int before = count();
    std::erase_if(m_bars, [this](const std::unique_ptr<UploadBar>& bar) {
        const int old = bar->value();
        const QString activity = bar->activity();
        const bool isUnderWay = bar->refresh();
        if (bar->activity() != activity) {
            bar->update();
            announce(bar->activity());
        }
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
    return {0, count() * (smallestLineHeight() + gapBetweenLines)};
}

QSize UploadProgressBars::minimumSizeHint() const
{
    return {0, std::min(count(), heightInAnyCase / smallestLineHeight()) * smallestLineHeight()};
}

/// Many lines move closer together; what does not fit even then is counted in the last one.
int UploadProgressBars::shownCount() const
{
    const int fitting = std::max(1, height() / smallestLineHeight());
    return count() <= fitting ? count() : fitting - 1;
}

QRect UploadProgressBars::place(int index) const
{
    const int step =
        std::clamp(height() / count(), smallestLineHeight(), smallestLineHeight() + gapBetweenLines);
    const QRect contents = contentsRect();
    return {contents.left(), contents.top() + index * step, contents.width(), smallestLineHeight()};
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
        tr("and %n more", nullptr, count() - shown));
}

} // namespace companion
