// The geometry base: the model bound from the vertex buffer, the world matrix, the order of
// the model updates, the world bound and culling of a leaf without vertices, the marks, the
// two state slots (their one-based numbering, replacement and the zero-based list that old
// streams keep), the two readiness tests, the resource list, the look-ups, comparison and
// cloning.

#include "scenegraph/zuGeometryTestHelpers.h"
#include "scenegraph/zuSpatialRecords.h"
#include "scenegraph/zuSpatialTestHelpers.h"
#include "support/zuFactoryTest.h"
#include "zusgW1Assembly.h"

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/scenegraph/zuGeometry.h>
#include <zuSceneGraph/scenegraph/zuLine.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuPoint.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>
#include <zuSceneGraph/states/zuAlphaState.h>
#include <zuSceneGraph/states/zuMaterialState.h>

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

namespace zu::test {
namespace {

using BaseGeometry = zuFactoryTest;

// Records the model updates in the order they run.
class RecordingMesh : public zuTriMesh {
public:
    using zuTriMesh::zuTriMesh;
    void UpdateModelNormals() override { calls.push_back("normals"); }
    void UpdateModelTangentSpace(int channel) override { calls.push_back("tangent " + std::to_string(channel)); }
    void UpdateModelInvert(int channel) override { calls.push_back("invert " + std::to_string(channel)); }
    std::vector<std::string> calls;
};

// A state that says it is a material (or texture) state without being one.
class PretendState : public zuGlobalState {
public:
    explicit PretendState(StateType type) : mType(type) {}
    StateType GetStateType() const override { return mType; }

private:
    StateType mType;
};

// ---------------------------------------------------------------------------------------
// Bounds and world data

TEST_F(BaseGeometry, ModelBoundIsTheMinMaxBoxOfThePositions)
{
    zuPointer<zuTriMesh> mesh = new zuTriMesh(makeVertices({{1, 2, 3}, {-1, 0, 5}, {3, -2, 4}}, false), nullptr);
    expectBox(mesh->GetModelBound(), Vec(1, 0, 4), Vec(2, 2, 1));
    // A rotated set keeps the world axes: the box of the points, not an oriented one.
    mesh->SetVertices(makeVertices({{0, 0, 0}, {1, 1, 0}, {2, 2, 0}, {3, 3, 1}}, true));
    mesh->UpdateModelBound();
    expectBox(mesh->GetModelBound(), Vec(1.5f, 1.5f, 0.5f), Vec(1.5f, 1.5f, 0.5f));
    mesh->SetVertices(makeVertices({{1, 1, 1}}, false));
    mesh->UpdateModelBound();
    expectBox(mesh->GetModelBound(), Vec(1, 1, 1), Vec(0, 0, 0));

    // No vertex buffer, an empty one, one without positions: invalid.
    zuAttributes normalsOnly;
    normalsOnly.SetNormalChannels(3);
    for (const zuPointer<zuVertexBuffer>& vertices :
         {zuPointer<zuVertexBuffer>(), makeVertices({}, false), zuPointer<zuVertexBuffer>(new zuVertexBuffer(normalsOnly, 4))}) {
        mesh->SetVertices(vertices);
        mesh->UpdateModelBound();
        EXPECT_FALSE(mesh->GetModelBound().isValid());
    }

    // A buffer left in its file (without a file the block goes only when forced) keeps the
    // bound it had.
    zuPointer<zuVertexBuffer> vertices = makeVertices({{0, 0, 0}, {2, 2, 2}}, false);
    mesh->SetVertices(vertices);
    mesh->UpdateModelBound();
    ASSERT_TRUE(zuRendererInterface::DeleteCPUData(vertices, true));
    ASSERT_FALSE(vertices->isCPUResident());
    mesh->UpdateModelBound();
    expectBox(mesh->GetModelBound(), Vec(1, 1, 1), Vec(1, 1, 1));
}

TEST_F(BaseGeometry, ModelBoundReadsPackedLayoutsFlatPositionsAndSkipsNaN)
{
    // A byte-sized user group after the position makes a stride of 13, so the floats of
    // every other vertex are unaligned.
    zuAttributes packed;
    packed.SetPositionChannels(3);
    packed.SetUserByteChannels(0, 1);
    ASSERT_EQ(packed.GetStride(), 13);
    zuPointer<zuVertexBuffer> vertices = new zuVertexBuffer(packed, 3);
    const Vec positions[3] = {{0, 0, 0}, {4, -2, 1}, {std::numeric_limits<float>::quiet_NaN(), 2, 3}};
    for (int i = 0; i < 3; ++i)
        std::memcpy(vertices->GetData() + i * packed.GetStride(), &positions[i], sizeof(Vec));
    zuBoundingVolume bv;
    bv.computeFromDataBox(vertices.get());
    expectBox(bv, Vec(2, 0, 1.5f), Vec(2, 2, 1.5f));

    zuAttributes flat;
    flat.SetPositionChannels(2);
    zuPointer<zuVertexBuffer> points = new zuVertexBuffer(flat, 2);
    points->Position2(0) = Wm4::Vector2<float>(1, 1);
    points->Position2(1) = Wm4::Vector2<float>(3, 2);
    bv.computeFromDataBox(points.get());
    expectBox(bv, Vec(2, 1.5f, 0), Vec(1, 0.5f, 0));

    // Only NaN positions: no box.
    vertices = makeVertices({{std::numeric_limits<float>::quiet_NaN(), 0, 0}}, false);
    bv.computeFromDataBox(vertices.get());
    EXPECT_FALSE(bv.isValid());
}

TEST_F(BaseGeometry, WorldMatrixHoldsTheColumnsOfTheWorldTransformationAsRows)
{
    zuPointer<zuNode> parent = new zuNode;
    zuPointer<zuTriMesh> mesh = new zuTriMesh;
    parent->attachChild(mesh);
    // A quarter turn about z, scaled (2, 3, 4), moved to (5, 6, 7).
    mesh->SetLocalTransform(rsTransform(Wm4::Matrix3<float>(0, -1, 0, 1, 0, 0, 0, 0, 1), Vec(2, 3, 4), Vec(5, 6, 7)));
    EXPECT_EQ(mesh->GetWorldMatrix(), Wm4::Matrix4<float>::IDENTITY);
    parent->UpdateGS();
    EXPECT_EQ(mesh->GetWorldMatrix(), Wm4::Matrix4<float>(0, 2, 0, 0, -3, 0, 0, 0, 0, 0, 4, 0, 5, 6, 7, 1));

    // A general matrix: row j is its column j. The flag-driven pass refreshes it too.
    zuGenericTransformation<float> general;
    general.SetMatrix(Wm4::Matrix3<float>(1, 2, 3, 4, 5, 6, 7, 8, 10));
    general.SetTranslate(Vec(-1, -2, -3));
    mesh->SetLocalTransform(general);
    mesh->SetUpdateMask(zuSpatial::UPDATE_WORLD_DATA);
    mesh->UpdateGS_Flags();
    EXPECT_EQ(mesh->GetWorldMatrix(), Wm4::Matrix4<float>(1, 4, 7, 0, 2, 5, 8, 0, 3, 6, 10, 0, -1, -2, -3, 1));
}

TEST_F(BaseGeometry, UpdateMSRunsTheModelUpdatesItIsAskedFor)
{
    zuPointer<RecordingMesh> mesh = new RecordingMesh(makeVertices({{0, 0, 0}, {1, 1, 1}}, false), nullptr);
    mesh->GetVertices()->Position3(1) = Vec(3, 3, 3);
    mesh->UpdateMS(false, false, -2);
    EXPECT_TRUE(mesh->calls.empty());
    expectBox(mesh->GetModelBound(), Vec(1.5f, 1.5f, 1.5f), Vec(1.5f, 1.5f, 1.5f));

    using Calls = std::vector<std::string>;
    const auto run = [&](auto... arguments) {
        mesh->calls.clear();
        mesh->UpdateMS(arguments...);
        return mesh->calls;
    };
    EXPECT_EQ(run(true, false, -1), (Calls{"normals", "tangent -1"}));
    EXPECT_EQ(run(false, false, 2), (Calls{"tangent 2"}));
    EXPECT_EQ(run(true, true, 5), (Calls{"invert 5"})) << "inverting does nothing else";
    EXPECT_EQ(run(true, 0), (Calls{"normals", "tangent 0"})) << "the triangle form never inverts";
}

TEST_F(BaseGeometry, ALeafWithoutVerticesHasNoBoundAndIsInsertedWhenItsParentIsVisible)
{
    zuPointer<zuTriMesh> mesh = new zuTriMesh(makeVertices({{-1, -1, -1}, {1, 1, 1}}, false), nullptr);
    mesh->SetLocalTransform(rsTransform(Wm4::Matrix3<float>::IDENTITY, Vec(2, 2, 2), Vec(10, 0, 0)));
    mesh->UpdateGS();
    expectBox(mesh->GetWorldBound(), Vec(10, 0, 0), Vec(2, 2, 2));
    mesh->SetVertices(makeVertices({}, false));
    mesh->UpdateMS(false, false, -2);
    mesh->UpdateGS();
    EXPECT_FALSE(mesh->GetModelBound().isValid() || mesh->GetWorldBound().isValid());

    zuPointer<zuCamera> camera = zusg::W1Assembly(2).camera();
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuNode> group = new zuNode;
    root->attachChild(group);
    zuPointer<zuTriMesh> cube = zusg::W1Assembly::makeCube();
    // The cube first: a node whose first child has no bound keeps its previous bound.
    attachAll(group, {cube, mesh});
    // In front of the camera, then behind it: the group is culled and the empty leaf with it.
    group->SetLocalTransform(rsTransform(Wm4::Matrix3<float>::IDENTITY, Vec(1, 1, 1), Vec(5, 0, 0)));
    root->UpdateGS();
    ASSERT_TRUE(group->GetWorldBound().isValid());
    zuCuller culler;
    culler.SetCamera(camera);
    culler.ComputeVisibleSet(root, nullptr, false);
    EXPECT_EQ(culler.GetVisibleSet(), (std::vector<zuRenderableSpatial*>{cube.get(), mesh.get()}));
    group->SetLocalTransform(rsTransform(Wm4::Matrix3<float>::IDENTITY, Vec(1, 1, 1), Vec(-5, 0, 0)));
    root->UpdateGS();
    culler.ComputeVisibleSet(root, nullptr, false);
    EXPECT_TRUE(culler.GetVisibleSet().empty());
}

TEST_F(BaseGeometry, EveryLeafMarksItsBoundGoingDownAndItsWorldDataGoingUp)
{
    zuPointer<zuNode> parent = new zuNode;
    zuPointer<zuLine> line = new zuLine;
    parent->attachChild(line);
    EXPECT_EQ(line->GetDirtyMask(), 0x2040u);
    EXPECT_EQ(parent->GetUpdateMask() & 0x2040u, 0x2040u);
    line->Clean_Flags();
    line->SetDirtyMask(0x100);
    EXPECT_EQ(line->setDirtyDown(false), 0x109u);
    EXPECT_EQ(line->GetUpdateMask(), 0x09u);

    zuPointer<zuGeometry> geometry = new zuGeometry;
    geometry->SetDirtyMask(0x100);
    EXPECT_EQ(geometry->setDirtyDown(true), 0x2140u);
    EXPECT_EQ(geometry->GetUpdateMask(), 0x2040u);
    EXPECT_EQ(geometry->setDirtyDown(false), 0x2149u);
    EXPECT_EQ(geometry->GetUpdateMask(), 0x2049u);
}

// ---------------------------------------------------------------------------------------
// States

TEST_F(BaseGeometry, OnlyRealMaterialAndTextureStatesTakeASlot)
{
    zuPointer<zuPoint> point = new zuPoint;
    zuPointer<zuAlphaState> alpha = new zuAlphaState;
    zuPointer<PretendState> material = new PretendState(zuGlobalState::MATERIAL);
    zuPointer<PretendState> texture = new PretendState(zuGlobalState::TEXTURE);
    for (zuGlobalState* state : std::initializer_list<zuGlobalState*>{nullptr, alpha, material, texture})
        point->setGlobalState(state);
    EXPECT_TRUE(point->getGlobalStateQuantity() == 0 && !point->GetMaterialState() && !point->GetTextureState());
    EXPECT_EQ(material->GetReferences(), 1);
}

TEST_F(BaseGeometry, StateNumberingIsOneBasedAndTheTextureMovesUpWithoutAMaterial)
{
    zuPointer<zuTriMesh> mesh = new zuTriMesh;
    zuPointer<zuMaterialState> material = new zuMaterialState;
    zuPointer<zuTextureState> textures = texturesWith({zuTexture::CH_DIFFUSE});
    const auto slots = [&](const zuTriMesh* leaf) {
        return std::vector<zuGlobalState*>{leaf->getGlobalState(0), leaf->getGlobalState(1), leaf->getGlobalState(2),
                                           leaf->getGlobalState(3)};
    };
    mesh->setGlobalState(textures);
    EXPECT_EQ(mesh->getGlobalStateQuantity(), 1);
    EXPECT_EQ(slots(mesh), (std::vector<zuGlobalState*>{nullptr, textures, nullptr, nullptr}));
    mesh->setGlobalState(material);
    EXPECT_EQ(mesh->getGlobalStateQuantity(), 2);
    EXPECT_EQ(slots(mesh), (std::vector<zuGlobalState*>{nullptr, material, textures, nullptr}));
    zuPointer<zuTriMesh> materialOnly = new zuTriMesh;
    materialOnly->setGlobalState(material);
    EXPECT_EQ(materialOnly->getGlobalStateQuantity(), 1);
    EXPECT_EQ(slots(materialOnly), (std::vector<zuGlobalState*>{nullptr, material, nullptr, nullptr}));

    // A second state of a kind replaces and releases the first; an alpha state and null
    // leave both slots.
    zuPointer<zuTextureState> second = texturesWith({});
    EXPECT_EQ(textures->GetReferences(), 2);
    mesh->setGlobalState(second);
    EXPECT_TRUE(textures->GetReferences() == 1 && mesh->GetTextureState() == second.get());
    zuPointer<zuAlphaState> alpha = new zuAlphaState;
    mesh->setGlobalState(alpha);
    mesh->setGlobalState(nullptr);
    EXPECT_EQ(slots(mesh), (std::vector<zuGlobalState*>{nullptr, material, second, nullptr}));
}

TEST_F(BaseGeometry, StatesRoundTripFrom66AndFollowTheZeroBasedListBefore)
{
    zuPointer<zuGeometry> both = new zuGeometry;
    zuPointer<zuMaterialState> material = new zuMaterialState;
    material->Opacity = 0.25f;
    both->setGlobalState(material);
    both->setGlobalState(texturesWith({zuTexture::CH_DIFFUSE}));
    zuPointer<zuGeometry> textureOnly = new zuGeometry;
    textureOnly->setGlobalState(texturesWith({zuTexture::CH_BUMP}));

    // Before 6.6 the spatial part lists getGlobalState(0 .. quantity - 1): a null entry and
    // the material for a leaf with both, a null entry alone for a texture state only.
    for (zuStreamVersion version : {V6_32, zuStreamVersion(6, 6), zuStreamVersion(5, 25)}) {
        SCOPED_TRACE(version.GetMinor());
        const bool current = version >= zuStreamVersion(6, 6);
        Loaded loaded(saveToBytes({both, textureOnly}, version), version);
        ASSERT_TRUE(loaded.ok);
        const zuGeometry* copy = loaded.top<zuGeometry>(0);
        ASSERT_TRUE(copy && copy->GetMaterialState());
        EXPECT_TRUE(copy->GetMaterialState()->Equals(material));
        EXPECT_TRUE(copy->hasDescriptionFlag(zuGeometry::DESCRIPTION_TRANSLUCENT));
        EXPECT_EQ(copy->GetTextureState() != nullptr, current);
        EXPECT_EQ(copy->getShaderKey(), current ? "Diff" : "");
        EXPECT_EQ(loaded.top<zuGeometry>(1)->getShaderKey(), current ? "Bump" : "");
        EXPECT_EQ(loaded.top<zuGeometry>(1)->getGlobalStateQuantity(), current ? 1 : 0);
    }
}

// ---------------------------------------------------------------------------------------
// Rendering and resources

TEST_F(BaseGeometry, CheckRenderableTestsTheVerticesThenTheIndices)
{
    zuPointer<zuTriMesh> mesh = new zuTriMesh;
    // (ready, first test, second test) after checkRenderable(force).
    const auto check = [&](bool force) {
        const bool ready = mesh->checkRenderable(force);
        return std::make_tuple(ready, mesh->getRenderFlag(zuRenderableSpatial::RENDERABLE_FIRST),
                               mesh->getRenderFlag(zuRenderableSpatial::RENDERABLE_SECOND));
    };
    using Flags = std::tuple<bool, int, int>;
    EXPECT_EQ(check(false), Flags(false, 0, 0));

    zuPointer<zuVertexBuffer> vertices = makeVertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, false);
    zuPointer<zuIndexBuffer> indices = makeIndices({0, 1, 2});
    mesh->SetVertices(vertices);
    EXPECT_EQ(check(false), Flags(false, 1, 0)) << "no index buffer: the vertices are drawn in order";
    mesh->SetIndices(makeIndices({}));
    EXPECT_EQ(check(false), Flags(false, 0, 0));
    mesh->SetIndices(indices);
    EXPECT_EQ(check(false), Flags(false, 1, 0));
    // The second test: both bound by a renderer.
    bindFake(vertices);
    EXPECT_EQ(check(false), Flags(false, 1, 0));
    bindFake(indices);
    EXPECT_EQ(check(false), Flags(true, 1, 1));
    // The blocks may leave memory once bound: only the first test changes, and only when
    // it is asked for.
    ASSERT_TRUE(zuRendererInterface::DeleteCPUData(vertices, true));
    EXPECT_EQ(check(true), Flags(true, 1, 1));
    EXPECT_EQ(check(false), Flags(true, 0, 1));
    vertices->release();
    EXPECT_TRUE(!std::get<0>(check(true)) && std::get<2>(check(true)) == 0);
}

TEST_F(BaseGeometry, ResourcesAreTheVerticesThenTheIndicesOrANullEntryThenTheTextures)
{
    using Resources = std::vector<zuDynamicLoadingResource*>;
    zuPointer<zuVertexBuffer> vertices = makeVertices({{0, 0, 0}}, false);
    zuPointer<zuIndexBuffer> indices = makeIndices({0});
    zuPointer<zuTriMesh> mesh = new zuTriMesh;
    Resources resources{indices.get()};
    mesh->getResources(resources);
    EXPECT_TRUE(resources.empty());
    mesh->SetIndices(indices);
    mesh->getResources(resources);
    EXPECT_TRUE(resources.empty()) << "no vertices, nothing to draw";
    mesh->SetVertices(vertices);
    mesh->getResources(resources);
    EXPECT_EQ(resources, (Resources{vertices.get(), indices.get()}));
    mesh->SetIndices(nullptr);
    mesh->getResources(resources);
    EXPECT_EQ(resources, (Resources{vertices.get(), nullptr}));

    zuPointer<zuTextureState> textures = texturesWith({zuTexture::CH_DIFFUSE, zuTexture::CH_BUMP});
    mesh->setGlobalState(textures);
    Resources expected{vertices.get(), nullptr};
    for (int i = 0; i < textures->GetTextureQuantity(); ++i) {
        Resources own;
        if (!textures->GetTexture(i)->getResources(own))
            own.push_back(textures->GetTexture(i)->GetResource());
        expected.insert(expected.end(), own.begin(), own.end());
    }
    mesh->getResources(resources);
    EXPECT_EQ(resources, expected);
}

// ---------------------------------------------------------------------------------------
// Look-ups, comparison, cloning

TEST_F(BaseGeometry, LookUpsSearchTheLeafThenItsVerticesThenItsIndices)
{
    zuPointer<zuVertexBuffer> vertices = makeVertices({{0, 0, 0}}, false);
    zuPointer<zuIndexBuffer> indices = makeIndices({0});
    zuPointer<zuTriMesh> mesh = new zuTriMesh(vertices, indices);
    mesh->SetName("bolt");
    zuPointer<zuTestController> controller = new zuTestController;
    controller->SetName("spin");
    mesh->AttachController(controller);

    EXPECT_EQ(mesh->GetObjectByName("spin"), controller.get());
    // The buffers carry no name: the empty name finds the vertex buffer first.
    EXPECT_EQ(mesh->GetObjectByName(""), vertices.get());
    std::vector<zuObject*> unnamed;
    mesh->GetAllObjectsByName("", unnamed);
    EXPECT_EQ(unnamed, (std::vector<zuObject*>{vertices.get(), indices.get()}));
    // Found through the tree as well.
    zuPointer<zuNode> root = new zuNode;
    root->attachChild(mesh);
    EXPECT_EQ(root->GetObjectByID(indices->GetID()), indices.get());
}

TEST_F(BaseGeometry, EqualsComparesModeFlagsAndWorldMatrixButNotBuffers)
{
    zuPointer<zuTriMesh> a = new zuTriMesh(makeVertices({{0, 0, 0}}, false), nullptr);
    zuPointer<zuTriMesh> b = new zuTriMesh;
    EXPECT_TRUE(a->GetModeByte() == 4 && a->Equals(b));
    b->SetModeByte(5);
    EXPECT_FALSE(a->Equals(b));
    b->SetModeByte(4);
    b->SetGeometryFlag(1, true);
    EXPECT_FALSE(a->Equals(b));
    b->SetGeometryFlag(1, false);

    // Bit for bit: a translation of -0 gives a world matrix that differs from +0 only in its
    // sign bit, while the transformations compare equal.
    zuGenericTransformation<float> negativeZero;
    negativeZero.SetTranslate(Vec(-0.0f, 0, 0));
    b->SetLocalTransform(negativeZero);
    b->UpdateGS();
    a->SetLocalTransform(negativeZero);
    a->GetLocalTransform().SetTranslate(Vec(0, 0, 0));
    a->UpdateGS();
    EXPECT_TRUE(a->GetWorldTransform().Equals(b->GetWorldTransform()));
    EXPECT_FALSE(a->Equals(b));
    EXPECT_FALSE(zuPointer<zuLine>(new zuLine)->Equals(zuPointer<zuPoint>(new zuPoint)));
}

TEST_F(BaseGeometry, CloneSharesTheBuffersAndCopiesTheFields)
{
    zuPointer<zuVertexBuffer> vertices = makeVertices({{1, 2, 3}, {3, 2, 1}}, false);
    zuPointer<zuIndexBuffer> indices = makeIndices({0, 1});
    zuPointer<zuLine> line = new zuLine(vertices, indices, zuLine::STRIP);
    line->SetName("edge");
    line->SetModeByte(7);
    line->SetGeometryFlag(0, true);
    line->SetLocalTransform(rsTransform(Wm4::Matrix3<float>::IDENTITY, Vec(1, 1, 1), Vec(1, 0, 0)));
    line->UpdateGS();

    zuRttiInterface* target = nullptr;
    ASSERT_TRUE(line->Clone(target));
    zuPointer<zuRttiInterface> held = target;
    ASSERT_TRUE(target->IsExactly(zuLine::TYPE));
    const zuLine* copy = static_cast<const zuLine*>(target);
    EXPECT_TRUE(copy->Equals(line) && copy->GetName() == "edge" && copy->GetLineType() == zuLine::STRIP);
    EXPECT_TRUE(copy->GetVertices() == vertices.get() && copy->GetIndices() == indices.get());
    EXPECT_EQ(copy->GetModelBound(), line->GetModelBound());
}

} // namespace
} // namespace zu::test
