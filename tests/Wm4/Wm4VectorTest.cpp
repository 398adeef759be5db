#include <Wm4/Wm4Vector2.h>
#include <Wm4/Wm4Vector3.h>
#include <Wm4/Wm4Vector4.h>

#include "Wm4TestHelpers.h"

using namespace Wm4;
using Wm4Test::NearV;
using Wm4Test::Tolerance;

namespace {

template <class Real>
class VectorTest : public ::testing::Test {};
TYPED_TEST_SUITE(VectorTest, Wm4Test::RealTypes);

} // namespace

TYPED_TEST(VectorTest, NormalizeReturnsTheOldLengthAndZeroesTinyVectors)
{
    using R = TypeParam;
    Vector3<R> v(3, 0, 4);
    EXPECT_EQ(R(5), v.Normalize());
    EXPECT_TRUE(NearV(Vector3<R>(0.6, 0, 0.8), v));

    // Just under the tolerance: zero vector, 0 returned.
    Vector3<R> tiny(Math<R>::ZERO_TOLERANCE * R(0.5), 0, 0);
    EXPECT_EQ(R(0), tiny.Normalize());
    EXPECT_EQ(Vector3<R>::ZERO, tiny);

    // At the tolerance the vector is still normalised.
    Vector3<R> atTolerance(0, 0, Math<R>::ZERO_TOLERANCE);
    EXPECT_EQ(Math<R>::ZERO_TOLERANCE, atTolerance.Normalize());
    EXPECT_EQ(Vector3<R>::UNIT_Z, atTolerance);
    Vector2<R> small(0, Math<R>::ZERO_TOLERANCE);
    EXPECT_EQ(Math<R>::ZERO_TOLERANCE, small.Normalize());
    EXPECT_EQ(Vector2<R>::UNIT_Y, small);

    Vector4<R> zero;
    EXPECT_EQ(R(0), zero.Normalize());
    EXPECT_EQ(Vector4<R>::ZERO, zero);
}

TYPED_TEST(VectorTest, CrossIsRightHanded)
{
    using R = TypeParam;
    EXPECT_EQ(Vector3<R>::UNIT_Z, Vector3<R>::UNIT_X.Cross(Vector3<R>::UNIT_Y));
    EXPECT_EQ(Vector3<R>::UNIT_X, Vector3<R>::UNIT_Y.Cross(Vector3<R>::UNIT_Z));
    // Not EXPECT_EQ: == compares bits, and -UNIT_Y holds two negative zeros.
    EXPECT_TRUE(NearV(-Vector3<R>::UNIT_Y, Vector3<R>::UNIT_X.Cross(Vector3<R>::UNIT_Z)));
    EXPECT_TRUE(NearV(Vector3<R>::UNIT_Z, Vector3<R>(3, 0, 0).UnitCross(Vector3<R>(2, 5, 0))));
}

// The ordering is not used by the library: only equality is checked.
TYPED_TEST(VectorTest, EqualityIsBitwise)
{
    using R = TypeParam;
    EXPECT_NE(Vector3<R>(0, 0, 0), Vector3<R>(-R(0), 0, 0));
    EXPECT_FALSE(Vector3<R>(1, 2, 3) == Vector3<R>(1, 2, 3.5));
    EXPECT_TRUE(Vector3<R>(1, 2, 3) != Vector3<R>(1, 2, 3.5));
}
