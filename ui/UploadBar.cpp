#include "ui/UploadBar.h"

#include "ui/Theme.h"

#include <QPainter>
#include <QStyle>
#include <utility>

namespace companion {

namespace {

constexpr int percentageWidth = 56;

} // namespace

UploadBar::UploadBar(const QString& fileName, std::weak_ptr<const UploadPercent> percent, QWidget* parent)
    : QProgressBar(parent)
    , m_percent(std::move(percent))
{
    setFont(Theme::font(Theme::FontFace::regular, 12));
    setRange(0, 100);
    setAccessibleName(fileName);
    refresh();
}

bool UploadBar::refresh()
{
    const auto percent = m_percent.lock();
    if (percent)
        setValue(*percent);
    return percent != nullptr;
}

QString UploadBar::text() const
{
    return QStringLiteral("%1 %2 %").arg(accessibleName(), QString::number(value()));
}

void UploadBar::paintEvent(QPaintEvent*)
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

void UploadBar::drawBar(QPainter& painter, const QRect& bar, const QColor& color) const
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(
        QStyle::visualRect(layoutDirection(), rect(), bar), barHeight / 2.0, barHeight / 2.0);
}

/// At the place that `area` and `alignment` have when read from left to right, whatever the text's own direction is.
void UploadBar::drawText(
    QPainter& painter, const QRect& area, Qt::Alignment alignment, const QString& text) const
{
    const Qt::Alignment onScreen = QStyle::visualAlignment(layoutDirection(), alignment);
    painter.setPen(QColor(Theme::text));
    painter.drawText(QStyle::visualRect(layoutDirection(), rect(), area),
        static_cast<int>(onScreen | Qt::AlignVCenter | Qt::AlignAbsolute), text);
}

} // namespace companion
