// The material state: defaults, its exact record, the file round trip and comparisons.

#include "states/zuFileRoundTrip.h"
#include "support/zuTestObjects.h"

#include <zuSceneGraph/states/zuMaterialState.h>

#include <gtest/gtest.h>

#include <vector>

namespace zu::test {
namespace {

const zuStreamVersion V6_32(6, 32);

class MaterialState : public ::testing::Test {
protected:
    zuTestFactories factories;
};

// A 6.32 stream of one top-level material state: type name, size, identity; empty name,
// no controllers; the four colours, shininess and opacity (`fields`, 14 floats).
std::vector<char> materialRecord(const zuMaterialState* material, const std::vector<float>& fields)
{
    zuBytes bytes;
    bytes.str("Top Level").str("zuCore.zuMaterialState");
    bytes.i32(4 + 22 + 4 + 8 + 4 + 4 + 56).u64(reinterpret_cast<uintptr_t>(material));
    bytes.str("").i32(0);
    EXPECT_EQ(14u, fields.size());
    for (float value : fields)
        bytes.f32(value);
    return bytes.bytes();
}

TEST_F(MaterialState, DefaultsAndRecordsAt6_32)
{
    zuPointer<zuMaterialState> material = new zuMaterialState;
    EXPECT_EQ(zuGlobalState::MATERIAL, material->GetStateType());
    EXPECT_EQ(2, static_cast<int>(material->GetStateType()));

    EXPECT_EQ(materialRecord(material, {0.2f, 0.2f, 0.2f, 0.8f, 0.8f, 0.8f, 0, 0, 0, 0, 0, 0, 1.0f, 1.0f}),
              saveToBytes({material.get()}, V6_32));

    material->Ambient = Wm4::ColorRGB(0.1f, 0.2f, 0.3f);
    material->Diffuse = Wm4::ColorRGB(0.4f, 0.5f, 0.6f);
    material->Specular = Wm4::ColorRGB(0.7f, 0.8f, 0.9f);
    material->Emissive = Wm4::ColorRGB(1.0f, 0.5f, 0.25f);
    material->Shininess = 64.0f;
    material->Opacity = 0.375f;
    EXPECT_EQ(materialRecord(material, {0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 0.7f, 0.8f, 0.9f, 1.0f, 0.5f, 0.25f,
                                        64.0f, 0.375f}),
              saveToBytes({material.get()}, V6_32));

    // Through the file container, across blocks of 8 bytes.
    zuPointer<zuObject> loaded = loadThroughFile(saveThroughFile(material, V6_32, 8), 8);
    ASSERT_NE(nullptr, loaded);
    ASSERT_TRUE(loaded->IsExactly(zuMaterialState::TYPE));
    const zuMaterialState* copy = static_cast<const zuMaterialState*>(loaded.get());
    EXPECT_EQ(material->Emissive, copy->Emissive);
    EXPECT_EQ(0.375f, copy->Opacity);
    EXPECT_TRUE(copy->Equals(material));
}

TEST_F(MaterialState, EqualsWithinToleranceAndClone)
{
    zuPointer<zuMaterialState> a = new zuMaterialState;
    zuPointer<zuMaterialState> b = new zuMaterialState;
    b->Specular[2] = 5e-7f;
    EXPECT_TRUE(a->Equals(b));
    b->Specular[2] = 2e-6f;
    EXPECT_FALSE(a->Equals(b));
    b->Specular[2] = 0.0f;
    b->Opacity = 0.5f;
    EXPECT_FALSE(a->Equals(b));

    zuRttiInterface* target = nullptr;
    ASSERT_TRUE(b->Clone(target));
    zuPointer<zuRttiInterface> clone = target;
    EXPECT_TRUE(clone->Equals(b));
    EXPECT_FALSE(clone->Equals(a));
    zuRttiInterface* node = new zuTestNode("n");
    zuPointer<zuRttiInterface> keep = node;
    EXPECT_FALSE(a->Clone(node));
}

} // namespace
} // namespace zu::test
