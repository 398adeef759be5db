// The bound value: validity and radius, every operation on hand-computed cases (the
// world-axis readings of oriented boxes included), and its three persisted forms.

#include "scenegraph/zuSpatialTestHelpers.h"

#include <zuSceneGraph/objects/zuTSharedArray.h>
#include <zuSceneGraph/scenegraph/zuBoundingVolume.h>
#include <zuSceneGraph/scenegraph/zuLegacyBoxBV.h>
#include <zuSceneGraph/scenegraph/zuLegacySphereBV.h>

#include <Wm4/Wm4ContBox3.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace zu::test {
namespace {

constexpr float MAX_REAL = Wm4::Math<float>::MAX_REAL;

TEST(BoundingVolume, ValidityRadiusAndCopy)
{
    EXPECT_FALSE(zuBoundingVolume().isValid());
    EXPECT_EQ(zuBoundingVolume().GetRadius(), -1.0f);
    const zuBoundingVolume box(Vec(1, 2, 3), Vec(3, 4, 12));
    EXPECT_TRUE(box.isValid());
    EXPECT_EQ(box.GetRadius(), 13.0f);
    EXPECT_TRUE(zuBoundingVolume(Vec(0, 0, 0), Vec(0, 0, 0)).isValid()) << "a point is a valid bound";

    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    for (const Vec& extents : {Vec(1, -0.5f, 1), Vec(nan, 1, 1), Vec(1, inf, 1), Vec(3e38f, 3e38f, 3e38f)}) {
        const zuBoundingVolume bad(Vec(0, 0, 0), extents);
        EXPECT_EQ(bad.GetRadius(), -1.0f) << extents[0] << " " << extents[1] << " " << extents[2];
        EXPECT_FALSE(bad.isValid());
    }

    // copyFrom takes only valid bounds.
    zuBoundingVolume target(Vec(1, 1, 1), Vec(2, 2, 2));
    const zuBoundingVolume before = target;
    target.copyFrom(zuBoundingVolume());
    EXPECT_EQ(target, before);
    const zuBoundingVolume source(Vec(5, 6, 7), Vec(1, 2, 2));
    target.copyFrom(source);
    EXPECT_EQ(target, source);
}

TEST(BoundingVolume, LegacyVolumesConvertBothWays)
{
    zuBoundingVolume bv(Vec(9, 9, 9), Vec(1, 1, 1));
    bv.assign(nullptr);
    EXPECT_EQ(bv, zuBoundingVolume(Vec(9, 9, 9), Vec(1, 1, 1)));

    // A box gives its extents; its axes are dropped.
    zuPointer<zuLegacyBoxBV> box = new zuLegacyBoxBV(
        Wm4::Box3<float>(Vec(1, 2, 3), Vec(0, 1, 0), Vec(-1, 0, 0), Vec(0, 0, 1), 1.0f, 2.0f, 2.0f));
    bv.assign(box);
    EXPECT_EQ(bv, zuBoundingVolume(Vec(1, 2, 3), Vec(1, 2, 2)));

    // A sphere of radius r becomes the cube of half-size r, so the radius grows to r·√3.
    zuPointer<zuLegacySphereBV> sphere = new zuLegacySphereBV(Vec(-1, 0, 4), 2.0f);
    bv.assign(sphere);
    expectBox(bv, Vec(-1, 0, 4), Vec(2, 2, 2));
    EXPECT_FLOAT_EQ(bv.GetRadius(), 2.0f * std::sqrt(3.0f));

    EXPECT_EQ(zuBoundingVolume().createLegacyVolume(), nullptr);
    zuPointer<zuLegacyBoundingVolume> made = zuBoundingVolume(Vec(1, 2, 3), Vec(3, 4, 12)).createLegacyVolume();
    ASSERT_TRUE(made && made->IsExactly(zuLegacySphereBV::TYPE));
    EXPECT_EQ(made->GetCenter(), Vec(1, 2, 3));
    EXPECT_EQ(static_cast<zuLegacySphereBV*>(made.get())->GetRadius(), 13.0f);
}

TEST(BoundingVolume, ComputeFromDataBoxReadsTheFittedBoxAlongTheWorldAxes)
{
    zuBoundingVolume bv(Vec(7, 7, 7), Vec(1, 1, 1));
    bv.computeFromDataBox(static_cast<const zuVector3fArray*>(nullptr));
    EXPECT_EQ(bv, zuBoundingVolume(Vec(7, 7, 7), Vec(1, 1, 1))) << "a null array changes nothing";

    // The corners of [0,2]x[0,4]x[0,6]: the fitted box is this box, thinnest axis first.
    Vec* corners = new Vec[8];
    for (int i = 0; i < 8; ++i)
        corners[i] = Vec(i & 1 ? 2.0f : 0.0f, i & 2 ? 4.0f : 0.0f, i & 4 ? 6.0f : 0.0f);
    zuPointer<zuVector3fArray> box = new zuVector3fArray(8, corners);
    bv.computeFromDataBox(box);
    expectBox(bv, Vec(1, 2, 3), Vec(1, 2, 3), 1e-5f);

    // A flat rectangle along the diagonal of the xy plane. Its fitted box has the axes
    // z, (1,-1,0)/√2 and (1,1,0)/√2 with half-sizes 0, √2 and 10√2; read along the world
    // axes these become x, y and z, so the bound is flat in x and misses the data.
    Vec* diagonal = new Vec[4]{Vec(10, 10, 0), Vec(-10, -10, 0), Vec(1, -1, 0), Vec(-1, 1, 0)};
    zuPointer<zuVector3fArray> rotated = new zuVector3fArray(4, diagonal);
    bv.computeFromDataBox(rotated);
    expectBox(bv, Vec(0, 0, 0), Vec(0, std::sqrt(2.0f), 10 * std::sqrt(2.0f)), 1e-4f);
    EXPECT_FALSE(bv.containsBox(Vec(10, 10, 0))) << "not a conservative bound for rotated data";

    zuPointer<zuVector3fArray> empty = new zuVector3fArray;
    bv.computeFromDataBox(empty);
    EXPECT_FALSE(bv.isValid());
}

TEST(BoundingVolume, TransformBoxByMapsTheCentreAndBoundsTheMappedCorners)
{
    const zuBoundingVolume bv(Vec(1, 0, 0), Vec(1, 2, 3));
    // A shear x' = x + y: the unit cube's image spans 2 in x.
    zuGenericTransformation<float> shear;
    shear.SetMatrix(Wm4::Matrix3<float>(1, 1, 0, 0, 1, 0, 0, 0, 1));
    shear.SetTranslate(Vec(0, 0, 5));
    zuBoundingVolume sheared;
    zuBoundingVolume(Vec(1, 1, 0), Vec(1, 1, 1)).transformBoxBy(shear, sheared);
    expectBox(sheared, Vec(2, 1, 5), Vec(2, 1, 1));

    // The identity copies; an invalid bound leaves the output alone.
    zuBoundingVolume copy;
    bv.transformBoxBy(zuGenericTransformation<float>(), copy);
    EXPECT_EQ(copy, bv);
    zuBoundingVolume untouched(Vec(3, 3, 3), Vec(1, 1, 1));
    zuBoundingVolume().transformBoxBy(shear, untouched);
    EXPECT_EQ(untouched, zuBoundingVolume(Vec(3, 3, 3), Vec(1, 1, 1)));

    // Against the eight corners mapped one by one, for arbitrary rotations and scales.
    std::mt19937 random(7);
    std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
    for (int trial = 0; trial < 50; ++trial) {
        const Wm4::Vector3<double> axis(unit(random), unit(random), unit(random) + 2.0);
        const zuGenericTransformation<float> xf
            = rsTransform(rotation(axis / axis.Length(), 360.0 * unit(random)),
                          Vec(1.5f + unit(random), 1.5f + unit(random), 1.5f + unit(random)),
                          Vec(10 * unit(random), 10 * unit(random), 10 * unit(random)));
        const zuBoundingVolume source(Vec(unit(random), unit(random), unit(random)),
                                      Vec(1 + unit(random), 1 + unit(random), 1 + unit(random)));
        zuBoundingVolume mapped;
        source.transformBoxBy(xf, mapped);
        Vec low(MAX_REAL, MAX_REAL, MAX_REAL), high(-MAX_REAL, -MAX_REAL, -MAX_REAL);
        for (int c = 0; c < 8; ++c) {
            Vec corner = source.GetCenter();
            for (int j = 0; j < 3; ++j)
                corner[j] += (c >> j & 1 ? 1.0f : -1.0f) * source.GetExtents()[j];
            const Vec image = xf.ApplyForward(corner);
            for (int j = 0; j < 3; ++j) {
                low[j] = std::min(low[j], image[j]);
                high[j] = std::max(high[j], image[j]);
            }
        }
        expectBox(mapped, (low + high) * 0.5f, (high - low) * 0.5f, 1e-4f);
    }
}

TEST(BoundingVolume, WhichBoxSideCountsTouchingAsOnThatSide)
{
    const Wm4::Plane3<float> plane(Vec(1, 0, 0), 5.0f);
    EXPECT_EQ(zuBoundingVolume(Vec(7, 0, 0), Vec(2, 1, 1)).whichBoxSide(plane), +1) << "d = r";
    EXPECT_EQ(zuBoundingVolume(Vec(3, 0, 0), Vec(2, 1, 1)).whichBoxSide(plane), -1) << "d = -r";
    EXPECT_EQ(zuBoundingVolume(Vec(6.5f, 0, 0), Vec(2, 1, 1)).whichBoxSide(plane), 0);
    EXPECT_EQ(zuBoundingVolume().whichBoxSide(plane), 0);

    // r = |0.5|·2 + |-0.75|·4 + 0·8 = 4 for the normal (0.5, -0.75, 0).
    const zuBoundingVolume box(Vec(2, 0, 100), Vec(2, 4, 8));
    EXPECT_EQ(box.whichBoxSide(Wm4::Plane3<float>(Vec(0.5f, -0.75f, 0), -3.0f)), +1);   // d = 1 + 3 = 4
    EXPECT_EQ(box.whichBoxSide(Wm4::Plane3<float>(Vec(0.5f, -0.75f, 0), -2.5f)), 0);    // d = 3.5
    EXPECT_EQ(box.whichBoxSide(Wm4::Plane3<float>(Vec(0.5f, -0.75f, 0), 5.0f)), -1);    // d = -4
}

TEST(BoundingVolume, TestIntersectionBoxWithALineASegmentOrARay)
{
    const zuBoundingVolume cube(Vec(0, 0, 0), Vec(1, 1, 1));
    const Vec right(5, 0, 0), left(-1, 0, 0), forward(1, 0, 0);

    EXPECT_TRUE(cube.testIntersectionBox(right, forward, -MAX_REAL, MAX_REAL)) << "a line runs both ways";
    EXPECT_FALSE(cube.testIntersectionBox(Vec(5, 5, 0), forward, -MAX_REAL, MAX_REAL));

    EXPECT_FALSE(cube.testIntersectionBox(right, forward, 0.0f, MAX_REAL)) << "a ray pointing away";
    EXPECT_TRUE(cube.testIntersectionBox(right, left, 0.0f, MAX_REAL));

    EXPECT_FALSE(cube.testIntersectionBox(right, left, 0.0f, 3.0f)) << "ends at x = 2";
    EXPECT_TRUE(cube.testIntersectionBox(right, left, 0.0f, 4.0f)) << "ends on the face x = 1";
    EXPECT_TRUE(cube.testIntersectionBox(Vec(0.5f, 0, 0), forward, 0.0f, 0.25f)) << "wholly inside";
    // The segment always starts at the origin: from x = -5 to x = 3 it crosses the cube,
    // though [tmin, tmax] alone would run from x = 2 to x = 3.
    EXPECT_TRUE(cube.testIntersectionBox(Vec(-5, 0, 0), forward, 7.0f, 8.0f));

    EXPECT_FALSE(zuBoundingVolume().testIntersectionBox(right, left, -MAX_REAL, MAX_REAL));
}

TEST(BoundingVolume, BoxOverlapAndPointContainment)
{
    const zuBoundingVolume a(Vec(0, 0, 0), Vec(1, 1, 1));
    EXPECT_TRUE(a.testIntersectionBox(zuBoundingVolume(Vec(2, 0, 0), Vec(1, 1, 1)))) << "touching faces";
    EXPECT_TRUE(a.testIntersectionBox(zuBoundingVolume(Vec(0.5f, 0.5f, 0), Vec(0.1f, 0.1f, 0.1f))));
    EXPECT_FALSE(a.testIntersectionBox(zuBoundingVolume(Vec(2.5f, 0, 0), Vec(1, 1, 1))));
    EXPECT_FALSE(a.testIntersectionBox(zuBoundingVolume()));
    EXPECT_FALSE(zuBoundingVolume().testIntersectionBox(a));

    EXPECT_TRUE(a.containsBox(Vec(0.5f, -0.5f, 0.9f)));
    EXPECT_TRUE(a.containsBox(Vec(1, 1, 1))) << "a corner";
    EXPECT_FALSE(a.containsBox(Vec(1.01f, 0, 0)));
    EXPECT_FALSE(zuBoundingVolume().containsBox(Vec(0, 0, 0)));
}

TEST(BoundingVolume, GrowToContainBoxIsTheMergeOfTheTwoWorldAxisBoxes)
{
    zuBoundingVolume a(Vec(0, 0, 0), Vec(1, 1, 1));
    a.growToContainBox(zuBoundingVolume(Vec(4, 0, 0), Vec(1, 2, 1)));
    expectBox(a, Vec(2, 0, 0), Vec(3, 2, 1));

    const zuBoundingVolume before = a;
    a.growToContainBox(zuBoundingVolume());
    EXPECT_EQ(a, before) << "an invalid argument changes nothing";
    zuBoundingVolume none;
    none.growToContainBox(before);
    EXPECT_EQ(none, before) << "an invalid bound takes the argument";

    // Wm4::MergeBoxes keeps the world axes of two world-axis boxes; its centre and
    // extents are what the bound keeps, bit for bit.
    std::mt19937 random(11);
    std::uniform_real_distribution<float> coordinate(-100.0f, 100.0f), size(0.0f, 30.0f);
    for (int trial = 0; trial < 200; ++trial) {
        zuBoundingVolume p(Vec(coordinate(random), coordinate(random), coordinate(random)),
                           Vec(size(random), size(random), size(random)));
        const zuBoundingVolume q(Vec(coordinate(random), coordinate(random), coordinate(random)),
                                 Vec(size(random), size(random), size(random)));
        const Wm4::Box3<float> merged = Wm4::MergeBoxes(p.GetBox(), q.GetBox());
        p.growToContainBox(q);
        EXPECT_EQ(p, zuBoundingVolume(merged.Center, Vec(merged.Extent[0], merged.Extent[1], merged.Extent[2])));
    }
}

// ---------------------------------------------------------------------------------------
// Persisted forms

std::vector<char> written(const zuBoundingVolume& bv, zuStreamVersion version)
{
    zuRawStream probe(version);
    std::vector<char> buffer(static_cast<size_t>(bv.getDiskUsed(probe, true)));
    zuRawStream stream(version);
    stream.openWrite(buffer);
    bv.writeToStream(stream);
    EXPECT_EQ(stream.GetOffset(), buffer.size()) << "getDiskUsed differs from what is written";
    return buffer;
}

// Reads `bytes` at `version` into `bv`: what readFromStream says and how far it read.
std::pair<bool, size_t> readBound(std::vector<char> bytes, zuStreamVersion version, zuBoundingVolume& bv)
{
    zuRawStream reader(version);
    reader.openRead(bytes);
    const bool ok = bv.readFromStream(reader);
    return {ok, reader.GetOffset()};
}

TEST(BoundingVolume, CurrentFormIsRadiusExtentsCentre)
{
    const zuBoundingVolume bv(Vec(1, 2, 3), Vec(3, 4, 12));
    zuBytes expected;
    expected.f32(13).f32(3).f32(4).f32(12).f32(1).f32(2).f32(3);
    EXPECT_EQ(written(bv, zuStreamVersion(6, 28)), expected.bytes());

    zuRawStream sizes(zuStreamVersion(6, 32));
    EXPECT_EQ(bv.getDiskUsed(sizes, false), 28);

    zuBoundingVolume loaded(Vec(5, 5, 5), Vec(1, 1, 1));
    EXPECT_TRUE(readBound(written(zuBoundingVolume(), zuStreamVersion(6, 32)), zuStreamVersion(6, 32), loaded).first);
    EXPECT_EQ(loaded, zuBoundingVolume());
}

TEST(BoundingVolume, OlderStreamsHoldTheLegacyRecord)
{
    const zuStreamVersion old(6, 27);
    zuRawStream sizes(old);
    const zuBoundingVolume bv(Vec(1, 2, 3), Vec(0.5f, 1, 2));
    EXPECT_EQ(bv.getDiskUsed(sizes, true), 61);
    EXPECT_EQ(bv.getDiskUsed(sizes, false), 17);

    // Written as a box along the world axes, which reads back exactly; a box record's other
    // axes are dropped.
    zuBytes box;
    box.u8(0).f32(1).f32(2).f32(3);
    box.f32(1).f32(0).f32(0).f32(0).f32(1).f32(0).f32(0).f32(0).f32(1);
    box.f32(0.5f).f32(1).f32(2);
    EXPECT_EQ(written(bv, old), box.bytes());
    zuBoundingVolume loaded;
    EXPECT_TRUE(readBound(box.bytes(), old, loaded).first);
    EXPECT_EQ(loaded, bv);
    zuBytes rotated;
    rotated.u8(0).f32(-1).f32(0).f32(1);
    rotated.f32(0).f32(1).f32(0).f32(-1).f32(0).f32(0).f32(0).f32(0).f32(1);
    rotated.f32(3).f32(4).f32(0);
    EXPECT_TRUE(readBound(rotated.bytes(), zuStreamVersion(6, 10), loaded).first);
    EXPECT_EQ(loaded, zuBoundingVolume(Vec(-1, 0, 1), Vec(3, 4, 0)));

    // A sphere record of radius 2 reads as the cube of half-size 2, and says so.
    zuBytes sphere;
    sphere.u8(1).f32(4).f32(5).f32(6).f32(2);
    EXPECT_EQ(readBound(sphere.bytes(), zuStreamVersion(5, 20), loaded), std::make_pair(false, size_t(17)));
    expectBox(loaded, Vec(4, 5, 6), Vec(2, 2, 2));
    EXPECT_FLOAT_EQ(loaded.GetRadius(), 2.0f * std::sqrt(3.0f));
}

} // namespace
} // namespace zu::test
