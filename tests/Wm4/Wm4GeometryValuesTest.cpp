// Plane3 and Box3: distances, sides and corners.

#include <Wm4/Wm4Box3.h>
#include <Wm4/Wm4Line3.h>
#include <Wm4/Wm4Plane3.h>
#include <Wm4/Wm4Ray3.h>

#include "Wm4TestHelpers.h"

using namespace Wm4;
using Wm4Test::NearV;
using Wm4Test::Tolerance;

namespace {
template <class Real>
class GeometryValuesTest : public ::testing::Test {};
TYPED_TEST_SUITE(GeometryValuesTest, Wm4Test::RealTypes);
} // namespace

TYPED_TEST(GeometryValuesTest, PlaneFromThreePointsSignedDistanceSideAndEquality)
{
    using R = TypeParam;
    // Counter-clockwise points give the normal; collinear points leave a zero normal.
    Plane3<R> plane(Vector3<R>(0, 0, 2), Vector3<R>(3, 0, 2), Vector3<R>(0, 5, 2));
    EXPECT_TRUE(NearV(Vector3<R>::UNIT_Z, plane.Normal));
    EXPECT_NEAR(R(2), plane.Constant, Tolerance<R>());
    Plane3<R> reversed(Vector3<R>(0, 0, 2), Vector3<R>(0, 5, 2), Vector3<R>(3, 0, 2));
    EXPECT_TRUE(NearV(-Vector3<R>::UNIT_Z, reversed.Normal));
    EXPECT_NEAR(R(-2), reversed.Constant, Tolerance<R>());
    EXPECT_EQ(Vector3<R>::ZERO, Plane3<R>(Vector3<R>(0, 0, 0), Vector3<R>(1, 1, 1), Vector3<R>(2, 2, 2)).Normal);

    // x = 1, through the point (1, 7, -3).
    plane = Plane3<R>(Vector3<R>::UNIT_X, Vector3<R>(1, 7, -3));
    EXPECT_EQ(R(1), plane.Constant);
    EXPECT_EQ(R(2), plane.DistanceTo(Vector3<R>(3, 0, 0)));
    EXPECT_EQ(R(-1.5), plane.DistanceTo(Vector3<R>(-0.5, 9, 9)));
    EXPECT_EQ(+1, plane.WhichSide(Vector3<R>(3, 0, 0)));
    EXPECT_EQ(-1, plane.WhichSide(Vector3<R>(-0.5, 9, 9)));
    EXPECT_EQ(0, plane.WhichSide(Vector3<R>(1, -4, 100)));
    // No tolerance: the nearest value above 1 is already on the positive side.
    EXPECT_EQ(+1, plane.WhichSide(Vector3<R>(R(1) + Math<R>::EPSILON, 0, 0)));
    // The normal is not normalised: the distance scales with it.
    EXPECT_EQ(R(2), Plane3<R>(Vector3<R>(0, 2, 0), R(4)).DistanceTo(Vector3<R>(0, 3, 0)));

    Plane3<R> a(Vector3<R>::UNIT_Y, R(3));
    EXPECT_EQ(a, Plane3<R>(Vector3<R>::UNIT_Y, R(3)));
    EXPECT_NE(a, Plane3<R>(Vector3<R>::UNIT_Y, R(3.5)));
    EXPECT_NE(a, Plane3<R>(Vector3<R>::UNIT_Z, R(3)));
}

TYPED_TEST(GeometryValuesTest, BoxCornersGoRoundTheFacesInOrder)
{
    using R = TypeParam;
    Box3<R> box(Vector3<R>(10, 20, 30), Vector3<R>(0, 1, 0), Vector3<R>(-1, 0, 0), Vector3<R>(0, 0, 1), R(1), R(2),
                R(3));
    Vector3<R> corners[8];
    box.ComputeVertices(corners);
    // (sign along Axis[0], Axis[1], Axis[2]) per corner.
    const int signs[8][3] = {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1},
                             {-1, -1, 1},  {1, -1, 1},  {1, 1, 1},  {-1, 1, 1}};
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(Vector3<R>(R(10 - 2 * signs[i][1]), R(20 + signs[i][0]), R(30 + 3 * signs[i][2])), corners[i]) << i;
}
