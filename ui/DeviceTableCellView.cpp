#include "ui/DeviceTableCellView.h"

#include "ui/SvgImage.h"
#include "ui/Theme.h"

#include <QPainter>

namespace companion {

namespace {

constexpr int iconSize = 24;
constexpr int markWidth = 4; // at the start of the row that is picked

const SvgImage& image(const QString& name)
{
    static SvgImage picked;
    static SvgImage notPicked;
    SvgImage& image = name == QStringLiteral("connectedChain") ? picked : notPicked;
    if (image.name() != name)
        image.setName(name);
    return image;
}

void drawLine(
    QPainter& painter, const QRect& bounds, const QFont& font, const QColor& color, const QString& text)
{
    painter.setFont(font);
    painter.setPen(color);
    const QString elided = painter.fontMetrics().elidedText(text, Qt::ElideRight, bounds.width());
    painter.drawText(bounds, Qt::AlignVCenter | Qt::AlignLeading | Qt::TextSingleLine, elided);
}

} // namespace

QFont DeviceTableCellView::nameFont()
{
    return Theme::font(Theme::FontFace::regular, 16);
}

QFont DeviceTableCellView::addressFont()
{
    return Theme::font(Theme::FontFace::medium, 12);
}

void DeviceTableCellView::paint(QPainter& painter, const QRect& bounds, bool isHovered) const
{
    const bool isPicked = conectedImageView == QStringLiteral("connectedChain");
    if (isPicked || isHovered)
        painter.fillRect(bounds, QColor(isPicked ? Theme::pickedRow : Theme::hoveredRow));
    const bool isRightToLeft = painter.layoutDirection() == Qt::RightToLeft;
    if (isPicked) {
        const int start = isRightToLeft ? bounds.right() + 1 - markWidth : bounds.left();
        painter.fillRect(start, bounds.top(), markWidth, bounds.height(), QColor(Theme::accent));
    }
    QRect icon(0, 0, iconSize, iconSize);
    icon.moveCenter(bounds.center());
    isRightToLeft ? icon.moveRight(bounds.right() - margin) : icon.moveLeft(bounds.left() + margin);
    image(conectedImageView).paint(painter, icon);

    const QRect text =
        isRightToLeft ? bounds.adjusted(margin, 0, -textInset, 0) : bounds.adjusted(textInset, 0, -margin, 0);
    const auto line = [&text](int top, int height) {
        return QRect(text.left(), text.top() + Theme::scaled(top), text.width(), Theme::scaled(height));
    };
    drawLine(painter, line(8, 24), nameFont(), QColor(Theme::text), deviceNameLabel);
    drawLine(painter, line(33, 19), addressFont(), QColor(Theme::secondaryText), addresses());
}

QString DeviceTableCellView::addresses() const
{
    return dottedAddress.isEmpty() ? deviceIPLabel : deviceIPLabel + QStringLiteral("   ") + dottedAddress;
}

QString DeviceTableCellView::toolTip(int rowWidth) const
{
    const int width = rowWidth - textInset - margin;
    const bool fits = QFontMetrics(nameFont()).horizontalAdvance(deviceNameLabel) <= width
        && QFontMetrics(addressFont()).horizontalAdvance(addresses()) <= width;
    return fits ? QString() : (deviceNameLabel + QLatin1Char('\n') + addresses()).toHtmlEscaped();
}

} // namespace companion
