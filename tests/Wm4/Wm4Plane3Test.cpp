#include <Wm4/Wm4Plane3.h>

#include "Wm4TestHelpers.h"

using namespace Wm4;
using Wm4Test::NearV;
using Wm4Test::Tolerance;

namespace {

template <class Real>
class Plane3Test : public ::testing::Test {};
TYPED_TEST_SUITE(Plane3Test, Wm4Test::RealTypes);

} // namespace

TYPED_TEST(Plane3Test, ThreePointsGiveTheCounterClockwiseNormal)
{
    using R = TypeParam;
    Plane3<R> plane(Vector3<R>(0, 0, 2), Vector3<R>(3, 0, 2), Vector3<R>(0, 5, 2));
    EXPECT_TRUE(NearV(Vector3<R>::UNIT_Z, plane.Normal));
    EXPECT_NEAR(R(2), plane.Constant, Tolerance<R>());

    Plane3<R> reversed(Vector3<R>(0, 0, 2), Vector3<R>(0, 5, 2), Vector3<R>(3, 0, 2));
    EXPECT_TRUE(NearV(-Vector3<R>::UNIT_Z, reversed.Normal));
    EXPECT_NEAR(R(-2), reversed.Constant, Tolerance<R>());

    // Collinear points leave a zero normal.
    Plane3<R> degenerate(Vector3<R>(0, 0, 0), Vector3<R>(1, 1, 1), Vector3<R>(2, 2, 2));
    EXPECT_EQ(Vector3<R>::ZERO, degenerate.Normal);
}

TYPED_TEST(Plane3Test, SignedDistanceAndSide)
{
    using R = TypeParam;
    // x = 1, through the point (1, 7, -3).
    Plane3<R> plane(Vector3<R>::UNIT_X, Vector3<R>(1, 7, -3));
    EXPECT_EQ(R(1), plane.Constant);
    EXPECT_EQ(R(2), plane.DistanceTo(Vector3<R>(3, 0, 0)));
    EXPECT_EQ(R(-1.5), plane.DistanceTo(Vector3<R>(-0.5, 9, 9)));
    EXPECT_EQ(+1, plane.WhichSide(Vector3<R>(3, 0, 0)));
    EXPECT_EQ(-1, plane.WhichSide(Vector3<R>(-0.5, 9, 9)));
    EXPECT_EQ(0, plane.WhichSide(Vector3<R>(1, -4, 100)));
    // No tolerance: the nearest value above 1 is already on the positive side.
    EXPECT_EQ(+1, plane.WhichSide(Vector3<R>(R(1) + Math<R>::EPSILON, 0, 0)));

    // The normal is not normalised: the distance scales with it.
    Plane3<R> scaled(Vector3<R>(0, 2, 0), R(4));
    EXPECT_EQ(R(2), scaled.DistanceTo(Vector3<R>(0, 3, 0)));
}

TYPED_TEST(Plane3Test, Equality)
{
    using R = TypeParam;
    Plane3<R> a(Vector3<R>::UNIT_Y, R(3));
    EXPECT_EQ(a, Plane3<R>(Vector3<R>::UNIT_Y, R(3)));
    EXPECT_NE(a, Plane3<R>(Vector3<R>::UNIT_Y, R(3.5)));
    EXPECT_NE(a, Plane3<R>(Vector3<R>::UNIT_Z, R(3)));
    EXPECT_EQ(Plane3<R>(Vector3<R>::ZERO, R(0)), Plane3<R>());
}
