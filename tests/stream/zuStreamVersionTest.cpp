// Stream versions: parsing header texts, limits of the numbers, and ordering.

#include "support/zuTestObjects.h"

#include <zuSceneGraph/stream/zuStreamVersion.h>

#include <gtest/gtest.h>

#include <cstring>

namespace zu::test {
namespace {

zuStreamVersion parse(const char* text)
{
    return zuStreamVersion(text, static_cast<int>(std::strlen(text)));
}

TEST(zuStreamVersionTest, HeaderTextsParseWithOrWithoutThePrefix)
{
    zuLogCapture log;
    EXPECT_TRUE(parse("MVK 6.00") == (zuStreamVersion(6, 0)) && parse("MVK 6.32") == (zuStreamVersion(6, 32)));
    EXPECT_TRUE(parse("6.1") == (zuStreamVersion(6, 1)) && parse("MVK 65535.65535") == (zuStreamVersion(65535, 65535)));
    // The header arrives with its terminating NUL counted in the length.
    EXPECT_EQ(zuStreamVersion("MVK 6.05", 9), zuStreamVersion(6, 5));
    EXPECT_EQ(zuStreamVersion("6.10", 5), zuStreamVersion(6, 10));
    // A prefix is only looked for past three characters.
    EXPECT_TRUE((zuStreamVersion("MVK 6.00", 3)) == zuStreamVersion() && log.mMessages.size() == 1u);
}

TEST(zuStreamVersionTest, TextsThatDoNotParseLeaveTheInvalidVersionAndAreLogged)
{
    zuLogCapture log;
    const char* const failures[] = {
        "MVK 6",        // too short once the prefix is dropped
        "MVK 6.",       // too short
        "MVK 6.70000",  // the minor number does not fit
        "MVK 65536.0",  // nor the major number
        "MVK 6.0x",
        "MVK .5",
        "6.",
        "60",           // too short without the prefix
        "",
        "MVK x.00",
        "MVK 99999999999999999999.0",
        "7",
    };
    for (const char* text : failures) {
        log.mMessages.clear();
        const zuStreamVersion version = parse(text);
        EXPECT_FALSE(version.IsValid()) << text;
        ASSERT_EQ(log.mMessages.size(), 1u) << text;
        EXPECT_EQ(log.mMessages[0].first, "zustream");
        EXPECT_EQ(log.mMessages[0].second, std::string("Fail to parse zuStreamVersion string '") + text + "'");
    }

    log.mMessages.clear();
    EXPECT_FALSE(zuStreamVersion(nullptr, 9).IsValid());
    ASSERT_EQ(log.mMessages.size(), 1u);
    EXPECT_EQ(log.mMessages[0].first, "zustream");
    EXPECT_EQ(log.mMessages[0].second, "Fail to parse zuStreamVersion input is NULL");

    // The text logged stops at the terminating NUL.
    log.mMessages.clear();
    EXPECT_FALSE(zuStreamVersion("MVK 6", 6).IsValid());
    ASSERT_EQ(log.mMessages.size(), 1u);
    EXPECT_EQ(log.mMessages[0].second, "Fail to parse zuStreamVersion string 'MVK 6'");
}

TEST(zuStreamVersionTest, VersionsCompareAsOnePackedNumber)
{
    EXPECT_GT(zuStreamVersion(6, 1), zuStreamVersion(6, 0));
    EXPECT_GT(zuStreamVersion(7, 0), zuStreamVersion(6, 65535));
    EXPECT_LT(zuStreamVersion(5, 99), zuStreamVersion(6, 0));
    EXPECT_NE(zuStreamVersion(6, 0), zuStreamVersion(0, 6));
    EXPECT_FALSE(zuStreamVersion(6, 0) < zuStreamVersion(6, 0));
    EXPECT_EQ(zuStreamVersion(6, 32).GetCombined(), (6u << 16) | 32u);

    EXPECT_FALSE(zuStreamVersion().IsValid() || zuStreamVersion(0, 0).IsValid());
    EXPECT_TRUE(zuStreamVersion(0, 1).IsValid());
    // An unparsed header (0.0) is older than every version gate.
    EXPECT_LT(zuStreamVersion(), zuStreamVersion(6, 0));
}

TEST(zuStreamVersionTest, NumbersAbove65535AreRefused)
{
    zuStreamVersion version(6, 5);
    version.SetMajor(65535);
    EXPECT_EQ(version, zuStreamVersion(65535, 5));
    version.SetMajor(65536);
    EXPECT_TRUE(version.GetMajor() == 0 && version.GetMinor() == 5);
    version.SetMinor(65535);
    EXPECT_EQ(version, zuStreamVersion(0, 65535));
    version.SetMinor(65536);
    EXPECT_EQ(version.GetCombined(), 0u);
    EXPECT_FALSE(version.IsValid());

    version.SetVersion(65536, 1);
    EXPECT_EQ(version.GetCombined(), 0u);
    version.SetVersion(1, 65536);
    EXPECT_TRUE(version.GetCombined() == 0u && (zuStreamVersion(65536, 0).GetCombined()) == 0u);
    EXPECT_EQ(zuStreamVersion(0, 65536).GetCombined(), 0u);
}

} // namespace
} // namespace zu::test
