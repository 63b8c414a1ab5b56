#pragma once

#include <functional>
#include <QColor>
#include <QFont>

class QApplication;
class QWidget;

/// Colours and fonts that all screens share.
namespace companion::Theme {

inline constexpr QRgb text = 0xff22303c;
inline constexpr QRgb secondaryText = 0xff52616f;
inline constexpr QRgb accent = 0xff0b7a65;
inline constexpr QRgb line = 0xffd5dce2;
inline constexpr QRgb hoveredRow = 0xfff0f3f6;
inline constexpr QRgb pickedRow = 0xffe6f4f0;
inline constexpr QRgb outline = 0xff6b7c8c;

enum class FontFace { regular, medium, semiBold, extraLight };

/// The program's typeface in one of its four weights; `points` are device-independent pixels, which the desktop's wish for
/// larger texts makes more of.
QFont font(FontFace face, int points);

/// A length that grows with the texts.
int scaled(int points);

/// How much larger than usual the desktop wants its texts, besides what the resolution of its fonts says. The screens
/// follow up to 1.5, and make no text smaller than usual. Nothing for desktops that enlarge whole windows instead.
void setTextScale(double factor);

/// Runs `apply` now, and whenever texts become larger or smaller.
void followTextScale(QWidget& view, std::function<void()> apply);

/// The light palette, the style of the controls and the base font, whatever the desktop's own scheme is.
void apply(QApplication& application);

/// The same without the base font, which takes longer than everything else: it may follow by `applyBaseFont`.
void applyColors(QApplication& application);
void applyBaseFont();

} // namespace companion::Theme
