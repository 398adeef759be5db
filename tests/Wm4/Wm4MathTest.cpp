#include <Wm4/Wm4Math.h>

#include <gtest/gtest.h>

#include <cmath>

using Wm4::Math;

TEST(MathTest, InverseTrigonometryClampsItsArgument)
{
    // A cosine computed from unit vectors may overshoot 1 by a rounding error.
    EXPECT_EQ(0.0f, Math<float>::ACos(1.0000001f));
    EXPECT_FLOAT_EQ(Math<float>::PI, Math<float>::ACos(-1.5f));
    EXPECT_DOUBLE_EQ(Math<double>::HALF_PI, Math<double>::ASin(2.0));
    EXPECT_DOUBLE_EQ(-Math<double>::HALF_PI, Math<double>::ASin(-1.0 - 1e-15));
    EXPECT_DOUBLE_EQ(std::acos(0.3), Math<double>::ACos(0.3));
    EXPECT_DOUBLE_EQ(std::asin(-0.3), Math<double>::ASin(-0.3));
}
