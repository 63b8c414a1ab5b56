#include "ui/ElidedLabel.h"

#include <algorithm>
#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <QTextDocument>
#include <QTextLayout>

namespace companion {

namespace {

/// Where the text breaks into lines of that width.
QStringList linesOf(const QString& text, const QFont& font, int width)
{
    QTextLayout layout(text, font);
    layout.beginLayout();
    QStringList lines;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        lines += text.mid(line.textStart(), line.textLength());
    }
    return lines;
}

} // namespace

ElidedLabel::ElidedLabel(QWidget* parent)
    : QLabel(parent)
{
}

QSize ElidedLabel::minimumSizeHint() const
{
    return wordWrap() ? QLabel::minimumSizeHint() : QSize(0, QLabel::minimumSizeHint().height());
}

bool ElidedLabel::isWhole() const
{
    const QRect needed = fontMetrics().boundingRect(
        contentsRect(), wordWrap() ? Qt::TextWordWrap : Qt::TextSingleLine, text());
    return needed.width() <= contentsRect().width()
        && (!wordWrap() || needed.height() <= contentsRect().height());
}

QString ElidedLabel::shownText() const
{
    if (isWhole())
        return text();
    const int width = contentsRect().width();
    QStringList lines = wordWrap() ? linesOf(text(), font(), width) : QStringList{text()};
    const auto fitting = std::max<qsizetype>(
        1, (contentsRect().height() + fontMetrics().leading()) / fontMetrics().lineSpacing());
    if (lines.size() > fitting) {
        const QString rest = lines.mid(fitting - 1).join(QString());
        lines = lines.first(fitting - 1) << rest;
    }
    for (QString& line : lines)
        line = fontMetrics().elidedText(line.trimmed(), Qt::ElideRight, width);
    return lines.join('\n');
}

bool ElidedLabel::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip)
        setToolTip(isWhole() ? QString() : Qt::mightBeRichText(text()) ? text().toHtmlEscaped() : text());
    return QLabel::event(event);
}

void ElidedLabel::paintEvent(QPaintEvent* event)
{
    if (isWhole())
        return QLabel::paintEvent(event);
    QPainter painter(this);
    style()->drawItemText(&painter, contentsRect(),
        static_cast<int>(QStyle::visualAlignment(layoutDirection(), alignment())), palette(), isEnabled(),
        shownText(), foregroundRole());
}

} // namespace companion
