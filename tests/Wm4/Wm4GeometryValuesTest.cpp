// Plane3, Box3, Segment3 and Frustum3: distances, corners, end points and derived
// quantities.

#include <Wm4/Wm4Box3.h>
#include <Wm4/Wm4Frustum3.h>
#include <Wm4/Wm4Line3.h>
#include <Wm4/Wm4Plane3.h>
#include <Wm4/Wm4Ray3.h>
#include <Wm4/Wm4Segment3.h>

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

TYPED_TEST(GeometryValuesTest, SegmentFromEndPoints)
{
    using R = TypeParam;
    Segment3<R> segment(Vector3<R>(1, 2, 3), Vector3<R>(1, 2, 7));
    EXPECT_EQ(Vector3<R>(1, 2, 5), segment.Origin);
    EXPECT_EQ(Vector3<R>::UNIT_Z, segment.Direction);
    EXPECT_EQ(R(2), segment.Extent);
    EXPECT_EQ(Vector3<R>(1, 2, 3), segment.GetP0());
    EXPECT_EQ(Vector3<R>(1, 2, 7), segment.GetP1());

    segment.SetEndPoints(Vector3<R>(-1, 5, 2), Vector3<R>(3, -2, 0.5));
    EXPECT_TRUE(NearV(Vector3<R>(-1, 5, 2), segment.GetP0()));
    EXPECT_TRUE(NearV(Vector3<R>(3, -2, 0.5), segment.GetP1()));
    EXPECT_NEAR(R(1), segment.Direction.Length(), Tolerance<R>());

    // A very short segment keeps its direction; equal points give a point.
    segment.SetEndPoints(Vector3<R>(0, 0, 0), Vector3<R>(R(1e-9), 0, 0));
    EXPECT_EQ(Vector3<R>::UNIT_X, segment.Direction);
    EXPECT_EQ(R(5e-10), segment.Extent);
    segment.SetEndPoints(Vector3<R>(4, 4, 4), Vector3<R>(4, 4, 4));
    EXPECT_EQ(Segment3<R>(Vector3<R>(4, 4, 4), Vector3<R>::ZERO, R(0)), segment);
}

TYPED_TEST(GeometryValuesTest, FrustumCornersAndRatio)
{
    using R = TypeParam;
    // Looking down -z from (1, 2, 3), up +y, right +x.
    Frustum3<R> frustum(Vector3<R>(1, 2, 3), Vector3<R>(0, 0, -1), Vector3<R>(0, 1, 0), Vector3<R>(1, 0, 0), R(2),
                        R(8), R(0.5), R(0.75));
    EXPECT_EQ(R(4), frustum.GetDRatio());
    Vector3<R> corners[8];
    frustum.ComputeVertices(corners);
    const Vector3<R> expected[8] = {{0.25, 1.5, 1}, {1.75, 1.5, 1}, {1.75, 2.5, 1}, {0.25, 2.5, 1},
                                    {-2, 0, -5},    {4, 0, -5},     {4, 4, -5},     {-2, 4, -5}};
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(expected[i], corners[i]) << i;

    // The ratio follows the fields only through Update.
    frustum.DMax = R(10);
    EXPECT_EQ(R(4), frustum.GetDRatio());
    frustum.Update();
    EXPECT_EQ(R(5), frustum.GetDRatio());
    frustum.DMin = R(0);
    frustum.Update();
    EXPECT_EQ(R(0), frustum.GetDRatio());
}
