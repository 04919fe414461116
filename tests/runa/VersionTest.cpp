#include <runa/Version.h>

#include <gtest/gtest.h>

using runa::Version;

TEST(Version, ParsesFullAndShortForms)
{
    EXPECT_EQ(Version::Parse("0.7.0"), (Version{0, 7, 0}));
    EXPECT_EQ(Version::Parse("3"), (Version{3, 0, 0}));
    EXPECT_EQ(Version::Parse("3.1"), (Version{3, 1, 0}));
    EXPECT_EQ(Version::Parse("\t1.2.6 \n"), (Version{1, 2, 6}));
    EXPECT_EQ(Version::Parse("4294967295.0.1"), (Version{4294967295u, 0, 1}));
    EXPECT_EQ(Version::Parse("2")->ToString(), "2.0.0");
    EXPECT_EQ(Version::Parse(Version{1, 22, 333}.ToString()), (Version{1, 22, 333}));
}

TEST(Version, RejectsMalformedText)
{
    for (const char* text : {"", "   ", "1..2", "1.2.3.4", "-1", "1.-2", "+1", "1.2a", "1.", ".1", "1 .2",
                             "1. 2", "a.b.c", "1,2", "4294967296", "1.2.99999999999"}) {
        EXPECT_FALSE(Version::Parse(text).has_value()) << '"' << text << '"';
    }
}
