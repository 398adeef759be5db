#include <Wm4/Wm4IntrBox3Box3.h>

#include "Wm4GeometryTestHelpers.h"
#include "Wm4TestHelpers.h"

using namespace Wm4;

namespace {

template <class Real>
class IntrBox3Box3Test : public ::testing::Test {};
TYPED_TEST_SUITE(IntrBox3Box3Test, Wm4Test::RealTypes);

template <class Real>
Box3<Real> WorldBox(Real x, Real y, Real z, Real e0, Real e1, Real e2)
{
    return Box3<Real>(Vector3<Real>(x, y, z), Vector3<Real>::UNIT_X, Vector3<Real>::UNIT_Y, Vector3<Real>::UNIT_Z, e0,
                      e1, e2);
}

// Both orders must agree.
template <class Real>
bool Overlap(const Box3<Real>& a, const Box3<Real>& b)
{
    bool ab = IntrBox3Box3<Real>(a, b).Test();
    bool ba = IntrBox3Box3<Real>(b, a).Test();
    EXPECT_EQ(ab, ba);
    return ab;
}

template <class Real>
Box3<Real> Rotated(const Vector3<Real>& center, const Matrix3<Real>& rotation, Real e0, Real e1, Real e2)
{
    return Box3<Real>(center, rotation.GetColumn(0), rotation.GetColumn(1), rotation.GetColumn(2), e0, e1, e2);
}

} // namespace

TYPED_TEST(IntrBox3Box3Test, WorldAxisBoxesTouchingCounts)
{
    using R = TypeParam;
    Box3<R> unit = WorldBox<R>(0, 0, 0, 1, 1, 1);
    EXPECT_TRUE(Overlap(unit, unit));
    EXPECT_TRUE(Overlap(unit, WorldBox<R>(3, 0, 0, 2, 1, 1))) << "face to face";
    EXPECT_TRUE(Overlap(unit, WorldBox<R>(2, 2, 0, 1, 1, 1))) << "edge to edge";
    EXPECT_TRUE(Overlap(unit, WorldBox<R>(-2, 2, -2, 1, 1, 1))) << "corner to corner";
    EXPECT_FALSE(Overlap(unit, WorldBox<R>(3, 0, 0, R(1.99), 1, 1)));
    EXPECT_FALSE(Overlap(unit, WorldBox<R>(2, R(2.01), 0, 1, 1, 1)));

    // Zero extents: points, segments and rectangles.
    EXPECT_TRUE(Overlap(unit, WorldBox<R>(1, 1, 1, 0, 0, 0))) << "point on a corner";
    EXPECT_TRUE(Overlap(unit, WorldBox<R>(0, 0, 0, 0, 0, 0))) << "point inside";
    EXPECT_FALSE(Overlap(unit, WorldBox<R>(1, 1, R(1.01), 0, 0, 0)));
    EXPECT_TRUE(Overlap(WorldBox<R>(5, 5, 5, 0, 0, 0), WorldBox<R>(5, 5, 5, 0, 0, 0)));
    EXPECT_FALSE(Overlap(WorldBox<R>(5, 5, 5, 0, 0, 0), WorldBox<R>(5, 5, R(5.01), 0, 0, 0)));
    EXPECT_TRUE(Overlap(unit, WorldBox<R>(0, 0, 1, 3, 3, 0))) << "rectangle on a face";
    EXPECT_TRUE(Overlap(WorldBox<R>(0, 0, 0, 2, 0, 0), WorldBox<R>(0, 0, 0, 0, 2, 0))) << "crossing segments";
    EXPECT_FALSE(Overlap(WorldBox<R>(0, 0, 0, 2, 0, 0), WorldBox<R>(0, 0, R(0.01), 0, 2, 0)));
}

TYPED_TEST(IntrBox3Box3Test, EdgeAgainstEdgeNeedsTheCrossAxes)
{
    using R = TypeParam;
    // The first box turned 1/8 turn about x has a ridge along x at height
    // sqrt(2); the second, turned about y, a valley edge along y at
    // h - sqrt(2). The ridges cross at right angles and only their cross
    // product, z, can separate: every face normal sees the boxes overlap.
    Matrix3<R> aboutX(Vector3<R>::UNIT_X, Math<R>::PI / 4);
    Matrix3<R> aboutY(Vector3<R>::UNIT_Y, Math<R>::PI / 4);
    Box3<R> a = Rotated(Vector3<R>::ZERO, aboutX, R(1), R(1), R(1));
    R touch = 2 * Math<R>::Sqrt(2);
    for (R gap : {R(0.01), R(0.1), R(-0.01)}) {
        Box3<R> b = Rotated(Vector3<R>(0, 0, touch + gap), aboutY, R(1), R(1), R(1));
        EXPECT_EQ(gap < 0, Overlap(a, b)) << gap;
    }
}

TYPED_TEST(IntrBox3Box3Test, NearlyParallelBoxesStayExactOnTheFaces)
{
    using R = TypeParam;
    // Turned by far less than the parallel cutoff: the cross products are
    // skipped, the face normals still decide sharply.
    Matrix3<R> tiny(Vector3<R>::UNIT_Z, R(1e-7));
    Box3<R> a = WorldBox<R>(0, 0, 0, 1, 1, 1);
    EXPECT_TRUE(Overlap(a, Rotated(Vector3<R>(R(1.9), 0, 0), tiny, R(1), R(1), R(1))));
    EXPECT_FALSE(Overlap(a, Rotated(Vector3<R>(R(2.1), 0, 0), tiny, R(1), R(1), R(1))));
    EXPECT_FALSE(Overlap(a, Rotated(Vector3<R>(0, 0, R(2.1)), tiny, R(1), R(1), R(1))));
    EXPECT_TRUE(Overlap(a, Rotated(Vector3<R>(0, 0, 2), Matrix3<R>::IDENTITY, R(1), R(1), R(1))));
    // Exactly parallel with reversed and permuted axes.
    Box3<R> permuted(Vector3<R>(0, R(2.5), 0), -Vector3<R>::UNIT_Z, Vector3<R>::UNIT_X, -Vector3<R>::UNIT_Y, R(1), R(1),
                     R(1.5));
    EXPECT_TRUE(Overlap(a, permuted));
    permuted.Center = Vector3<R>(0, R(2.51), 0);
    EXPECT_FALSE(Overlap(a, permuted));
}

TEST(IntrBox3Box3RandomTest, AgreesWithEdgeClipping)
{
    std::mt19937 rng(424242);
    int hits = 0;
    const int count = 20000;
    for (int n = 0; n < count; ++n) {
        Box3d a = Wm4Test::RandomBox<double>(rng, 2.5, 0, 2);
        Box3d b = Wm4Test::RandomBox<double>(rng, 2.5, 0, 2);
        if (n % 7 == 0)
            b.Extent[n % 3] = 0;
        Vector3d ca[8], cb[8];
        a.ComputeVertices(ca);
        b.ComputeVertices(cb);
        bool expected = Wm4Test::HexahedraMeet(ca, Wm4Test::BoxHalfspaces(a), cb, Wm4Test::BoxHalfspaces(b));
        ASSERT_EQ(expected, Overlap(a, b)) << n;
        hits += expected;
    }
    EXPECT_GT(hits, count / 5);
    EXPECT_LT(hits, count * 4 / 5);
}
