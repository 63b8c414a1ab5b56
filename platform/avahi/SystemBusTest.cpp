#include "platform/avahi/SystemBus.h"

#include <gtest/gtest.h>
#include <string>

namespace companion {
namespace {

/// What counts of the socket's name; "none" where there is no such address.
std::string nameOf(const QByteArray& busAddress)
{
    const auto address = UnixSocketAddress::ofBus(busAddress);
    if (!address)
        return "none";
    return {address->name.sun_path, address->length - offsetof(sockaddr_un, sun_path)};
}

TEST(UnixSocketAddressTest, PathEndsWithANul)
{
    EXPECT_EQ(nameOf("unix:path=/run/bus"), std::string("/run/bus\0", 9));
}

TEST(UnixSocketAddressTest, AbstractNameBeginsWithANul)
{
    EXPECT_EQ(nameOf("unix:abstract=/tmp/bus"), std::string("\0/tmp/bus", 9));
}

TEST(UnixSocketAddressTest, OtherKeysMayStandAroundIt)
{
    EXPECT_EQ(nameOf("unix:guid=0123,path=/run/bus,x=y"), std::string("/run/bus\0", 9));
}

TEST(UnixSocketAddressTest, EscapedBytesAreThoseOfTheName)
{
    EXPECT_EQ(nameOf("unix:path=/a%2cb%3Bc"), std::string("/a,b;c\0", 7));
}

TEST(UnixSocketAddressTest, WhatIsNotOneSocketIsNone)
{
    for (const char* address : {"", "tcp:host=localhost,port=1", "unix:path=/a;unix:path=/b",
             "unix:tmpdir=/tmp", "unix:", "unix:runtime=yes", "launchd:env=A"})
        EXPECT_EQ(nameOf(address), "none") << address;
}

TEST(UnixSocketAddressTest, NameThatIsTooLongForTheSystemIsNone)
{
    EXPECT_EQ(nameOf("unix:path=" + QByteArray(107, 'a')).size(), 108U);
    EXPECT_EQ(nameOf("unix:path=" + QByteArray(108, 'a')), "none");
    EXPECT_EQ(nameOf("unix:abstract=" + QByteArray(106, 'a')).size(), 107U);
    EXPECT_EQ(nameOf("unix:abstract=" + QByteArray(108, 'a')), "none");
}

} // namespace
} // namespace companion
