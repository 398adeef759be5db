// Plane3 and Box3: distances and corners.

#include <Wm4/Wm4Box3.h>
#include <Wm4/Wm4Line3.h>
#include <Wm4/Wm4Plane3.h>
#include <Wm4/Wm4Ray3.h>

#include "Wm4TestHelpers.h"

using namespace Wm4;

namespace {
template <class Real>
class GeometryValuesTest : public ::testing::Test {};
TYPED_TEST_SUITE(GeometryValuesTest, Wm4Test::RealTypes);
} // namespace

// Only the signed distance and equality are used by the library.
TYPED_TEST(GeometryValuesTest, PlaneSignedDistanceAndEquality)
{
    using R = TypeParam;
    // x = 1.
    const Plane3<R> plane(Vector3<R>::UNIT_X, R(1));
    EXPECT_EQ(R(2), plane.DistanceTo(Vector3<R>(3, 0, 0)));
    EXPECT_EQ(R(-1.5), plane.DistanceTo(Vector3<R>(-0.5, 9, 9)));
    EXPECT_EQ(R(0), plane.DistanceTo(Vector3<R>(1, -4, 100)));
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
