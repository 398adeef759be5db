// Special nodes: the level-of-detail node's slot operations and their marks, light and
// camera nodes that carry their light or camera with the world frame (against rotations
// and products worked out by hand), the billboard's turn, the dummy's marks, and the
// class checks of Equals and Clone.

#include "scenegraph/zuSpatialTestHelpers.h"
#include "support/zuFactoryTest.h"
#include "support/zuOutputCapture.h"
#include "support/zuTestLeaf.h"

#include <zuSceneGraph/scenegraph/zuBillboardNode.h>
#include <zuSceneGraph/scenegraph/zuCameraNode.h>
#include <zuSceneGraph/scenegraph/zuDummy.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>
#include <zuSceneGraph/scenegraph/zuLODPolicy.h>
#include <zuSceneGraph/scenegraph/zuLightNode.h>
#include <zuSceneGraph/scenegraph/zuXRefNode.h>

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <string>

namespace zu::test {
namespace {

using SpecialNodes = zuFactoryTest;

void expectNear(const Vec& actual, const Vec& expected, const char* what, float tolerance = 1e-5f)
{
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(actual[i], expected[i], tolerance) << what << " component " << i;
}

bool hasFlags(const zuGenericTransformation<float>& t, bool identity, bool rs)
{
    return t.IsIdentity() == identity && t.IsRSMatrix() == rs;
}

// ---------------------------------------------------------------------------------------
// Level of detail

// root -> lod with the levels a and b in slots 0 and 1, all masks clean.
struct LODTree {
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuLODNode> lod = new zuLODNode;
    zuPointer<zuTestLeaf> a = new zuTestLeaf, b = new zuTestLeaf;
    LODTree()
    {
        root->attachChild(lod);
        lod->attachLODChild(0, a);
        lod->attachLODChild(1, b);
        root->Clean_Flags();
    }
};

TEST_F(SpecialNodes, LevelSlotsGrowAndEmptyInPlaceAndAttachChildIsRefused)
{
    LODTree t;
    zuPointer<zuTestLeaf> other = new zuTestLeaf, far = new zuTestLeaf;
    zuNode* asNode = t.lod;
    zuOutputCapture capturedErr(zuOutputCapture::STDERR);
    EXPECT_EQ(asNode->attachChild(other), -1);
    EXPECT_EQ(capturedErr.take(),
              "Can't use AttachChild With LOD Nodes, you have to use AttachLODChild instead\n");
    EXPECT_EQ(other->GetParent(), nullptr);
    EXPECT_TRUE(marked({t.lod, t.root, other}, 0));

    // Beyond the last slot: empty slots in between, marked as replaceChildAt marks (the
    // leaf's downward mark plus the bound bit) up to the root.
    EXPECT_TRUE(t.lod->attachLODChild(5, far));
    EXPECT_EQ(childrenOf(t.lod), (Slots{t.a, t.b, nullptr, nullptr, nullptr, far}));
    EXPECT_EQ(far->GetParent(), t.lod.get());
    EXPECT_TRUE(marked({far, t.lod, t.root}, 0x2040));
    // Within the slots it replaces: the old level is marked while attached, then let go.
    t.root->Clean_Flags();
    zuPointer<zuTestLeaf> coarse = new zuTestLeaf;
    EXPECT_TRUE(t.lod->attachLODChild(1, coarse));
    EXPECT_EQ(t.b->GetParent(), nullptr);
    EXPECT_TRUE(marked(t.b, 0x2040));
    // Refused: a negative slot, a child with a parent (no growth either).
    EXPECT_FALSE(t.lod->attachLODChild(-1, other) || t.lod->attachLODChild(9, t.a) || t.lod->attachLODChild(9, t.root));
    EXPECT_EQ(t.lod->getNbChildren(), 6);

    // Removing empties the slot; the level is marked while still attached, so the ancestors
    // learn that their bound changed.
    t.root->Clean_Flags();
    EXPECT_EQ(t.lod->removeLODChild(0).get(), t.a.get());
    EXPECT_EQ(t.a->GetParent(), nullptr);
    EXPECT_EQ(childrenOf(t.lod), (Slots{nullptr, coarse, nullptr, nullptr, nullptr, far}));
    EXPECT_TRUE(marked(t.root, 0x2040));
    EXPECT_TRUE(!t.lod->removeLODChild(0) && !t.lod->removeLODChild(6));
}

// Always the same slot.
class SlotPolicy : public zuLODPolicy {
public:
    explicit SlotPolicy(int slot) : mSlot(slot) {}
    zuSpatial* selectItem(zuLODNode* node, const zuCamera*) const override { return node->getChild(mSlot); }
    int mSlot;
};

TEST_F(SpecialNodes, ANewLevelIsMarkedOnceAsItBecomesCurrent)
{
    LODTree t;
    zuNode* root = t.root;
    zuLODNode* lod = t.lod;
    zuTestLeaf *a = t.a, *b = t.b;
    SlotPolicy first(0);
    zuSpatial* chosen = nullptr;
    lod->computeVisibleLOD(nullptr, &first, chosen);
    EXPECT_TRUE(chosen == a && lod->getCurrentLOD() == a);
    // setDirtyDown(false): a geometry leaf's upward mark, reported to every ancestor.
    EXPECT_TRUE(marked({a, lod, root}, 0x09));
    EXPECT_TRUE(marked(b, 0));

    // The same level again marks nothing.
    root->Clean_Flags();
    lod->computeVisibleLOD(nullptr, &first, chosen);
    EXPECT_TRUE(marked(root, 0));

    SlotPolicy second(1);
    lod->computeVisibleLOD(nullptr, &second, chosen);
    EXPECT_EQ(chosen, b);
    EXPECT_TRUE(marked(b, 0x09));
    EXPECT_TRUE(marked(a, 0));

    // No policy, no level; an empty slot is a null level.
    lod->computeVisibleLOD(nullptr, nullptr, chosen);
    EXPECT_EQ(chosen, nullptr);
    SlotPolicy empty(7);
    lod->computeVisibleLOD(nullptr, &empty, chosen);
    EXPECT_TRUE(!chosen && !lod->getCurrentLOD());

    // A level that leaves the node stops being current, so its return is marked again.
    lod->computeVisibleLOD(nullptr, &first, chosen);
    lod->removeLODChild(0);
    lod->attachLODChild(0, a);
    root->Clean_Flags();
    lod->computeVisibleLOD(nullptr, &first, chosen);
    EXPECT_TRUE(marked(a, 0x09));
}

// ---------------------------------------------------------------------------------------
// Light and camera nodes

// A parent turned 30 degrees about z, scaled by 2 and moved to (5, -1, 2), and its
// rotation worked out by hand.
const double COS30 = std::sqrt(3.0) / 2.0, SIN30 = 0.5;
zuGenericTransformation<float> parentFrame()
{
    return rsTransform(rotation({0, 0, 1}, 30), Vec(2, 2, 2), Vec(5, -1, 2));
}
Vec parentRotate(const Vec& v)
{
    return Vec(static_cast<float>(COS30 * v[0] - SIN30 * v[1]), static_cast<float>(SIN30 * v[0] + COS30 * v[1]), v[2]);
}
Vec parentMap(const Vec& p)
{
    return parentRotate(p * 2.0f) + Vec(5, -1, 2);
}

// A frame that is not the default one: D = +y, U = +x, R = D x U = -z.
const Vec D(0, 1, 0), U(1, 0, 0), R(0, 0, -1), LOCATION(1, 2, 3);

// The frame of a light or a camera.
template <class Framed>
void expectFrame(const Framed& framed, const Vec& location, const Vec& d, const Vec& u, const Vec& r)
{
    expectNear(framed.GetLocation(), location, "location");
    expectNear(framed.GetDVector(), d, "D");
    expectNear(framed.GetUVector(), u, "U");
    expectNear(framed.GetRVector(), r, "R");
}

TEST_F(SpecialNodes, ALightNodeCarriesItsLightWithTheWorldFrame)
{
    zuPointer<zuLight> light = new zuLight;
    light->SetFrame(LOCATION, D, U, R);
    zuPointer<zuLightNode> node = new zuLightNode(light);
    const zuGenericTransformation<float>& local = node->GetLocalTransform();
    EXPECT_EQ(local.GetTranslate(), LOCATION);
    EXPECT_EQ(local.GetMatrix(), Wm4::Matrix3<float>(D, U, R, true));
    EXPECT_TRUE(hasFlags(local, false, true));

    // A root light node leaves the light where it was; under a parent it moves with it, in
    // the flag-driven pass as well.
    node->UpdateGS();
    expectFrame(*light, LOCATION, D, U, R);
    zuPointer<zuNode> root = new zuNode;
    root->SetLocalTransform(parentFrame());
    root->attachChild(node);
    root->UpdateGS();
    expectFrame(*light, parentMap(LOCATION), parentRotate(D), parentRotate(U), parentRotate(R));
    root->SetLocalTransform(zuGenericTransformation<float>());
    root->markDirty(true);
    root->UpdateGS_Flags();
    expectFrame(*light, LOCATION, D, U, R);

    // A new light takes over the local frame; null keeps it, and there is nothing to move.
    zuPointer<zuLight> other = new zuLight;
    const Wm4::Matrix3<float> otherFrame(other->GetDVector(), other->GetUVector(), other->GetRVector(), true);
    node->SetLight(other);
    EXPECT_EQ(node->GetLocalTransform().GetMatrix(), otherFrame);
    node->SetLight(nullptr);
    EXPECT_EQ(node->GetLocalTransform().GetMatrix(), otherFrame);
    root->UpdateGS();
}

TEST_F(SpecialNodes, ACameraNodeCarriesItsCameraInEitherConvention)
{
    for (const auto facing : {zuCameraNode::FACING_ALONG_X, zuCameraNode::FACING_ALONG_NEGATIVE_Z}) {
        SCOPED_TRACE(facing);
        zuPointer<zuCamera> camera = new zuCamera;
        camera->SetFrame(LOCATION, D, U, R);
        zuPointer<zuCameraNode> node = new zuCameraNode(camera, facing);
        const zuGenericTransformation<float>& local = node->GetLocalTransform();
        EXPECT_EQ(local.GetTranslate(), LOCATION);
        // Convention 0: the camera's axes are the node's x, y, z; convention 1: it looks
        // down -z with up y and right x.
        const Wm4::Matrix3<float> expected = facing == zuCameraNode::FACING_ALONG_X
            ? Wm4::Matrix3<float>(D, U, R, true)
            : Wm4::Matrix3<float>(R, U, -D, true);
        EXPECT_EQ(local.GetMatrix(), expected);
        EXPECT_TRUE(hasFlags(local, false, true));
        EXPECT_TRUE(marked(node, 0x05));

        node->UpdateGS();
        expectFrame(*camera, LOCATION, D, U, R);
        zuPointer<zuNode> root = new zuNode;
        root->SetLocalTransform(parentFrame());
        root->attachChild(node);
        root->UpdateGS();
        expectFrame(*camera, parentMap(LOCATION), parentRotate(D), parentRotate(U), parentRotate(R));

        // A new camera re-derives the frame and marks the node up to the root.
        root->Clean_Flags();
        zuPointer<zuCamera> other = new zuCamera;
        node->SetCamera(other);
        EXPECT_TRUE(marked({node, root}, 0x05));
        root->UpdateGS_Flags();
        expectNear(other->GetDVector(), parentRotate(Vec(1, 0, 0)), "D of the new camera");
        expectNear(other->GetLocation(), Vec(5, -1, 2), "location of the new camera");
    }
}

// ---------------------------------------------------------------------------------------
// Billboard

// The parent turns a quarter about z ((x, y, z) -> (-y, x, z)), scales by 2 and moves to
// (1, 2, 3); the billboard sits at (0, 0, 1) in it, so its model origin is at (1, 2, 5).
struct BillboardScene {
    zuPointer<zuCamera> camera = new zuCamera;
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuBillboardNode> billboard = new zuBillboardNode(camera);
    zuPointer<zuNode> child = new zuNode;
    BillboardScene()
    {
        root->SetLocalTransform(rsTransform(Wm4::Matrix3<float>(0, -1, 0, 1, 0, 0, 0, 0, 1), Vec(2, 2, 2), Vec(1, 2, 3)));
        zuGenericTransformation<float> local;
        local.SetTranslate(Vec(0, 0, 1));
        billboard->SetLocalTransform(local);
        zuGenericTransformation<float> childLocal;
        childLocal.SetTranslate(Vec(0, 0, 1));
        child->SetLocalTransform(childLocal);
        root->attachChild(billboard);
        billboard->attachChild(child);
    }
};

TEST_F(SpecialNodes, ABillboardTurnsAboutItsModelYAxisTowardTheCamera)
{
    BillboardScene scene;
    // The model y axis points along world -x: the camera at (-4, 2, 5) is at (0, 2.5, 0).
    scene.camera->SetLocation(Vec(-4, 2, 5));
    scene.root->UpdateGS();
    const zuGenericTransformation<float>& world = scene.billboard->GetWorldTransform();
    EXPECT_EQ(world.GetRotate(), Wm4::Matrix3<float>(0, -1, 0, 1, 0, 0, 0, 0, 1)) << "straight below it: no turn";
    EXPECT_TRUE(hasFlags(world, false, true));
    EXPECT_EQ(world.GetTranslate(), Vec(1, 2, 5));

    // Elsewhere it turns about its model y axis toward the camera. In model space the camera is at (1, 0.5, sqrt 3): a turn of atan2(1, sqrt 3) = 30
    // degrees. In the world that is (0, 4, 5 + 2 sqrt 3).
    const float root3 = std::sqrt(3.0f);
    scene.camera->SetLocation(Vec(0, 4, 5 + 2 * root3));
    scene.root->UpdateGS();

    // Quarter about z times the turn about y: [c 0 s; 0 1 0; -s 0 c] with c = cos 30,
    // s = sin 30, rows of the quarter turn (0 -1 0), (1 0 0), (0 0 1).
    const float c = static_cast<float>(COS30), s = static_cast<float>(SIN30);
    const Wm4::Matrix3<float> expected(0, -1, 0, c, 0, s, -s, 0, c);
    for (int i = 0; i < 3; ++i)
        expectNear(world.GetRotate().GetRow(i), expected.GetRow(i), "row", 1e-6f);
    // Now the camera lies in the model's y-z plane, in front of it: (0, 0.5, 2).
    const Vec eye = scene.billboard->GetWorldTransform().ApplyInverse(scene.camera->GetLocation());
    expectNear(eye, Vec(0, 0.5f, 2), "camera in the turned model space");
    // The child inherits the turned frame: (0, 0, 1) turned is (0.5, 0, c), scaled by 2
    // (1, 0, 2c), quarter-turned (0, 1, 2c), moved by the billboard's origin (1, 2, 5).
    expectNear(scene.child->GetWorldTransform().GetTranslate(), Vec(1, 3, 2 * c + 5), "child");

    // Without a camera it is a plain node again.
    scene.billboard->SetCamera(nullptr);
    scene.root->UpdateGS();
    EXPECT_EQ(scene.billboard->GetWorldTransform().GetRotate(), Wm4::Matrix3<float>(0, -1, 0, 1, 0, 0, 0, 0, 1));
}

// ---------------------------------------------------------------------------------------
// Dummy, external reference, clones

TEST_F(SpecialNodes, ADummyMarksItsWorldDataAndDrawsNothing)
{
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuDummy> dummy = new zuDummy;
    dummy->SetName("hook");
    EXPECT_EQ(root->attachChild(dummy), 0);
    EXPECT_TRUE(marked({dummy, root}, 0x01));
    EXPECT_EQ(root->GetObjectByName("hook"), dummy.get());

    // Its bound stays as set, and the node merges it.
    const zuBoundingVolume bound(Vec(1, 2, 3), Vec(1, 1, 1));
    dummy->SetWorldBound(bound);
    root->UpdateGS();
    EXPECT_TRUE(dummy->GetWorldBound() == bound && root->GetWorldBound() == bound);
}

TEST_F(SpecialNodes, ClonesKeepTheReferenceAndTheConventionButACameraFollowsOneNode)
{
    zuPointer<zuCamera> camera = new zuCamera;
    const auto cloneOf = [](const zuRttiInterface* source) {
        zuRttiInterface* target = nullptr;
        EXPECT_TRUE(source->Clone(target));
        return zuPointer<zuRttiInterface>(target);
    };
    zuPointer<zuXRefNode> xref = new zuXRefNode("parts/bolt.mvk");
    EXPECT_EQ(static_cast<zuXRefNode*>(cloneOf(xref).get())->GetReference(), "parts/bolt.mvk");
    zuPointer<zuRttiInterface> cameraCopy = cloneOf(zuPointer<zuCameraNode>(new zuCameraNode(camera, zuCameraNode::FACING_ALONG_NEGATIVE_Z)));
    const auto* cameraNode = static_cast<zuCameraNode*>(cameraCopy.get());
    EXPECT_TRUE(cameraNode->GetFacingConvention() == zuCameraNode::FACING_ALONG_NEGATIVE_Z && !cameraNode->GetCamera());
    zuPointer<zuBillboardNode> billboard = new zuBillboardNode(camera);
    EXPECT_EQ(static_cast<zuBillboardNode*>(cloneOf(billboard).get())->GetCamera(), camera.get());
}

} // namespace
} // namespace zu::test
