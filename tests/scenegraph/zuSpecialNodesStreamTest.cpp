// Persistence of the special nodes: the exact record of each class at 6.32, the camera
// node's convention from 5.14 on, the level-of-detail node's dropped list below 6.6, a
// mixed tree's round trip, and references of the wrong kind.

#include "scenegraph/zuSpatialRecords.h"
#include "scenegraph/zuSpatialTestHelpers.h"

#include <zuSceneGraph/scenegraph/zuBillboardNode.h>
#include <zuSceneGraph/scenegraph/zuCameraNode.h>
#include <zuSceneGraph/scenegraph/zuDummy.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>
#include <zuSceneGraph/scenegraph/zuLightNode.h>
#include <zuSceneGraph/scenegraph/zuXRefNode.h>

#include <gtest/gtest.h>

namespace zu::test {
namespace {

const zuStreamVersion V6_32(6, 32);

class SpecialNodesStream : public ::testing::Test {
protected:
    zuTestFactories factories;
};

// The record of an object saved on its own, without the top-level marker before it.
std::vector<char> recordOf(zuRttiInterface* object, zuStreamVersion version)
{
    const std::vector<char> saved = saveToBytes({object}, version);
    return std::vector<char>(saved.begin() + 4 + 9, saved.end());
}

void appendBytes(zuBytes& out, const std::vector<char>& bytes)
{
    out.raw(bytes.data(), bytes.size());
}

// A frame that is not the default one: D = +y, U = +x, R = D x U = -z.
const Vec D(0, 1, 0), U(1, 0, 0), R(0, 0, -1), LOCATION(1, 2, 3);

// The spatial part of a node whose local frame came from a light or camera.
SpatialPart framePart(const Wm4::Matrix3<float>& rotate)
{
    SpatialPart part;
    part.local = zuBytes();
    transformBytes(part.local, rotate, LOCATION, Vec(1, 1, 1), false, true, true);
    return part;
}

TEST_F(SpecialNodesStream, OneRecordOfEachClassAt632)
{
    // Level of detail with an empty slot and a dummy.
    zuPointer<zuLODNode> lod = new zuLODNode;
    lod->SetName("lod");
    zuPointer<zuDummy> dummy = new zuDummy;
    dummy->SetName("hook");
    lod->attachLODChild(1, dummy);
    SpatialPart lodPart, dummyPart;
    lodPart.name = "lod";
    dummyPart.name = "hook";
    zuBytes dummyBody;
    dummyPart.append(dummyBody, V6_32);
    zuBytes expected;
    appendRecord(expected, "zuCore.zuLODNode", id(lod), nodeBody(lodPart, {0, id(dummy)}, V6_32), V6_32, true);
    appendRecord(expected, "zuCore.zuDummy", id(dummy), dummyBody, V6_32);
    EXPECT_EQ(saveToBytes({lod}, V6_32), expected.bytes());

    // Light node: the node part with the light's frame, then the light's reference.
    zuPointer<zuLight> light = new zuLight;
    light->SetFrame(LOCATION, D, U, R);
    zuPointer<zuLightNode> lightNode = new zuLightNode(light);
    zuBytes body = nodeBody(framePart(Wm4::Matrix3<float>(D, U, R, true)), {}, V6_32);
    body.u64(id(light));
    expected = zuBytes();
    appendRecord(expected, "zuCore.zuLightNode", id(lightNode), body, V6_32, true);
    appendBytes(expected, recordOf(light, V6_32));
    EXPECT_EQ(saveToBytes({lightNode}, V6_32), expected.bytes());

    // Camera node: the camera's reference, then the convention.
    zuPointer<zuCamera> camera = new zuCamera;
    camera->SetFrame(LOCATION, D, U, R);
    zuPointer<zuCameraNode> cameraNode = new zuCameraNode(camera, zuCameraNode::FACING_ALONG_NEGATIVE_Z);
    body = nodeBody(framePart(Wm4::Matrix3<float>(R, U, -D, true)), {}, V6_32);
    body.u64(id(camera)).i32(1);
    expected = zuBytes();
    appendRecord(expected, "zuCore.zuCameraNode", id(cameraNode), body, V6_32, true);
    appendBytes(expected, recordOf(camera, V6_32));
    EXPECT_EQ(saveToBytes({cameraNode}, V6_32), expected.bytes());

    // Billboard: the camera's reference.
    zuPointer<zuBillboardNode> billboard = new zuBillboardNode(camera);
    body = nodeBody(SpatialPart(), {}, V6_32);
    body.u64(id(camera));
    expected = zuBytes();
    appendRecord(expected, "zuCore.zuBillboardNode", id(billboard), body, V6_32, true);
    appendBytes(expected, recordOf(camera, V6_32));
    EXPECT_EQ(saveToBytes({billboard}, V6_32), expected.bytes());

    // External reference: the string.
    zuPointer<zuXRefNode> xref = new zuXRefNode("parts/bolt.mvk");
    body = nodeBody(SpatialPart(), {}, V6_32);
    body.str("parts/bolt.mvk");
    expected = zuBytes();
    appendRecord(expected, "zuCore.zuXRefNode", id(xref), body, V6_32, true);
    EXPECT_EQ(saveToBytes({xref}, V6_32), expected.bytes());
}

TEST_F(SpecialNodesStream, TheCameraConventionIsWrittenFromVersion514)
{
    zuPointer<zuCamera> camera = new zuCamera;
    camera->SetFrame(LOCATION, D, U, R);
    zuPointer<zuCameraNode> node = new zuCameraNode(camera, zuCameraNode::FACING_ALONG_NEGATIVE_Z);
    for (const zuStreamVersion version : {zuStreamVersion(5, 13), zuStreamVersion(5, 14)}) {
        SCOPED_TRACE(version.GetMinor());
        const bool gated = version >= zuStreamVersion(5, 14);
        zuBytes body = nodeBody(framePart(Wm4::Matrix3<float>(R, U, -D, true)), {}, version);
        body.u64(id(camera));
        if (gated)
            body.i32(1);
        zuBytes expected;
        appendRecord(expected, "zuCore.zuCameraNode", id(node), body, version, true);
        appendBytes(expected, recordOf(camera, version));
        const std::vector<char> saved = saveToBytes({node}, version);
        EXPECT_EQ(saved, expected.bytes());

        // An older stream leaves the convention the node is made with.
        Loaded loaded(saved, version);
        ASSERT_TRUE(loaded.ok);
        auto* copy = loaded.top<zuCameraNode>(0);
        ASSERT_NE(copy, nullptr);
        EXPECT_EQ(copy->GetFacingConvention(), gated ? zuCameraNode::FACING_ALONG_NEGATIVE_Z : zuCameraNode::FACING_ALONG_X);
        ASSERT_NE(copy->GetCamera(), nullptr);
        EXPECT_TRUE(copy->GetCamera()->Equals(camera));
        EXPECT_TRUE(copy->GetLocalTransform().Equals(node->GetLocalTransform()));
    }
}

TEST_F(SpecialNodesStream, BelowVersion66TheLevelListIsReadAndDropped)
{
    const zuStreamVersion v60(6, 0);
    zuPointer<zuLODNode> lod = new zuLODNode;
    zuBytes body = nodeBody(SpatialPart(), {}, v60);
    body.i32(0);
    zuBytes expected;
    appendRecord(expected, "zuCore.zuLODNode", id(lod), body, v60, true);
    EXPECT_EQ(saveToBytes({lod}, v60), expected.bytes());
    // From 6.6 on the record is a plain node's (with a type name 3 characters longer).
    zuPointer<zuNode> plain = new zuNode;
    zuBaseStream at60, at66;
    at60.SetVersion(v60);
    at66.SetVersion(zuStreamVersion(6, 6));
    EXPECT_EQ(lod->GetDiskUsed(at60), plain->GetDiskUsed(at60) + 3 + 4);
    EXPECT_EQ(lod->GetDiskUsed(at66), plain->GetDiskUsed(at66) + 3);

    // A list of three values between the children and the next record.
    const auto lodWithList = [&](int count, const std::vector<uint32_t>& values) {
        zuBytes lodBody = nodeBody(SpatialPart(), {0xD0}, v60);
        lodBody.i32(count);
        for (uint32_t value : values)
            lodBody.raw(&value, 4);
        SpatialPart hook;
        hook.name = "hook";
        zuBytes dummyBody;
        hook.append(dummyBody, v60);
        zuBytes bytes;
        appendRecord(bytes, "zuCore.zuLODNode", 0xC0, lodBody, v60, true);
        appendRecord(bytes, "zuCore.zuDummy", 0xD0, dummyBody, v60);
        return bytes.bytes();
    };
    Loaded loaded(lodWithList(3, {7, 8, 9}), v60);
    ASSERT_TRUE(loaded.ok);
    auto* copy = loaded.top<zuLODNode>(0);
    ASSERT_NE(copy, nullptr);
    ASSERT_EQ(copy->getNbChildren(), 1);
    ASSERT_NE(copy->getChild(0), nullptr);
    EXPECT_EQ(copy->getChild(0)->GetName(), "hook");
    EXPECT_EQ(copy->getChild(0)->GetParent(), copy);

    // A count the record cannot hold fails the load without reading past it.
    for (int count : {1 << 30, -1, 4}) {
        Loaded bad(lodWithList(count, {7, 8, 9}), v60);
        EXPECT_FALSE(bad.ok) << count;
    }
}

TEST_F(SpecialNodesStream, AMixedTreeOfSpecialNodesRoundTrips)
{
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuLODNode> lod = new zuLODNode;
    zuPointer<zuDummy> fine = new zuDummy, coarse = new zuDummy;
    zuPointer<zuLight> light = new zuLight;
    light->SetFrame(LOCATION, D, U, R);
    light->SetLightType(zuLight::LT_SPOT);
    zuPointer<zuCamera> camera = new zuCamera;
    zuPointer<zuLightNode> lightNode = new zuLightNode(light);
    zuPointer<zuCameraNode> cameraNode = new zuCameraNode(camera, zuCameraNode::FACING_ALONG_NEGATIVE_Z);
    zuPointer<zuBillboardNode> billboard = new zuBillboardNode(camera);
    zuPointer<zuXRefNode> xref = new zuXRefNode("library/valve.mvk");
    lod->attachLODChild(0, fine);
    lod->attachLODChild(2, coarse);
    for (zuSpatial* child : std::initializer_list<zuSpatial*>{lod, lightNode, cameraNode, billboard, xref})
        root->attachChild(child);
    root->UpdateGS();

    Loaded loaded(saveToBytes({root}, V6_32), V6_32);
    ASSERT_TRUE(loaded.ok);
    zuNode* copy = loaded.top<zuNode>(0);
    ASSERT_NE(copy, nullptr);
    ASSERT_EQ(copy->getNbChildren(), 5);
    const auto childAs = [&](int i, const zuRtti& type) {
        zuSpatial* child = copy->getChild(i);
        EXPECT_TRUE(child && child->IsExactly(type)) << "slot " << i;
        return child;
    };
    auto* lodCopy = static_cast<zuLODNode*>(childAs(0, zuLODNode::TYPE));
    auto* lightCopy = static_cast<zuLightNode*>(childAs(1, zuLightNode::TYPE));
    auto* cameraCopy = static_cast<zuCameraNode*>(childAs(2, zuCameraNode::TYPE));
    auto* billboardCopy = static_cast<zuBillboardNode*>(childAs(3, zuBillboardNode::TYPE));
    auto* xrefCopy = static_cast<zuXRefNode*>(childAs(4, zuXRefNode::TYPE));
    ASSERT_TRUE(lodCopy && lightCopy && cameraCopy && billboardCopy && xrefCopy);

    ASSERT_EQ(lodCopy->getNbChildren(), 3);
    EXPECT_TRUE(lodCopy->getChild(0) && lodCopy->getChild(0)->IsExactly(zuDummy::TYPE));
    EXPECT_EQ(lodCopy->getChild(1), nullptr);
    EXPECT_TRUE(lodCopy->getChild(2) != nullptr);
    ASSERT_NE(lightCopy->GetLight(), nullptr);
    EXPECT_TRUE(lightCopy->GetLight()->Equals(light));
    EXPECT_TRUE(lightCopy->Equals(lightNode));
    EXPECT_EQ(cameraCopy->GetFacingConvention(), zuCameraNode::FACING_ALONG_NEGATIVE_Z);
    ASSERT_NE(cameraCopy->GetCamera(), nullptr);
    EXPECT_EQ(billboardCopy->GetCamera(), cameraCopy->GetCamera()) << "one camera, shared as it was";
    EXPECT_EQ(xrefCopy->GetReference(), "library/valve.mvk");

    // The loaded light node drives its light as the original did.
    copy->UpdateGS();
    EXPECT_TRUE(lightCopy->GetLight()->Equals(light));
}

TEST_F(SpecialNodesStream, AReferenceOfTheWrongKindLeavesTheNodeWithout)
{
    // A light node referring to a camera, a camera node and a billboard referring to a light.
    zuPointer<zuLight> light = new zuLight;
    zuPointer<zuCamera> camera = new zuCamera;
    zuBytes bytes;
    zuBytes lightNodeBody = nodeBody(SpatialPart(), {}, V6_32);
    lightNodeBody.u64(id(camera));
    appendRecord(bytes, "zuCore.zuLightNode", 0x10, lightNodeBody, V6_32, true);
    zuBytes cameraNodeBody = nodeBody(SpatialPart(), {}, V6_32);
    cameraNodeBody.u64(id(light)).i32(0);
    appendRecord(bytes, "zuCore.zuCameraNode", 0x20, cameraNodeBody, V6_32, true);
    zuBytes billboardBody = nodeBody(SpatialPart(), {}, V6_32);
    billboardBody.u64(id(light));
    appendRecord(bytes, "zuCore.zuBillboardNode", 0x30, billboardBody, V6_32, true);
    appendBytes(bytes, recordOf(camera, V6_32));
    appendBytes(bytes, recordOf(light, V6_32));

    Loaded loaded(bytes.bytes(), V6_32);
    ASSERT_TRUE(loaded.ok);
    ASSERT_NE(loaded.top<zuLightNode>(0), nullptr);
    EXPECT_EQ(loaded.top<zuLightNode>(0)->GetLight(), nullptr);
    ASSERT_NE(loaded.top<zuCameraNode>(1), nullptr);
    EXPECT_EQ(loaded.top<zuCameraNode>(1)->GetCamera(), nullptr);
    ASSERT_NE(loaded.top<zuBillboardNode>(2), nullptr);
    EXPECT_EQ(loaded.top<zuBillboardNode>(2)->GetCamera(), nullptr);
    loaded.top<zuNode>(0)->UpdateGS();
    loaded.top<zuNode>(1)->UpdateGS();
    loaded.top<zuNode>(2)->UpdateGS();
}

} // namespace
} // namespace zu::test
