#include "ui/MimePasteboard.h"
#include "platform/testing/FakeAlerts.h"
#include "platform/testing/FakeLog.h"
#include "platform/testing/FakeMainQueue.h"
#include "tests/ui/DocumentsPortal.h"

#include <chrono>
#include <cstdio>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDBusConnection>
#include <QFile>
#include <QMimeData>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QUrl>

namespace companion::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// For as long as it lives the superuser is an ordinary user, who cannot read everything.
class OrdinaryUser {
public:
    OrdinaryUser() { m_isRoot = geteuid() == 0 && setresuid(65'534, 65'534, 0) == 0; }
    ~OrdinaryUser()
    {
        if (m_isRoot && setresuid(0, 0, 0) != 0)
            std::abort();
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    bool m_isRoot = false;
};

class MimePasteboardTest : public ::testing::Test {
protected:
    MimePasteboardTest() { chmod(m_folder.path().toUtf8(), 0755); }

    std::string pathOf(const std::string& name) const { return m_folder.path().toStdString() + "/" + name; }

    /// A new file's path.
    std::string newFile(const char* name)
    {
        QFile file(QString::fromStdString(pathOf(name)));
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        return pathOf(name);
    }

    /// A new file's URL.
    QUrl fileUrl(const char* name) { return localUrl(newFile(name)); }

    static QUrl localUrl(const std::string& path)
    {
        return QUrl::fromLocalFile(QString::fromStdString(path));
    }

    std::vector<DragType> typesOf(const QList<QUrl>& urls)
    {
        m_data.setUrls(urls);
        return MimePasteboard(m_data, MimePasteboard::Stage::drag).types();
    }

    void setPortalKey(const char* key = "key of the drag")
    {
        m_data.setData("application/vnd.portal.filetransfer", key);
    }

    std::optional<std::string> dataFor(DragType type)
    {
        return MimePasteboard(m_data, MimePasteboard::Stage::drop).dataForType(type);
    }

    /// What the drop area makes of it: "upload a.png" or a line, and "refused" if it is.
    std::string drop()
    {
        struct Delegate : DragDropViewDelegate {
            void uploadFileURL(const FileUrl& url) override
            {
                transcript.add("upload " + url.lastPathComponent());
            }
            void draggingBegin() override { }
            void draggingInprogress() override { }
            void draggingFinished() override { }
            Transcript transcript;
        };
        const auto delegate = std::make_shared<Delegate>();
        FakeAlerts alerts(delegate->transcript);
        FakeSystemLog log(delegate->transcript);
        FakeMainQueue queue;
        DragDropView view(alerts, log, queue);
        view.init();
        view.setDelegate(delegate);
        if (!view.performDragOperation(MimePasteboard(m_data, MimePasteboard::Stage::drop)))
            delegate->transcript.add("refused");
        queue.runPending();
        return delegate->transcript.take("; ");
    }

    QTemporaryDir m_folder;
    QMimeData m_data;
};

TEST_F(MimePasteboardTest, ADragOfNothingOffersNothing)
{
    EXPECT_THAT(MimePasteboard(m_data, MimePasteboard::Stage::drag).types(), IsEmpty());
}

TEST_F(MimePasteboardTest, TextAndOtherImagesAreNotAmongTheTypes)
{
    m_data.setText("http://example.com/a.png");
    m_data.setHtml("<b>a</b>");
    m_data.setData("image/jpeg", "jpeg");
    EXPECT_THAT(MimePasteboard(m_data, MimePasteboard::Stage::drag).types(), IsEmpty());
}

TEST_F(MimePasteboardTest, TypesComeInTheOrderOfTheFormatsEachOnce)
{
    m_data.setData("application/pdf", "pdf");
    m_data.setData("text/plain", "text");
    m_data.setUrls({fileUrl("a.png")});
    m_data.setData("image/png", "png");
    EXPECT_THAT(MimePasteboard(m_data, MimePasteboard::Stage::drag).types(),
        ElementsAre(DragType::pdf, DragType::fileUrl, DragType::url, DragType::pngImage));
}

TEST_F(MimePasteboardTest, ImageAndPdfAreHandedOverByteForByte)
{
    m_data.setData("image/png", QByteArray("\x89PNG\0\xff", 6));
    m_data.setData("application/pdf", QByteArray("%PDF\0", 5));
    EXPECT_EQ(dataFor(DragType::pngImage), std::string("\x89PNG\0\xff", 6));
    EXPECT_EQ(dataFor(DragType::pdf), std::string("%PDF\0", 5));
}

TEST_F(MimePasteboardTest, AnOfferedImageThatIsEmptyHasNoBytes)
{
    m_data.setData("image/png", "");
    EXPECT_THAT(MimePasteboard(m_data, MimePasteboard::Stage::drag).types(), ElementsAre(DragType::pngImage));
    EXPECT_EQ(dataFor(DragType::pngImage).value_or(""), "");
}

TEST_F(MimePasteboardTest, AFileIsAFileUrlAndAUrl)
{
    EXPECT_THAT(typesOf({fileUrl("\xC3\xBC|\" a.png")}), ElementsAre(DragType::fileUrl, DragType::url));
    const auto url = FileUrl::fromText(dataFor(DragType::fileUrl).value_or(""));
    ASSERT_TRUE(url);
    EXPECT_EQ(url->path(), pathOf("\xC3\xBC|\" a.png"));
}

TEST_F(MimePasteboardTest, AFolderIsAUrlOnly)
{
    EXPECT_THAT(typesOf({localUrl(m_folder.path().toStdString())}), ElementsAre(DragType::url));
}

TEST_F(MimePasteboardTest, ADeviceIsAUrlOnly)
{
    EXPECT_THAT(typesOf({localUrl("/dev/zero")}), ElementsAre(DragType::url));
}

TEST_F(MimePasteboardTest, APipeIsAUrlOnly)
{
    ASSERT_EQ(mkfifo(pathOf("pipe.png").c_str(), 0644), 0);
    EXPECT_THAT(typesOf({localUrl(pathOf("pipe.png"))}), ElementsAre(DragType::url));
}

TEST_F(MimePasteboardTest, ALinkIsWhatItLeadsTo)
{
    fileUrl("file.png");
    ASSERT_EQ(symlink("file.png", pathOf("to-file.png").c_str()), 0);
    ASSERT_EQ(symlink("/dev/zero", pathOf("to-device.png").c_str()), 0);
    ASSERT_EQ(symlink("missing.png", pathOf("to-nothing.png").c_str()), 0);
    EXPECT_THAT(typesOf({localUrl(pathOf("to-file.png"))}), ElementsAre(DragType::fileUrl, DragType::url));
    EXPECT_THAT(typesOf({localUrl(pathOf("to-device.png"))}), ElementsAre(DragType::url));
    EXPECT_THAT(typesOf({localUrl(pathOf("to-nothing.png"))}), ElementsAre(DragType::url));
}

TEST_F(MimePasteboardTest, AFileThatCannotBeReadIsAFileUrlWhichTheUserIsToldOfLater)
{
    const QUrl url = fileUrl("secret.png");
    ASSERT_EQ(chmod(pathOf("secret.png").c_str(), 0), 0);
    const OrdinaryUser user;
    EXPECT_THAT(typesOf({url}), ElementsAre(DragType::fileUrl, DragType::url));
}

TEST_F(MimePasteboardTest, AFileThatIsNotThereIsAUrlOnly)
{
    EXPECT_THAT(typesOf({localUrl(pathOf("missing.png"))}), ElementsAre(DragType::url));
}

TEST_F(MimePasteboardTest, AnAddressInTheWebIsAUrlOnly)
{
    EXPECT_THAT(typesOf({QUrl("http://example.com/a%20b.png")}), ElementsAre(DragType::url));
    EXPECT_EQ(dataFor(DragType::url), "http://example.com/a%20b.png");
}

TEST_F(MimePasteboardTest, OfSeveralUrlsTheFirstCounts)
{
    const QUrl file = fileUrl("a.png");
    const QUrl folder = localUrl(m_folder.path().toStdString());
    EXPECT_THAT(typesOf({folder, file}), ElementsAre(DragType::url));
    EXPECT_THAT(typesOf({file, folder}), ElementsAre(DragType::fileUrl, DragType::url));
    EXPECT_EQ(dataFor(DragType::fileUrl), file.toEncoded().toStdString());
}

TEST_F(MimePasteboardTest, AnEmptyListOfUrlsIsAUrlWithoutData)
{
    m_data.setData("text/uri-list", "");
    EXPECT_THAT(MimePasteboard(m_data, MimePasteboard::Stage::drag).types(), ElementsAre(DragType::url));
    EXPECT_EQ(dataFor(DragType::url), std::nullopt);
}

TEST_F(MimePasteboardTest, AFileWhoseNameIsNoTextIsAFileUrlOfTheSameBytes)
{
    const std::string path = pathOf("caf\xE9 \x80.png");
    std::ofstream(path) << "image";
    const QByteArray encoded = QUrl::fromLocalFile(m_folder.path()).toEncoded() + "/caf%E9%20%80.png";
    EXPECT_THAT(typesOf({QUrl::fromEncoded(encoded)}), ElementsAre(DragType::fileUrl, DragType::url));
    const auto url = FileUrl::fromText(dataFor(DragType::fileUrl).value_or(""));
    ASSERT_TRUE(url);
    EXPECT_EQ(url->path(), path);
    std::remove(path.c_str()); // the toolkit cannot
}

TEST_F(MimePasteboardTest, AFileOfThisComputerMayBeCalledSo)
{
    QUrl url = fileUrl("a.png");
    for (const QString& host : {QSysInfo::machineHostName(), QStringLiteral("localhost")}) {
        url.setHost(host);
        EXPECT_THAT(typesOf({url}), ElementsAre(DragType::fileUrl, DragType::url)) << host.toStdString();
        const auto file = FileUrl::fromText(dataFor(DragType::fileUrl).value_or(""));
        ASSERT_TRUE(file);
        EXPECT_EQ(file->path(), pathOf("a.png"));
    }
    url.setHost("another.example.com");
    EXPECT_THAT(typesOf({url}), ElementsAre(DragType::url));
}

TEST_F(MimePasteboardTest, AKeyOfThePortalIsAFileUrlThatThePortalKnows)
{
    const std::string path = newFile("\xC3\xBC b.png");
    const DocumentsPortal portal(
        {QString::fromStdString(path), QStringLiteral("/second.png")}, /*isSilent=*/false);
    setPortalKey();
    EXPECT_THAT(MimePasteboard(m_data, MimePasteboard::Stage::drag).types(),
        ElementsAre(DragType::fileUrl, DragType::url));
    const auto url = FileUrl::fromText(dataFor(DragType::fileUrl).value_or(""));
    ASSERT_TRUE(url);
    EXPECT_EQ(url->path(), path);
}

TEST_F(MimePasteboardTest, ADropOfAKeyAloneAsksThePortalOnce)
{
    newFile("a.png");
    const DocumentsPortal portal({m_folder.filePath("a.png")}, /*isSilent=*/false);
    setPortalKey();
    EXPECT_EQ(drop(), "upload a.png") << "which it would not be if the portal were asked a second time";
}

TEST_F(MimePasteboardTest, WhatThePortalHandsOverIsAFileUrlOnlyIfItIsAFile)
{
    ASSERT_EQ(mkfifo(pathOf("pipe.png").c_str(), 0644), 0);
    setPortalKey();
    ASSERT_TRUE(QDBusConnection::sessionBus().isConnected()); // which an ordinary user could not be later
    for (const char* name : {"", "pipe.png", "missing.png"}) {
        const DocumentsPortal portal({m_folder.filePath(name)}, /*isSilent=*/false);
        const OrdinaryUser user;
        EXPECT_EQ(drop(), "log URL") << name;
    }
}

TEST_F(MimePasteboardTest, AKeyMayEndWithANul)
{
    newFile("a.png");
    const DocumentsPortal portal({m_folder.filePath("a.png")}, /*isSilent=*/false);
    m_data.setData("application/vnd.portal.filetransfer", QByteArray("key of the drag\0", 16));
    EXPECT_EQ(dataFor(DragType::fileUrl), localUrl(pathOf("a.png")).toEncoded().toStdString());
}

TEST_F(MimePasteboardTest, ThePortalIsAskedEvenIfAUrlIsOfferedAsWell)
{
    newFile("inside.png");
    const DocumentsPortal portal({m_folder.filePath("inside.png")}, /*isSilent=*/false);
    m_data.setUrls({fileUrl("outside.png")});
    setPortalKey();
    EXPECT_EQ(dataFor(DragType::fileUrl), localUrl(pathOf("inside.png")).toEncoded().toStdString());
}

TEST_F(MimePasteboardTest, AFolderFromThePortalIsNoFileEvenIfOneIsOfferedAsWell)
{
    const DocumentsPortal portal({m_folder.path()}, /*isSilent=*/false);
    m_data.setUrls({fileUrl("outside.png")});
    setPortalKey();
    EXPECT_EQ(drop(), "log URL");
}

TEST_F(MimePasteboardTest, AFileBesideAKeyThatThePortalRefusesIsTakenInstead)
{
    const DocumentsPortal portal({"/a.png"}, /*isSilent=*/false);
    m_data.setUrls({fileUrl("outside.png")});
    setPortalKey("another key");
    EXPECT_EQ(drop(), "upload outside.png");
}

TEST_F(MimePasteboardTest, AFolderBesideAKeyThatThePortalRefusesIsNoFile)
{
    m_data.setUrls({localUrl(m_folder.path().toStdString())});
    setPortalKey();
    EXPECT_EQ(dataFor(DragType::fileUrl), std::nullopt);
}

TEST_F(MimePasteboardTest, AKeyThatThePortalRefusesHasNoData)
{
    const DocumentsPortal portal({"/a.png"}, /*isSilent=*/false);
    setPortalKey("another key");
    EXPECT_EQ(dataFor(DragType::fileUrl), std::nullopt);
}

TEST_F(MimePasteboardTest, AKeyForNoFilesHasNoData)
{
    const DocumentsPortal portal({}, /*isSilent=*/false);
    setPortalKey();
    EXPECT_EQ(dataFor(DragType::fileUrl), std::nullopt);
}

TEST_F(MimePasteboardTest, AKeyWithoutAPortalHasNoDataAtOnce)
{
    setPortalKey();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(dataFor(DragType::fileUrl), std::nullopt);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 900ms);
}

TEST_F(MimePasteboardTest, APortalThatDoesNotAnswerIsWaitedForASecond)
{
    const DocumentsPortal portal({}, /*isSilent=*/true);
    setPortalKey();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(dataFor(DragType::fileUrl), std::nullopt);
    const auto taken = std::chrono::steady_clock::now() - start;
    EXPECT_GE(taken, 900ms);
    EXPECT_LT(taken, 3s);
}

TEST_F(MimePasteboardTest, AWholeDropWaitsNoMoreThanThatSecond)
{
    const DocumentsPortal portal({}, /*isSilent=*/true);
    setPortalKey();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(drop(), "refused; alert Paste Error");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1900ms);
    m_data.setUrls({fileUrl("a.png")});
    EXPECT_EQ(drop(), "upload a.png");
}

} // namespace
} // namespace companion::testing
