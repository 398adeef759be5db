// Persistence of the special nodes (their exact records are pinned with the other classes'
// in the stream tests): the camera node's convention read from 5.14 on, the level-of-detail
// node's dropped list below 6.6, a mixed tree's round trip, and references of the wrong kind.

#include "scenegraph/zuSpatialRecords.h"
#include "scenegraph/zuSpatialTestHelpers.h"
#include "support/zuFactoryTest.h"

#include <zuSceneGraph/scenegraph/zuBillboardNode.h>
#include <zuSceneGraph/scenegraph/zuCameraNode.h>
#include <zuSceneGraph/scenegraph/zuDummy.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>
#include <zuSceneGraph/scenegraph/zuLightNode.h>
#include <zuSceneGraph/scenegraph/zuXRefNode.h>

#include <gtest/gtest.h>

namespace zu::test {
namespace {

using SpecialNodesStream = zuFactoryTest;

// A frame that is not the default one: D = +y, U = +x, R = D x U = -z.
const Vec D(0, 1, 0), U(1, 0, 0), R(0, 0, -1), LOCATION(1, 2, 3);

TEST_F(SpecialNodesStream, TheCameraConventionIsReadFromVersion514)
{
    zuPointer<zuCamera> camera = new zuCamera;
    camera->SetFrame(LOCATION, D, U, R);
    zuPointer<zuCameraNode> node = new zuCameraNode(camera, zuCameraNode::FACING_ALONG_NEGATIVE_Z);
    for (const zuStreamVersion version : {zuStreamVersion(5, 13), zuStreamVersion(5, 14)}) {
        SCOPED_TRACE(version.GetMinor());
        const bool gated = version >= zuStreamVersion(5, 14);
        // An older stream leaves the convention the node is made with.
        Loaded loaded(saveToBytes({node}, version), version);
        ASSERT_TRUE(loaded.ok);
        auto* copy = loaded.top<zuCameraNode>(0);
        ASSERT_TRUE(copy && copy->GetCamera());
        EXPECT_EQ(copy->GetFacingConvention(), gated ? zuCameraNode::FACING_ALONG_NEGATIVE_Z : zuCameraNode::FACING_ALONG_X);
        EXPECT_TRUE(copy->GetCamera()->Equals(camera));
        EXPECT_TRUE(copy->GetLocalTransform().Equals(node->GetLocalTransform()));
    }
}

TEST_F(SpecialNodesStream, BelowVersion66TheLevelListIsReadAndDropped)
{
    const zuStreamVersion v60(6, 0);
    // A list of three values between the children and the next record; a count the record
    // cannot hold fails the load without reading past it.
    for (int count : {3, 1 << 30, -1, 4}) {
        zuBytes lodBody = nodeBody(SpatialPart(), {0xD0}, v60).i32(count).i32(7).i32(8).i32(9);
        zuBytes dummyBody;
        SpatialPart("hook").append(dummyBody, v60);
        zuBytes bytes;
        appendRecord(bytes, "zuCore.zuLODNode", 0xC0, lodBody, v60, true);
        appendRecord(bytes, "zuCore.zuDummy", 0xD0, dummyBody, v60);
        Loaded loaded(bytes.bytes(), v60);
        ASSERT_EQ(loaded.ok, count == 3) << count;
        if (count != 3)
            continue;
        auto* copy = loaded.top<zuLODNode>(0);
        ASSERT_TRUE(copy && copy->getNbChildren() == 1 && copy->getChild(0));
        EXPECT_EQ(copy->getChild(0)->GetName(), "hook");
        EXPECT_EQ(copy->getChild(0)->GetParent(), copy);
    }
}

TEST_F(SpecialNodesStream, AMixedTreeOfSpecialNodesRoundTrips)
{
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuLight> light = new zuLight;
    light->SetFrame(LOCATION, D, U, R);
    light->SetLightType(zuLight::LT_SPOT);
    zuPointer<zuCamera> camera = new zuCamera;
    zuPointer<zuLightNode> lightNode = new zuLightNode(light);
    attachAll(root, {lightNode, new zuCameraNode(camera, zuCameraNode::FACING_ALONG_NEGATIVE_Z),
                     new zuBillboardNode(camera), new zuXRefNode("library/valve.mvk")});
    root->UpdateGS();

    Loaded loaded(saveToBytes({root}, V6_32), V6_32);
    ASSERT_TRUE(loaded.ok);
    zuNode* copy = loaded.top<zuNode>(0);
    ASSERT_TRUE(copy && copy->getNbChildren() == 4);
    for (int i = 0; i < 4; ++i)
        ASSERT_TRUE(copy->getChild(i) && copy->getChild(i)->IsExactly(root->getChild(i)->GetType())) << i;
    auto* lightCopy = static_cast<zuLightNode*>(copy->getChild(0));
    auto* cameraCopy = static_cast<zuCameraNode*>(copy->getChild(1));
    ASSERT_NE(lightCopy->GetLight(), nullptr);
    EXPECT_TRUE(lightCopy->GetLight()->Equals(light));
    EXPECT_TRUE(lightCopy->Equals(lightNode));
    EXPECT_EQ(cameraCopy->GetFacingConvention(), zuCameraNode::FACING_ALONG_NEGATIVE_Z);
    ASSERT_NE(cameraCopy->GetCamera(), nullptr);
    EXPECT_EQ(static_cast<zuBillboardNode*>(copy->getChild(2))->GetCamera(), cameraCopy->GetCamera())
        << "one camera, shared as it was";
    EXPECT_EQ(static_cast<zuXRefNode*>(copy->getChild(3))->GetReference(), "library/valve.mvk");
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
    appendRecord(bytes, "zuCore.zuLightNode", 0x10, nodeBody(SpatialPart(), {}, V6_32).u64(id(camera)), V6_32, true);
    appendRecord(bytes, "zuCore.zuCameraNode", 0x20, nodeBody(SpatialPart(), {}, V6_32).u64(id(light)).i32(0), V6_32,
                 true);
    appendRecord(bytes, "zuCore.zuBillboardNode", 0x30, nodeBody(SpatialPart(), {}, V6_32).u64(id(light)), V6_32, true);
    appendBytes(bytes, recordOf(camera, V6_32));
    appendBytes(bytes, recordOf(light, V6_32));

    Loaded loaded(bytes.bytes(), V6_32);
    ASSERT_TRUE(loaded.ok);
    ASSERT_TRUE(loaded.top<zuLightNode>(0) && loaded.top<zuCameraNode>(1) && loaded.top<zuBillboardNode>(2));
    EXPECT_TRUE(!loaded.top<zuLightNode>(0)->GetLight() && !loaded.top<zuCameraNode>(1)->GetCamera()
                && !loaded.top<zuBillboardNode>(2)->GetCamera());
    for (int i = 0; i < 3; ++i)
        loaded.top<zuNode>(i)->UpdateGS();
}

} // namespace
} // namespace zu::test
