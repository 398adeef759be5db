// Spatial objects in small trees: world transformations and bounds against the local
// transformations applied one after the other, the three update passes, ignored and held
// objects, metadata order, comparison and cloning.

#include "scenegraph/zuSpatialTestHelpers.h"
#include "support/zuFactoryTest.h"
#include "support/zuTestLeaf.h"

#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuSemanticMetadata.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace zu::test {
namespace {

using Transform = zuGenericTransformation<float>;

using Spatial = zuFactoryTest;

// A point mapped by each transformation in turn, the object's own first.
Vec throughChain(const std::vector<Transform>& chain, Vec p)
{
    for (const Transform& t : chain)
        p = t.ApplyForward(p);
    return p;
}

// Grows [low, high] by the images of the eight corners of the leaf's model bound.
void growByCorners(const zuTestLeaf& leaf, const std::vector<Transform>& chain, Vec& low, Vec& high)
{
    const zuBoundingVolume& model = leaf.GetModelBound();
    for (int c = 0; c < 8; ++c) {
        Vec corner = model.GetCenter();
        for (int j = 0; j < 3; ++j)
            corner[j] += (c >> j & 1 ? 1.0f : -1.0f) * model.GetExtents()[j];
        const Vec p = throughChain(chain, corner);
        for (int j = 0; j < 3; ++j) {
            low[j] = std::min(low[j], p[j]);
            high[j] = std::max(high[j], p[j]);
        }
    }
}

void expectMapsLike(const Transform& world, const std::vector<Transform>& chain)
{
    for (const Vec& p : {Vec(0, 0, 0), Vec(1, 0, 0), Vec(0, 1, 0), Vec(0, 0, 1), Vec(-2.5f, 3, 7)}) {
        const Vec got = world.ApplyForward(p), want = throughChain(chain, p);
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(got[i], want[i], 1e-4 * (1.0 + std::abs(want[i]))) << p[0] << "," << p[1] << "," << p[2];
    }
}

void expectBound(const zuBoundingVolume& bv, const Vec& low, const Vec& high)
{
    for (int j = 0; j < 3; ++j) {
        EXPECT_NEAR(bv.GetCenter()[j], 0.5 * (low[j] + high[j]), 1e-4) << j;
        EXPECT_NEAR(bv.GetExtents()[j], 0.5 * (high[j] - low[j]), 1e-4) << j;
    }
}

TEST_F(Spatial, WorldTransformsAndBoundsFollowTheLocalOnesFromTheRoot)
{
    const Transform rootPlace = rsTransform(rotation({0, 0, 1}, 30), Vec(2, 2, 2), Vec(1, 2, 3));
    const Transform nodePlace = rsTransform(rotation({1, 0, 0}, 45), Vec(0.5f, 0.5f, 0.5f), Vec(0, 1, 0));
    const Transform leafPlace = rsTransform(rotation({0, 1, 0}, -60), Vec(1, 2, 3), Vec(4, 0, -1));
    const Transform otherPlace = rsTransform(rotation({0.6, 0.8, 0}, 10), Vec(3, 3, 3), Vec(-1, -1, -1));
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuNode> node = new zuNode;
    zuPointer<zuTestLeaf> leaf = new zuTestLeaf(Vec(0, 0, 0), Vec(1, 1, 1));
    zuPointer<zuTestLeaf> other = new zuTestLeaf(Vec(1, 0, 0), Vec(0.5f, 0.5f, 0.5f));
    root->SetLocalTransform(rootPlace);
    node->SetLocalTransform(nodePlace);
    leaf->SetLocalTransform(leafPlace);
    other->SetLocalTransform(otherPlace);
    ASSERT_EQ(root->attachChild(node), 0);
    ASSERT_EQ(node->attachChild(leaf), 0);
    ASSERT_EQ(root->attachChild(other), 1);
    root->UpdateGS();

    expectMapsLike(root->GetWorldTransform(), {rootPlace});
    expectMapsLike(node->GetWorldTransform(), {nodePlace, rootPlace});
    expectMapsLike(leaf->GetWorldTransform(), {leafPlace, nodePlace, rootPlace});
    expectMapsLike(other->GetWorldTransform(), {otherPlace, rootPlace});
    // A leaf's bound is the world-axis box of its mapped model corners; a node's the union
    // of its children's.
    Vec low(1e30f, 1e30f, 1e30f), high(-1e30f, -1e30f, -1e30f);
    growByCorners(*leaf, {leafPlace, nodePlace, rootPlace}, low, high);
    expectBound(leaf->GetWorldBound(), low, high);
    expectBound(node->GetWorldBound(), low, high);
    growByCorners(*other, {otherPlace, rootPlace}, low, high);
    expectBound(root->GetWorldBound(), low, high);

    // An identity root keeps an identity world transformation, whatever it held before.
    zuPointer<zuNode> plain = new zuNode;
    plain->SetWorldTransform(rootPlace);
    plain->UpdateGS();
    EXPECT_EQ(plain->GetWorldTransform(), Transform());
}

TEST_F(Spatial, UpdateGSAsInitiatorRefreshesTheAncestorsBoundsOnly)
{
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuNode> node = new zuNode;
    zuPointer<zuTestLeaf> leaf = new zuTestLeaf(Vec(0, 0, 0), Vec(1, 1, 1));
    root->attachChild(node);
    node->attachChild(leaf);
    root->UpdateGS();
    EXPECT_EQ(root->GetWorldBound().GetCenter(), Vec(0, 0, 0));

    leaf->GetLocalTransform().SetTranslate(Vec(10, 0, 0));
    leaf->UpdateGS(false);
    EXPECT_EQ(leaf->GetWorldBound().GetCenter(), Vec(10, 0, 0));
    EXPECT_EQ(root->GetWorldBound().GetCenter(), Vec(0, 0, 0)) << "not the initiator";
    leaf->UpdateGS(true);
    EXPECT_EQ(node->GetWorldBound().GetCenter(), Vec(10, 0, 0));
    EXPECT_EQ(root->GetWorldBound().GetCenter(), Vec(10, 0, 0));

    // UpdateBS after a model change: the leaf's bound and its ancestors', no world data.
    const int worldUpdates = leaf->mWorldUpdates;
    leaf->SetModelBound(zuBoundingVolume(Vec(0, 0, 0), Vec(2, 2, 2)));
    leaf->UpdateBS();
    EXPECT_EQ(root->GetWorldBound().GetExtents(), Vec(2, 2, 2));
    EXPECT_EQ(leaf->mWorldUpdates, worldUpdates);
}

TEST_F(Spatial, TheFlagDrivenPassVisitsOnlyMarkedBranches)
{
    zuPointer<zuNode> root = new zuNode, a = new zuNode, b = new zuNode;
    zuPointer<zuTestLeaf> leafA = new zuTestLeaf(Vec(0, 0, 0), Vec(1, 1, 1));
    zuPointer<zuTestLeaf> leafB = new zuTestLeaf(Vec(0, 0, 0), Vec(1, 1, 1));
    attachAll(root, {a, b});
    a->attachChild(leafA);
    b->attachChild(leafB);
    root->UpdateGS();
    root->Clean_Flags();
    EXPECT_TRUE(marked({root, leafA}, 0));

    // Moving leafA and marking it upward, as a geometry leaf does (0x09).
    leafA->GetLocalTransform().SetTranslate(Vec(5, 0, 0));
    leafA->markDirty(false);
    EXPECT_TRUE(marked({leafA, a, root}, 0x09));
    EXPECT_TRUE(marked(b, 0));

    const int aUpdates = leafA->mWorldUpdates, bUpdates = leafB->mWorldUpdates;
    root->UpdateGS_Flags();
    EXPECT_EQ(leafA->mWorldUpdates, aUpdates + 1);
    EXPECT_EQ(leafB->mWorldUpdates, bUpdates) << "a clean branch is not visited";
    EXPECT_EQ(leafA->GetWorldBound().GetCenter(), Vec(5, 0, 0));
    EXPECT_EQ(root->GetWorldBound().GetCenter(), Vec(2.5f, 0, 0));
    // The two pass bits are gone; the rest of the mark stays until Clean_Flags.
    EXPECT_TRUE(hasMasks(root, 0x09, 0x08));
    EXPECT_EQ(leafA->GetUpdateMask(), 0x08u);

    // With only the bound bit, the pass recomputes the bound and leaves world data alone.
    root->Clean_Flags();
    EXPECT_TRUE(marked(leafA, 0));
    b->GetLocalTransform().SetTranslate(Vec(-100, 0, 0));
    leafB->SetModelBound(zuBoundingVolume(Vec(0, 0, 0), Vec(3, 3, 3)));
    leafB->SetUpdateMask(zuSpatial::UPDATE_WORLD_BOUND);
    b->SetUpdateMask(zuSpatial::UPDATE_WORLD_DATA);
    root->SetUpdateMask(zuSpatial::UPDATE_WORLD_BOUND);
    root->UpdateGS_Flags();
    EXPECT_EQ(leafB->GetWorldBound().GetExtents(), Vec(1, 1, 1)) << "the root's bound bit does not descend";
    EXPECT_EQ(b->GetWorldTransform().GetTranslate(), Vec(0, 0, 0));
    root->SetUpdateMask(zuSpatial::UPDATE_WORLD_DATA);
    root->UpdateGS_Flags();
    EXPECT_EQ(b->GetWorldTransform().GetTranslate(), Vec(-100, 0, 0));
    EXPECT_EQ(leafB->GetWorldBound().GetExtents(), Vec(3, 3, 3));
    EXPECT_EQ(leafB->GetWorldBound().GetCenter(), Vec(0, 0, 0)) << "only its bound was pending";
}

TEST_F(Spatial, IgnoredAndHeldObjectsKeepTheirWorldTransformation)
{
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuTestLeaf> ignored = new zuTestLeaf(Vec(0, 0, 0), Vec(1, 1, 1));
    zuPointer<zuTestLeaf> held = new zuTestLeaf(Vec(0, 0, 0), Vec(1, 1, 1));
    zuPointer<zuTestLeaf> plain = new zuTestLeaf(Vec(0, 0, 0), Vec(1, 1, 1));
    for (zuTestLeaf* leaf : {ignored.get(), held.get(), plain.get()})
        root->attachChild(leaf);
    root->UpdateGS();
    root->Clean_Flags();

    ignored->forceIgnore(true, true, false);
    EXPECT_TRUE(ignored->isIgnored());
    EXPECT_TRUE(marked({ignored, root}, 0x09)) << "setDirtyDown(false) of a leaf";
    held->holdWorldTransform(true);

    for (zuTestLeaf* leaf : {ignored.get(), held.get(), plain.get()})
        leaf->GetLocalTransform().SetTranslate(Vec(50, 0, 0));
    root->GetLocalTransform().SetTranslate(Vec(0, 7, 0));
    root->UpdateGS();
    EXPECT_TRUE(ignored->GetWorldTransform().IsIdentity() && held->GetWorldTransform().IsIdentity());
    EXPECT_EQ(plain->GetWorldTransform().GetTranslate(), Vec(50, 7, 0));
    // The ignored leaf does not enlarge its parent's bound; the held one does.
    EXPECT_EQ(root->GetWorldBound().GetCenter(), Vec(25, 3.5f, 0));
    EXPECT_EQ(root->GetWorldBound().GetExtents(), Vec(26, 4.5f, 1));

    // Without propagation only the flag changes.
    root->Clean_Flags();
    ignored->forceIgnore(false, false, true);
    EXPECT_FALSE(ignored->isIgnored());
    EXPECT_EQ(root->GetDirtyMask(), 0u);
}

// Metadata of a chosen key that remembers who it was handed to.
class KeyedMetadata : public zuMetadataInterface {
public:
    explicit KeyedMetadata(uint32_t key) : mKey(key) {}
    uint32_t getTypeKey() const override { return mKey; }
    void updateMetaData(zuSpatial* owner) override { mOwner = owner; }
    uint32_t mKey;
    zuSpatial* mOwner = nullptr;
};

TEST_F(Spatial, MetadataStaysSortedWithOneEntryPerKey)
{
    zuPointer<zuNode> node = new zuNode;
    zuPointer<KeyedMetadata> five = new KeyedMetadata(5), two = new KeyedMetadata(2), nine = new KeyedMetadata(9);
    node->setMetadata(nullptr);
    node->setMetadata(five);
    node->setMetadata(two);
    node->setMetadata(nine);
    ASSERT_EQ(node->getMetadataQuantity(), 3);
    EXPECT_TRUE(node->getMetadataAt(0) == two.get() && node->getMetadataAt(1) == five.get()
                && node->getMetadataAt(2) == nine.get());

    zuPointer<KeyedMetadata> otherFive = new KeyedMetadata(5);
    const int before = five->GetReferences();
    node->setMetadata(otherFive);
    EXPECT_EQ(node->getMetadataQuantity(), 3);
    EXPECT_EQ(node->getMetadataAt(1), otherFive.get());
    EXPECT_EQ(five->GetReferences(), before - 1) << "the replaced record is released";
    EXPECT_EQ(node->getMetadata(4), nullptr);
    EXPECT_TRUE(node->removeMetadata(2) && !node->removeMetadata(2));
    EXPECT_EQ(node->getMetadataAt(0), otherFive.get());

    EXPECT_TRUE(node->PostLink());
    EXPECT_TRUE(otherFive->mOwner == node.get() && nine->mOwner == node.get());
}

TEST_F(Spatial, EqualsComparesTransformationsAndCullingModeAndCloneCopiesThem)
{
    zuPointer<zuTestLeaf> a = new zuTestLeaf(Vec(0, 0, 0), Vec(1, 1, 1));
    zuPointer<zuTestLeaf> b = new zuTestLeaf(Vec(0, 0, 0), Vec(1, 1, 1));
    a->SetLocalTransform(rsTransform(rotation({0, 0, 1}, 20), Vec(2, 2, 2), Vec(1, 2, 3)));
    a->SetCullingMode(zuSpatial::CULL_NEVER);
    a->SetWorldBound(zuBoundingVolume(Vec(4, 4, 4), Vec(1, 1, 1)));
    zuPointer<zuSemanticMetadata> semantic = new zuSemanticMetadata;
    a->setMetadata(semantic);
    a->setDescriptionFlags(0x4000);
    EXPECT_FALSE(a->Equals(b));

    zuPointer<zuNode> parent = new zuNode;
    parent->attachChild(b);
    zuRttiInterface* target = b.get();
    ASSERT_TRUE(a->Clone(target));
    EXPECT_TRUE(b->Equals(a));
    EXPECT_EQ(b->GetWorldBound(), a->GetWorldBound());
    EXPECT_EQ(b->getMetadataAt(0), semantic.get()) << "records are shared";
    EXPECT_EQ(b->getDescriptionFlags(), 0x4000u);
    EXPECT_EQ(b->GetParent(), nullptr);
    b->SetParent(parent);

    // An invalid bound is not copied; bounds and metadata are not compared.
    zuPointer<zuTestLeaf> c = new zuTestLeaf;
    target = c.get();
    b->SetWorldBound(zuBoundingVolume());
    const zuBoundingVolume kept(Vec(9, 9, 9), Vec(1, 1, 1));
    c->SetWorldBound(kept);
    ASSERT_TRUE(b->Clone(target));
    EXPECT_EQ(c->GetWorldBound(), kept);
    EXPECT_TRUE(c->Equals(a));

    // The transformations compare within their tolerances; the culling mode exactly.
    c->GetLocalTransform().SetTranslate(Vec(1, 2, 3.0005f));
    EXPECT_TRUE(c->Equals(a));
    c->SetCullingMode(zuSpatial::CULL_DYNAMIC);
    EXPECT_FALSE(c->Equals(a));
}

} // namespace
} // namespace zu::test
