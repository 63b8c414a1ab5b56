#include "platform/curl/RequestCheck.h"

#include <gtest/gtest.h>

namespace companion::testing {

namespace {

HttpRequest requestWith(const HttpHeader& header)
{
    HttpRequest request;
    request.url = Url{"http://192.168.1.20:5505/uploadfile"};
    request.headers = {header};
    return request;
}

} // namespace

TEST(RequestCheckTest, QuotesBlanksTabsAndUtf8AreFineInAValue)
{
    EXPECT_EQ(faultOf(requestWith({"srcfilename", "K\xC3\xA4se \"1\"\t.png"})), std::nullopt);
    EXPECT_EQ(faultOf(requestWith({"srcfilename", ""})), std::nullopt);
}

TEST(RequestCheckTest, ALineBreakOrNulInAValueIsNamedWithItsField)
{
    const std::string fault = "the header field \"srcfilename\" holds a line break or a NUL";
    EXPECT_EQ(faultOf(requestWith({"srcfilename", "a\rb"})), fault);
    EXPECT_EQ(faultOf(requestWith({"srcfilename", "a\nb"})), fault);
    EXPECT_EQ(faultOf(requestWith({"srcfilename", std::string("a\0b", 3)})), fault);
}

TEST(RequestCheckTest, ANameThatIsNoTokenIsAFault)
{
    for (const std::string name : {"", "X Y", "X:", "X;", "X\r\n", "X\xC3\xA4"})
        EXPECT_EQ(faultOf(requestWith({name, "1"})), "a header field's name is not a word") << name;
}

TEST(RequestCheckTest, AMethodThatIsNoTokenIsAFault)
{
    HttpRequest request = requestWith({"Accept", "*/*"});
    request.method = "GET /";
    EXPECT_EQ(faultOf(request), "the method is not a word");
    request.method = "";
    EXPECT_EQ(faultOf(request), "the method is not a word");
}

TEST(RequestCheckTest, FieldNamesDifferInMoreThanCase)
{
    EXPECT_TRUE(isSameFieldName("Content-Length", "content-LENGTH"));
    EXPECT_FALSE(isSameFieldName("Content-Length", "Content-Lengt"));
    EXPECT_FALSE(isSameFieldName("A", "B"));
}

} // namespace companion::testing
