#include "panel/MultipartBody.h"

#include <gtest/gtest.h>

namespace companion::testing {

using namespace std::string_literals;

static std::string joined(const HttpBody& body)
{
    std::string bytes;
    for (const auto& piece : body)
        bytes += *piece;
    return bytes;
}

static FileBytes bytes(const std::string& text)
{
    return sharedBytes(text);
}

TEST(MultipartBodyTest, BodyByteForByte)
{
    EXPECT_EQ(joined(makeMultipartBody({}, bytes("\0\r\n"s), "my-file", "a.png", "B", "image/png")),
        "--B\r\n"
        "Content-Disposition: form-data; name=\"my-file\"; filename=\"a.png\"\r\n"
        "Content-Type: image/png\r\n"
        "\r\n"
        "\0\r\n"
        "\r\n"
        "--B--\r\n"s);
}

TEST(MultipartBodyTest, EmptyFileLeavesItsSectionEmpty)
{
    EXPECT_EQ(joined(makeMultipartBody({}, bytes(""), "my-file", "empty", "B", "(null)/empty")),
        "--B\r\nContent-Disposition: form-data; name=\"my-file\"; filename=\"empty\"\r\n"
        "Content-Type: (null)/empty\r\n\r\n\r\n--B--\r\n");
}

TEST(MultipartBodyTest, TextFieldsComeFirstInTheCallersOrder)
{
    EXPECT_EQ(joined(makeMultipartBody(
                  {{"room", "204"}, {"a", "1\r\n2"}, {"room", ""}}, bytes("x"), "f", "n", "B", "t")),
        "--B\r\nContent-Disposition: form-data; name=\"room\"\r\n\r\n204\r\n"
        "--B\r\nContent-Disposition: form-data; name=\"a\"\r\n\r\n1\r\n2\r\n"
        "--B\r\nContent-Disposition: form-data; name=\"room\"\r\n\r\n\r\n"
        "--B\r\nContent-Disposition: form-data; name=\"f\"; filename=\"n\"\r\nContent-Type: "
        "t\r\n\r\nx\r\n--B--\r\n");
}

TEST(MultipartBodyTest, NamesAreInsertedAsTheyStand)
{
    for (const std::string name : {"a\"b\".png",
             "Stra\xC3\x9F"
             "e \xE2\x82\xAC.png",
             "a|b;c%22\\.png"})
        EXPECT_NE(joined(makeMultipartBody({}, bytes(""), "my-file", name, "B", "t"))
                      .find("filename=\"" + name + "\"\r\n"),
            std::string::npos)
            << name;
}

TEST(MultipartBodyTest, FileIsAPieceOfItsOwnAndTheSameBytesInMemory)
{
    const FileBytes file = bytes("the file");
    const HttpBody body = makeMultipartBody({}, file, "my-file", "a", "B", "t");
    ASSERT_EQ(body.size(), 3u);
    EXPECT_EQ(body[1].get(), file.get());
}

TEST(MultipartBodyTest, TextThatIsNoUtf8IsLeftOut)
{
    EXPECT_EQ(joined(makeMultipartBody({}, bytes("\xFF"), "my-file", "caf\xE9", "B", "t")),
        "--B\r\nContent-Disposition: form-data; name=\"my-file\"; filename=\"\"\r\nContent-Type: "
        "t\r\n\r\n\xFF\r\n--B--\r\n");
}

TEST(MultipartBodyTest, AppendedStringFollowsWhatIsThere)
{
    std::string text = "\xFF";
    appendString(text, "\xC3\xA9");
    appendString(text, "\xC3");
    appendString(text, "");
    EXPECT_EQ(text, "\xFF\xC3\xA9");
}

} // namespace companion::testing
