#include "translations/Language.h"

#include <memory>
#include <optional>
#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace companion {

namespace {

/// Whole texts. "%1" stands for data, such as a file's name, which is never translated.
constexpr const char* texts[] = {
    QT_TRANSLATE_NOOP("Logic", "*No Device Connected"),
    QT_TRANSLATE_NOOP("Logic", "Paired to %1"),

    QT_TRANSLATE_NOOP("Logic", "Touchback is enabled now."),
    QT_TRANSLATE_NOOP("Logic",
        "To mirror the screen, please go to the AirPlay option on the top menu bar and select the required AirPlay "
        "display device.\n\nNOTE: Make sure the screen calibration is done and your mac and device are on the same "
        "network."),
    QT_TRANSLATE_NOOP("Logic", "Touchback is disabled now."),
    QT_TRANSLATE_NOOP("Logic",
        "If screen mirroring is ON and you don't need it anymore, please go to the AirPlay option on the top menu bar "
        "and select 'Stop AirPlay'."),
    QT_TRANSLATE_NOOP("Logic", "Network error"),
    QT_TRANSLATE_NOOP("Logic", "Touchback is disabled. Please check your network connection and then retry."),
    QT_TRANSLATE_NOOP("Logic", "Device busy"),
    QT_TRANSLATE_NOOP("Logic", "Device is currently busy. Please try again."),

    QT_TRANSLATE_NOOP("Logic", "Success"),
    QT_TRANSLATE_NOOP("Logic", "File Uploaded successfully."),
    QT_TRANSLATE_NOOP("Logic", "Failure"),
    QT_TRANSLATE_NOOP("Logic", "Server error while uploading. Please try again."),
    QT_TRANSLATE_NOOP("Logic", "File Upload failed."),
    QT_TRANSLATE_NOOP("Logic", "Cannot upload"),
    QT_TRANSLATE_NOOP("Logic", "File upload feature is not available for your device."),
    QT_TRANSLATE_NOOP("Logic", "\"%1\" does not fit into the free memory of this computer."),
    QT_TRANSLATE_NOOP("Logic", "\"%1\" cannot be read."),
    QT_TRANSLATE_NOOP("Logic", "\"%1\" is not a file on this computer."),
    QT_TRANSLATE_NOOP("Logic", "Choose one file on this computer that is of one of these kinds: %1."),
    QT_TRANSLATE_NOOP("Logic", "Paste Error"),
    QT_TRANSLATE_NOOP("Logic", "Sorry, but the past operation failed"),

    QT_TRANSLATE_NOOP("Logic", "Panel Companion had to stop"),
    QT_TRANSLATE_NOOP("Logic", "The file to be sent could no longer be read."),
    QT_TRANSLATE_NOOP("Logic", "A file was to be sent, but no panel was paired any more."),
    QT_TRANSLATE_NOOP("Logic", "A panel was needed, but none was paired."),
    QT_TRANSLATE_NOOP("Logic", "The panel sent an answer that is not text."),
    QT_TRANSLATE_NOOP("Logic", "This computer had no screen that touches could go to."),
    QT_TRANSLATE_NOOP("Logic", "A touch could not be turned into mouse input."),
    QT_TRANSLATE_NOOP("Logic", "This computer's clock shows a time that cannot be right."),
    QT_TRANSLATE_NOOP("Logic", "This computer had no memory left."),
    QT_TRANSLATE_NOOP("Logic", "It met an error of its own: %1"),

    QT_TRANSLATE_NOOP("Logic",
        "Waiting for permission: pick a screen and allow remote interaction in the desktop's dialog"),
    QT_TRANSLATE_NOOP("Logic", "the desktop stopped sharing the screen"),
    QT_TRANSLATE_NOOP("Logic", "the desktop's portal has gone or was restarted"),
    QT_TRANSLATE_NOOP("Logic", "remote interaction was not allowed in the desktop's dialog"),
    QT_TRANSLATE_NOOP("Logic", "no screen was picked in the desktop's dialog"),
    QT_TRANSLATE_NOOP("Logic", "the desktop's dialog was cancelled"),
    QT_TRANSLATE_NOOP("Logic", "the desktop's portal failed (%1)"),
    QT_TRANSLATE_NOOP("Logic", "the desktop no longer takes touches (%1)"),
    QT_TRANSLATE_NOOP("Logic", "The permission cannot be remembered: %1"),
    QT_TRANSLATE_NOOP(
        "Logic", "Cannot inject input: %1; install xdg-desktop-portal and its backend for this desktop"),
    QT_TRANSLATE_NOOP("Logic", "Cannot inject input: %1"),
    QT_TRANSLATE_NOOP(
        "Logic", "On Wayland touches reach X11 programs only; an X11 session has no such limit%1"),
};

/// "%1" stands for another of the texts.
constexpr const char* frames[] = {
    QT_TRANSLATE_NOOP("Logic", "%1\n\nIt has been started again. Pick your panel to go on."),
    QT_TRANSLATE_NOOP("Logic", "No touch: %1; turn touch on again to be asked again"),
};

QString translation(const char* english)
{
    return QCoreApplication::translate("Logic", english);
}

/// What stands for "%1", if the text has the pattern's form.
std::optional<QString> argumentOf(const QString& text, const QString& pattern)
{
    const QString before = pattern.section("%1", 0, 0);
    const QString after = pattern.section("%1", 1);
    if (!pattern.contains("%1") || text.size() < before.size() + after.size() || !text.startsWith(before)
        || !text.endsWith(after))
        return std::nullopt;
    return text.mid(before.size(), text.size() - before.size() - after.size());
}

QString shownText(const QString& english)
{
    for (const char* frame : frames) {
        if (const auto inner = argumentOf(english, frame))
            return translation(frame).arg(shownText(*inner));
    }
    for (const char* text : texts) {
        if (english == text)
            return translation(text);
        if (const auto data = argumentOf(english, text))
            return translation(text).arg(*data);
    }
    return english;
}

bool install(QCoreApplication& application, const QString& file, const QString& folder)
{
    auto translator = std::make_unique<QTranslator>();
    if (!translator->load(file, folder))
        return false;
    translator->setParent(&application);
    return QCoreApplication::installTranslator(translator.release());
}

} // namespace

void useDesktopLanguage(QCoreApplication& application)
{
    for (const QString& name : QLocale::system().uiLanguages()) {
        const QString language = name.section('-', 0, 0);
        if (language == QLatin1String("en") || language == QLatin1String("C"))
            return;
        if (install(application, "panel-companion_" + language, QStringLiteral(":/translations"))) {
            install(application, "qtbase_" + language, QLibraryInfo::path(QLibraryInfo::TranslationsPath));
            return;
        }
    }
}

QString shown(const std::string& english)
{
    return shownText(QString::fromStdString(english));
}

} // namespace companion
