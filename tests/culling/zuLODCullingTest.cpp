// Level-of-detail nodes in the culling walk: the distance bands of the shared policy,
// a walk without a policy, a policy of the caller's, and the plane state and the no-cull
// flag handed to the chosen level.

#include "scenegraph/zuSpatialTestHelpers.h"
#include "support/zuTestLeaf.h"

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/scenegraph/zuBaseLODPolicy.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>
#include <zuSceneGraph/states/zuCamera.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace zu::test {
namespace {

// root -> (plain leaf at (10, 0, 0), level-of-detail node at (distance, 0, 0) with four
// levels); the camera at the origin looks down +x, 90 degrees both ways, near 1, far 100.
struct LODScene {
    zuPointer<zuCamera> camera = new zuCamera;
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuTestLeaf> plain = new zuTestLeaf(Vec(0, 0, 0), Vec(0.5f, 0.5f, 0.5f));
    zuPointer<zuLODNode> lod = new zuLODNode;
    zuPointer<zuTestLeaf> levels[4];
    zuCountingCuller culler;

    LODScene()
    {
        camera->SetFrame(Vec(0, 0, 0), Vec(1, 0, 0), Vec(0, 0, 1), Vec(0, -1, 0));
        camera->SetFrustum(1, 100, -1, 1, -1, 1);
        culler.SetCamera(camera);
        plain->GetLocalTransform().SetTranslate(Vec(10, 0, 0));
        root->attachChild(plain);
        root->attachChild(lod);
        for (int i = 0; i < 4; ++i) {
            levels[i] = new zuTestLeaf(Vec(0, 0, 0), Vec(0.5f, 0.5f, 0.5f));
            lod->attachLODChild(i, levels[i]);
        }
    }
    void placeAt(float distance)
    {
        lod->GetLocalTransform().SetTranslate(Vec(distance, 0, 0));
        root->UpdateGS();
    }
    std::vector<zuRenderableSpatial*> cull(zuLODPolicy* policy)
    {
        culler.ComputeVisibleSet(root, policy, false);
        return culler.GetVisibleSet();
    }
    // The plain leaf and, when given, a level.
    std::vector<zuRenderableSpatial*> drawn(int level = -1) const
    {
        std::vector<zuRenderableSpatial*> set{plain};
        if (level >= 0)
            set.push_back(levels[level]);
        return set;
    }
    zuRenderableSpatial* level(int i) const { return levels[i].get(); }
};

TEST(LODCulling, DistanceBandsPickTheSlot)
{
    // Four slots over a far distance of 100: 25 units each, the last one open-ended.
    const std::pair<float, int> cases[] = {{0, 0}, {24.9f, 0}, {25, 1}, {30, 1}, {50, 2}, {74.9f, 2},
                                           {75, 3}, {99.9f, 3}, {100, 3}, {1000, 3}};
    for (const auto& [distance, slot] : cases)
        EXPECT_EQ(zuBaseLODPolicy::selectSlot(distance, 100, 4), slot) << distance;
    // Out-of-range quotients never reach the integer conversion.
    EXPECT_EQ(zuBaseLODPolicy::selectSlot(10, 0, 4), 3);
    EXPECT_EQ(zuBaseLODPolicy::selectSlot(std::numeric_limits<float>::quiet_NaN(), 100, 4), 3);
    EXPECT_EQ(zuBaseLODPolicy::selectSlot(10, -100, 4), 0);
    EXPECT_EQ(zuBaseLODPolicy::selectSlot(10, 100, 0), -1);
}

TEST(LODCulling, TheBasePolicyMeasuresFromTheCameraToTheBoundCentre)
{
    LODScene scene;
    // The centre 30 units away, off the axis: (18, 24, 0) - slot 1 of 4 over 100.
    scene.lod->SetWorldBound(zuBoundingVolume(Vec(18, 24, 0), Vec(1, 1, 1)));
    const zuLODPolicy* policy = zuLODNode::GetBasePolicy();
    EXPECT_EQ(policy->selectItem(scene.lod, scene.camera), scene.level(1));
    scene.lod->SetWorldBound(zuBoundingVolume(Vec(60, 80, 0), Vec(1, 1, 1)));
    EXPECT_EQ(policy->selectItem(scene.lod, scene.camera), scene.level(3));
    // An empty slot draws nothing; so do a missing camera and a node without slots.
    scene.lod->removeLODChild(3);
    EXPECT_EQ(policy->selectItem(scene.lod, scene.camera), nullptr);
    EXPECT_EQ(policy->selectItem(scene.lod, nullptr), nullptr);
    zuPointer<zuLODNode> empty = new zuLODNode;
    EXPECT_EQ(policy->selectItem(empty, scene.camera), nullptr);
}

TEST(LODCulling, TheWalkDrawsTheLevelOfTheDistanceBandWithTheNodesPlaneState)
{
    LODScene scene;
    zuLODPolicy* policy = zuLODNode::GetBasePolicy();
    // Without a policy the node contributes nothing.
    scene.placeAt(30);
    EXPECT_EQ(scene.cull(nullptr), scene.drawn());
    for (const auto& level : scene.levels)
        EXPECT_EQ(level->mVisits, 0);
    EXPECT_EQ(scene.culler.getLODPolicy(), nullptr);

    EXPECT_EQ(scene.cull(policy), scene.drawn(1));
    // The far plane cuts the node's bound at 100: still drawn, with the farthest level.
    scene.placeAt(100);
    EXPECT_EQ(scene.cull(policy), scene.drawn(3));
    scene.placeAt(5);
    EXPECT_EQ(scene.cull(policy), scene.drawn(0));
    // Beyond the far plane the node is culled before any level is chosen.
    scene.placeAt(150);
    EXPECT_EQ(scene.cull(policy), scene.drawn());
    EXPECT_EQ(scene.lod->getCurrentLOD(), scene.level(0));

    // The chosen level gets the node's plane state: inside every plane, it is inserted
    // without tests; with culling off above it, the level behind the camera is drawn,
    // flagged as untested.
    scene.placeAt(30);
    scene.cull(policy);
    EXPECT_EQ(scene.levels[1]->mPlaneStateSeen & 0x3F, 0u);
    EXPECT_FALSE(scene.levels[1]->mNoCullSeen);
    scene.placeAt(-30);
    scene.root->SetCullingMode(zuSpatial::CULL_NEVER);
    EXPECT_EQ(scene.cull(policy), scene.drawn(1));
    EXPECT_TRUE(scene.levels[1]->mNoCullSeen);
}

// Always the same slot; records what it was asked with.
class SlotPolicy : public zuLODPolicy {
public:
    explicit SlotPolicy(int slot) : mSlot(slot) {}
    zuSpatial* selectItem(zuLODNode* node, const zuCamera* camera) const override
    {
        mNode = node;
        mCamera = camera;
        ++mCalls;
        return node->getChild(mSlot);
    }
    int mSlot;
    mutable const zuLODNode* mNode = nullptr;
    mutable const zuCamera* mCamera = nullptr;
    mutable int mCalls = 0;
};

TEST(LODCulling, ACallersPolicyChoosesWithTheCullersCamera)
{
    LODScene scene;
    scene.placeAt(30);
    SlotPolicy policy(2);
    EXPECT_EQ(scene.cull(&policy), scene.drawn(2));
    EXPECT_EQ(policy.mCalls, 1);
    EXPECT_EQ(policy.mNode, scene.lod.get());
    EXPECT_EQ(policy.mCamera, scene.camera.get());
    // The chosen level is tested like any child: one beyond the far plane is dropped.
    scene.levels[2]->GetLocalTransform().SetTranslate(Vec(500, 0, 0));
    scene.root->UpdateGS();
    EXPECT_EQ(scene.cull(&policy), scene.drawn());
}

} // namespace
} // namespace zu::test
