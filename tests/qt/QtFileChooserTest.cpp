#include "platform/qt/QtFileChooser.h"

#include "platform/qt/WidgetMainQueue.h"
#include "platform/testing/FakeAlerts.h"
#include "tests/qt/EventLoop.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QTemporaryDir>

namespace companion::testing {

/// Acts as the user who sees the dialog, with a home of its own.
class QtFileChooserTest : public ::testing::Test {
protected:
    QtFileChooserTest()
    {
        qputenv("XDG_CONFIG_HOME", m_home.path().toUtf8());
        QDir(m_home.path()).mkdir("Downloaded");
        QFile dirs(m_home.filePath("user-dirs.dirs"));
        dirs.open(QIODevice::WriteOnly);
        dirs.write("XDG_DOWNLOAD_DIR=\"" + downloads().toUtf8() + "\"\n");
    }
    ~QtFileChooserTest() override { qunsetenv("XDG_CONFIG_HOME"); }

    QString downloads() const { return m_home.filePath("Downloaded"); }

    QString makeFile(const QString& name) const
    {
        const QString path = downloads() + "/" + name;
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        return path;
    }

    void whenShown(std::function<void(QFileDialog&)> act)
    {
        QObject::connect(&m_user, &QTimer::timeout, &m_user, [this, act = std::move(act)] {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (!dialog || !dialog->isVisible())
                return;
            m_user.stop();
            ++m_shown;
            act(*dialog);
        });
        m_user.start(1ms);
    }

    /// Chooses the file and presses Open.
    void whenShownChoose(const QString& path)
    {
        whenShown([path](QFileDialog& dialog) {
            dialog.selectFile(path);
            QTimer::singleShot(1s, &dialog, [] { // what the dialog has against it, if it says so
                if (auto* complaint = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
                    complaint->reject();
            });
            QMetaObject::invokeMethod(&dialog, "accept");
            if (dialog.isVisible()) // Open was refused: give up
                dialog.reject();
        });
    }

    std::optional<FileUrl> run() { return m_chooser.runOpenPanel({"png", "pdf"}, UserFolder::downloads); }

    QTemporaryDir m_home;
    WidgetMainQueue m_queue;
    Transcript m_transcript;
    FakeAlerts m_alerts{m_transcript};
    std::unique_ptr<QWidget> m_window = std::make_unique<QWidget>();
    QtFileChooser m_chooser{m_queue, m_alerts, *m_window};
    QTimer m_user;
    int m_shown = 0;
};

TEST_F(QtFileChooserTest, OneFileOfTheGivenTypesIsAskedForInTheUsersDownloadsFolder)
{
    whenShown([this](QFileDialog& dialog) {
        EXPECT_EQ(dialog.fileMode(), QFileDialog::ExistingFile);
        EXPECT_EQ(dialog.acceptMode(), QFileDialog::AcceptOpen);
        EXPECT_TRUE(dialog.testOption(QFileDialog::ReadOnly));
        EXPECT_EQ(dialog.nameFilters(), QStringList("Files for the panel (*.png *.pdf)"));
        EXPECT_EQ(dialog.directory().canonicalPath(), QDir(downloads()).canonicalPath());
        EXPECT_EQ(dialog.windowModality(), Qt::ApplicationModal);
        dialog.reject();
    });
    EXPECT_EQ(run(), std::nullopt);
    EXPECT_EQ(m_shown, 1);
    EXPECT_EQ(m_transcript.take(), "");
}

TEST_F(QtFileChooserTest, WithoutADownloadsFolderItStartsAtHome)
{
    QDir(downloads()).removeRecursively();
    whenShown([](QFileDialog& dialog) {
        EXPECT_EQ(dialog.directory().canonicalPath(), QDir::home().canonicalPath());
        dialog.reject();
    });
    run();
    EXPECT_EQ(m_shown, 1);
}

TEST_F(QtFileChooserTest, ConfirmedChoiceIsTheFilesUrl)
{
    const QString path = makeFile(QString::fromUtf8("Stra\xC3\x9F"
                                                    "e 1|2.pdf"));
    whenShownChoose(path);
    const auto url = run();
    ASSERT_TRUE(url);
    EXPECT_EQ(url->path(), path.toStdString());
    EXPECT_TRUE(url->text().ends_with("/Stra%C3%9Fe%201%7C2.pdf"));
    EXPECT_EQ(m_shown, 1);
}

TEST_F(QtFileChooserTest, FoldersAreNoChoice)
{
    QDir(downloads()).mkdir("folder.png");
    whenShownChoose(downloads() + "/folder.png");
    EXPECT_EQ(run(), std::nullopt);
    EXPECT_EQ(m_transcript.take(), "");
}

TEST_F(QtFileChooserTest, FileOfAnotherTypeIsNoChoiceEvenWhenItsNameIsTypedIn)
{
    makeFile("notes.txt");
    whenShown([](QFileDialog& dialog) {
        dialog.findChild<QLineEdit*>("fileNameEdit")->setText("notes.txt");
        QMetaObject::invokeMethod(&dialog, "accept");
        ASSERT_FALSE(dialog.isVisible()) << "the dialog itself lets it pass";
    });
    EXPECT_EQ(run(), std::nullopt);
    EXPECT_EQ(m_transcript.take(), "alert Cannot upload");
    EXPECT_EQ(m_alerts.shown.back().informativeText,
        "Choose one file on this computer that is of one of these kinds: png, pdf.");
}

TEST_F(QtFileChooserTest, JobsWaitUntilTheDialogIsClosed)
{
    bool hasRun = false;
    m_queue.async([&] { hasRun = true; });
    whenShown([&](QFileDialog& dialog) {
        spinFor(30ms);
        EXPECT_FALSE(hasRun);
        dialog.reject();
    });
    run();
    EXPECT_FALSE(hasRun);
    EXPECT_TRUE(spinUntil([&] { return hasRun; }));
}

TEST_F(QtFileChooserTest, WindowThatIsDestroyedUnderTheDialogTakesItAway)
{
    m_window->show();
    whenShown([&](QFileDialog& dialog) {
        EXPECT_EQ(dialog.parentWidget(), m_window.get());
        m_window.reset();
    });
    EXPECT_EQ(run(), std::nullopt);
    EXPECT_EQ(m_shown, 1);
}

} // namespace companion::testing
