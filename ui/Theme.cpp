#include "ui/Theme.h"

#include <algorithm>
#include <QApplication>
#include <QDir>
#include <QFontDatabase>
#include <QPalette>
#include <QResource>
#include <QScreen>
#include <QStyleFactory>
#include <QToolTip>
#include <QWidget>
#include <utility>
#include <vector>

namespace companion::Theme {

namespace {

QString loadTypeface()
{
    QString family = QStringLiteral("Manrope"); // nearest in form where the embedded one is missing
    const QDir fonts(QStringLiteral(":/fonts"));
    for (const QString& file : fonts.entryList()) {
        if (!file.endsWith(QStringLiteral(".ttf")))
            continue;
        // Used where they lie in the program: loading them by name would copy 600 KB.
        const QByteArray face = QResource(fonts.filePath(file)).uncompressedData();
        const int id = QFontDatabase::addApplicationFontFromData(face);
        if (id >= 0 && file.contains(QStringLiteral("Regular")))
            family = QFontDatabase::applicationFontFamilies(id).value(0);
    }
    return family;
}

const QString& typeface()
{
    static const QString family = loadTypeface();
    return family;
}

double g_textScale = 1; // by the desktop's settings

/// The toolkit enlarges whole windows for a higher resolution of fonts, unless it is told not to; what it leaves of the
/// resolution is for texts.
double scaleByResolution()
{
    constexpr double usualResolution = 96;
    const QScreen* const screen = QGuiApplication::primaryScreen();
    return screen ? screen->logicalDotsPerInch() / usualResolution : 1;
}

double textScale()
{
    constexpr double largest = 1.5; // that the smallest window has the room for
    return std::clamp(g_textScale * scaleByResolution(), 1.0, largest);
}

/// A child of the view that it works for. (The toolkit tells windows of new fonts, and views with fonts of their own nothing.)
class TextScaleFollower : public QObject {
public:
    TextScaleFollower(QWidget& view, std::function<void()> apply)
        : QObject(&view)
        , m_apply(std::move(apply))
    {
        all().push_back(this);
        m_apply();
    }
    ~TextScaleFollower() override { std::erase(all(), this); }

    static void applyAll()
    {
        for (TextScaleFollower* follower : all())
            follower->m_apply();
    }

private:
    static std::vector<TextScaleFollower*>& all()
    {
        static std::vector<TextScaleFollower*> followers;
        return followers;
    }

    const std::function<void()> m_apply;
};

QPalette lightPalette()
{
    QPalette palette(QColor(0xf0, 0xf3, 0xf6), QColor(Qt::white));
    palette.setColor(QPalette::WindowText, QColor(text));
    palette.setColor(QPalette::Text, QColor(text));
    palette.setColor(QPalette::ButtonText, QColor(text));
    palette.setColor(QPalette::PlaceholderText, QColor(secondaryText));
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::AlternateBase, QColor(0xf6, 0xf8, 0xfa));
    palette.setColor(QPalette::Highlight, QColor(accent));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::ToolTipBase, QColor(text));
    palette.setColor(QPalette::ToolTipText, Qt::white);
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(0x8797a6));
    palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(0x8797a6));
    palette.setColor(QPalette::Disabled, QPalette::Text, QColor(0x8797a6));
    return palette;
}

// Buttons of all kinds: everything else is the palette's business. The margin is the focus ring's.
const char* const styleSheet = R"(
        QPushButton {
            background: #34495e; color: white; margin: 3px; border: none; border-radius: 8px;
            padding: 7px 20px; min-height: 30px; outline: none;
        }
        QPushButton:hover { background: #3f5870; }
        QPushButton:pressed { background: #2a3b4c; }
        QPushButton:disabled { background: #d5dce2; color: #52616f; }
        QPushButton#disconnectButton {
            background: rgb(204, 115, 77); color: #1d130e;
            margin: 0; padding: 0;
        }
        QPushButton#disconnectButton:hover { background: rgb(212, 128, 92); }
        companion--PopUpButton {
            background: white; color: #22303c; border: 1px solid #6b7c8c; border-radius: 8px;
            padding: 2px 12px; min-height: 32px; combobox-popup: 0; outline: none;
        }
        companion--PopUpButton:hover { background: #f6f8fa; }
        companion--PopUpButton::drop-down { subcontrol-origin: border; border: none; width: 40px; }
        companion--PopUpButton QComboBoxPrivateContainer { background: transparent; border: none; }
        companion--PopUpButton QAbstractItemView {
            background: white; border: 1px solid #6b7c8c; border-radius: 8px; outline: 0; padding: 4px;
        }
        companion--PopUpButton QAbstractItemView::item { min-height: 36px; padding: 0 8px; border-radius: 4px; color: #22303c; }
        companion--PopUpButton QAbstractItemView::item:selected { background: #0b7a65; color: white; }
        QMessageBox QPushButton { min-width: 56px; min-height: 26px; }
        QFrame#castCardView { background: white; border: 1px solid #d5dce2; border-radius: 14px; }
        QFrame#touchPlateView { background: white; border-radius: 24px; }
        QToolButton { background: rgba(255, 255, 255, 128); border: none; border-radius: 8px; outline: none; }
        QToolButton:hover { background: rgba(255, 255, 255, 200); }
        QToolButton:pressed { background: white; }
        companion--DevicesTableView QScrollBar:vertical { background: transparent; width: 10px; }
        companion--DevicesTableView QScrollBar::handle:vertical {
            background: #8797a6; border-radius: 3px; margin: 2px; min-height: 40px;
        }
        companion--DevicesTableView QScrollBar::add-line:vertical, companion--DevicesTableView QScrollBar::sub-line:vertical { height: 0; }
        companion--DevicesTableView QScrollBar::add-page:vertical, companion--DevicesTableView QScrollBar::sub-page:vertical { background: none; }
    )";

} // namespace

QFont font(FontFace face, int points)
{
    QFont font(typeface());
    font.setPixelSize(scaled(points));
    switch (face) {
    case FontFace::regular:
        font.setWeight(QFont::Normal);
        break;
    case FontFace::medium:
        font.setWeight(QFont::Medium);
        break;
    case FontFace::semiBold:
        font.setWeight(QFont::DemiBold);
        break;
    case FontFace::extraLight:
        font.setWeight(QFont::ExtraLight);
        break;
    }
    return font;
}

int scaled(int points)
{
    return qRound(points * textScale());
}

void setTextScale(double factor)
{
    if (std::exchange(g_textScale, factor) == factor)
        return;
    applyBaseFont();
    TextScaleFollower::applyAll();
}

void followTextScale(QWidget& view, std::function<void()> apply)
{
    new TextScaleFollower(view, std::move(apply));
}

void apply(QApplication& application)
{
    applyColors(application);
    applyBaseFont();
}

void applyColors(QApplication& application)
{
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(lightPalette());
    QToolTip::setPalette(lightPalette());
    application.setStyleSheet(QString::fromLatin1(styleSheet));
}

void applyBaseFont()
{
    QApplication::setFont(font(FontFace::regular, 14));
}

} // namespace companion::Theme
