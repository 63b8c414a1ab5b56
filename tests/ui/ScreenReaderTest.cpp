#include "tests/ui/Contrast.h"
#include "tests/ui/ScreenStates.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QFile>
#include <QFocusFrame>
#include <QMetaEnum>

namespace companion::testing {
namespace {

constexpr double enoughForShapes = 3;

QString textOf(const QAccessibleInterface& view)
{
    const auto role = QMetaEnum::fromType<QAccessible::Role>().valueToKey(view.role());
    QString line = QStringLiteral("%1 \"%2\"").arg(QString::fromLatin1(role), view.text(QAccessible::Name));
    const auto add = [&line](const char* what, const QString& text) {
        if (!text.isEmpty())
            line += QStringLiteral(", %1 \"%2\"").arg(QString::fromLatin1(what), text);
    };
    add("description", view.text(QAccessible::Description));
    add("value", view.text(QAccessible::Value));
    const QAccessible::State state = view.state();
    line += state.checked ? ", checked" : "";
    line += state.pressed ? ", pressed" : "";
    line += state.disabled ? ", disabled" : "";
    return line.replace('\n', ' ');
}

/// What a screen reader finds below a view, one a line, without what is out of sight.
void addTree(QString& text, const QAccessibleInterface& view, int depth)
{
    if (view.state().invisible)
        return;
    text += QString(2 * depth, ' ') + textOf(view) + '\n';
    for (int index = 0; index < view.childCount(); ++index) {
        if (const QAccessibleInterface* child = view.child(index))
            addTree(text, *child, depth + 1);
    }
}

QString nameOf(QWidget& control)
{
    const QAccessibleInterface* heard = QAccessible::queryAccessibleInterface(&control);
    return heard ? heard->text(QAccessible::Name) : QString();
}

/// How many pixels of the window the ring changes so that an eye sees it.
int pixelsOfRing(QWidget& ring)
{
    QWidget& window = *ring.window();
    const QRect place(ring.mapTo(&window, QPoint()), ring.size());
    const QImage with = window.grab(place).toImage();
    ring.hide();
    const QImage without = window.grab(place).toImage();
    ring.show();
    int changed = 0;
    for (int y = 0; y < with.height(); ++y) {
        for (int x = 0; x < with.width(); ++x)
            changed += with.pixel(x, y) != without.pixel(x, y)
                && contrast(with.pixelColor(x, y), without.pixelColor(x, y)) >= enoughForShapes;
    }
    return changed;
}

/// Goes round by Tab from where the keyboard is, expects to see it at every stop, and returns the stops' names.
QStringList walk(const QString& state)
{
    QStringList names;
    QWidget* const first = QApplication::focusWidget();
    do {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QWidget& control = *QApplication::focusWidget();
        names += nameOf(control);
        const auto rings = control.findChildren<QFocusFrame*>();
        EXPECT_EQ(rings.size(), 1) << state.toStdString() << ", " << names.last().toStdString();
        for (QFocusFrame* ring : rings)
            EXPECT_GE(pixelsOfRing(*ring), 2 * (ring->width() + ring->height()))
                << state.toStdString() << ", " << names.last().toStdString();
    } while (QApplication::focusWidget() != first && names.size() < 20);
    return names;
}

/// Where the keyboard is when a state begins: in what lies over everything else, or at the start of the window.
void giveTheKeyboardTo(QWidget& window)
{
    window.activateWindow();
    QCoreApplication::processEvents();
    QWidget* const present = QApplication::focusWidget();
    const bool isInPopover =
        present && (present->inherits("QAbstractItemView") || present->inherits("QComboBox"));
    auto* const icon = window.findChild<QWidget*>("devicesListIcon");
    if (!isInPopover && icon)
        icon->setFocus(Qt::TabFocusReason);
}

QString expectedText()
{
    QFile file(QStringLiteral(SCREEN_READER_TEXT));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// With PANEL_COMPANION_NEW_TEXT the text is written there, for tools/screenshots.sh.
TEST(ScreenReaderTest, EveryStateReadsAsInTheKeptTextAndTabReachesItsControls)
{
    QString text;
    ScreenStates states([&](const QString& state) {
        QWidget* const modal = QApplication::activeModalWidget();
        QWidget& window = modal ? *modal : static_cast<QWidget&>(states.window());
        text += "== " + state + "\n";
        addTree(text, *QAccessible::queryAccessibleInterface(&window), 0);
        if (state == "splash"
            || state == "settings-choice") // nothing to stop at, and a menu, which arrows work
            return;
        giveTheKeyboardTo(window);
        text += "Tab: " + walk(state).join(", ") + "\n";
    });
    states.window().resize(960, 640);
    states.run();

    const QString written = qEnvironmentVariable("PANEL_COMPANION_NEW_TEXT");
    if (written.isEmpty()) {
        const QStringList found = text.split('\n');
        const QStringList expected = expectedText().split('\n');
        for (int line = 0; line < std::max(found.size(), expected.size()); ++line)
            ASSERT_EQ(found.value(line).toStdString(), expected.value(line).toStdString())
                << "line " << line + 1;
        return;
    }
    QFile file(written);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text.toUtf8());
}

} // namespace
} // namespace companion::testing
