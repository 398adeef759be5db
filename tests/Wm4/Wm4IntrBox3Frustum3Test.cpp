#include <Wm4/Wm4ContBox3.h>
#include <Wm4/Wm4IntrBox3Frustum3.h>

#include "Wm4GeometryTestHelpers.h"
#include "Wm4TestHelpers.h"

using namespace Wm4;

namespace {

template <class Real>
class IntrBox3Frustum3Test : public ::testing::Test {};
TYPED_TEST_SUITE(IntrBox3Frustum3Test, Wm4Test::RealTypes);

// A frustum at the origin looking down +z (right +x, up +y), near 1, far 10,
// window 1.5 wide and 1 high; the cases are checked there and after a rigid
// motion exact in binary (a quarter turn about z and an integer shift).
template <class Real>
struct Scene {
    bool moved;
    Vector3<Real> Point(Real x, Real y, Real z) const
    {
        return moved ? Vector3<Real>(-y - 7, x + 3, z + 11) : Vector3<Real>(x, y, z);
    }
    Vector3<Real> Direction(Real x, Real y, Real z) const
    {
        return moved ? Vector3<Real>(-y, x, z) : Vector3<Real>(x, y, z);
    }
    Frustum3<Real> Frustum() const
    {
        return Frustum3<Real>(Point(0, 0, 0), Direction(0, 0, 1), Direction(0, 1, 0), Direction(1, 0, 0), Real(1),
                              Real(10), Real(0.5), Real(0.75));
    }
    Box3<Real> Box(Real x, Real y, Real z, Real e0, Real e1, Real e2) const
    {
        return Box3<Real>(Point(x, y, z), Direction(1, 0, 0), Direction(0, 1, 0), Direction(0, 0, 1), e0, e1, e2);
    }
    bool Hits(const Box3<Real>& box) const { return IntrBox3Frustum3<Real>(box, Frustum()).Test(); }
};

template <class Real>
Frustum3<Real> RandomFrustum(std::mt19937& rng)
{
    Matrix3<Real> rotation = Wm4Test::RandomRotation<Real>(rng);
    Real dMin = Wm4Test::Uniform<Real>(rng, 0.5, 2);
    return Frustum3<Real>(Wm4Test::RandomVector<Real>(rng, -3, 3), rotation.GetColumn(2), rotation.GetColumn(1),
                          rotation.GetColumn(0), dMin, dMin * Wm4Test::Uniform<Real>(rng, 2, 8),
                          Wm4Test::Uniform<Real>(rng, 0.1, 2), Wm4Test::Uniform<Real>(rng, 0.1, 2));
}

// A random box around the frustum's region of space.
template <class Real>
Box3<Real> RandomBoxNear(std::mt19937& rng, const Frustum3<Real>& frustum)
{
    Box3<Real> box = Wm4Test::RandomBox<Real>(rng, 0, 0, 2.5);
    box.Center = frustum.Origin + frustum.DVector * Wm4Test::Uniform<Real>(rng, -2, frustum.DMax + 2) +
                 Wm4Test::RandomVector<Real>(rng, -1, 1) * (frustum.DMax * Real(0.8));
    return box;
}

} // namespace

TYPED_TEST(IntrBox3Frustum3Test, HandBuiltCases)
{
    using R = TypeParam;
    for (bool moved : {false, true}) {
        Scene<R> s{moved};
        EXPECT_TRUE(s.Hits(s.Box(0, 0, 5, 0.5, 0.5, 0.5))) << moved;
        EXPECT_TRUE(s.Hits(s.Box(0, 0, 5, 20, 20, 20))) << "holding the whole frustum";
        EXPECT_TRUE(s.Hits(s.Box(0, 0, 5, 0, 0, 0))) << "a point inside";

        // The eye lies outside the frustum: a small box round it is rejected,
        // one that reaches through the near window is not.
        EXPECT_FALSE(s.Hits(s.Box(0, 0, 0, 0.5, 0.5, 0.5)));
        EXPECT_TRUE(s.Hits(s.Box(0, 0, 0, 2, 2, 2)));
        EXPECT_TRUE(s.Hits(s.Box(0, 0, 0, 0.1, 0.1, 1))) << "eye to near window";

        // Near and far planes: outside, touching.
        EXPECT_FALSE(s.Hits(s.Box(0, 0, 0.5, 0.25, 0.25, 0.25)));
        EXPECT_TRUE(s.Hits(s.Box(0, 0, 0.5, 0.25, 0.25, 0.5)));
        EXPECT_FALSE(s.Hits(s.Box(0, 0, 12, 1, 1, 1)));
        EXPECT_TRUE(s.Hits(s.Box(0, 0, 11, 1, 1, 1)));
        EXPECT_TRUE(s.Hits(s.Box(0, 0, 11, 20, 20, 1))) << "touching the far plane, wider than the frustum";

        // Side planes: x = 0.75 z on the right, y = -0.5 z at the bottom.
        EXPECT_FALSE(s.Hits(s.Box(5, 0, 5, 0.5, 0.5, 0.5)));
        EXPECT_TRUE(s.Hits(s.Box(R(3.75), 0, 5, 0, 0, 0))) << "a point on the right plane";
        EXPECT_FALSE(s.Hits(s.Box(R(3.76), 0, 5, 0, 0, 0)));
        EXPECT_TRUE(s.Hits(s.Box(0, R(-2.5), 5, 0, 1, 0))) << "a segment across the bottom plane";
        EXPECT_FALSE(s.Hits(s.Box(0, R(-5.5), 5, 1, 2, 1)));
        EXPECT_TRUE(s.Hits(s.Box(0, -5, 5, 1, 2, 1))) << "touching the bottom plane with an edge";

        // The frustum's corners as points: on the boundary, then just off it.
        EXPECT_TRUE(s.Hits(s.Box(R(7.5), 5, 10, 0, 0, 0)));
        EXPECT_TRUE(s.Hits(s.Box(R(-0.75), R(-0.5), 1, 0, 0, 0)));
        EXPECT_FALSE(s.Hits(s.Box(R(7.5), 5, R(10.01), 0, 0, 0)));
        EXPECT_FALSE(s.Hits(s.Box(R(-0.75), R(-0.5), R(0.99), 0, 0, 0)));

        // A flat box lying in the far plane around the frustum's far face.
        EXPECT_TRUE(s.Hits(s.Box(0, 0, 10, 8, 8, 0)));
    }
}

TEST(IntrBox3Frustum3RandomTest, AgreesWithEdgeClipping)
{
    std::mt19937 rng(6502);
    int hits = 0;
    const int count = 20000;
    for (int n = 0; n < count; ++n) {
        Frustum3d frustum = RandomFrustum<double>(rng);
        Box3d box = RandomBoxNear(rng, frustum);
        if (n % 7 == 0) {
            box.Extent[n % 3] = 0;
        }
        Vector3d boxCorners[8], frustumCorners[8];
        box.ComputeVertices(boxCorners);
        frustum.ComputeVertices(frustumCorners);
        bool expected = Wm4Test::HexahedraMeet(boxCorners, Wm4Test::BoxHalfspaces(box), frustumCorners,
                                               Wm4Test::FrustumHalfspaces(frustum));
        ASSERT_EQ(expected, IntrBox3Frustum3d(box, frustum).Test()) << n;
        hits += expected;
    }
    EXPECT_GT(hits, count / 5);
    EXPECT_LT(hits, count * 4 / 5);
}
