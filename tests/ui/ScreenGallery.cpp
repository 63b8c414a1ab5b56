// screen-gallery DIRECTORY [WIDTHxHEIGHT] [NAME...]: writes a picture of every state of the screens, or of those named, as
// they look on the present platform, in the language of LANGUAGE.
#include "tests/ui/ScreenStates.h"
#include "translations/Language.h"
#include "ui/Accessibility.h"
#include "ui/FocusRing.h"

#include <cstdio>
#include <QDir>

using namespace companion;
using namespace companion::testing;

namespace {

QSize takeSize(QStringList& arguments)
{
    const QStringList parts = arguments.value(0).split('x');
    const QSize size(parts.value(0).toInt(), parts.value(1).toInt());
    if (size.isEmpty())
        return {800, 560};
    arguments.removeFirst();
    return size;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QStringList arguments = QApplication::arguments().mid(1);
    if (arguments.isEmpty()) {
        std::fputs("usage: screen-gallery DIRECTORY [WIDTHxHEIGHT] [NAME...]\n", stderr);
        return 2;
    }
    QApplication::setApplicationDisplayName(QStringLiteral("Panel Companion"));
    useDesktopLanguage(application);
    Theme::apply(application);
    installAccessibility();
    installFocusRing();

    const QDir directory(arguments.takeFirst());
    const QSize size = takeSize(arguments);
    QDir().mkpath(directory.path());
    bool isWritten = true;
    ScreenStates states([&](const QString& state) {
        if (arguments.isEmpty() || arguments.contains(state))
            isWritten &= states.picture().save(directory.filePath(state + ".png"));
    });
    states.window().resize(size);
    states.run();
    return isWritten ? 0 : 1;
}
