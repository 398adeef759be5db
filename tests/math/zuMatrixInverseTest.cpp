// The tolerant 3x3 inverse shared by the transformation operations.

#include <zuSceneGraph/math/zuMatrixInverse.h>

#include "Wm4/Wm4TestHelpers.h"

#include <gtest/gtest.h>

namespace zu::test {
namespace {

template <class Real>
class MatrixInverse : public ::testing::Test {};

TYPED_TEST_SUITE(MatrixInverse, Wm4Test::RealTypes);

TYPED_TEST(MatrixInverse, PositiveDeterminantsFromTheToleranceOnAndReflectionsInvert)
{
    using Real = TypeParam;
    using Matrix3 = Wm4::Matrix3<Real>;
    const Real tolerance = Wm4::Math<Real>::ZERO_TOLERANCE;

    const Matrix3 m(2, 1, 0, 0, 1, 0, 0, 0, 0.5);
    EXPECT_TRUE(Wm4Test::NearM(Matrix3(0.5, -0.5, 0, 0, 1, 0, 0, 0, 2), zuMatrixInverse<Real>::Compute(m)));

    // A determinant of exactly the tolerance inverts; half of it does not.
    const Matrix3 small = zuMatrixInverse<Real>::Compute(Matrix3(tolerance, 1, 1));
    EXPECT_NEAR(small[0][0] * tolerance, 1, 1e-6);
    EXPECT_NEAR(small[1][1], 1, 1e-6);
    EXPECT_EQ(zuMatrixInverse<Real>::Compute(Matrix3(tolerance / 2, 1, 1)), Matrix3::ZERO);

    // Below the tolerance, and for negative determinants, only near -1.
    EXPECT_EQ(zuMatrixInverse<Real>::Compute(Matrix3::ZERO), Matrix3::ZERO);
    EXPECT_EQ(zuMatrixInverse<Real>::Compute(Matrix3(1, 2, 3, 2, 4, 6, 0, 0, 1)), Matrix3::ZERO);
    // A reflection inverts to itself.
    EXPECT_TRUE(Wm4Test::NearM(Matrix3(-1, 1, 1), zuMatrixInverse<Real>::Compute(Matrix3(-1, 1, 1))));
    EXPECT_TRUE(Wm4Test::NearM(Matrix3(0, 1, 0, 1, 0, 0, 0, 0, 1),
                               zuMatrixInverse<Real>::Compute(Matrix3(0, 1, 0, 1, 0, 0, 0, 0, 1))));
    // Any other negative determinant is refused, however well conditioned.
    EXPECT_EQ(zuMatrixInverse<Real>::Compute(Matrix3(-2, 1, 1)), Matrix3::ZERO);
    EXPECT_EQ(zuMatrixInverse<Real>::Compute(Matrix3(-0.5, 1, 1)), Matrix3::ZERO);
    // Just off -1: |d - 1/d| is about twice the distance to -1.
    EXPECT_NE(zuMatrixInverse<Real>::Compute(Matrix3(-1 - tolerance / 4, 1, 1)), Matrix3::ZERO);
    EXPECT_EQ(zuMatrixInverse<Real>::Compute(Matrix3(-1 - tolerance * 4, 1, 1)), Matrix3::ZERO);
}

} // namespace
} // namespace zu::test
