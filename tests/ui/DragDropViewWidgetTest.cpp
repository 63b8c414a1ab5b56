#include "ui/DragDropViewWidget.h"
#include "platform/testing/FakeAlerts.h"
#include "platform/testing/FakeLog.h"
#include "platform/testing/FakeMainQueue.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDropEvent>
#include <QEventLoop>
#include <QFile>
#include <QMimeData>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrl>

namespace companion::testing {
namespace {

class RecordingDelegate : public DragDropViewDelegate {
public:
    explicit RecordingDelegate(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    void uploadFileURL(const FileUrl& url) override { m_transcript.add("upload " + url.lastPathComponent()); }
    void draggingBegin() override { m_transcript.add("begin"); }
    void draggingInprogress() override { m_transcript.add("move"); }
    void draggingFinished() override { m_transcript.add("finished"); }

private:
    Transcript& m_transcript;
};

/// A drop area that is told of drags as the toolkit does it. Sources offer `m_actions`, which is every action unless a
/// test says otherwise, and propose to move.
class DragDropViewWidgetTest : public ::testing::Test {
protected:
    DragDropViewWidgetTest()
    {
        m_model.init();
        m_model.setDelegate(m_delegate);
        m_widget.setModel(m_model);
        m_widget.resize(300, 200);
        QFile file(m_folder.filePath("a.png"));
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        m_file.setUrls({QUrl::fromLocalFile(file.fileName())});
        m_text.setText("only text");
        m_emptyImage.setData("image/png", "");
        m_emptyImage.setUrls(m_file.urls());
    }

    template <typename Event> std::string answerTo(const QMimeData& data)
    {
        Event event(place(), m_actions, &data, Qt::LeftButton, Qt::NoModifier);
        event.setDropAction(Qt::MoveAction);
        event.ignore();
        QApplication::sendEvent(&m_widget, &event);
        if (!event.isAccepted())
            return "refused";
        return event.dropAction() == Qt::CopyAction ? "copy" : "another action";
    }
    std::string enter(const QMimeData& data) { return answerTo<QDragEnterEvent>(data); }
    std::string move(const QMimeData& data) { return answerTo<QDragMoveEvent>(data); }
    std::string drop(const QMimeData& data) { return answerTo<QDropEvent>(data); }

    /// An alert opens: modal to the drop area's window.
    void block()
    {
        QEvent event(QEvent::WindowBlocked);
        QApplication::sendEvent(&m_widget, &event);
    }

    void leave()
    {
        QDragLeaveEvent event;
        QApplication::sendEvent(&m_widget, &event);
    }

    std::string taken() { return m_transcript.take(", "); }
    static QPoint place() { return {151, 97}; }

    Qt::DropActions m_actions = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
    QTemporaryDir m_folder;
    QMimeData m_file;
    QMimeData m_text;
    QMimeData m_emptyImage;
    Transcript m_transcript;
    FakeAlerts m_alerts{m_transcript};
    FakeSystemLog m_log{m_transcript};
    FakeMainQueue m_queue;
    std::shared_ptr<RecordingDelegate> m_delegate = std::make_shared<RecordingDelegate>(m_transcript);
    DragDropView m_model{m_alerts, m_log, m_queue};
    DragDropViewWidget m_widget;
};

TEST_F(DragDropViewWidgetTest, TakesDrags)
{
    EXPECT_TRUE(m_widget.acceptDrops());
}

TEST_F(DragDropViewWidgetTest, ADragOfAFileMayOnlyBeCopied)
{
    EXPECT_EQ(enter(m_file), "copy");
    EXPECT_EQ(move(m_file), "copy");
    EXPECT_EQ(drop(m_file), "copy");
}

TEST_F(DragDropViewWidgetTest, ADragThatMayOnlyBeMovedOrLinkedIsRefusedAtTheDoor)
{
    for (const auto action : {Qt::MoveAction, Qt::LinkAction}) {
        m_actions = action;
        EXPECT_EQ(enter(m_file), "refused");
        EXPECT_EQ(taken(), "");
    }
}

TEST_F(DragDropViewWidgetTest, ADragThatMayNoLongerBeCopiedIsRefusedAndItsDropLeadsToNothing)
{
    EXPECT_EQ(enter(m_file), "copy");
    m_actions = Qt::MoveAction;
    EXPECT_EQ(move(m_file), "refused");
    EXPECT_EQ(drop(m_file), "refused");
    m_queue.runPending();
    EXPECT_EQ(taken(), "begin, move, log draggingEnded, finished");
}

TEST_F(DragDropViewWidgetTest, EnteringMovingAndLeavingAreTold)
{
    enter(m_file);
    move(m_file);
    move(m_file);
    leave();
    EXPECT_EQ(taken(), "begin, move, move, finished");
}

TEST_F(DragDropViewWidgetTest, AnAlertThatOpensUnderADragEndsItForTheDropArea)
{
    enter(m_file);
    block();
    EXPECT_EQ(taken(), "begin, finished");
    leave();
    EXPECT_EQ(taken(), "");
}

TEST_F(DragDropViewWidgetTest, ADragThatMovesOnAfterAnAlertEntersAnew)
{
    enter(m_file);
    block();
    taken();
    EXPECT_EQ(move(m_text), "refused") << "it may be another drag by now";
    EXPECT_EQ(taken(), "");
    EXPECT_EQ(move(m_file), "copy");
    EXPECT_EQ(move(m_file), "copy");
    EXPECT_EQ(taken(), "begin, move");
}

TEST_F(DragDropViewWidgetTest, AFileDroppedUnderAnAlertIsUploadedOnceItIsClosed)
{
    enter(m_file);
    block();
    taken();
    EXPECT_EQ(drop(m_file), "copy");
    EXPECT_EQ(taken(), "log draggingEnded, finished");
    m_queue.runPending();
    EXPECT_EQ(taken(), "upload a.png");
}

TEST_F(DragDropViewWidgetTest, AnAlertWithoutADragIsNoNews)
{
    block();
    EXPECT_EQ(taken(), "");
    enter(m_file);
    drop(m_file);
    m_queue.runPending();
    taken();
    block();
    EXPECT_EQ(taken(), "");
}

TEST_F(DragDropViewWidgetTest, ADragOfNoRegisteredTypeIsRefusedAtTheDoor)
{
    EXPECT_EQ(enter(m_text), "refused");
    EXPECT_EQ(taken(), "");
}

TEST_F(DragDropViewWidgetTest, BeforeTypesAreRegisteredEveryDragIsRefused)
{
    DragDropView unregistered(m_alerts, m_log, m_queue);
    m_widget.setModel(unregistered);
    EXPECT_EQ(enter(m_file), "refused");
}

TEST_F(DragDropViewWidgetTest, WithoutAModelEveryDragIsRefused)
{
    DragDropViewWidget bare;
    QDragEnterEvent event(place(), m_actions, &m_file, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&bare, &event);
    EXPECT_FALSE(event.isAccepted());
}

TEST_F(DragDropViewWidgetTest, AFileIsUploadedOnceTheSourceHasItsAnswer)
{
    enter(m_file);
    taken();
    EXPECT_EQ(drop(m_file), "copy");
    EXPECT_EQ(taken(), "log draggingEnded, finished");
    m_queue.runPending();
    EXPECT_EQ(taken(), "upload a.png");
}

TEST_F(DragDropViewWidgetTest, ADropWithoutDataIsRefusedAndThenExplained)
{
    enter(m_emptyImage);
    taken();
    EXPECT_EQ(drop(m_emptyImage), "refused");
    EXPECT_EQ(taken(), "log draggingEnded, finished");
    m_queue.runPending();
    EXPECT_EQ(taken(), "alert Paste Error");
}

TEST_F(DragDropViewWidgetTest, WhatADropOffersIsReadBeforeTheSourceMayForgetIt)
{
    {
        QMimeData shortLived;
        shortLived.setUrls(m_file.urls());
        enter(shortLived);
        drop(shortLived);
    }
    taken();
    m_queue.runPending();
    EXPECT_EQ(taken(), "upload a.png");
}

TEST_F(DragDropViewWidgetTest, AFileIsNotUploadedWithinAnAlertsOwnEventLoop)
{
    enter(m_file);
    drop(m_file);
    taken();
    QEventLoop alert; // open while the main queue stands still
    QTimer::singleShot(0, &alert, &QEventLoop::quit);
    alert.exec();
    EXPECT_EQ(taken(), "");
    m_queue.runPending();
    EXPECT_EQ(taken(), "upload a.png");
}

} // namespace
} // namespace companion::testing
