// Persistence of spatial objects, nodes and semantic metadata (their exact records are
// pinned with the other classes' in the stream tests): a mixed tree's round trip, what
// older streams hold at every version gate (5.0, 5.1-5.12, 5.12, 6.6, 6.28), legacy bounds
// and global states, and hostile files (cycles, foreign references, shared children, huge
// counts).

#include "scenegraph/zuSpatialRecords.h"
#include "scenegraph/zuSpatialTestHelpers.h"
#include "support/zuFactoryTest.h"
#include "support/zuTestLeaf.h"

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuSemanticMetadata.h>
#include <zuSceneGraph/states/zuAlphaState.h>
#include <zuSceneGraph/states/zuCamera.h>
#include <zuSceneGraph/states/zuZBufferState.h>

#include <gtest/gtest.h>

#include <cstring>

namespace zu::test {
namespace {

using SpatialStream = zuFactoryTest;

zuBytes leafBody(const SpatialPart& part, const zuBoundingVolume& model, zuStreamVersion version)
{
    zuBytes body;
    part.append(body, version);
    boundBytes(body, model, version);
    return body;
}

zuBytes semanticBody(const std::vector<std::pair<std::string, std::string>>& pairs)
{
    zuBytes body;
    body.str("").i32(0).i32(static_cast<int32_t>(pairs.size()));
    for (const auto& pair : pairs)
        body.str(pair.first).str(pair.second);
    return body;
}

// A node record with identity transformations, no bound and no metadata.
void appendPlainNode(zuBytes& out, uint64_t identity, const std::vector<uint64_t>& children, bool topLevel = false)
{
    appendRecord(out, "zuCore.zuNode", identity, nodeBody(SpatialPart(), children, V6_32), V6_32, topLevel);
}

TEST_F(SpatialStream, AMixedTreeRoundTripsAt632)
{
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuNode> group = new zuNode;
    zuPointer<zuTestLeaf> a = new zuTestLeaf(Vec(1, 0, 0), Vec(1, 1, 1));
    zuPointer<zuTestLeaf> b = new zuTestLeaf(Vec(0, 1, 0), Vec(1, 2, 1));
    zuPointer<zuSemanticMetadata> shared = new zuSemanticMetadata;
    shared->setValue("Material", "steel");
    shared->setValue("Supplier", "");
    root->SetName("root");
    group->SetLocalTransform(rsTransform(rotation({0, 0, 1}, 30), Vec(2, 2, 2), Vec(0, 0, 5)));
    b->SetCullingMode(zuSpatial::CULL_ALWAYS);
    root->attachChild(group);
    root->setChild(0, nullptr);  // an empty slot survives
    root->setNbChildren(2);
    root->setChild(1, group);
    attachAll(group, {a, b});
    group->setMetadata(shared);
    a->setMetadata(shared);
    root->UpdateGS();

    Loaded loaded(saveToBytes({root}, V6_32), V6_32);
    ASSERT_TRUE(loaded.ok);
    zuNode* copy = loaded.top<zuNode>(0);
    ASSERT_TRUE(copy && copy->Equals(root) && copy->getNbChildren() == 2);
    EXPECT_EQ(copy->getChild(0), nullptr);
    auto* copyGroup = static_cast<zuNode*>(copy->getChild(1));
    ASSERT_TRUE(copyGroup && copyGroup->IsExactly(zuNode::TYPE) && copyGroup->getNbChildren() == 2);
    EXPECT_TRUE(copyGroup->GetParent() == copy && copyGroup->Equals(group));
    auto* copyA = static_cast<zuTestLeaf*>(copyGroup->getChild(0));
    auto* copyB = static_cast<zuTestLeaf*>(copyGroup->getChild(1));
    ASSERT_TRUE(copyA && copyB && copyA->IsExactly(zuTestLeaf::TYPE) && copyB->IsExactly(zuTestLeaf::TYPE));
    EXPECT_TRUE(copyA->Equals(a) && copyB->Equals(b));
    EXPECT_EQ(copyA->GetWorldBound(), a->GetWorldBound());
    EXPECT_EQ(copy->GetWorldBound(), root->GetWorldBound());
    EXPECT_TRUE(copy->isBoundFromBox());

    // The record is shared as it was, with its pairs in order.
    auto* copyShared = static_cast<zuSemanticMetadata*>(copyGroup->getMetadata(zuSemanticMetadata::TYPE_KEY));
    ASSERT_TRUE(copyShared && copyShared->getQuantity() == 2);
    EXPECT_TRUE(copyA->getMetadataAt(0) == copyShared && copyShared->Equals(shared)
                && copyShared->getKeyAt(1) == "Supplier");

    // Linking went through setChild: the loaded tree carries the attach marks.
    EXPECT_EQ(copyA->GetDirtyMask(), 0x2040u);
    EXPECT_EQ(copy->GetUpdateMask() & 0x2041u, 0x2041u);
}

TEST_F(SpatialStream, SemanticMetadataKeepsTheLastValueOfARepeatedKey)
{
    zuBytes bytes;
    appendRecord(bytes, "zuCore.zuSemanticMetadata", 0x10,
                 semanticBody({{"a", "1"}, {"b", "2"}, {"a", "3"}}), V6_32, true);
    Loaded loaded(bytes.bytes(), V6_32);
    ASSERT_TRUE(loaded.ok);
    auto* semantic = loaded.top<zuSemanticMetadata>(0);
    ASSERT_TRUE(semantic && semantic->getQuantity() == 2);
    std::string value;
    EXPECT_TRUE(semantic->getValue("a", value) && value == "3" && semantic->getKeyAt(1) == "b") << value;
    EXPECT_FALSE(semantic->getValue("c", value));
    EXPECT_TRUE(semantic->removeKey("a") && !semantic->hasKey("a"));
}

TEST_F(SpatialStream, Version55HoldsTenMetadataSlots)
{
    // Records in slots 3 and 7 load into a list of exactly ten slots.
    const zuStreamVersion v55(5, 5);
    zuBytes bytes;
    SpatialPart crafted;
    crafted.metadata = {0, 0, 0, 0x30, 0, 0, 0, 0x70, 0, 0};
    appendRecord(bytes, "zuCore.zuNode", 0x1, nodeBody(crafted, {}, v55), v55, true);
    appendRecord(bytes, "zuCore.zuSemanticMetadata", 0x30, semanticBody({{"slot", "3"}}), v55);
    appendRecord(bytes, "zuCore.zuSemanticMetadata", 0x70, semanticBody({{"slot", "7"}}), v55);
    Loaded loaded(bytes.bytes(), v55);
    ASSERT_TRUE(loaded.ok);
    zuNode* copy = loaded.top<zuNode>(0);
    ASSERT_TRUE(copy && copy->getMetadataQuantity() == 10);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(copy->getMetadataAt(i) != nullptr, i == 3 || i == 7) << "slot " << i;
    std::string value;
    ASSERT_TRUE(static_cast<zuSemanticMetadata*>(copy->getMetadataAt(7))->getValue("slot", value));
    EXPECT_EQ(value, "7");
}

TEST_F(SpatialStream, BelowVersion66TheBoundAndStatesAreSeparateObjects)
{
    const zuStreamVersion v60(6, 0);
    zuPointer<zuAlphaState> alpha = new zuAlphaState;
    alpha->BlendEnabled = true;
    zuPointer<zuZBufferState> zbuffer = new zuZBufferState;
    zbuffer->Writable = false;
    // A leaf whose legacy bound is a rotated box, with two global states and a foreign
    // reference in a state slot (a node, dropped).
    SpatialPart part;
    part.legacy = 0xB0;
    part.states = {id(alpha), 0xC0, id(zbuffer)};
    zuBytes box;
    box.str("").i32(0).f32(1).f32(2).f32(3);
    box.f32(0).f32(1).f32(0).f32(-1).f32(0).f32(0).f32(0).f32(0).f32(1);
    box.f32(3).f32(4).f32(12);
    zuBytes bytes;
    appendRecord(bytes, "zuTest.zuTestLeaf", 0xA0, leafBody(part, zuBoundingVolume(Vec(0, 0, 0), Vec(1, 1, 1)), v60), v60, true);
    appendRecord(bytes, "zuCore.zuLegacyBoxBV", 0xB0, box, v60);
    appendBytes(bytes, recordOf(alpha, v60));
    appendRecord(bytes, "zuCore.zuNode", 0xC0, nodeBody(SpatialPart(), {}, v60), v60);
    appendBytes(bytes, recordOf(zbuffer, v60));

    Loaded loaded(bytes.bytes(), v60);
    ASSERT_TRUE(loaded.ok);
    auto* leaf = loaded.top<zuTestLeaf>(0);
    ASSERT_TRUE(leaf && leaf->getGlobalStateQuantity() == 2);
    EXPECT_EQ(leaf->GetWorldBound(), zuBoundingVolume(Vec(1, 2, 3), Vec(3, 4, 12))) << "the box's axes are dropped";
    EXPECT_TRUE(leaf->isBoundFromBox());
    EXPECT_TRUE(leaf->getGlobalState(0)->Equals(alpha) && leaf->getGlobalState(1)->Equals(zbuffer));
    EXPECT_EQ(leaf->GetModelBound().GetExtents(), Vec(1, 1, 1));
}

TEST_F(SpatialStream, Version50HasADroppedFloatAndNoMetadata)
{
    // Whatever the float holds, the fields after it read right.
    const zuStreamVersion v50(5, 0);
    SpatialPart part;
    part.droppedFloat = 123.5f;
    part.cull = 1;
    zuBytes bytes;
    appendRecord(bytes, "zuTest.zuTestLeaf", 0xA0, leafBody(part, zuBoundingVolume(Vec(4, 5, 6), Vec(1, 2, 3)), v50), v50, true);
    Loaded loaded(bytes.bytes(), v50);
    ASSERT_TRUE(loaded.ok);
    auto* copy = loaded.top<zuTestLeaf>(0);
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(copy->GetCullingMode() == zuSpatial::CULL_ALWAYS && copy->getMetadataQuantity() == 0);
    EXPECT_EQ(copy->GetModelBound(), zuBoundingVolume(Vec(4, 5, 6), Vec(1, 2, 3)));
}

TEST_F(SpatialStream, Version510DropsTheOldReferenceList)
{
    const zuStreamVersion v510(5, 10);
    SpatialPart part;
    part.droppedList = {0x50, 0xDEAD};
    part.metadata = {0x60, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    zuBytes bytes;
    appendRecord(bytes, "zuTest.zuTestLeaf", 0xA0, leafBody(part, zuBoundingVolume(Vec(0, 0, 0), Vec(2, 2, 2)), v510), v510, true);
    appendRecord(bytes, "zuCore.zuSemanticMetadata", 0x50, semanticBody({{"listed", "dropped"}}), v510);
    appendRecord(bytes, "zuCore.zuSemanticMetadata", 0x60, semanticBody({{"slot", "0"}}), v510);
    Loaded loaded(bytes.bytes(), v510);
    ASSERT_TRUE(loaded.ok);
    auto* leaf = loaded.top<zuTestLeaf>(0);
    ASSERT_TRUE(leaf && leaf->getMetadataQuantity() == 10);
    EXPECT_EQ(leaf->GetModelBound().GetExtents(), Vec(2, 2, 2));
    auto* slot0 = static_cast<zuSemanticMetadata*>(leaf->getMetadataAt(0));
    ASSERT_TRUE(slot0 && slot0->hasKey("slot")) << "not the listed record";
    for (int i = 1; i < 10; ++i)
        EXPECT_EQ(leaf->getMetadataAt(i), nullptr);

    // Saved back at 5.10, the list is empty and the ten slots are kept.
    Loaded again(saveToBytes({leaf}, v510), v510);
    ASSERT_TRUE(again.ok);
    EXPECT_TRUE(again.top<zuTestLeaf>(0)->Equals(leaf) && again.top<zuTestLeaf>(0)->getMetadataQuantity() == 10);
}

TEST_F(SpatialStream, EveryGateKeepsSizeAndContentInStep)
{
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuTestLeaf> leaf = new zuTestLeaf(Vec(1, 2, 3), Vec(1, 1, 1));
    zuPointer<zuAlphaState> alpha = new zuAlphaState;
    alpha->BlendEnabled = true;
    root->attachChild(leaf);
    root->setMetadata(new zuSemanticMetadata);
    leaf->setGlobalState(alpha);
    leaf->setGlobalState(new zuZBufferState);
    leaf->SetLocalTransform(rsTransform(rotation({0, 0, 1}, 45), Vec(1, 1, 1), Vec(3, 0, 0)));
    root->UpdateGS();
    for (const zuStreamVersion& version : {zuStreamVersion(4, 9), zuStreamVersion(5, 0), zuStreamVersion(5, 1),
                                           zuStreamVersion(5, 12), zuStreamVersion(5, 13), zuStreamVersion(6, 5),
                                           zuStreamVersion(6, 6), zuStreamVersion(6, 27), zuStreamVersion(6, 28),
                                           V6_32}) {
        SCOPED_TRACE(std::to_string(version.GetMajor()) + "." + std::to_string(version.GetMinor()));
        const std::vector<char> bytes = saveToBytes({root}, version);
        ASSERT_FALSE(bytes.empty()) << "the sizes differ from what is written";
        Loaded loaded(bytes, version);
        ASSERT_TRUE(loaded.ok);
        zuNode* copy = loaded.top<zuNode>(0);
        ASSERT_TRUE(copy && copy->getChild(0));
        auto* copyLeaf = static_cast<zuTestLeaf*>(copy->getChild(0));
        EXPECT_TRUE(copy->Equals(root) && copyLeaf->Equals(leaf));
        EXPECT_EQ(copy->getMetadataQuantity(),
                  version < zuStreamVersion(5, 1) ? 0 : version <= zuStreamVersion(5, 12) ? 10 : 1);
        // Before 6.6 the states are written by reference and the bound as a legacy sphere,
        // which comes back as the cube about it; from 6.6 the bound is stored as it is.
        const bool current = version >= zuStreamVersion(6, 6);
        ASSERT_EQ(copyLeaf->getGlobalStateQuantity(), current ? 0 : 2);
        for (int i = 0; i < copyLeaf->getGlobalStateQuantity(); ++i)
            EXPECT_TRUE(copyLeaf->getGlobalState(i)->Equals(leaf->getGlobalState(i))) << i;
        const zuBoundingVolume& bound = leaf->GetWorldBound();
        const float r = bound.GetRadius();
        EXPECT_EQ(copyLeaf->GetWorldBound(), current ? bound : zuBoundingVolume(bound.GetCenter(), Vec(r, r, r)));
        EXPECT_EQ(copyLeaf->isBoundFromBox(), current);
    }
}

// Hostile files

TEST_F(SpatialStream, ReferencesThatWouldCloseACycleAreDropped)
{
    // 0xA -> 0xB -> 0xC -> 0xA, and 0xD -> 0xD, linked in file order.
    zuBytes bytes;
    appendPlainNode(bytes, 0xA, {0xB}, true);
    appendPlainNode(bytes, 0xB, {0xC});
    appendPlainNode(bytes, 0xC, {0xA});
    appendPlainNode(bytes, 0xD, {0xD}, true);
    // The same cycle with its records in reverse order.
    appendPlainNode(bytes, 0x13, {0x11});
    appendPlainNode(bytes, 0x12, {0x13});
    appendPlainNode(bytes, 0x11, {0x12}, true);
    Loaded loaded(bytes.bytes(), V6_32);
    ASSERT_TRUE(loaded.ok);
    ASSERT_EQ(loaded.stream.GetObjectCount(), 3);
    zuNode* a = loaded.top<zuNode>(0);
    zuNode* d = loaded.top<zuNode>(1);
    zuNode* first = loaded.top<zuNode>(2);
    ASSERT_TRUE(a && d && first);
    EXPECT_EQ(chainDepth(a), 3);
    EXPECT_EQ(childrenOf(d), (Slots{nullptr}));
    // 0x13 linked first and took 0x11, then 0x12 took 0x13; 0x11 taking 0x12 would close
    // the cycle. No top-level object holds 0x12 and 0x13, so they go with the load, and
    // 0x11 is left a root without children (not pointing to its freed parent).
    EXPECT_TRUE(!first->getChild(0) && !first->GetParent());

    // The walks end.
    for (zuNode* root : {a, d, first}) {
        zuSpatial* top = root;
        while (top->GetParent())
            top = top->GetParent();
        top->UpdateGS();
        zuPointer<zuCamera> camera = new zuCamera;
        zuCuller culler;
        culler.SetCamera(camera);
        culler.ComputeVisibleSet(top, nullptr, false);
        EXPECT_TRUE(culler.GetVisibleSet().empty());
    }
}

TEST_F(SpatialStream, ForeignAndSharedChildReferencesLeaveEmptySlots)
{
    zuBytes bytes;
    appendPlainNode(bytes, 0xA, {0x50, 0xB, 0xC, 0x999}, true);
    appendRecord(bytes, "zuCore.zuSemanticMetadata", 0x50, semanticBody({}), V6_32);
    appendPlainNode(bytes, 0xB, {});
    appendPlainNode(bytes, 0xD, {0xB, 0xC}, true);
    appendRecord(bytes, "zuTest.zuTestLeaf", 0xC, leafBody(SpatialPart(), zuBoundingVolume(), V6_32), V6_32);
    Loaded loaded(bytes.bytes(), V6_32);
    ASSERT_TRUE(loaded.ok);
    zuNode* a = loaded.top<zuNode>(0);
    zuNode* d = loaded.top<zuNode>(1);
    ASSERT_TRUE(a && d);
    // Not a spatial object, 0xB, 0xC, no such record; 0xB and 0xC belong to 0xA.
    ASSERT_EQ(a->getNbChildren(), 4);
    EXPECT_TRUE(!a->getChild(0) && a->getChild(1) && a->getChild(2) && !a->getChild(3));
    EXPECT_EQ(a->getChild(1)->GetParent(), a);
    EXPECT_EQ(childrenOf(d), (Slots{nullptr, nullptr}));
}

TEST_F(SpatialStream, ForeignReferencesInOldSlotsAreIgnored)
{
    const zuStreamVersion v60(6, 0);
    SpatialPart part;
    part.legacy = 0xB;  // a node, not a bound
    part.states = {0x50};
    part.metadata = {0xB};
    zuBytes bytes;
    appendRecord(bytes, "zuCore.zuNode", 0xA, nodeBody(part, {}, v60), v60, true);
    appendRecord(bytes, "zuCore.zuNode", 0xB, nodeBody(SpatialPart(), {}, v60), v60);
    appendRecord(bytes, "zuCore.zuSemanticMetadata", 0x50, semanticBody({}), v60);
    Loaded loaded(bytes.bytes(), v60);
    ASSERT_TRUE(loaded.ok);
    zuNode* a = loaded.top<zuNode>(0);
    ASSERT_TRUE(a && a->getMetadataQuantity() == 1);
    EXPECT_TRUE(!a->GetWorldBound().isValid() && !a->getMetadataAt(0));
}

TEST_F(SpatialStream, HugeCountsFailTheLoadWithoutAllocating)
{
    const auto tryLoad = [](const zuBytes& body, zuStreamVersion version) {
        zuBytes bytes;
        appendRecord(bytes, "zuCore.zuNode", 0xA, body, version, true);
        Loaded loaded(bytes.bytes(), version);
        return loaded.ok || loaded.stream.GetObjectCount() != 0;
    };
    zuBytes children;
    SpatialPart().append(children, V6_32);
    EXPECT_FALSE(tryLoad(children.i32(0x7FFFFFFF), V6_32));
    // A spatial part whose count `fromEnd` bytes before its end is `count`, then no children.
    const auto withCount = [](zuStreamVersion version, size_t fromEnd, int32_t count) {
        zuBytes part;
        SpatialPart().append(part, version);
        std::vector<char> raw = part.bytes();
        std::memcpy(raw.data() + raw.size() - fromEnd, &count, 4);
        return zuBytes().raw(raw.data(), raw.size()).i32(0);
    };
    EXPECT_FALSE(tryLoad(withCount(V6_32, 4, -1), V6_32)) << "metadata count 4294967295";
    EXPECT_FALSE(tryLoad(withCount(zuStreamVersion(6, 0), 8, 100000000), zuStreamVersion(6, 0))) << "state count";
}

} // namespace
} // namespace zu::test
