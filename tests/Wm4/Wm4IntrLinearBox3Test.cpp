// Lines, rays and segments against oriented boxes: touching and degenerate cases by hand,
// everything else against slab clipping on random values.

#include <Wm4/Wm4IntrLine3Box3.h>
#include <Wm4/Wm4IntrRay3Box3.h>
#include <Wm4/Wm4IntrSegment3Box3.h>

#include "Wm4GeometryTestHelpers.h"
#include "Wm4TestHelpers.h"

using namespace Wm4;

namespace {

template <class Real>
class IntrLinearBox3Test : public ::testing::Test {};
TYPED_TEST_SUITE(IntrLinearBox3Test, Wm4Test::RealTypes);

// The cases are written in the frame of a box with extents (1, 2, 3) at the
// origin; each is checked there and again after a rigid motion that is
// exact in binary (a quarter turn about z and an integer shift), so that
// touching cases stay touching.
template <class Real>
struct Frame {
    bool moved;
    Vector3<Real> Point(Real x, Real y, Real z) const
    {
        return moved ? Vector3<Real>(-y + 10, x - 20, z + 30) : Vector3<Real>(x, y, z);
    }
    Vector3<Real> Direction(Real x, Real y, Real z) const
    {
        return moved ? Vector3<Real>(-y, x, z) : Vector3<Real>(x, y, z);
    }
    Box3<Real> Box(Real e0 = 1, Real e1 = 2, Real e2 = 3) const
    {
        return Box3<Real>(Point(0, 0, 0), Direction(1, 0, 0), Direction(0, 1, 0), Direction(0, 0, 1), e0, e1, e2);
    }
};

template <class Real>
bool LineHits(const Frame<Real>& f, Vector3<Real> origin, Vector3<Real> direction)
{
    return IntrLine3Box3<Real>(Line3<Real>(f.Point(origin[0], origin[1], origin[2]),
                                           f.Direction(direction[0], direction[1], direction[2])),
                               f.Box())
        .Test();
}

template <class Real>
bool RayHits(const Frame<Real>& f, Vector3<Real> origin, Vector3<Real> direction)
{
    return IntrRay3Box3<Real>(Ray3<Real>(f.Point(origin[0], origin[1], origin[2]),
                                         f.Direction(direction[0], direction[1], direction[2])),
                              f.Box())
        .Test();
}

template <class Real>
bool SegmentHits(const Frame<Real>& f, Vector3<Real> p0, Vector3<Real> p1, const Box3<Real>& box)
{
    Segment3<Real> segment(f.Point(p0[0], p0[1], p0[2]), f.Point(p1[0], p1[1], p1[2]));
    return IntrSegment3Box3<Real>(segment, box).Test();
}

} // namespace

TYPED_TEST(IntrLinearBox3Test, LineCases)
{
    using R = TypeParam;
    using V = Vector3<R>;
    for (bool moved : {false, true}) {
        Frame<R> f{moved};
        EXPECT_TRUE(LineHits(f, V(0, 0, 0), V(1, 0, 0))) << moved;
        // Parallel to a face: on it (grazing), then just off it.
        EXPECT_TRUE(LineHits(f, V(5, 2, 0), V(1, 0, 0)));
        EXPECT_FALSE(LineHits(f, V(5, R(2.01), 0), V(1, 0, 0)));
        // Along an edge.
        EXPECT_TRUE(LineHits(f, V(0, 2, -3), V(1, 0, 0)));
        EXPECT_FALSE(LineHits(f, V(0, R(2.01), R(-3.01)), V(1, 0, 0)));
        // Skew past the corner (1, 2, z): x + y = 3 touches it, x + y = 3.01
        // misses though the line crosses every slab of the box.
        EXPECT_TRUE(LineHits(f, V(3, 0, 1), V(-1, 1, 0)));
        EXPECT_FALSE(LineHits(f, V(R(3.01), 0, 1), V(-1, 1, 0)));
        EXPECT_FALSE(LineHits(f, V(R(3.01), 0, 1), V(-1, 1, R(0.3))));
        // A line with no direction is its origin.
        EXPECT_TRUE(LineHits(f, V(R(0.5), -2, 3), V(0, 0, 0)));
        EXPECT_FALSE(LineHits(f, V(R(1.5), 0, 0), V(0, 0, 0)));
    }
}

TYPED_TEST(IntrLinearBox3Test, RayCases)
{
    using R = TypeParam;
    using V = Vector3<R>;
    for (bool moved : {false, true}) {
        Frame<R> f{moved};
        EXPECT_TRUE(RayHits(f, V(5, 0, 0), V(-1, 0, 0))) << moved;
        EXPECT_TRUE(RayHits(f, V(1, 1, 1), V(1, 0, 0))) << "starting on a face, leaving";
        EXPECT_FALSE(RayHits(f, V(5, R(2.5), 0), V(-1, 0, 0))) << "parallel beside a face";
        EXPECT_TRUE(RayHits(f, V(5, 2, 3), V(-1, 0, 0))) << "along an edge";
        // Skew past the corner (1, 2, z), from either side of it.
        EXPECT_TRUE(RayHits(f, V(3, 0, 1), V(-1, 1, 0)));
        EXPECT_FALSE(RayHits(f, V(R(3.01), 0, 1), V(-1, 1, 0)));
        EXPECT_FALSE(RayHits(f, V(R(-0.99), 4, 1), V(1, -1, 0)));
        EXPECT_TRUE(RayHits(f, V(-1, 4, 1), V(1, -1, 0)));
        // No direction: the origin alone.
        EXPECT_TRUE(RayHits(f, V(1, 2, 3), V(0, 0, 0)));
        EXPECT_FALSE(RayHits(f, V(0, 0, R(3.01)), V(0, 0, 0)));
    }
}

TYPED_TEST(IntrLinearBox3Test, SegmentCases)
{
    using R = TypeParam;
    using V = Vector3<R>;
    for (bool moved : {false, true}) {
        Frame<R> f{moved};
        Box3<R> box = f.Box();
        EXPECT_FALSE(SegmentHits(f, V(R(1.01), 0, 0), V(5, 0, 0), box)) << "stopping short";
        EXPECT_TRUE(SegmentHits(f, V(1, 0, 0), V(5, 0, 0), box)) << "ending on a face";
        EXPECT_TRUE(SegmentHits(f, V(-3, 2, 3), V(3, 2, 3), box)) << "along an edge";
        // Skew past the corner (1, 2, z): every slab is crossed, only the
        // axis across the segment and the box's z edge separates.
        // The centre form with an unnormalised direction keeps the touching
        // case exact: from (0, 3, 1) to (1.5, 1.5, 1).
        Segment3<R> skew(f.Point(R(0.75), R(2.25), 1), f.Direction(-1, 1, 0), R(0.75));
        EXPECT_TRUE(IntrSegment3Box3<R>(skew, box).Test());
        skew.Origin = f.Point(R(0.76), R(2.25), 1);
        EXPECT_FALSE(IntrSegment3Box3<R>(skew, box).Test());
        // Equal end points: a point.
        EXPECT_TRUE(SegmentHits(f, V(1, -2, 3), V(1, -2, 3), box));
        EXPECT_FALSE(SegmentHits(f, V(1, R(-2.01), 3), V(1, R(-2.01), 3), box));

        // A flat box (a rectangle in z = 0) and a box shrunk to its centre.
        Box3<R> flat = f.Box(1, 2, 0);
        EXPECT_TRUE(SegmentHits(f, V(R(0.5), R(0.5), 0), V(R(0.5), R(0.5), 1), flat)) << "starting on it";
        EXPECT_FALSE(SegmentHits(f, V(-5, 0, R(0.01)), V(5, 0, R(0.01)), flat)) << "above it";
        EXPECT_TRUE(SegmentHits(f, V(-5, 0, 0), V(5, 0, 0), flat)) << "in its plane";
        Box3<R> point = f.Box(0, 0, 0);
        EXPECT_TRUE(SegmentHits(f, V(-1, -1, -1), V(1, 1, 1), point));
        EXPECT_FALSE(SegmentHits(f, V(-1, -1, -1), V(1, 1, R(1.01)), point));
    }
}

TEST(IntrLinearBox3RandomTest, AgreesWithSlabClipping)
{
    std::mt19937 rng(31337);
    int hits[3] = {0, 0, 0};
    for (int n = 0; n < 20000; ++n) {
        Box3d box = Wm4Test::RandomBox<double>(rng, 2, 0, 3);
        if (n % 10 == 0)
            box.Extent[n % 3] = 0;
        auto planes = Wm4Test::BoxHalfspaces(box);
        Vector3d origin = Wm4Test::RandomVector<double>(rng, -5, 5);
        // Aimed roughly at the box, so that hits and misses both abound.
        Vector3d direction = box.Center + Wm4Test::RandomVector<double>(rng, -4, 4) - origin;
        direction.Normalize();
        double extent = Wm4Test::Uniform<double>(rng, 0, 4);
        constexpr double inf = std::numeric_limits<double>::infinity();

        bool line = Wm4Test::ClipMeets(origin, direction, -inf, inf, planes);
        bool ray = Wm4Test::ClipMeets(origin, direction, 0.0, inf, planes);
        bool segment = Wm4Test::ClipMeets(origin, direction, -extent, extent, planes);
        ASSERT_EQ(line, IntrLine3Box3d(Line3d(origin, direction), box).Test()) << n;
        ASSERT_EQ(ray, IntrRay3Box3d(Ray3d(origin, direction), box).Test()) << n;
        ASSERT_EQ(segment, IntrSegment3Box3d(Segment3d(origin, direction, extent), box).Test()) << n;
        hits[0] += line;
        hits[1] += ray;
        hits[2] += segment;
    }
    // Both answers occur often for each kind.
    for (int h : hits) {
        EXPECT_GT(h, 1000);
        EXPECT_LT(h, 18000);
    }
}
