// Persistence of the geometry leaves (their exact records are pinned with the other
// classes' in the stream tests): round trips with buffers at every gate, and references of
// the wrong kind in a file.

#include "scenegraph/zuGeometryTestHelpers.h"
#include "scenegraph/zuSpatialRecords.h"
#include "support/zuFactoryTest.h"

#include <zuSceneGraph/scenegraph/zuGenericGeometry.h>
#include <zuSceneGraph/scenegraph/zuGeometry.h>
#include <zuSceneGraph/scenegraph/zuLine.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuPoint.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>
#include <zuSceneGraph/scenegraph/zuTriangles.h>
#include <zuSceneGraph/states/zuMaterialState.h>
#include <zuSceneGraph/states/zuTextureState.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace zu::test {
namespace {

const zuStreamVersion V6_28(6, 28), V6_20(6, 20), V6_6(6, 6), V6_0(6, 0), V5_25(5, 25), V5_24(5, 24);

using GeometryStream = zuFactoryTest;

// A mesh "quad" at (1, 2, 3) with a quad of two triangles, updated.
zuPointer<zuTriMesh> makeQuad()
{
    zuPointer<zuTriMesh> mesh =
        new zuTriMesh(makeVertices({{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 0}}, true), makeIndices({0, 1, 2, 0, 2, 3}));
    mesh->SetName("quad");
    mesh->GetLocalTransform().SetTranslate(Vec(1, 2, 3));
    mesh->UpdateGS();
    mesh->UpdateModelNormals();
    return mesh;
}

TEST_F(GeometryStream, EveryLeafRoundTripsWithItsBuffersAtEveryGate)
{
    zuPointer<zuGenericGeometry> generic = new zuGenericGeometry;
    generic->setUserShader("#define HIGHLIGHT\n", "High");
    generic->setFlags(0xF);
    zuPointer<zuLine> line = new zuLine;
    line->SetLineType(zuLine::STRIP);
    zuPointer<zuPoint> point = new zuPoint;
    point->SetPointSize(3);
    const std::vector<zuPointer<zuBaseGeometry>> leaves = {new zuTriangles, new zuTriMesh, new zuGeometry,
                                                           generic.get(), line.get(), point.get()};
    zuPointer<zuNode> root = new zuNode;
    root->SetName("root");
    for (size_t i = 0; i < leaves.size(); ++i) {
        zuBaseGeometry* leaf = leaves[i];
        leaf->SetName("leaf " + std::to_string(i));
        leaf->SetVertices(makeVertices({{0, 0, 0}, {1, 2, 3}, {-1, 4, 2}}, true));
        leaf->SetIndices(makeIndices({0, 1, 2}, i % 2 ? zuIndexBuffer::INDEX_16 : zuIndexBuffer::INDEX_32));
        leaf->UpdateModelBound();
        leaf->SetLocalTransform(rsTransform(rotation({0, 0, 1}, 30.0 * static_cast<double>(i)), Vec(2, 2, 2),
                                            Vec(static_cast<float>(i), 0, 0)));
        root->attachChild(leaf);
    }
    root->UpdateGS();

    for (zuStreamVersion version : {V6_32, V6_28, V6_20, V6_6, V6_0, V5_25, V5_24}) {
        SCOPED_TRACE(version.GetMinor());
        const bool flagsKept = version >= V6_6;
        for (const auto& leaf : leaves)
            leaf->SetGeometryFlag(0, flagsKept);
        Loaded loaded(saveToBytes({root}, version), version);
        ASSERT_TRUE(loaded.ok);
        const zuNode* copy = loaded.top<zuNode>(0);
        ASSERT_TRUE(copy && copy->getNbChildren() == static_cast<int>(leaves.size()));
        for (size_t i = 0; i < leaves.size(); ++i) {
            const zuBaseGeometry* original = leaves[i];
            const zuSpatial* child = copy->getChild(static_cast<int>(i));
            ASSERT_TRUE(child && child->IsExactly(original->GetType())) << i;
            const auto* leaf = static_cast<const zuBaseGeometry*>(child);
            EXPECT_TRUE(leaf->Equals(original)) << i;
            EXPECT_EQ(leaf->GetWorldMatrix(), original->GetWorldMatrix()) << i;
            EXPECT_EQ(leaf->GetGeometryFlag(0), flagsKept) << i;
            ASSERT_TRUE(leaf->GetVertices() && leaf->GetIndices());
            EXPECT_TRUE(leaf->GetVertices()->Equals(original->GetVertices())
                        && leaf->GetIndices()->Equals(original->GetIndices())) << i;
            // Old streams hold a sphere round the box; it comes back as the cube about it.
            const zuBoundingVolume& model = original->GetModelBound();
            const float r = model.GetRadius();
            EXPECT_EQ(leaf->GetModelBound(), flagsKept ? model : zuBoundingVolume(model.GetCenter(), Vec(r, r, r))) << i;
            EXPECT_EQ(leaf->isBoundFromBox(), flagsKept) << i;
        }
        EXPECT_EQ(static_cast<const zuGenericGeometry*>(copy->getChild(3))->getShaderKey(), "High");
    }
}

TEST_F(GeometryStream, ReferencesOfTheWrongKindLeaveTheirSlotsEmpty)
{
    // The material and texture states swapped, and the vertex and index buffers.
    zuPointer<zuTriMesh> mesh = makeQuad();
    mesh->setGlobalState(new zuMaterialState);
    mesh->setGlobalState(new zuTextureState);
    std::vector<char> saved = saveToBytes({mesh}, V6_32);
    // The buffer references end the record; the state references come 34 bytes before.
    const size_t buffers = 13 + static_cast<size_t>(diskUsed(mesh, V6_32)) - 16;
    for (const size_t at : {buffers, buffers - 18}) {
        uint64_t first = 0;
        uint64_t second = 0;
        std::memcpy(&first, &saved[at], 8);
        std::memcpy(&second, &saved[at + 8], 8);
        ASSERT_TRUE(first && second);
        std::memcpy(&saved[at], &second, 8);
        std::memcpy(&saved[at + 8], &first, 8);
    }
    Loaded loaded(saved, V6_32);
    ASSERT_TRUE(loaded.ok);
    const zuTriMesh* copy = loaded.top<zuTriMesh>(0);
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(!copy->GetVertices() && !copy->GetIndices() && !copy->GetMaterialState() && !copy->GetTextureState()
                && copy->getGlobalStateQuantity() == 0);
}

} // namespace
} // namespace zu::test
