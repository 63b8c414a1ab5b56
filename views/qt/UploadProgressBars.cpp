#include "views/qt/UploadProgressBars.h"

#include "views/qt/Theme.h"

#include <algorithm>
#include <QPainter>
#include <QStyle>

namespace companion {

namespace {

constexpr int textHeight = 20;
constexpr int barHeight = 4;
constexpr int lineHeight = textHeight + barHeight + 10;
constexpr int smallestLineHeight = textHeight + barHeight;
constexpr int fewLines = 3; // have their place in any case
constexpr int percentageWidth = 56;
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

void UploadProgressBars::setLines(const std::vector<UploadLine>& lines)
{
    m_lines = lines;
    updateGeometry();
    setHidden(lines.empty());
    update();
}

void UploadProgressBars::announce(const QString& text)
{
    setAccessibleName(text); // which tells screen readers of the new name
}

/// At the place that `area` and `alignment` have when read from left to right, whatever the text's own direction is.
void UploadProgressBars::drawText(
    QPainter& painter, const QRect& area, Qt::Alignment alignment, const QString& text) const
{
    const Qt::Alignment onScreen = QStyle::visualAlignment(layoutDirection(), alignment);
    painter.setPen(QColor(Theme::text));
    painter.drawText(QStyle::visualRect(layoutDirection(), rect(), area),
        static_cast<int>(onScreen | Qt::AlignVCenter | Qt::AlignAbsolute), text);
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
void UploadProgressBars::paintEvent(QPaintEvent*)
{
    if (m_lines.empty())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const int fitting = std::max(1, height() / smallestLineHeight);
    const int lines = count() <= fitting ? count() : fitting - 1;
    const int step = std::clamp(height() / count(), smallestLineHeight, lineHeight);
    const QRect contents = contentsRect();
    QRect line(contents.left(), contents.top(), contents.width(), step);
    for (int index = 0; index < lines; ++index) {
        drawLine(painter, line, m_lines[static_cast<std::size_t>(index)]);
        line.translate(0, step);
    }
    if (lines < count())
        drawText(painter, line, Qt::AlignLeft, QStringLiteral("and %1 more").arg(count() - lines));
}

void UploadProgressBars::drawLine(QPainter& painter, const QRect& line, const UploadLine& upload) const
{
    const QRect name(line.left(), line.top(), line.width() - percentageWidth, textHeight);
    const QRect percentage(line.right() - percentageWidth + 1, line.top(), percentageWidth, textHeight);
    const QString elided = painter.fontMetrics().elidedText(
        QString::fromStdString(upload.fileName), Qt::ElideMiddle, name.width());
    drawText(painter, name, Qt::AlignLeft, elided);
    drawText(painter, percentage, Qt::AlignRight, QStringLiteral("%1 %").arg(upload.percent));

    QRect bar(line.left(), line.top() + textHeight, line.width(), barHeight);
    drawBar(painter, bar, Theme::line);
    bar.setWidth(bar.width() * upload.percent / 100);
    drawBar(painter, bar, Theme::accent);
}

void UploadProgressBars::drawBar(QPainter& painter, const QRect& bar, const QColor& color) const
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(
        QStyle::visualRect(layoutDirection(), rect(), bar), barHeight / 2.0, barHeight / 2.0);
}

} // namespace companion
