#include <Wm4/Wm4ColorRGB.h>
#include <Wm4/Wm4ColorRGBA.h>

#include "Wm4TestHelpers.h"

using Wm4::ColorRGB;
using Wm4::ColorRGBA;

// Equality compares bits; the ordering is not used by the library.
TEST(ColorTest, EqualityIsBitwise)
{
    EXPECT_NE(ColorRGB(0.0f, 0.0f, 0.0f), ColorRGB(0.0f, 0.0f, -0.0f));
    EXPECT_NE(ColorRGBA::BLACK, ColorRGBA(0.0f, 0.0f, 0.0f, 0.0f));
    EXPECT_EQ(ColorRGBA::WHITE, ColorRGBA(1.0f, 1.0f, 1.0f, 1.0f));
}
