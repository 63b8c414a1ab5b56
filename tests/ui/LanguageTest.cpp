#include "translations/Language.h"
#include "platform/qt/QtAlerts.h"
#include "tests/ui/ScreenTest.h"
#include "ui/QtSplashView.h"
#include "ui/Theme.h"

#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QTimer>
#include <QTranslator>

namespace companion::testing {
namespace {

/// What the layout's tests do not see: texts in popovers, alerts and the splash screen. Run in each language.
class LanguageTest : public ScreenTest {
protected:
    static void expectTextsFit(QWidget& root)
    {
        QTest::qWait(1); // the layout
        for (QLabel* label : root.findChildren<QLabel*>()) {
            if (!label->isVisible() || label->text().isEmpty()
                || (areTextsLong() && isShortenedWithToolTip(*label)))
                continue;
            const int width = label->wordWrap() ? 0 : label->sizeHint().width();
            EXPECT_GE(label->width(), width) << label->text().toStdString();
            EXPECT_GE(label->height(), label->hasHeightForWidth() ? label->heightForWidth(label->width()) : 0)
                << label->text().toStdString();
        }
        for (const QPushButton* button : root.findChildren<QPushButton*>())
            EXPECT_TRUE(button->isHidden() || button->width() >= button->sizeHint().width())
                << button->text().toStdString();
        for (const QComboBox* button : root.findChildren<QComboBox*>()) {
            QStyleOptionComboBox option;
            option.initFrom(button);
            const QRect field = button->style()->subControlRect(
                QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, button);
            EXPECT_GE(field.width(), button->fontMetrics().horizontalAdvance(button->currentText()))
                << button->currentText().toStdString();
        }
    }

    QString heard(const char* name, QAccessible::Text kind)
    {
        return QAccessible::queryAccessibleInterface(&find(m_window, name))->text(kind);
    }
};

TEST_F(LanguageTest, TheListAndItsHintsFit)
{
    openList();
    expectTextsFit(list());
    const QString searching = table().placeholder();
    for (const char* when : {"first", "later"}) {
        const QRect place = table().viewport()->rect().adjusted(24, 24, -24, -24);
        const QRect needed =
            QFontMetrics(Theme::font(Theme::FontFace::regular, 14))
                .boundingRect(place, Qt::AlignCenter | Qt::TextWordWrap, table().placeholder());
        EXPECT_TRUE(place.contains(needed)) << when << ": " << table().placeholder().toStdString();
        EXPECT_LE(list().window()->height(), 560);
        EXPECT_TRUE(QTest::qWaitFor([&] { return table().placeholder() != searching; }, 6000));
        QTest::qWait(1); // the layout
    }
    pair();
    openList();
    expectTextsFit(list());
}

TEST_F(LanguageTest, TheSettingsFit)
{
    click(outlet("settingsIcon"));
    auto& settings = find(m_window, "settingsView");
    ASSERT_TRUE(settings.isVisible());
    expectTextsFit(settings);
    EXPECT_LE(settings.width(), 800 - 2 * 8);
}

TEST_F(LanguageTest, TheSplashScreensTitlesFit)
{
    QtSplashView splash;
    splash.resize(800, 560);
    splash.show();
    EXPECT_TRUE(QTest::qWaitFor([&] { return find(splash, "subTitleLabel").isVisible(); }));
    expectTextsFit(splash);
    EXPECT_LE(splash.width(), 800);
}

TEST_F(LanguageTest, AlertsAreInTheLanguageAndFit)
{
    m_dashboard.alerts.whileShown = [] {};
    pair();
    click(outlet("castButtonView"));
    const auto [message, informativeText] = m_dashboard.alerts.shown.back();
    WidgetMainQueue queue;
    int shownAlerts = 0;
    QTimer::singleShot(1, [&, message = message] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        EXPECT_EQ(box->text(), shown(message));
        EXPECT_EQ(find<QPushButton>(*box, "alertOKButton").accessibleName(), "OK");
        expectTextsFit(*box);
        ++shownAlerts;
        box->accept();
    });
    QtAlerts(queue, m_window).runModal(message, informativeText);
    EXPECT_EQ(shownAlerts, 1);
}

TEST_F(LanguageTest, NamesOfControlsAreEnglishAndTheirDescriptionsInTheLanguage)
{
    EXPECT_EQ(heard("connectButton", QAccessible::Name), "Connect");
    EXPECT_EQ(heard("connectButton", QAccessible::Description), outlet<QPushButton>("connectButton").text());
    EXPECT_EQ(heard("fileUploadButton", QAccessible::Name), "Upload a file");
    EXPECT_EQ(
        heard("fileUploadButton", QAccessible::Description), outlet<QPushButton>("fileUploadButton").text());
    EXPECT_EQ(heard("disconnectButton", QAccessible::Name), "Disconnect");
    EXPECT_EQ(heard("disconnectButton", QAccessible::Description),
        find<QPushButton>(list(), "disconnectButton").text());
    EXPECT_EQ(heard("devicesListIcon", QAccessible::Name), "Devices");
    EXPECT_EQ(heard("devicesListIcon", QAccessible::Description), outlet("devicesListIcon").toolTip());
    EXPECT_EQ(heard("castButtonView", QAccessible::Name), "Cast");
    EXPECT_EQ(heard("castButtonView", QAccessible::Description), outlet("castButtonView").toolTip());
}

TEST_F(LanguageTest, TheSwitchAndTheSettingsAreLabelledByWhatStandsBesideThem)
{
    click(outlet("settingsIcon"));
    for (const auto& [control, label] :
        {std::pair("wirelessTouchSwitch", "wirelessTouchStatusLabel"), std::pair("fpsButton", "fpsLabel"),
            std::pair("switchAudioDeviceButton", "switchAudioDeviceLabel")}) {
        const QObject* const expected = &find(m_window, label);
        const auto relations = QAccessible::queryAccessibleInterface(&find(m_window, control))->relations();
        const bool isLabelled = std::any_of(relations.begin(), relations.end(), [&](const auto& relation) {
            return relation.second == QAccessible::Label && relation.first->object() == expected;
        });
        EXPECT_TRUE(isLabelled) << control;
    }
}

TEST_F(LanguageTest, WhatIsDataStaysAsItIs)
{
    EXPECT_EQ(shown("Room 204"), "Room 204");
    EXPECT_TRUE(shown("\"Failure\" cannot be read.").contains("Failure"));
    EXPECT_TRUE(shown("It met an error of its own: Network error").endsWith("Network error"));
    EXPECT_TRUE(shown("Paired to %1").contains("%1"));
}

/// Says that it has translated.
class Marker : public QTranslator {
public:
    bool isEmpty() const override { return false; }
    QString translate(const char*, const char* text, const char*, int) const override
    {
        return QString::fromUtf8(text) + QStringLiteral("§");
    }
};

/// What can be seen or heard below `root` and has not been translated, but for data.
QStringList untranslated(const QWidget& root)
{
    static const QRegularExpression data("^(Panel Companion|\\d+P?|[^a-zA-Z]*|plan\\.pdf)$");
    QStringList texts;
    for (const QWidget* view : root.findChildren<QWidget*>()) {
        texts << view->toolTip() << view->accessibleDescription();
        if (const auto* label = qobject_cast<const QLabel*>(view))
            texts << label->text();
        if (const auto* button = qobject_cast<const QAbstractButton*>(view))
            texts << button->text();
        if (const auto* button = qobject_cast<const QComboBox*>(view)) {
            for (int item = 0; item < button->count(); ++item)
                texts << button->itemText(item);
        }
    }
    texts.removeDuplicates();
    texts.removeIf([](const QString& text) { return text.contains("§") || data.match(text).hasMatch(); });
    return texts;
}

TEST_F(LanguageTest, NothingIsShownUntranslated)
{
    Marker marker;
    QCoreApplication::installTranslator(&marker);
    {
        MainWindow window;
        DashboardOnFakes dashboard;
        QtDashboardView& view = *dashboard.view;
        window.setContentView(&view);
        window.show();
        const auto expectAllTranslated = [&view](const char* state) {
            EXPECT_EQ(untranslated(view).join(" | ").toStdString(), "") << state;
        };
        expectAllTranslated("unpaired");
        view.setFilesWaiting(1, "plan.pdf");
        expectAllTranslated("a file waits");
        view.setFilesWaiting(2, "plan.pdf");
        expectAllTranslated("files wait");
        click(find(view, "devicesListIcon"));
        click(find(view, "settingsIcon"));
        dashboard.controller->didPickCastingDeviceWithIP("10.0.2.15", "0A00020F", "Meridian 65");
        expectAllTranslated("paired");
        view.showUpload("plan.pdf", std::make_shared<UploadUnderWay>());
        expectAllTranslated("uploading");
        view.fileUploadView().draggingEntered();
        expectAllTranslated("dragging");
        click(find(view, "castButtonView"));
        expectAllTranslated("casting");
        for (const TouchState state : {TouchState::noPort, TouchState::awaited, TouchState::missing,
                 TouchState::ignored, TouchState::works, TouchState::worksFromElsewhere}) {
            view.setTouchState(state, "10.0.2.99");
            expectAllTranslated("the line about touches");
        }
        view.setTouchObstacle(
            "No touch: the desktop's dialog was cancelled; turn touch on again to be asked again");
        expectAllTranslated("an obstacle");
        for (const auto& [message, informativeText] : dashboard.alerts.shown) {
            EXPECT_TRUE(shown(message).contains("§")) << message;
            EXPECT_TRUE(shown(informativeText).contains("§")) << informativeText;
        }
        EXPECT_EQ(dashboard.alerts.shown.size(), 1);
    }
    QCoreApplication::removeTranslator(&marker);
}

} // namespace
} // namespace companion::testing
