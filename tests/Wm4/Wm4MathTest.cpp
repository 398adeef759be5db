#include <Wm4/Wm4Math.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using Wm4::Math;

TEST(MathTest, ConstantsPerType)
{
    EXPECT_EQ(1e-06f, Math<float>::ZERO_TOLERANCE);
    EXPECT_EQ(1e-08, Math<double>::ZERO_TOLERANCE);
    EXPECT_EQ(std::numeric_limits<float>::max(), Math<float>::MAX_REAL);
    EXPECT_EQ(std::numeric_limits<double>::max(), Math<double>::MAX_REAL);
    EXPECT_TRUE(std::isfinite(Math<float>::MAX_REAL));
    EXPECT_FLOAT_EQ(90.0f, Math<float>::HALF_PI * Math<float>::RAD_TO_DEG);
    EXPECT_DOUBLE_EQ(Math<double>::TWO_PI, 360.0 * Math<double>::DEG_TO_RAD);
}

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

TEST(MathTest, SignIsZeroForBothZeros)
{
    EXPECT_EQ(1.0f, Math<float>::Sign(0.001f));
    EXPECT_EQ(-1.0f, Math<float>::Sign(-3.0f));
    EXPECT_EQ(0.0, Math<double>::Sign(0.0));
    EXPECT_EQ(0.0, Math<double>::Sign(-0.0));
}
