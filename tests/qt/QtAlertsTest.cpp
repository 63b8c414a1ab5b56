#include "platform/qt/QtAlerts.h"
#include "platform/qt/WidgetMainQueue.h"
#include "tests/qt/EventLoop.h"

#include <thread>

#include <gmock/gmock.h>

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLayout>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTranslator>

namespace companion::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

/// Acts as the user who sees the alert. Qt's own timers go on while one is open, unlike the main queue's.
class QtAlertsTest : public ::testing::Test {
protected:
    QtAlertsTest() { setTextSize(14); }

    static void setTextSize(int pixels)
    {
        QFont font = QApplication::font();
        font.setPixelSize(pixels);
        QApplication::setFont(font);
    }

    /// Calls `act` with the open box; leaves pressing OK to it.
    void whenShown(std::function<void(QMessageBox&)> act)
    {
        QObject::connect(&m_user, &QTimer::timeout, &m_user, [this, act = std::move(act)] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box || !box->isVisible())
                return;
            m_user.stop();
            ++m_shown;
            act(*box);
        });
        m_user.start(1ms);
    }

    static void pressKey(QWidget& widget, int key)
    {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(&widget, &press);
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
        QApplication::sendEvent(&widget, &release);
    }

    static void pressOk(QMessageBox& box) { box.buttons().constFirst()->click(); }

    MainQueue::Job note(const std::string& word)
    {
        return [this, word] { m_words.push_back(word); };
    }

    WidgetMainQueue m_queue;
    std::unique_ptr<QWidget> m_window = std::make_unique<QWidget>();
    QtAlerts m_alerts{m_queue, *m_window};
    QTimer m_user;
    int m_shown = 0;
    std::vector<std::string> m_words;
};

TEST_F(QtAlertsTest, TheMessageIsBoldTheInformativeTextIsNotAndTheOnlyButtonSaysOk)
{
    whenShown([](QMessageBox& box) {
        EXPECT_EQ(box.text(), "Network error");
        EXPECT_EQ(box.informativeText(), "Please retry.");
        EXPECT_TRUE(box.findChild<QLabel*>("qt_msgbox_label")->font().bold());
        EXPECT_FALSE(box.findChild<QLabel*>("qt_msgbox_informativelabel")->font().bold());
        ASSERT_EQ(box.buttons().size(), 1);
        EXPECT_EQ(box.buttons().constFirst()->text(), "OK");
        EXPECT_EQ(box.windowModality(), Qt::ApplicationModal);
        pressOk(box);
    });
    m_alerts.runModal("Network error", "Please retry.");
    EXPECT_EQ(m_shown, 1);
}

TEST_F(QtAlertsTest, TheMessageIsSemiBoldAndTheMarginsAre24Points)
{
    whenShown([](QMessageBox& box) {
        EXPECT_EQ(box.findChild<QLabel*>("qt_msgbox_label")->font().weight(), QFont::DemiBold);
        EXPECT_EQ(box.layout()->contentsMargins(), QMargins(24, 24, 24, 24));
        EXPECT_GE(box.findChild<QLabel*>("qt_msgbox_label")->x(), 24);
        EXPECT_EQ(box.width(), 440);
        pressOk(box);
    });
    m_alerts.runModal("Network error", "Please retry.");
    EXPECT_EQ(m_shown, 1);
}

TEST_F(QtAlertsTest, AnAlertGrowsWithTheTextsOfTheProgram)
{
    setTextSize(21);
    whenShown([](QMessageBox& box) {
        EXPECT_EQ(box.findChild<QLabel*>("qt_msgbox_label")->font().pixelSize(), 24);
        EXPECT_EQ(box.width(), 660);
        pressOk(box);
    });
    m_alerts.runModal("Network error", "Please retry.");
    EXPECT_EQ(m_shown, 1);
}

TEST_F(QtAlertsTest, AnAlertThatIsOpenWhenTheProgramEndsHasNoAnswer)
{
    whenShown([this](QMessageBox& box) {
        m_alerts.programEnds();
        box.close();
    });
    EXPECT_FALSE(m_alerts.runModal("Network error", ""));
    EXPECT_EQ(m_shown, 1);
}

TEST_F(QtAlertsTest, AnAlertWhoseOkIsPressedHasItsAnswer)
{
    whenShown([](QMessageBox& box) { pressOk(box); });
    EXPECT_TRUE(m_alerts.runModal("Network error", ""));
}

TEST_F(QtAlertsTest, TheButtonSaysOkAlsoWhereTheToolkitSpeaksAnotherLanguage)
{
    class Translator : public QTranslator {
        QString translate(const char* context, const char*, const char*, int) const override
        {
            return qstrcmp(context, "Alert") == 0 ? QString() : "Einverstanden"; // ours has no translation
        }
        bool isEmpty() const override { return false; }
    } translator;
    QCoreApplication::installTranslator(&translator);
    whenShown([](QMessageBox& box) {
        EXPECT_EQ(box.buttons().constFirst()->text(), "OK");
        pressOk(box);
    });
    m_alerts.runModal("Success", "File Uploaded successfully.");
    QCoreApplication::removeTranslator(&translator);
    EXPECT_EQ(m_shown, 1);
}

TEST_F(QtAlertsTest, ReturnPressesOk)
{
    whenShown([](QMessageBox& box) { pressKey(box, Qt::Key_Return); });
    m_alerts.runModal("Device busy", "Device is currently busy. Please try again.");
    EXPECT_EQ(m_shown, 1);
}

TEST_F(QtAlertsTest, EscapePressesOk)
{
    whenShown([](QMessageBox& box) { pressKey(box, Qt::Key_Escape); });
    m_alerts.runModal("Device busy", "Device is currently busy. Please try again.");
    EXPECT_EQ(m_shown, 1);
}

TEST_F(QtAlertsTest, ClosingTheWindowEndsTheAlert)
{
    whenShown([](QMessageBox& box) { box.close(); });
    m_alerts.runModal("Device busy", "Device is currently busy. Please try again.");
    EXPECT_EQ(m_shown, 1);
}

TEST_F(QtAlertsTest, MarkUpIsShownAsText)
{
    whenShown([](QMessageBox& box) {
        for (const QString name : {"qt_msgbox_label", "qt_msgbox_informativelabel"})
            EXPECT_EQ(box.findChild<QLabel*>(name)->textFormat(), Qt::PlainText);
        pressOk(box);
    });
    m_alerts.runModal("<b>Panel</b>", "<img src='x'>");
    EXPECT_EQ(m_shown, 1);
}

TEST_F(QtAlertsTest, AScreenReaderHearsAnAlertWithTheMessageAsItsName)
{
    whenShown([](QMessageBox& box) {
        QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&box);
        EXPECT_EQ(accessible->role(), QAccessible::AlertMessage);
        EXPECT_EQ(accessible->text(QAccessible::Name), "Network error");
        EXPECT_EQ(accessible->text(QAccessible::Description), "Please retry.");
        pressOk(box);
    });
    m_alerts.runModal("Network error", "Please retry.");
    EXPECT_EQ(m_shown, 1);
}

TEST_F(QtAlertsTest, TheAlertLiesInTheMiddleOfTheMainWindow)
{
    m_window->setGeometry(200, 150, 500, 401);
    m_window->show();
    m_window->activateWindow();
    ASSERT_TRUE(spinUntil([&] { return QApplication::activeWindow() == m_window.get(); }));
    whenShown([&](QMessageBox& box) {
        EXPECT_EQ(box.parentWidget(), m_window.get());
        const QPoint distance = box.frameGeometry().center() - m_window->frameGeometry().center();
        EXPECT_LE(distance.manhattanLength(), 40);
        pressOk(box);
    });
    m_alerts.runModal("Cannot upload", "File upload feature is not available for your device.");
    EXPECT_EQ(m_shown, 1);
}

TEST_F(QtAlertsTest, AMinimizedMainWindowIsRestoredForItsAlert)
{
    m_window->showMaximized();
    m_window->setWindowState(m_window->windowState() | Qt::WindowMinimized);
    whenShown([&](QMessageBox& box) {
        EXPECT_FALSE(m_window->isMinimized());
        EXPECT_TRUE(m_window->isMaximized());
        pressOk(box);
    });
    m_alerts.runModal("Device busy", "");
    EXPECT_EQ(m_shown, 1);
}

TEST_F(QtAlertsTest, AnAlertWhileAnotherWindowIsActiveBelongsToTheMainWindowAndBringsItToTheFront)
{
    m_window->show();
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(spinUntil([&] { return QApplication::activeWindow() == &other; }));
    whenShown([&](QMessageBox& box) {
        EXPECT_EQ(box.parentWidget(), m_window.get());
        EXPECT_TRUE(spinUntil([&] { return QApplication::activeWindow() == &box; }));
        pressOk(box);
    });
    m_alerts.runModal("Device busy", "");
    EXPECT_EQ(m_shown, 1);
}

TEST_F(QtAlertsTest, AWindowThatIsDestroyedUnderItsAlertTakesTheAlertAway)
{
    m_window->show();
    whenShown([&](QMessageBox&) { m_window.reset(); });
    m_alerts.runModal("Device busy", "");
    EXPECT_EQ(m_shown, 1);
}

TEST_F(QtAlertsTest, JobsHandedInByAnotherThreadWhileItIsOpenRunAfterwardsInOrder)
{
    m_queue.async(note("before"));
    whenShown([this](QMessageBox& box) {
        std::jthread([this] {
            m_queue.async(note("first"));
            m_queue.async(note("second"));
        }).join();
        spinFor(30ms);
        EXPECT_THAT(m_words, ElementsAre());
        pressOk(box);
    });
    m_alerts.runModal("Network error", "");
    m_words.push_back("closed");
    ASSERT_TRUE(spinUntil([&] { return m_words.size() == 4; }));
    EXPECT_THAT(m_words, ElementsAre("closed", "before", "first", "second"));
}

TEST_F(QtAlertsTest, AJobThatShowsAnAlertFinishesBeforeTheNextJobThatShowsOne)
{
    whenShown([this](QMessageBox& box) {
        m_words.push_back(box.text().toStdString());
        m_user.start(1ms);
        pressOk(box);
    });
    for (const std::string message : {"First", "Second"}) {
        m_queue.async([this, message] {
            m_alerts.runModal(message, "");
            m_words.push_back(message + " closed");
        });
    }
    ASSERT_TRUE(spinUntil([&] { return m_words.size() == 4; }));
    EXPECT_THAT(m_words, ElementsAre("First", "First closed", "Second", "Second closed"));
}

TEST_F(QtAlertsTest, ADelayedJobThatIsDueWhileItIsOpenRunsAfterwards)
{
    m_queue.after(5ms, note("delayed"));
    whenShown([this](QMessageBox& box) {
        spinFor(50ms);
        EXPECT_THAT(m_words, ElementsAre());
        m_queue.async(note("later"));
        pressOk(box);
    });
    m_alerts.runModal("Network error", "");
    ASSERT_TRUE(spinUntil([&] { return m_words.size() == 2; }));
    EXPECT_THAT(m_words, ElementsAre("delayed", "later"));
}

TEST_F(QtAlertsTest, TicksThatAreDueWhileItIsOpenAreDroppedAndTheNextComesInTheOldRhythm)
{
    constexpr auto period = 80ms;
    std::vector<SteadyClock::duration> ticks;
    const auto start = SteadyClock::now();
    const auto timer = m_queue.repeat(period, [&] { ticks.push_back(SteadyClock::now() - start); });
    const auto sinceLastTick = [&] { return (SteadyClock::now() - start) % period; };
    SteadyClock::duration closed;
    // On a busy computer it may close so near a tick that none can say on which side of it; then it is shown once more.
    do {
        whenShown([&](QMessageBox& box) {
            spinFor(std::chrono::duration_cast<std::chrono::milliseconds>(
                2 * period + period / 2 - sinceLastTick()));
            EXPECT_THAT(ticks, SizeIs(0));
            pressOk(box);
        });
        m_alerts.runModal("Network error", "");
        closed = SteadyClock::now() - start;
    } while (closed % period < period / 4 || closed % period > period * 3 / 4);
    ASSERT_TRUE(spinUntil([&] { return ticks.size() >= 5; }));
    EXPECT_GE(ticks[0], (closed / period + 1) * period);
    SteadyClock::duration lateness = period;
    for (const auto tick : ticks)
        lateness = std::min<SteadyClock::duration>(lateness, tick % period);
    EXPECT_LT(lateness, period / 4);
}

TEST_F(QtAlertsTest, AModalDialogOfAnyKindDropsTicks)
{
    QDialog dialog;
    int ticks = 0;
    const auto timer = m_queue.repeat(10ms, [&] { ++ticks; });
    QTimer::singleShot(100ms, &dialog, [&] {
        EXPECT_EQ(ticks, 0);
        dialog.accept();
    });
    dialog.exec();
    EXPECT_TRUE(spinUntil([&] { return ticks > 0; }));
}

TEST_F(QtAlertsTest, AnOpenMenuDropsTicksAndLetsJobsRun)
{
    QWidget window;
    window.show();
    QMenu menu(&window);
    menu.addAction("An entry");
    int ticks = 0;
    const auto timer = m_queue.repeat(10ms, [&] { ++ticks; });
    QTimer::singleShot(100ms, &menu, [&] {
        EXPECT_EQ(ticks, 0);
        EXPECT_THAT(m_words, ElementsAre("job"));
        menu.close();
    });
    m_queue.async(note("job"));
    menu.exec(window.mapToGlobal(QPoint(10, 10)));
    EXPECT_TRUE(spinUntil([&] { return ticks > 0; }));
}

} // namespace
} // namespace companion::testing
