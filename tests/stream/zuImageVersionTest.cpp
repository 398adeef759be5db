// The version record of image data.

#include <zuSceneGraph/stream/zuImageVersion.h>

#include <gtest/gtest.h>

namespace zu {
namespace {

TEST(zuImageVersionTest, ValidityAndComparisonsUseTheCombinedNumber)
{
    EXPECT_TRUE(zuImageVersion(1, 0).isValid());
    EXPECT_TRUE(zuImageVersion(1, 99).isValid());
    EXPECT_FALSE(zuImageVersion(1, 100).isValid());
    EXPECT_FALSE(zuImageVersion(0, 99).isValid());
    EXPECT_FALSE(zuImageVersion().isValid());

    EXPECT_EQ(zuImageVersion(2, 5).getCombinedVersion(), 205);
    EXPECT_LT(zuImageVersion(1, 99), zuImageVersion(2, 0));
    EXPECT_GT(zuImageVersion(2, 1), zuImageVersion(2, 0));
    EXPECT_LE(zuImageVersion(2, 0), zuImageVersion(2, 0));
    EXPECT_GE(zuImageVersion(2, 0), zuImageVersion(1, 50));
    EXPECT_NE(zuImageVersion(2, 0), zuImageVersion(0, 2));
    // Only the combined number counts: 1.100 and 2.0 are the same version.
    EXPECT_EQ(zuImageVersion(1, 100), zuImageVersion(2, 0));
    EXPECT_FALSE(zuImageVersion(1, 100) < zuImageVersion(2, 0));
}

} // namespace
} // namespace zu
