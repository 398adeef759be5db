// The two state slots of a geometry leaf with real material and texture states: the
// one-based numbering, replacement, the description composed from the states, the
// resource list with textures, and their persistence (from 6.6 the leaf's own references;
// before, the spatial part's zero-based list, which keeps only what the numbering puts
// below the count).

#include "scenegraph/zuGeometryTestHelpers.h"
#include "support/zuTestObjects.h"

#include <zuSceneGraph/scenegraph/zuGeometry.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>
#include <zuSceneGraph/states/zuAlphaState.h>
#include <zuSceneGraph/states/zuMaterialState.h>
#include <zuSceneGraph/states/zuTexture.h>
#include <zuSceneGraph/states/zuTextureState.h>

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace zu::test {
namespace {

class GeometryStateSlots : public ::testing::Test {
protected:
    zuTestFactories factories;
};

zuPointer<zuTextureState> texturesWith(std::initializer_list<zuTexture::Channel> channels)
{
    zuPointer<zuTextureState> state = new zuTextureState;
    for (zuTexture::Channel channel : channels) {
        zuPointer<zuTexture> texture = new zuTexture;
        texture->SetChannel(channel);
        state->AttachTexture(texture);
    }
    return state;
}

struct Loaded {
    zuBaseStream stream;
    bool ok = false;
    Loaded(std::vector<char> bytes, zuStreamVersion version)
    {
        stream.SetVersion(version);
        ok = stream.Load(bytes.data(), bytes.size());
    }
    template <class T> T* top(int i) const
    {
        zuRttiInterface* object = stream.GetObjectAt(i);
        return object && object->IsDerived(T::TYPE) ? static_cast<T*>(object) : nullptr;
    }
};

TEST_F(GeometryStateSlots, NumberingIsOneBasedAndTheTextureMovesUpWithoutAMaterial)
{
    zuPointer<zuTriMesh> mesh = new zuTriMesh;
    zuPointer<zuMaterialState> material = new zuMaterialState;
    zuPointer<zuTextureState> textures = texturesWith({zuTexture::CH_DIFFUSE});

    mesh->setGlobalState(textures);
    EXPECT_EQ(mesh->getGlobalStateQuantity(), 1);
    EXPECT_EQ(mesh->getGlobalState(0), nullptr);
    EXPECT_EQ(mesh->getGlobalState(1), textures.get());
    EXPECT_EQ(mesh->getGlobalState(2), nullptr);

    mesh->setGlobalState(material);
    EXPECT_EQ(mesh->getGlobalStateQuantity(), 2);
    EXPECT_EQ(mesh->getGlobalState(0), nullptr);
    EXPECT_EQ(mesh->getGlobalState(1), material.get());
    EXPECT_EQ(mesh->getGlobalState(2), textures.get());
    EXPECT_EQ(mesh->getGlobalState(3), nullptr);
    EXPECT_EQ(mesh->GetMaterialState(), material.get());
    EXPECT_EQ(mesh->GetTextureState(), textures.get());

    zuPointer<zuTriMesh> materialOnly = new zuTriMesh;
    materialOnly->setGlobalState(material);
    EXPECT_EQ(materialOnly->getGlobalStateQuantity(), 1);
    EXPECT_EQ(materialOnly->getGlobalState(1), material.get());
    EXPECT_EQ(materialOnly->getGlobalState(2), nullptr);
}

TEST_F(GeometryStateSlots, ASecondStateOfAKindReplacesAndReleasesTheFirst)
{
    zuPointer<zuTriMesh> mesh = new zuTriMesh;
    zuPointer<zuTextureState> first = texturesWith({});
    zuPointer<zuTextureState> second = texturesWith({});
    zuPointer<zuMaterialState> material = new zuMaterialState;
    mesh->setGlobalState(first);
    mesh->setGlobalState(material);
    EXPECT_EQ(first->GetReferences(), 2);
    mesh->setGlobalState(second);
    EXPECT_EQ(first->GetReferences(), 1);
    EXPECT_EQ(mesh->GetTextureState(), second.get());
    // An alpha state and null leave both slots.
    zuPointer<zuAlphaState> alpha = new zuAlphaState;
    mesh->setGlobalState(alpha);
    mesh->setGlobalState(nullptr);
    EXPECT_EQ(mesh->GetTextureState(), second.get());
    EXPECT_EQ(mesh->GetMaterialState(), material.get());
    EXPECT_EQ(alpha->GetReferences(), 1);
}

TEST_F(GeometryStateSlots, DescriptionComesFromTheMaterialAndTheTextureRoles)
{
    zuPointer<zuGeometry> geometry = new zuGeometry;
    zuPointer<zuMaterialState> material = new zuMaterialState;
    material->Opacity = 0.5f;
    geometry->setGlobalState(material);
    EXPECT_EQ(geometry->getDescriptionFlags(), zuGeometry::DESCRIPTION_MATERIAL | zuGeometry::DESCRIPTION_TRANSLUCENT);
    EXPECT_EQ(geometry->getMeshTransparency(), 1);

    // Bump before diffuse in the state: the defines still come diffuse first, once each.
    geometry->setGlobalState(texturesWith({zuTexture::CH_BUMP, zuTexture::CH_DIFFUSE, zuTexture::CH_BUMP}));
    EXPECT_EQ(geometry->getShaderDefines(), "#define DIFFUSE_MAP\n#define BUMP_MAP\n");
    EXPECT_EQ(geometry->getShaderKey(), "DiffBump");
    EXPECT_TRUE(geometry->hasDescriptionFlag(zuGeometry::DESCRIPTION_DIFFUSE_MAP | zuGeometry::DESCRIPTION_BUMP_MAP));

    // An opaque material with an opacity map.
    material->Opacity = 1.0f;
    geometry->setGlobalState(texturesWith({zuTexture::CH_OPACITY}));
    EXPECT_EQ(geometry->getShaderKey(), "");
    EXPECT_EQ(geometry->getDescriptionFlags(), zuGeometry::DESCRIPTION_MATERIAL | zuGeometry::DESCRIPTION_OPACITY_MAP);
    EXPECT_EQ(geometry->getMeshTransparency(), 3);
}

TEST_F(GeometryStateSlots, ResourcesEndWithThoseOfTheTextures)
{
    zuPointer<zuVertexBuffer> vertices = makeVertices({{0, 0, 0}}, false);
    zuPointer<zuTriMesh> mesh = new zuTriMesh(vertices, nullptr);
    zuPointer<zuTextureState> textures = texturesWith({zuTexture::CH_DIFFUSE, zuTexture::CH_BUMP});
    mesh->setGlobalState(textures);
    std::vector<zuDynamicLoadingResource*> expected{vertices.get(), nullptr};
    for (int i = 0; i < textures->GetTextureQuantity(); ++i) {
        std::vector<zuDynamicLoadingResource*> own;
        if (!textures->GetTexture(i)->getResources(own))
            own.push_back(textures->GetTexture(i)->GetResource());
        expected.insert(expected.end(), own.begin(), own.end());
    }
    std::vector<zuDynamicLoadingResource*> resources;
    mesh->getResources(resources);
    EXPECT_EQ(resources, expected);
}

TEST_F(GeometryStateSlots, StatesRoundTripFrom66AndFollowTheZeroBasedListBefore)
{
    zuPointer<zuGeometry> both = new zuGeometry;
    zuPointer<zuMaterialState> material = new zuMaterialState;
    material->Opacity = 0.25f;
    both->setGlobalState(material);
    both->setGlobalState(texturesWith({zuTexture::CH_DIFFUSE}));
    zuPointer<zuGeometry> textureOnly = new zuGeometry;
    textureOnly->setGlobalState(texturesWith({zuTexture::CH_BUMP}));

    for (zuStreamVersion version : {zuStreamVersion(6, 32), zuStreamVersion(6, 6)}) {
        Loaded loaded(saveToBytes({both, textureOnly}, version), version);
        ASSERT_TRUE(loaded.ok);
        const zuGeometry* copy = loaded.top<zuGeometry>(0);
        ASSERT_NE(copy, nullptr);
        ASSERT_NE(copy->GetMaterialState(), nullptr);
        ASSERT_NE(copy->GetTextureState(), nullptr);
        EXPECT_TRUE(copy->GetMaterialState()->Equals(material));
        EXPECT_EQ(copy->getShaderKey(), "Diff");
        EXPECT_TRUE(copy->hasDescriptionFlag(zuGeometry::DESCRIPTION_TRANSLUCENT));
        EXPECT_EQ(loaded.top<zuGeometry>(1)->getShaderKey(), "Bump");
    }

    // Before 6.6 the spatial part lists getGlobalState(0 .. quantity - 1): a null entry
    // and the material for a leaf with both, a null entry alone for a texture state only.
    const zuStreamVersion old(5, 25);
    Loaded loaded(saveToBytes({both, textureOnly}, old), old);
    ASSERT_TRUE(loaded.ok);
    const zuGeometry* copy = loaded.top<zuGeometry>(0);
    ASSERT_NE(copy, nullptr);
    ASSERT_NE(copy->GetMaterialState(), nullptr);
    EXPECT_TRUE(copy->GetMaterialState()->Equals(material));
    EXPECT_EQ(copy->GetTextureState(), nullptr);
    EXPECT_EQ(loaded.top<zuGeometry>(1)->getGlobalStateQuantity(), 0);
}

TEST_F(GeometryStateSlots, AStateInTheOtherSlotIsRefused)
{
    zuPointer<zuTriMesh> mesh = new zuTriMesh;
    mesh->setGlobalState(new zuMaterialState);
    mesh->setGlobalState(texturesWith({}));
    std::vector<char> saved = saveToBytes({mesh}, zuStreamVersion(6, 32));
    zuBaseStream sizer;
    sizer.SetVersion(zuStreamVersion(6, 32));
    // The state references precede the two flags and the two buffer references.
    const size_t material = 13 + static_cast<size_t>(mesh->GetDiskUsed(sizer)) - 16 - 18;
    char swapped[16];
    std::memcpy(swapped, &saved[material + 8], 8);
    std::memcpy(swapped + 8, &saved[material], 8);
    std::memcpy(&saved[material], swapped, 16);
    Loaded loaded(saved, zuStreamVersion(6, 32));
    ASSERT_TRUE(loaded.ok);
    const zuTriMesh* copy = loaded.top<zuTriMesh>(0);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->GetMaterialState(), nullptr);
    EXPECT_EQ(copy->GetTextureState(), nullptr);
}

} // namespace
} // namespace zu::test
