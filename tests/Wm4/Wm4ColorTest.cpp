#include <Wm4/Wm4ColorRGB.h>
#include <Wm4/Wm4ColorRGBA.h>

#include "Wm4TestHelpers.h"

#include <map>

using Wm4::ColorRGB;
using Wm4::ColorRGBA;

TEST(ColorTest, EqualityAndOrdering)
{
    EXPECT_NE(ColorRGB(0.0f, 0.0f, 0.0f), ColorRGB(0.0f, 0.0f, -0.0f));
    EXPECT_NE(ColorRGBA::BLACK, ColorRGBA(0.0f, 0.0f, 0.0f, 0.0f));
    EXPECT_TRUE(ColorRGB::INVALID < ColorRGB::BLACK);
    EXPECT_TRUE(ColorRGB::BLACK < ColorRGB::WHITE);
    EXPECT_TRUE(ColorRGBA(1.0f, 0.0f, 0.0f, 0.0f) < ColorRGBA(1.0f, 0.0f, 0.0f, 0.5f));
    EXPECT_FALSE(ColorRGBA::WHITE < ColorRGBA::WHITE);

    std::map<ColorRGBA, int> uses;
    ++uses[ColorRGBA::WHITE];
    ++uses[ColorRGBA(1.0f, 1.0f, 1.0f, 1.0f)];
    ++uses[ColorRGBA::BLACK];
    ASSERT_EQ(2u, uses.size());
    EXPECT_EQ(2, uses[ColorRGBA::WHITE]);
}
