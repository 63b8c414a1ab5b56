#include "tests/simulator/SimulatorProcess.h"
#include "tests/simulator/TouchListener.h"

#include <QJsonArray>

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>

namespace companion::testing {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;

const std::string png("\x89PNG\r\n\x1A\n\0\0\0\rIHDR and so on", 26);

class PageTest : public ::testing::Test {
protected:
    ~PageTest() override { fs::remove_all(folder); }

    HttpReply send(const std::string& method, const std::string& target, const std::string& fields,
        const std::string& body = "") const
    {
        HttpClient client(panel.address(), panel.servicePort());
        client.send(method + " " + target + " HTTP/1.1\r\n" + fields
            + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
        return client.receive();
    }

    std::string ownHost() const { return panel.address() + ":" + std::to_string(panel.servicePort()); }

    /// The name that it was stored under.
    std::string upload(const std::string& name, const std::string& bytes) const
    {
        const std::string body =
            "--Boundary-1\r\nContent-Disposition: form-data; name=\"my-file\"; filename=\"" + name
            + "\"\r\nContent-Type: image/png\r\n\r\n" + bytes + "\r\n--Boundary-1--\r\n";
        HttpClient client(panel.address(), panel.uploadPort());
        client.send(httpRequest(
            "POST", "/uploadfile", body, "Content-Type: multipart/form-data; boundary=Boundary-1\r\n"));
        EXPECT_EQ(client.receive().status, 200);
        return panel.state()["uploads"]
            .toObject()["list"]
            .toArray()
            .last()["storedName"]
            .toString()
            .toStdString();
    }

    static std::string newFolder()
    {
        std::string pattern = (fs::temp_directory_path() / "pictures-XXXXXX").string();
        return mkdtemp(pattern.data());
    }

    const std::string folder = newFolder();
    SimulatorProcess panel{{"--no-announce", "--uploads", folder + "/in"}};
};

TEST_F(PageTest, PageAndWhatBelongsToItAreServedWithTheirTypes)
{
    const std::vector<std::pair<std::string, std::string>> files{{"/", "text/html; charset=utf-8"},
        {"/simulator/page.css", "text/css; charset=utf-8"},
        {"/simulator/page.js", "text/javascript; charset=utf-8"},
        {"/simulator/touch.js", "text/javascript; charset=utf-8"}, {"/simulator/icon.svg", "image/svg+xml"}};
    for (const auto& [path, type] : files) {
        const HttpReply reply = panel.get(path);
        EXPECT_EQ(reply.status, 200) << path;
        EXPECT_THAT(reply.head, HasSubstr("Content-Type: " + type + "\r\n")) << path;
        EXPECT_GT(reply.body.size(), 200U) << path;
    }
}

TEST_F(PageTest, BrowserIsToldToLoadNothingFromElsewhereAndToGuessNoTypes)
{
    const std::string head = panel.get("/").head;
    EXPECT_THAT(head, HasSubstr("X-Content-Type-Options: nosniff\r\n"));
    EXPECT_THAT(head, HasSubstr("Content-Security-Policy: default-src 'none'; script-src 'self'; "));
    EXPECT_THAT(head, HasSubstr("frame-ancestors 'none'"));
    EXPECT_THAT(head, Not(HasSubstr("unsafe-inline")));
}

TEST_F(PageTest, PageNamesNoOtherHost)
{
    for (const char* path : {"/", "/simulator/page.css", "/simulator/page.js", "/simulator/touch.js"}) {
        EXPECT_THAT(panel.get(path).body, Not(HasSubstr("http:"))) << path;
        EXPECT_THAT(panel.get(path).body, Not(HasSubstr("https:"))) << path;
    }
}

TEST_F(PageTest, MethodsAreKept)
{
    for (const char* path : {"/", "/simulator/page.js", "/simulator/uploads/a.png"}) {
        const HttpReply reply = panel.post(path, "");
        EXPECT_EQ(reply.status, 405) << path;
        EXPECT_THAT(reply.head, HasSubstr("Allow: GET\r\n")) << path;
    }
}

TEST_F(PageTest, OtherPagesPostsAreRefusedInOneLineAndDoNothing)
{
    const std::string host = "Host: " + ownHost() + "\r\n";
    for (const std::string origin : {"http://example.org", "null", "http://127.0.0.1:1"})
        for (const char* path : {"touch", "stroke?id=s&part=0", "reply", "upload-reply", "replay"}) {
            const HttpReply reply =
                send("POST", std::string("/simulator/") + path, host + "Origin: " + origin + "\r\n", "busy");
            EXPECT_EQ(reply.status, 403) << path << " " << origin;
            EXPECT_EQ(reply.body, "only the panel's own page may ask for this\n") << path << " " << origin;
        }
    EXPECT_EQ(panel.state()["reply"].toObject()["heartbeat"].toString(), "ok");
    EXPECT_EQ(
        send("POST", "/simulator/reply", host + "Origin: http://" + ownHost() + "\r\n", "busy").status, 200);
    EXPECT_EQ(panel.state()["reply"].toObject()["heartbeat"].toString(), "busy");
}

TEST_F(PageTest, NameOfTheInternetIsRefusedAlsoWithoutAnOrigin)
{
    for (const char* path : {"/", "/simulator/state", "/simulator/uploads/a.png"}) {
        const HttpReply reply = send("GET", path, "Host: rebound.example.org:5000\r\n");
        EXPECT_EQ(reply.status, 403) << path;
        EXPECT_EQ(reply.body, "open the panel by its address, not by a name of the Internet\n") << path;
    }
    EXPECT_EQ(
        send("GET", "/pingServerWithIP?ip=1.2.3.4&msg=ping", "Host: rebound.example.org\r\n").status, 200);
}

TEST_F(PageTest, UploadedPictureIsServedAsThePictureThatItIs)
{
    const std::string name = upload("a b.txt", png);
    EXPECT_EQ(name, "a b.txt");
    const HttpReply reply = panel.get("/simulator/uploads/a%20b.txt");
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, png);
    EXPECT_THAT(reply.head, HasSubstr("Content-Type: image/png\r\n"));
    EXPECT_THAT(reply.head, HasSubstr("X-Content-Type-Options: nosniff\r\n"));
    EXPECT_THAT(reply.head, HasSubstr("Content-Security-Policy: default-src 'none'; sandbox\r\n"));
}

TEST_F(PageTest, LargePictureIsServedWhole)
{
    const std::string large = png + std::string(5'000'000, 'x');
    upload("large.png", large);
    EXPECT_TRUE(panel.get("/simulator/uploads/large.png").body == large);
}

TEST_F(PageTest, UploadThatIsNotAPictureIsNotServedWhateverItsName)
{
    std::string name = "x.png";
    for (const std::string bytes :
        {"<html><script>alert(1)</script>", "<svg xmlns='x'><script/></svg>", ""}) {
        const HttpReply reply = panel.get("/simulator/uploads/" + upload(name, bytes));
        EXPECT_EQ(reply.status, 415) << bytes;
        EXPECT_EQ(reply.body, "this upload is no picture\n") << bytes;
        name.insert(0, "x");
    }
}

TEST_F(PageTest, NoPathLeadsToOtherFiles)
{
    std::ofstream(folder + "/outside.png", std::ios::binary) << png;
    std::ofstream(folder + "/in/put-there.png", std::ios::binary) << png;
    upload("a.png", png);
    for (const char* name : {"../outside.png", "..%2Foutside.png", "%2e%2e/outside.png", "put-there.png", "",
             ".", "..", "%00", "a.png/", "/a.png"})
        EXPECT_EQ(panel.get(std::string("/simulator/uploads/") + name).status, 404) << name;
    EXPECT_EQ(panel.get("/simulator/uploads/a.png").status, 200);
}

TEST_F(PageTest, StoredNameThatHasBecomeALinkOrAPipeIsNotFollowed)
{
    std::ofstream(folder + "/outside.png", std::ios::binary) << png;
    upload("a.png", png);
    fs::remove(folder + "/in/a.png");
    EXPECT_EQ(panel.get("/simulator/uploads/a.png").status, 404);
    fs::create_symlink(folder + "/outside.png", folder + "/in/a.png");
    EXPECT_EQ(panel.get("/simulator/uploads/a.png").status, 404);
    fs::remove(folder + "/in/a.png");
    ASSERT_EQ(mkfifo((folder + "/in/a.png").c_str(), 0600), 0);
    EXPECT_EQ(panel.get("/simulator/uploads/a.png").status, 404);
}

TEST_F(PageTest, WithoutAFolderThereAreNoPictures)
{
    SimulatorProcess counting;
    EXPECT_EQ(counting.get("/simulator/uploads/").status, 404);
    EXPECT_EQ(counting.get("/simulator/uploads/a.png").status, 404);
}

} // namespace
} // namespace companion::testing
