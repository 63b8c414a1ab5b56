#include "translations/Language.h"
#include "ui/Accessibility.h"
#include "ui/FocusRing.h"
#include "ui/Theme.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QPalette>
#include <QRegularExpression>
#include <QTranslator>

namespace {

/// A language of words 40 % longer than the English ones, "longer": what has the room for them has it for most languages.
class LongerWords : public QTranslator {
public:
    bool isEmpty() const override { return false; }
    QString translate(const char*, const char* text, const char*, int) const override
    {
        return QString::fromUtf8(text).replace(QRegularExpression("([aeiouAEIOU])"), "\\1\\1");
    }
};

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    ::testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    QApplication::setPalette(QPalette(QColor(0x20, 0x20, 0x20))); // as on a dark desktop
    // No plugin but the platform's can be loaded any more: the program draws its images without any.
    QCoreApplication::setLibraryPaths({});
    qputenv("LANGUAGE", qEnvironmentVariable("PANEL_COMPANION_TEST_LANGUAGE", "en").toUtf8());
    companion::useDesktopLanguage(application);
    LongerWords longerWords;
    if (qgetenv("LANGUAGE") == "longer")
        QCoreApplication::installTranslator(&longerWords);
    companion::Theme::apply(application);
    companion::installAccessibility();
    companion::installFocusRing();
    return RUN_ALL_TESTS();
}
