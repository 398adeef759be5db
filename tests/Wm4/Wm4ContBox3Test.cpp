#include <Wm4/Wm4ContBox3.h>

#include "Wm4GeometryTestHelpers.h"
#include "Wm4TestHelpers.h"

#include <vector>

using namespace Wm4;
using Wm4Test::NearV;
using Wm4Test::Tolerance;

namespace {

template <class Real>
class ContBox3Test : public ::testing::Test {};
TYPED_TEST_SUITE(ContBox3Test, Wm4Test::RealTypes);

// The box's corners, edge mid-points and face centres: a set symmetric about
// every face plane of the box, so its covariance is diagonal in the box's
// frame and ContOrientedBox must find that frame again.
template <class Real>
std::vector<Vector3<Real>> SymmetricSamples(const Box3<Real>& box)
{
    std::vector<Vector3<Real>> points;
    for (int x = -1; x <= 1; ++x) {
        for (int y = -1; y <= 1; ++y) {
            for (int z = -1; z <= 1; ++z) {
                if (x == 0 && y == 0 && z == 0)
                    continue;
                points.push_back(box.Center + box.Axis[0] * (Real(x) * box.Extent[0]) +
                                 box.Axis[1] * (Real(y) * box.Extent[1]) + box.Axis[2] * (Real(z) * box.Extent[2]));
            }
        }
    }
    return points;
}

// The boxes are the same up to the order and the signs of the axes.
template <class Real>
::testing::AssertionResult SameBox(const Box3<Real>& expected, const Box3<Real>& actual, Real tolerance)
{
    if (!NearV(expected.Center, actual.Center))
        return ::testing::AssertionFailure() << "centres differ";
    for (int i = 0; i < 3; ++i) {
        int match = 0;
        for (int j = 1; j < 3; ++j) {
            if (Math<Real>::FAbs(actual.Axis[j].Dot(expected.Axis[i])) >
                Math<Real>::FAbs(actual.Axis[match].Dot(expected.Axis[i]))) {
                match = j;
            }
        }
        Real cosine = Math<Real>::FAbs(actual.Axis[match].Dot(expected.Axis[i]));
        if (!(cosine >= Real(1) - tolerance))
            return ::testing::AssertionFailure() << "axis " << i << " best cosine " << cosine;
        if (!(Math<Real>::FAbs(expected.Extent[i] - actual.Extent[match]) <= tolerance)) {
            return ::testing::AssertionFailure() << "extent " << i << ": " << expected.Extent[i] << " vs "
                                                 << actual.Extent[match];
        }
    }
    return ::testing::AssertionSuccess();
}

template <class Real>
Box3<Real> WorldBox(const Vector3<Real>& center, Real e0, Real e1, Real e2)
{
    return Box3<Real>(center, Vector3<Real>::UNIT_X, Vector3<Real>::UNIT_Y, Vector3<Real>::UNIT_Z, e0, e1, e2);
}

} // namespace

TYPED_TEST(ContBox3Test, OrientedBoxRecoversAxisAlignedAndRotatedBoxes)
{
    using R = TypeParam;
    Box3<R> aligned = WorldBox(Vector3<R>(1, -2, 3), R(3), R(2), R(0.5));
    std::vector<Vector3<R>> points = SymmetricSamples(aligned);
    Box3<R> fit = ContOrientedBox(int(points.size()), points.data());
    EXPECT_TRUE(SameBox(aligned, fit, 10 * Tolerance<R>()));
    // Axes in increasing order of the spread, right-handed.
    EXPECT_NEAR(R(1), Math<R>::FAbs(fit.Axis[0].Z()), Tolerance<R>());
    EXPECT_NEAR(R(1), Math<R>::FAbs(fit.Axis[2].X()), Tolerance<R>());
    EXPECT_NEAR(R(1), fit.Axis[0].Cross(fit.Axis[1]).Dot(fit.Axis[2]), Tolerance<R>());

    std::mt19937 rng(99);
    for (int n = 0; n < 20; ++n) {
        Box3<R> rotated = Wm4Test::RandomBox<R>(rng, 50, 0.5, 4);
        // Equal extents leave the frame undetermined; keep them apart.
        rotated.Extent[1] = rotated.Extent[0] + R(0.5);
        rotated.Extent[2] = rotated.Extent[1] + R(0.5);
        points = SymmetricSamples(rotated);
        fit = ContOrientedBox(int(points.size()), points.data());
        EXPECT_TRUE(SameBox(rotated, fit, R(100) * Tolerance<R>())) << n;
    }
}

TYPED_TEST(ContBox3Test, OrientedBoxHoldsEveryPointAndTouchesEachFace)
{
    using R = TypeParam;
    std::mt19937 rng(5);
    std::vector<Vector3<R>> points;
    for (int i = 0; i < 200; ++i) {
        points.push_back(Vector3<R>(Wm4Test::Uniform<R>(rng, -1, 1) * 8, Wm4Test::Uniform<R>(rng, -1, 1) * 2,
                                    Wm4Test::Uniform<R>(rng, -1, 1)) +
                         Vector3<R>(5, 5, 5));
    }
    Box3<R> box = ContOrientedBox(int(points.size()), points.data());
    R slack = 100 * Tolerance<R>();
    for (int axis = 0; axis < 3; ++axis) {
        R low = Math<R>::MAX_REAL, high = -Math<R>::MAX_REAL;
        for (const Vector3<R>& p : points) {
            EXPECT_TRUE(InBox(p, box, slack));
            R t = (p - box.Center).Dot(box.Axis[axis]);
            low = std::min(low, t);
            high = std::max(high, t);
        }
        EXPECT_NEAR(-box.Extent[axis], low, slack);
        EXPECT_NEAR(box.Extent[axis], high, slack);
    }
}

TYPED_TEST(ContBox3Test, OrientedBoxOfDegeneratePointSets)
{
    using R = TypeParam;
    // No points: an empty box, which a caller sees as invalid.
    Box3<R> empty = ContOrientedBox<R>(0, nullptr);
    Box3<R> expected(Vector3<R>::ZERO, Vector3<R>::UNIT_X, Vector3<R>::UNIT_Y, Vector3<R>::UNIT_Z, R(-1), R(-1), R(-1));
    EXPECT_EQ(expected, empty);
    Vector3<R> one(4, 5, 6);
    EXPECT_EQ(empty, ContOrientedBox<R>(-3, &one));
    EXPECT_EQ(empty, ContOrientedBox<R>(2, nullptr));

    Box3<R> point = ContOrientedBox<R>(1, &one);
    EXPECT_EQ(one, point.Center);
    EXPECT_EQ(R(0), point.Extent[0] + point.Extent[1] + point.Extent[2]);

    // Collinear points: a segment, flat along the other two axes.
    Vector3<R> line[3] = {Vector3<R>(0, 0, 0), Vector3<R>(1, 2, 2), Vector3<R>(3, 6, 6)};
    Box3<R> segment = ContOrientedBox<R>(3, line);
    EXPECT_TRUE(NearV(Vector3<R>(1.5, 3, 3), segment.Center));
    EXPECT_NEAR(R(0), segment.Extent[0], Tolerance<R>());
    EXPECT_NEAR(R(0), segment.Extent[1], Tolerance<R>());
    EXPECT_NEAR(R(4.5), segment.Extent[2], 10 * Tolerance<R>());
}

TYPED_TEST(ContBox3Test, MergeOfWorldBoxesIsTheirBoundingBox)
{
    using R = TypeParam;
    Box3<R> a = WorldBox(Vector3<R>(0.5, 0.5, 0.5), R(0.5), R(0.5), R(0.5));
    Box3<R> b = WorldBox(Vector3<R>(2.5, 0, 1), R(0.5), R(1), R(2));
    Box3<R> merged = MergeBoxes(a, b);
    EXPECT_TRUE(NearV(Vector3<R>(1.5, 0, 1), merged.Center));
    EXPECT_TRUE(NearV(Vector3<R>::UNIT_X, merged.Axis[0]));
    EXPECT_TRUE(NearV(Vector3<R>::UNIT_Y, merged.Axis[1]));
    EXPECT_TRUE(NearV(Vector3<R>::UNIT_Z, merged.Axis[2]));
    EXPECT_NEAR(R(1.5), merged.Extent[0], Tolerance<R>());
    EXPECT_NEAR(R(1), merged.Extent[1], Tolerance<R>());
    EXPECT_NEAR(R(2), merged.Extent[2], Tolerance<R>());
}

TYPED_TEST(ContBox3Test, MergeContainsBothBoxes)
{
    using R = TypeParam;
    std::mt19937 rng(1234);
    for (int n = 0; n < 300; ++n) {
        Box3<R> a = Wm4Test::RandomBox<R>(rng, 20, 0, 5);
        Box3<R> b = Wm4Test::RandomBox<R>(rng, 20, 0, 5);
        if (n % 3 == 0) {
            // A left-handed frame describes the same box.
            b.Axis[2] = -b.Axis[2];
        }
        Box3<R> merged = MergeBoxes(a, b);
        EXPECT_NEAR(R(1), merged.Axis[0].Cross(merged.Axis[1]).Dot(merged.Axis[2]), 10 * Tolerance<R>());
        Vector3<R> corners[16];
        a.ComputeVertices(corners);
        b.ComputeVertices(corners + 8);
        for (const Vector3<R>& corner : corners)
            ASSERT_TRUE(InBox(corner, merged, 1000 * Tolerance<R>())) << "pair " << n;
    }

    // Merging a box with itself changes nothing but rounding.
    Box3<R> a = Wm4Test::RandomBox<R>(rng, 20, 1, 5);
    Box3<R> self = MergeBoxes(a, a);
    EXPECT_TRUE(NearV(a.Center, self.Center));
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(NearV(a.Axis[i], self.Axis[i]));
        EXPECT_NEAR(a.Extent[i], self.Extent[i], 10 * Tolerance<R>());
    }
}

TYPED_TEST(ContBox3Test, InBoxIncludesTheFacesWithinEpsilon)
{
    using R = TypeParam;
    Matrix3<R> rotation(Vector3<R>(0, 0, 1), R(0.5));
    Box3<R> box(Vector3<R>(1, 2, 3), rotation.GetColumn(0), rotation.GetColumn(1), rotation.GetColumn(2), R(1), R(2),
                R(0));
    EXPECT_TRUE(InBox(box.Center, box));
    EXPECT_TRUE(InBox(box.Center + box.Axis[0] * R(0.999) + box.Axis[1] * R(-1.999), box));
    Vector3<R> corner = box.Center + box.Axis[0] + box.Axis[1] * R(2);
    EXPECT_TRUE(InBox(corner, box));
    EXPECT_FALSE(InBox(corner + box.Axis[0] * R(1e-3), box));
    // A flat box holds the points of its rectangle only.
    EXPECT_FALSE(InBox(box.Center + box.Axis[2] * R(1e-3), box));
    EXPECT_TRUE(InBox(box.Center + box.Axis[2] * R(1e-3), box, R(2e-3)));
    EXPECT_FALSE(InBox(Vector3<R>(100, 2, 3), box));
}
