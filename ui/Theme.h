#pragma once

#include <QColor>
#include <QFont>

class QApplication;
class QPainter;
class QRectF;

/// Colours, fonts and the focus ring that all screens share.
namespace companion::Theme {

inline constexpr QRgb text = 0xff22303c;
inline constexpr QRgb secondaryText = 0xff52616f;
inline constexpr QRgb accent = 0xff0b7a65;
inline constexpr QRgb line = 0xffd5dce2;
inline constexpr QRgb outline = 0xff6b7c8c;
inline constexpr double focusRingWidth = 3;

enum class FontFace { regular, medium, semiBold, extraLight };

/// The program's typeface in one of its four weights; `points` are device-independent pixels.
QFont font(FontFace face, int points);

/// The light palette, the style of the controls and the base font, whatever the desktop's own scheme is.
void apply(QApplication& application);

/// The same without the base font, which takes longer than everything else: it may follow by `applyBaseFont`.
void applyColors(QApplication& application);
void applyBaseFont();

/// A ring just inside `bounds`, with rounded corners.
void paintFocusRing(QPainter& painter, const QRectF& bounds, double cornerRadius);

/// The same with a white one within it, so that it is seen on dark colours and on that of the ring itself.
void paintFocusRingOnDark(QPainter& painter, const QRectF& bounds, double cornerRadius);

} // namespace companion::Theme
