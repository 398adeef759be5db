// The culler with real cameras: frustum planes of both projections against the corners of
// the view volume, the hierarchical bound test and its plane order, the point test, user
// clip planes, and the culling walk over small trees (plane masks
// handed to children, culling modes, ignored objects, invalid bounds, runs without a camera).

#include "scenegraph/zuSpatialTestHelpers.h"
#include "support/zuFactoryTest.h"
#include "support/zuTestLeaf.h"

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/scenegraph/zuBaseLODPolicy.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/states/zuCamera.h>

#include <gtest/gtest.h>

#include <cmath>

namespace zu::test {
namespace {

// At the origin looking down +x, up +z, right -y; near 1, far 100, 90 degrees both ways.
zuPointer<zuCamera> lookDownX(bool perspective = true)
{
    zuPointer<zuCamera> camera = new zuCamera(perspective);
    camera->SetFrame(Vec(0, 0, 0), Vec(1, 0, 0), Vec(0, 0, 1), Vec(0, -1, 0));
    camera->SetFrustum(1, 100, -1, 1, -1, 1);
    return camera;
}

class Culler : public zuFactoryTest {
protected:
    // The culler does not own its camera: this one outlives every culler of a test.
    zuPointer<zuCamera> mCamera = lookDownX();
    zuCountingCuller mWalk;

    // The visible set of a walk over `scene` from the camera.
    std::vector<zuRenderableSpatial*> walk(zuSpatial* scene)
    {
        mWalk.SetCamera(mCamera);
        mWalk.ComputeVisibleSet(scene, nullptr, false);
        return mWalk.GetVisibleSet();
    }
};

// The eight corners of a camera's view volume, near ones first.
std::vector<Vec> volumeCorners(const zuCamera& camera)
{
    std::vector<Vec> corners;
    const float ratio = camera.IsPerspective() ? camera.GetDMax() / camera.GetDMin() : 1.0f;
    for (float d : {camera.GetDMin(), camera.GetDMax()})
        for (float u : {camera.GetUMin(), camera.GetUMax()})
            for (float r : {camera.GetRMin(), camera.GetRMax()}) {
                const float scale = d == camera.GetDMin() ? 1.0f : ratio;
                corners.push_back(camera.GetLocation() + camera.GetDVector() * d + camera.GetUVector() * (u * scale)
                                  + camera.GetRVector() * (r * scale));
            }
    return corners;
}

TEST_F(Culler, FrustumPlanesBoundTheViewVolumeOfEitherProjection)
{
    for (bool perspective : {true, false}) {
        SCOPED_TRACE(perspective ? "perspective" : "orthographic");
        // An asymmetric frustum off the origin, looking down +y.
        zuPointer<zuCamera> camera = new zuCamera(perspective);
        camera->SetFrame(Vec(10, 20, 30), Vec(0, 1, 0), Vec(0, 0, 1), Vec(1, 0, 0));
        camera->SetFrustum(0.5f, 250, -0.25f, 0.375f, -0.5f, 0.625f);
        zuCuller culler;
        culler.SetCamera(camera);
        ASSERT_EQ(culler.GetPlaneQuantity(), 6);
        for (int i = 0; i < 6; ++i)
            EXPECT_FLOAT_EQ(culler.GetFrustum()[i], camera->GetFrustum()[i]);

        // Each corner lies on the three planes that meet there and inside the others.
        const std::vector<Vec> corners = volumeCorners(*camera);
        for (int c = 0; c < 8; ++c) {
            const bool far = c >= 4, top = c & 2, right = c & 1;
            const bool on[6] = {!far, far, !top, top, !right, right};
            for (int p = 0; p < 6; ++p) {
                const float distance = culler.GetPlane(p).DistanceTo(corners[static_cast<size_t>(c)]);
                const float size = (corners[static_cast<size_t>(c)] - camera->GetLocation()).Length();
                if (on[p])
                    EXPECT_NEAR(distance, 0.0f, 1e-5f * (1.0f + size)) << "corner " << c << " plane " << p;
                else
                    EXPECT_GT(distance, 0.0f) << "corner " << c << " plane " << p;
            }
        }
        const Vec middle = camera->GetLocation() + camera->GetDVector() * 100.0f;
        for (int p = 0; p < 6; ++p) {
            EXPECT_NEAR(culler.GetPlane(p).Normal.Length(), 1.0f, 1e-6f);
            EXPECT_GT(culler.GetPlane(p).DistanceTo(middle), 0.0f);
        }
        // A perspective volume's side planes hold the eye.
        for (int p = 2; p < 6 && perspective; ++p)
            EXPECT_NEAR(culler.GetPlane(p).DistanceTo(camera->GetLocation()), 0.0f, 1e-4f);
    }
}

TEST_F(Culler, TheBoundAndPointTestsVisitPlanesFromTheLastToTheFirst)
{
    zuCuller culler;
    culler.SetCamera(mCamera);
    const Vec POINT(-1, -1, -1);  // extents that make the row a point test
    const struct {
        const char* what;
        unsigned stateIn;
        Vec center, extents;
        bool visible;
        unsigned stateOut;
    } rows[] = {
        // Fully inside: every frustum bit is cleared, the unused bits stay.
        {"inside", ~0u, Vec(50, 0, 0), Vec(1, 1, 1), true, ~0x3Fu},
        {"straddling the far plane only", ~0u, Vec(100, 0, 0), Vec(1, 1, 1), true, ~0x3Du},
        // Between the eye and the near plane: planes 5 to 1 are cleared on the way, then
        // plane 0 keeps its bit.
        {"before the near plane", ~0u, Vec(0.5f, 0, 0), Vec(0.1f, 0.1f, 0.1f), false, ~0x3Eu},
        {"beyond the far plane, its bit clear", ~0x02u, Vec(200, 0, 0), Vec(1, 1, 1), true, ~0x3Fu},
        {"point inside", ~0u, Vec(50, 0, 0), POINT, true, ~0x3Fu},
        {"point on the far plane keeps its bit", ~0u, Vec(100, 0, 0), POINT, true, ~0x3Du},
        {"point beyond it, after the side planes", ~0u, Vec(100.5f, 0, 0), POINT, false, ~0x3Cu},
        {"point above the top plane, its bit clear", ~0x3Cu, Vec(10, 0, 11), POINT, true, ~0x3Fu},
        {"point above the top plane, after the right and left ones", ~0u, Vec(10, 0, 11), POINT, false, ~0x30u},
    };
    for (const auto& row : rows) {
        culler.SetPlaneState(row.stateIn);
        const bool point = row.extents == POINT;
        EXPECT_EQ(point ? culler.IsVisible(row.center) : culler.IsVisible(zuBoundingVolume(row.center, row.extents)),
                  row.visible) << row.what;
        EXPECT_EQ(culler.GetPlaneState(), row.stateOut) << row.what;
    }
    // An invalid bound straddles every plane.
    culler.SetPlaneState(~0u);
    EXPECT_TRUE(culler.IsVisible(zuBoundingVolume()));
    EXPECT_EQ(culler.GetPlaneState(), ~0u);
}

// The whole view volume against a plane; an orthographic camera's far corners stay beside
// the near ones, where a perspective camera's spread.
TEST_F(Culler, WhichSideClassifiesTheWholeViewVolume)
{
    zuCuller culler;
    EXPECT_EQ(culler.WhichSide(Wm4::Plane3<float>(Vec(1, 0, 0), 0.5f)), 0) << "no camera";
    culler.SetCamera(mCamera);
    EXPECT_EQ(culler.WhichSide(Wm4::Plane3<float>(Vec(1, 0, 0), 0.5f)), +1);
    EXPECT_EQ(culler.WhichSide(Wm4::Plane3<float>(Vec(-1, 0, 0), -0.5f)), -1);
    EXPECT_EQ(culler.WhichSide(Wm4::Plane3<float>(Vec(1, 0, 0), 50)), 0);
    EXPECT_EQ(culler.WhichSide(Wm4::Plane3<float>(Vec(1, 0, 0), 1)), 0) << "the near corners lie on it";
    const Wm4::Plane3<float> side(Vec(0, 1, 0), 1.5f);
    EXPECT_EQ(culler.WhichSide(side), 0);
    zuPointer<zuCamera> orthographic = lookDownX(false);
    culler.SetCamera(orthographic);
    EXPECT_EQ(culler.WhichSide(side), -1);
}

TEST_F(Culler, UserClipPlanesFollowTheFrustumPlanes)
{
    zuCuller culler;
    culler.SetCamera(mCamera);
    // Keeps y > 0 (the left half of the view).
    EXPECT_TRUE(culler.PushPlane(Wm4::Plane3<float>(Vec(0, 1, 0), 0.0f)));
    EXPECT_EQ(culler.GetPlaneQuantity(), 7);
    EXPECT_FALSE(culler.IsVisible(zuBoundingVolume(Vec(50, -10, 0), Vec(1, 1, 1))));
    culler.SetPlaneState(~0u);
    EXPECT_TRUE(culler.IsVisible(zuBoundingVolume(Vec(50, 10, 0), Vec(1, 1, 1))));
    EXPECT_EQ(culler.GetPlaneState(), ~0x7Fu);

    for (int i = 7; i < zuCuller::MAX_PLANE_QUANTITY; ++i)
        EXPECT_TRUE(culler.PushPlane(Wm4::Plane3<float>(Vec(1, 0, 0), -1000.0f)));
    EXPECT_FALSE(culler.PushPlane(Wm4::Plane3<float>(Vec(1, 0, 0), 0.0f)));
    culler.SetPlaneState(~0u);
    EXPECT_TRUE(culler.IsVisible(zuBoundingVolume(Vec(50, 10, 0), Vec(1, 1, 1))));
    EXPECT_EQ(culler.GetPlaneState(), 0u) << "bit 31 is the last plane's";

    while (culler.PopPlane()) {
    }
    EXPECT_EQ(culler.GetPlaneQuantity(), 6);
    culler.SetPlaneState(~0u);
    EXPECT_TRUE(culler.IsVisible(zuBoundingVolume(Vec(50, -10, 0), Vec(1, 1, 1))));
}

// ---------------------------------------------------------------------------------------
// The walk

zuPointer<zuTestLeaf> leafAt(const Vec& center, const Vec& extents = Vec(1, 1, 1))
{
    zuPointer<zuTestLeaf> leaf = new zuTestLeaf(Vec(0, 0, 0), extents);
    leaf->GetLocalTransform().SetTranslate(center);
    return leaf;
}

TEST_F(Culler, ALeafExactlyBeyondOnePlaneIsDropped)
{
    // Touching the far plane from outside and from inside, well inside the four sides.
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuTestLeaf> beyond = leafAt(Vec(110, 0, 0), Vec(10, 1, 1)), within = leafAt(Vec(90, 0, 0), Vec(10, 1, 1));
    attachAll(root, {beyond, within});
    root->UpdateGS();
    EXPECT_EQ(walk(root), (std::vector<zuRenderableSpatial*>{within}));
    EXPECT_EQ(beyond->mVisits, 0);
}

TEST_F(Culler, ANodeFullyInsideHandsAZeroMaskToItsChildren)
{
    zuPointer<zuNode> root = new zuNode, inside = new zuNode, straddling = new zuNode;
    zuPointer<zuTestLeaf> a = leafAt(Vec(50, 0, 0)), b = leafAt(Vec(60, 5, 0));
    zuPointer<zuTestLeaf> c = leafAt(Vec(100, 0, 0)), d = leafAt(Vec(80, 0, 0));
    attachAll(root, {inside, straddling});
    attachAll(inside, {a, b});
    attachAll(straddling, {c, d});
    root->UpdateGS();
    // Moved out of view behind the node's back: not tested, so still drawn.
    b->SetWorldBound(zuBoundingVolume(Vec(-500, 0, 0), Vec(1, 1, 1)));
    EXPECT_EQ(walk(root), (std::vector<zuRenderableSpatial*>{a, b, c, d}));
    ASSERT_EQ(mWalk.mInserts, 4);
    EXPECT_EQ(a->mPlaneStateSeen & 0x3F, 0u);
    EXPECT_EQ(b->mPlaneStateSeen & 0x3F, 0u);
    // The straddling node keeps the far plane for its children: c straddles it too, d
    // lies inside it.
    EXPECT_EQ(c->mPlaneStateSeen & 0x3F, 0x02u);
    EXPECT_EQ(d->mPlaneStateSeen & 0x3F, 0u);
    // The walk restores the state: the next run starts again from every plane.
    EXPECT_EQ(mWalk.GetPlaneState(), ~0u);
}

TEST_F(Culler, CullingModesIgnoredObjectsAndInvalidBounds)
{
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuNode> outside = new zuNode;    // culling mode 2, behind the camera
    zuPointer<zuTestLeaf> o1 = leafAt(Vec(-50, 0, 0)), o2 = leafAt(Vec(-60, 0, 0));
    zuPointer<zuTestLeaf> always = leafAt(Vec(50, 0, 0));   // culling mode 1, in view
    zuPointer<zuTestLeaf> ignored = leafAt(Vec(40, 0, 0));
    zuPointer<zuTestLeaf> unbounded = new zuTestLeaf;       // no model bound
    attachAll(root, {outside, always, ignored, unbounded});
    attachAll(outside, {o1, o2});
    outside->SetCullingMode(zuSpatial::CULL_NEVER);
    always->SetCullingMode(zuSpatial::CULL_ALWAYS);
    ignored->forceIgnore(true, false, false);
    root->UpdateGS();
    ASSERT_FALSE(unbounded->GetWorldBound().isValid());
    EXPECT_EQ(walk(root), (std::vector<zuRenderableSpatial*>{o1, o2, unbounded}));
    EXPECT_TRUE(o1->mNoCullSeen);
    EXPECT_TRUE(o2->mNoCullSeen);
    EXPECT_FALSE(unbounded->mNoCullSeen);
    EXPECT_EQ(always->mVisits, 0);
    EXPECT_EQ(ignored->mVisits, 0);
    // An invalid bound clears no bit: the leaf sees the state its parent left.
    mWalk.SetPlaneState(~0u);
    ASSERT_TRUE(mWalk.IsVisible(root->GetWorldBound()));
    EXPECT_EQ(unbounded->mPlaneStateSeen, mWalk.GetPlaneState());
    EXPECT_NE(mWalk.GetPlaneState() & 0x3F, 0u);
}

// A spatial that records the culler's policy while it is walked.
class PolicyProbe : public zuTestLeaf {
public:
    void GetVisibleSet(zuCuller& culler, bool noCull, bool flag) override
    {
        mPolicy = culler.getLODPolicy();
        mFlag = flag;
        zuTestLeaf::GetVisibleSet(culler, noCull, flag);
    }
    const zuLODPolicy* mPolicy = nullptr;
    bool mFlag = false;
};

TEST_F(Culler, ComputeVisibleSetNeedsACameraAndAScene)
{
    zuPointer<PolicyProbe> probe = new PolicyProbe;
    probe->SetModelBound(zuBoundingVolume(Vec(50, 0, 0), Vec(1, 1, 1)));
    probe->UpdateGS();
    zuBaseLODPolicy policy;

    zuCuller culler;
    culler.ComputeVisibleSet(probe, &policy, true);
    EXPECT_TRUE(culler.GetVisibleSet().empty()) << "no camera";
    EXPECT_EQ(probe->mVisits, 0);

    culler.SetCamera(mCamera);
    culler.ComputeVisibleSet(probe, &policy, true);
    EXPECT_EQ(probe->mPolicy, &policy);
    EXPECT_TRUE(probe->mFlag);
    EXPECT_EQ(culler.getLODPolicy(), nullptr) << "only during the run";
    ASSERT_EQ(culler.GetVisibleSet().size(), 1u);

    // Without a camera or a scene the previous set stays.
    culler.ComputeVisibleSet(nullptr, &policy, false);
    culler.SetCamera(nullptr);
    culler.ComputeVisibleSet(probe, &policy, false);
    EXPECT_EQ(probe->mVisits, 1);
    std::vector<zuRenderableSpatial*> copy{nullptr, nullptr, nullptr};
    culler.GetVisibleSet(copy);
    EXPECT_EQ(copy, (std::vector<zuRenderableSpatial*>{probe}));
}

} // namespace
} // namespace zu::test
