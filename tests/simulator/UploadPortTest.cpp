#include "tests/simulator/SimulatorProcess.h"

#include <QCryptographicHash>
#include <QJsonArray>

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

namespace companion::testing {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr auto boundary = "Boundary-3B241101-E2BB-4255-8CAF-4136C566A962";

std::string multipart(const std::string& name, const std::string& bytes, const std::string& field = "my-file")
{
    const std::string line = "--" + std::string(boundary);
    return line + "\r\nContent-Disposition: form-data; name=\"" + field + "\"; filename=\"" + name
        + "\"\r\nContent-Type: image/png\r\n\r\n" + bytes + "\r\n" + line + "--\r\n";
}

std::string uploadFields(const std::string& name)
{
    return "Content-Type: multipart/form-data; boundary=" + std::string(boundary) + "\r\nsrcfilename: " + name
        + "\r\nfiletype: image/png\r\n";
}

/// Bytes of every value, among them what looks like the beginning of a boundary.
std::string fileBytes(std::size_t size)
{
    std::string bytes;
    unsigned state = 12345;
    while (bytes.size() < size) {
        state = state * 1664525 + 1013904223;
        bytes.push_back(static_cast<char>(state >> 24));
        if (state % 5000 == 0)
            bytes += "\r\n--Boundary-3B241101-E2BB";
    }
    bytes.resize(size);
    return bytes;
}

std::string contentOf(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

fs::path newFolder()
{
    std::string pattern = (fs::temp_directory_path() / "uploads-XXXXXX").string();
    return mkdtemp(pattern.data());
}

std::uint16_t uploadPortOf(ChildProcess& simulator)
{
    EXPECT_TRUE(simulator.waitForOutput("uploads on ") && simulator.waitForOutput("\n"));
    const std::string ready = simulator.output();
    return static_cast<std::uint16_t>(std::stoi(ready.substr(ready.find("uploads on ") + 11)));
}

class UploadPortTest : public ::testing::Test {
protected:
    ~UploadPortTest() override { fs::remove_all(folder); }

    HttpReply upload(const std::string& name, const std::string& bytes) const
    {
        return post(uploadFields(name), multipart(name, bytes));
    }

    HttpReply post(const std::string& fields, const std::string& body) const
    {
        HttpClient client(panel.address(), panel.uploadPort());
        client.send(httpRequest("POST", "/uploadfile", body, fields));
        return client.receive();
    }

    void replyWith(const std::string& mode)
    {
        ASSERT_EQ(panel.post("/simulator/upload-reply", mode).status, 200);
    }

    std::vector<std::string> stored() const
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    QJsonObject uploads() const { return panel.state()["uploads"].toObject(); }
    QJsonObject lastUpload() const { return uploads()["list"].toArray().last().toObject(); }

    const fs::path folder = newFolder();
    SimulatorProcess panel{{"--no-announce", "--uploads", folder.string()}};
};

TEST_F(UploadPortTest, FileOf5000001BytesIsStoredAsItWasSent)
{
    const std::string bytes = fileBytes(5'000'001);
    EXPECT_EQ(upload("picture.png", bytes).status, 200);
    EXPECT_TRUE(contentOf(folder / "picture.png") == bytes);
}

TEST_F(UploadPortTest, StateTellsNamesTypesSizeAndSum)
{
    const std::string bytes = fileBytes(70'001);
    upload("Größe 1.png", bytes);
    const QJsonObject record = lastUpload();
    EXPECT_EQ(record["storedName"].toString(), "Größe 1.png");
    EXPECT_EQ(record["fileName"].toString(), "Größe 1.png");
    EXPECT_EQ(record["srcfilename"].toString(), "Größe 1.png");
    EXPECT_EQ(record["filetype"].toString(), "image/png");
    EXPECT_EQ(record["contentType"].toString(), "image/png");
    EXPECT_EQ(record["size"].toInt(), 70'001);
    EXPECT_EQ(record["from"].toString(), "127.0.0.1");
    EXPECT_EQ(record["sha256"].toString().toStdString(),
        QCryptographicHash::hash(QByteArray::fromStdString(bytes), QCryptographicHash::Sha256)
            .toHex()
            .toStdString());
}

TEST_F(UploadPortTest, EmptyFileIsAFile)
{
    EXPECT_EQ(upload("empty.txt", "").status, 200);
    EXPECT_EQ(stored(), std::vector<std::string>{"empty.txt"});
    EXPECT_EQ(lastUpload()["size"].toInt(-1), 0);
}

TEST_F(UploadPortTest, NothingIsReplaced)
{
    upload("a.png", "first");
    upload("a.png", "second");
    EXPECT_EQ(contentOf(folder / "a.png"), "first");
    EXPECT_EQ(contentOf(folder / "a (2).png"), "second");
}

TEST_F(UploadPortTest, NamesStayInsideTheFolderAndVisible)
{
    upload("../../outside.png", "x");
    upload(".hidden", "x");
    upload("C:\\Users\\a.png", "x");
    EXPECT_EQ(stored(), (std::vector<std::string>{"_.hidden", "a.png", "outside.png"}));
    EXPECT_FALSE(fs::exists(folder.parent_path() / "outside.png"));
}

TEST_F(UploadPortTest, SymbolicLinkOfThatNameIsNotFollowed)
{
    fs::create_symlink(folder / "target", folder / "link.png");
    EXPECT_EQ(upload("link.png", "x").status, 200);
    EXPECT_EQ(stored(), (std::vector<std::string>{"link (2).png", "link.png"}));
}

TEST_F(UploadPortTest, QuotationMarkInTheNameIsKept)
{
    upload("a\"b.png", "x");
    EXPECT_EQ(stored(), std::vector<std::string>{"a\"b.png"});
}

TEST_F(UploadPortTest, WithoutTheHeaderThePartNamesTheFile)
{
    post("Content-Type: multipart/form-data; boundary=" + std::string(boundary) + "\r\n",
        multipart("p.png", "x"));
    EXPECT_EQ(stored(), std::vector<std::string>{"p.png"});
}

TEST_F(UploadPortTest, InvalidBodiesAreRefusedAndLeaveNoFile)
{
    const std::string fields = uploadFields("a.png");
    const std::string whole = multipart("a.png", "some bytes");
    EXPECT_EQ(post(fields, "").status, 400);
    EXPECT_EQ(post(fields, "rubbish").status, 400);
    EXPECT_EQ(post(fields, whole.substr(0, whole.size() - 6)).status, 400);
    EXPECT_EQ(post(fields, whole.substr(0, whole.size() - 60)).status, 400);
    EXPECT_EQ(
        post(fields, multipart("a.png", "x", "file")).body, "the file part must be called \"my-file\"\n");
    EXPECT_EQ(post("Content-Type: multipart/form-data\r\n", whole).status, 400);
    EXPECT_EQ(post("Content-Type: text/plain\r\n", whole).status, 415);
    EXPECT_EQ(stored(), std::vector<std::string>());
    EXPECT_EQ(uploads()["count"].toInt(), 0);
}

TEST_F(UploadPortTest, SecondFilePartIsRefused)
{
    const std::size_t lastLine = std::string(boundary).size() + 6;
    for (const char* firstBytes : {"x", ""}) {
        std::string first = multipart("a.png", firstBytes);
        first.resize(first.size() - lastLine);
        EXPECT_EQ(post(uploadFields("a.png"), first + multipart("b.png", "y")).body, "more than one file\n");
    }
    EXPECT_EQ(stored(), std::vector<std::string>());
}

TEST_F(UploadPortTest, InterruptedUploadLeavesNoFile)
{
    {
        HttpClient client(panel.address(), panel.uploadPort());
        client.send(
            httpRequest("POST", "/uploadfile", multipart("a.png", fileBytes(300'000)), uploadFields("a.png"))
                .substr(0, 200'000));
    }
    EXPECT_TRUE(panel.process().waitForOutput("upload of \"a.png\" broken off by 127.0.0.1"));
    EXPECT_EQ(stored(), std::vector<std::string>());
}

TEST_F(UploadPortTest, OtherPathsAndMethodsAreRefused)
{
    for (const auto& [request, status] :
        {std::pair{httpRequest("POST", "/"), 404}, {httpRequest("POST", "/uploadfile/"), 404},
            {httpRequest("GET", "/uploadfile"), 405}, {httpRequest("GET", "/simulator/state"), 404}}) {
        HttpClient client(panel.address(), panel.uploadPort());
        client.send(request);
        EXPECT_EQ(client.receive().status, status) << request;
    }
}

TEST_F(UploadPortTest, StatusComesAfterTheBody)
{
    replyWith("status 500");
    EXPECT_EQ(upload("a.png", fileBytes(3'000'000)).status, 500);
    EXPECT_EQ(stored(), std::vector<std::string>());
}

TEST_F(UploadPortTest, EarlyStatusComesBeforeTheBody)
{
    replyWith("status 413 early");
    HttpClient client(panel.address(), panel.uploadPort());
    const std::string request =
        httpRequest("POST", "/uploadfile", multipart("a.png", fileBytes(3'000'000)), uploadFields("a.png"));
    client.send(request.substr(0, request.find("\r\n\r\n") + 4));
    EXPECT_EQ(client.receive().status, 413);
}

TEST_F(UploadPortTest, ResetIsSeenAsConnectionReset)
{
    replyWith("reset");
    const HttpReply reply = upload("a.png", "x");
    EXPECT_TRUE(reply.isReset);
    EXPECT_EQ(reply.status, 0);
}

TEST_F(UploadPortTest, CutStoresTheFileAndBreaksItsAnswerOff)
{
    replyWith("cut");
    const HttpReply reply = upload("a.png", "x");
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body.size(), 50U);
    EXPECT_TRUE(reply.isClosed);
    EXPECT_EQ(stored(), std::vector<std::string>{"a.png"});
}

TEST_F(UploadPortTest, SilenceLastsUntilTheModeChanges)
{
    replyWith("silence");
    HttpClient client(panel.address(), panel.uploadPort());
    client.send(httpRequest("POST", "/uploadfile", multipart("a.png", "x"), uploadFields("a.png")));
    EXPECT_EQ(client.receive(300ms).status, 0);
    replyWith("ok");
    EXPECT_EQ(client.receive().status, 200);
    EXPECT_EQ(stored(), std::vector<std::string>{"a.png"});
}

TEST_F(UploadPortTest, SlowReadsOneByteASecond)
{
    replyWith("slow");
    HttpClient client(panel.address(), panel.uploadPort());
    client.send("POST /uploadfile HTTP/1.1\r\nHost: panel\r\n" + uploadFields("a.png")
        + "Content-Length: 3\r\n\r\nabc");
    EXPECT_EQ(client.receive(2500ms).status, 0);
    EXPECT_EQ(client.receive().status, 400); // it is no multipart body, told once all of it is read
}

TEST_F(UploadPortTest, FullDiskIsA500AfterTheBody)
{
    replyWith("disk-full");
    const HttpReply reply = upload("a.png", fileBytes(300'000));
    EXPECT_EQ(reply.status, 500);
    EXPECT_EQ(reply.body, "cannot store the file: No space left on device\n");
    EXPECT_EQ(stored(), std::vector<std::string>());
}

TEST_F(UploadPortTest, WriteThatFailsIsA500AndLeavesNothing)
{
    const std::string command = std::string("ulimit -f 8; exec ") + PANEL_SIMULATOR
        + " --no-announce --address 127.0.0.1 --service-port 0 --upload-port 0 --uploads " + folder.string();
    ChildProcess limited({"sh", "-c", command});
    HttpClient client("127.0.0.1", uploadPortOf(limited));
    client.send(
        httpRequest("POST", "/uploadfile", multipart("a.png", fileBytes(300'000)), uploadFields("a.png")));
    const HttpReply reply = client.receive();
    EXPECT_EQ(reply.status, 500);
    EXPECT_EQ(reply.body, "cannot store the file: File too large\n");
    EXPECT_EQ(stored(), std::vector<std::string>());
}

TEST_F(UploadPortTest, FolderThatIsGoneIsA500)
{
    fs::remove_all(folder);
    const HttpReply reply = upload("a.png", "x");
    EXPECT_EQ(reply.status, 500);
    EXPECT_EQ(reply.body, "cannot store the file: No such file or directory\n");
    EXPECT_EQ(uploads()["count"].toInt(), 0);
}

TEST_F(UploadPortTest, FilesHaveThePermissionsThatTheUmaskLeaves)
{
    for (const auto& [umask, permissions] : {std::pair{"027", 0640U}, {"000", 0666U}, {"077", 0600U}}) {
        const fs::path own = folder / umask;
        ChildProcess process({"sh", "-c",
            std::string("umask ") + umask + "; exec " + PANEL_SIMULATOR
                + " --no-announce --address 127.0.0.1 --service-port 0 --upload-port 0 --uploads "
                + own.string()});
        HttpClient client("127.0.0.1", uploadPortOf(process));
        client.send(httpRequest("POST", "/uploadfile", multipart("a.png", "x"), uploadFields("a.png")));
        ASSERT_EQ(client.receive().status, 200);
        EXPECT_EQ(static_cast<unsigned>(fs::status(own / "a.png").permissions()), permissions) << umask;
    }
}

TEST_F(UploadPortTest, WithoutAFolderFilesAreCountedOnly)
{
    SimulatorProcess counting;
    HttpClient client(counting.address(), counting.uploadPort());
    client.send(httpRequest("POST", "/uploadfile", multipart("a.png", "abc"), uploadFields("a.png")));
    EXPECT_EQ(client.receive().status, 200);
    const QJsonObject record = counting.state()["uploads"].toObject()["list"].toArray().last().toObject();
    EXPECT_EQ(record["storedName"].toString(), "");
    EXPECT_EQ(record["size"].toInt(), 3);
    EXPECT_EQ(
        record["sha256"].toString(), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

} // namespace
} // namespace companion::testing
