#include "views/qt/UploadProgressBars.h"

#include "views/qt/Theme.h"

#include <QPainter>
#include <QStyle>

namespace companion {

namespace {

constexpr int textHeight = 20;
constexpr int barHeight = 4;
constexpr int lineHeight = textHeight + barHeight + 10;
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
    if (lines.size() != m_lines.size())
        setFixedHeight(static_cast<int>(lines.size()) * lineHeight);
    m_lines = lines;
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
    painter.drawText(QStyle::visualRect(layoutDirection(), rect(), area),
        static_cast<int>(onScreen | Qt::AlignVCenter | Qt::AlignAbsolute), text);
}

void UploadProgressBars::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRect contents = contentsRect();
    QRect line(contents.left(), contents.top(), contents.width(), lineHeight);
    for (const UploadLine& upload : m_lines) {
        const QRect name(line.left(), line.top(), line.width() - percentageWidth, textHeight);
        const QRect percentage(line.right() - percentageWidth + 1, line.top(), percentageWidth, textHeight);
        painter.setPen(QColor(Theme::text));
        const QString elided = painter.fontMetrics().elidedText(
            QString::fromStdString(upload.fileName), Qt::ElideMiddle, name.width());
        drawText(painter, name, Qt::AlignLeft, elided);
        drawText(painter, percentage, Qt::AlignRight, QStringLiteral("%1 %").arg(upload.percent));

        QRect bar(line.left(), line.top() + textHeight + 2, line.width(), barHeight);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(Theme::line));
        painter.drawRoundedRect(bar, barHeight / 2.0, barHeight / 2.0);
        bar.setWidth(bar.width() * upload.percent / 100);
        painter.setBrush(QColor(Theme::accent));
        painter.drawRoundedRect(
            QStyle::visualRect(layoutDirection(), rect(), bar), barHeight / 2.0, barHeight / 2.0);
        line.translate(0, lineHeight);
    }
}

} // namespace companion
