// The light: its type names, the spot cone's cached sine and cosine, the exact record it
// writes, its round trips, and a type read from a file outside the enumeration.

#include "states/zuFileRoundTrip.h"
#include "support/zuTestObjects.h"

#include <zuSceneGraph/states/zuCamera.h>
#include <zuSceneGraph/states/zuLight.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace zu::test {
namespace {

using Vec = Wm4::Vector3<float>;
using Color = Wm4::ColorRGB;

constexpr float PI = 3.14159265358979f;

class Light : public ::testing::Test {
protected:
    zuTestFactories factories;
};

uint64_t id(const void* object)
{
    return reinterpret_cast<uintptr_t>(object);
}

// A spot light at (4, 5, 6) shining down -z, with distinct, exactly representable values in
// every field.
zuPointer<zuLight> sampleLight()
{
    zuPointer<zuLight> light = new zuLight(zuLight::LT_SPOT);
    light->SetName("sun");
    light->SetFrame(Vec(4, 5, 6), Vec(0, 0, -1), Vec(0, 1, 0), Vec(1, 0, 0));
    light->SetAmbient(Color(0.125f, 0.25f, 0.375f));
    light->SetDiffuse(Color(0.5f, 0.625f, 0.75f));
    light->SetSpecular(Color(0.875f, 1.0f, 0.0625f));
    light->SetIntensity(2.5f);
    light->SetAttenuation(1.5f, 0.25f, 0.03125f);
    light->SetAttenuate(true);
    light->SetSpotCutoff(0.5f);
    light->SetSpotExponent(8.0f);
    light->SetOn(false);
    return light;
}

// The 27 floats of a light in their persisted order, through the public interface.
void setFloats(zuLight& light, const float (&v)[27])
{
    light.SetFrame(Vec(v[0], v[1], v[2]), Vec(v[3], v[4], v[5]), Vec(v[6], v[7], v[8]), Vec(v[9], v[10], v[11]));
    light.SetAmbient(Color(v[12], v[13], v[14]));
    light.SetDiffuse(Color(v[15], v[16], v[17]));
    light.SetSpecular(Color(v[18], v[19], v[20]));
    light.SetIntensity(v[21]);
    light.SetAttenuation(v[22], v[23], v[24]);
    light.SetSpotCutoff(v[25]);
    light.SetSpotExponent(v[26]);
}

void getFloats(const zuLight& light, float (&v)[27])
{
    const float* triples[] = {light.GetLocation(), light.GetDVector(), light.GetUVector(), light.GetRVector(),
                              light.GetAmbient(), light.GetDiffuse(), light.GetSpecular()};
    for (int i = 0; i < 7; ++i)
        for (int j = 0; j < 3; ++j)
            v[3 * i + j] = triples[i][j];
    v[21] = light.GetIntensity();
    v[22] = light.GetConstant();
    v[23] = light.GetLinear();
    v[24] = light.GetQuadratic();
    v[25] = light.GetSpotCutoff();
    v[26] = light.GetSpotExponent();
}

// Offset of the type field in a one-light stream saved at 6.0 or later.
size_t typeOffset(const std::string& name)
{
    return (4 + 9) + (4 + 14) + 4 + 8 + (4 + name.size()) + 4;
}

TEST_F(Light, TypeNamesFollowTheEnumerationAndUnknownValuesReadAsUnknown)
{
    EXPECT_STREQ(zuLight::GetLightTypeName(zuLight::LT_AMBIENT), "LT_AMBIENT");
    EXPECT_STREQ(zuLight::GetLightTypeName(zuLight::LT_DIRECTIONAL), "LT_DIRECTIONAL");
    EXPECT_STREQ(zuLight::GetLightTypeName(zuLight::LT_POINT), "LT_POINT");
    EXPECT_STREQ(zuLight::GetLightTypeName(zuLight::LT_SPOT), "LT_SPOT");
    EXPECT_EQ(zuLight::LT_QUANTITY, 4);
    EXPECT_STREQ(zuLight::GetLightTypeName(-1), "UNKNOWN");
    EXPECT_STREQ(zuLight::GetLightTypeName(zuLight::LT_QUANTITY), "UNKNOWN");
    EXPECT_STREQ(zuLight::GetLightTypeName(std::numeric_limits<int>::min()), "UNKNOWN");
}

TEST_F(Light, DefaultsToAnAmbientWhiteLightThatIsOnWithoutCone)
{
    zuLight light;
    EXPECT_EQ(light.GetLightType(), zuLight::LT_AMBIENT);
    EXPECT_EQ(zuLight(zuLight::LT_POINT).GetLightType(), zuLight::LT_POINT);
    // By value: the cross product yields -0 where the stored axis has +0.
    EXPECT_EQ((light.GetRVector() - light.GetDVector().Cross(light.GetUVector())).SquaredLength(), 0.0f);
    EXPECT_EQ(light.GetDVector(), Vec(0, 0, -1));
    EXPECT_EQ(light.GetAmbient(), Color::BLACK);
    EXPECT_EQ(light.GetDiffuse(), Color::WHITE);
    EXPECT_EQ(light.GetIntensity(), 1.0f);
    EXPECT_EQ(light.GetConstant(), 1.0f);
    EXPECT_FALSE(light.GetAttenuate());
    EXPECT_TRUE(light.IsOn());
    EXPECT_FLOAT_EQ(light.GetSpotCutoff(), PI);
    EXPECT_FLOAT_EQ(light.GetSpotCutoffCosine(), -1.0f);
    EXPECT_NEAR(light.GetSpotCutoffSine(), 0.0f, 1e-6);
}

TEST_F(Light, SpotCutoffSetterKeepsSineAndCosineConsistentAndClampsToZeroPi)
{
    zuLight light(zuLight::LT_SPOT);
    light.SetSpotCutoff(PI / 3);  // cos 60 = 1/2, sin 60 = sqrt(3)/2
    EXPECT_NEAR(light.GetSpotCutoffCosine(), 0.5, 1e-6);
    EXPECT_NEAR(light.GetSpotCutoffSine(), 0.8660254, 1e-6);
    light.SetSpotCutoff(PI / 4);
    EXPECT_NEAR(light.GetSpotCutoffCosine(), 0.70710678, 1e-6);
    EXPECT_NEAR(light.GetSpotCutoffSine(), 0.70710678, 1e-6);
    light.SetSpotCutoff(0.0f);
    EXPECT_EQ(light.GetSpotCutoffCosine(), 1.0f);
    EXPECT_EQ(light.GetSpotCutoffSine(), 0.0f);

    light.SetSpotCutoff(4.0f);
    EXPECT_FLOAT_EQ(light.GetSpotCutoff(), PI);
    EXPECT_EQ(light.GetSpotCutoffCosine(), -1.0f);
    light.SetSpotCutoff(-0.5f);
    EXPECT_EQ(light.GetSpotCutoff(), 0.0f);
    EXPECT_EQ(light.GetSpotCutoffCosine(), 1.0f);
    light.SetSpotCutoff(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(light.GetSpotCutoff(), 0.0f);
    EXPECT_EQ(light.GetSpotCutoffSine(), 0.0f);
    EXPECT_EQ(light.GetSpotCutoffCosine(), 1.0f);
}

TEST_F(Light, RecordAt632IsTheObjectPartThenEveryFieldInTheDocumentedOrder)
{
    zuPointer<zuLight> light = sampleLight();
    const std::vector<char> saved = saveToBytes({light}, zuStreamVersion(6, 32));

    const int header = 4 + 14 + 4 + 8;  // "zuCore.zuLight", size, identity
    const int objectPart = 4 + 3 + 4;   // "sun", no controllers
    zuBytes expected;
    expected.str("Top Level").str("zuCore.zuLight").i32(header + objectPart + 114).u64(id(light.get()));
    expected.str("sun").i32(0);
    expected.i32(3);                                  // LT_SPOT
    expected.f32(4).f32(5).f32(6);                    // location
    expected.f32(0).f32(0).f32(-1);                   // D
    expected.f32(0).f32(1).f32(0);                    // U
    expected.f32(1).f32(0).f32(0);                    // R
    expected.f32(0.125f).f32(0.25f).f32(0.375f);      // ambient
    expected.f32(0.5f).f32(0.625f).f32(0.75f);        // diffuse
    expected.f32(0.875f).f32(1.0f).f32(0.0625f);      // specular
    expected.f32(2.5f);                               // intensity
    expected.f32(1.5f).f32(0.25f).f32(0.03125f);      // constant, linear, quadratic
    expected.u8(1);                                   // attenuate
    expected.f32(0.5f).f32(8.0f);                     // spot cutoff, exponent
    expected.u8(0);                                   // off
    EXPECT_EQ(saved, expected.bytes());
    EXPECT_EQ(typeOffset("sun"), size_t(13 + header + objectPart));
}

TEST_F(Light, DiskUsedIsWhatSaveWritesWithAndWithoutTheSizeField)
{
    zuPointer<zuLight> light = sampleLight();
    light->SetName("a longer name");
    for (zuStreamVersion version : {zuStreamVersion(5, 20), zuStreamVersion(6, 32)}) {
        zuBaseStream stream;
        stream.SetVersion(version);
        const std::vector<char> saved = saveToBytes({light}, version);
        EXPECT_EQ(saved.size(), size_t(4 + 9) + light->GetDiskUsed(stream))
            << version.GetMajor() << "." << version.GetMinor();
    }
}

TEST_F(Light, RoundTripsThroughAFileStreamAndDerivesTheConeAgain)
{
    zuPointer<zuLight> light = sampleLight();
    light->AttachController(new zuTestController);
    for (int blockSize : {16, 40, zuFileStream::DEFAULT_BLOCK_SIZE}) {
        const std::vector<char> file = saveThroughFile(light, zuStreamVersion(6, 32), blockSize);
        ASSERT_FALSE(file.empty());
        zuPointer<zuObject> loaded = loadThroughFile(file, blockSize);
        ASSERT_TRUE(loaded);
        ASSERT_TRUE(loaded->IsExactly(zuLight::TYPE));
        const zuLight* copy = static_cast<const zuLight*>(loaded.get());
        EXPECT_TRUE(copy->Equals(light));
        float a[27], b[27];
        getFloats(*light, a);
        getFloats(*copy, b);
        EXPECT_EQ(std::memcmp(a, b, sizeof a), 0);
        EXPECT_EQ(copy->GetLightType(), zuLight::LT_SPOT);
        EXPECT_TRUE(copy->GetAttenuate());
        EXPECT_FALSE(copy->IsOn());
        EXPECT_EQ(copy->GetControllerQuantity(), 1);
        // The cached sine and cosine are not in the file: they follow the loaded cutoff.
        EXPECT_NEAR(copy->GetSpotCutoffSine(), std::sin(0.5), 1e-6);
        EXPECT_NEAR(copy->GetSpotCutoffCosine(), std::cos(0.5), 1e-6);
    }
}

TEST_F(Light, ATypeOutsideTheEnumerationLoadsAsReadAndNamesAsUnknown)
{
    zuPointer<zuLight> light = sampleLight();
    const std::vector<char> saved = saveToBytes({light}, zuStreamVersion(6, 32));
    for (int32_t type : {4, 99, -3}) {
        std::vector<char> patched = saved;
        std::memcpy(&patched[typeOffset("sun")], &type, 4);
        zuBaseStream stream;
        stream.SetVersion(zuStreamVersion(6, 32));
        ASSERT_TRUE(stream.Load(patched.data(), patched.size()));
        ASSERT_EQ(stream.GetObjectCount(), 1);
        const zuLight* loaded = static_cast<const zuLight*>(stream.GetObjectAt(0));
        EXPECT_EQ(static_cast<int>(loaded->GetLightType()), type);
        EXPECT_STREQ(zuLight::GetLightTypeName(loaded->GetLightType()), "UNKNOWN");
        EXPECT_FALSE(loaded->Equals(light));
        // Saved again, the value comes back unchanged.
        zuRttiInterface* object = stream.GetObjectAt(0);
        std::vector<char> again = saveToBytes({object}, zuStreamVersion(6, 32));
        ASSERT_EQ(again.size(), patched.size());
        int32_t resaved = 0;
        std::memcpy(&resaved, &again[typeOffset("sun")], 4);
        EXPECT_EQ(resaved, type);
    }
}

TEST_F(Light, ACutoffOutsideZeroPiInAFileIsClampedOnLoad)
{
    zuPointer<zuLight> light = sampleLight();
    std::vector<char> saved = saveToBytes({light}, zuStreamVersion(6, 32));
    const size_t cutoffOffset = typeOffset("sun") + 4 + 48 + 36 + 4 + 12 + 1;
    float cutoff = 0;
    std::memcpy(&cutoff, &saved[cutoffOffset], 4);
    ASSERT_EQ(cutoff, 0.5f);
    cutoff = 7.0f;
    std::memcpy(&saved[cutoffOffset], &cutoff, 4);
    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    ASSERT_TRUE(stream.Load(saved.data(), saved.size()));
    const zuLight* loaded = static_cast<const zuLight*>(stream.GetObjectAt(0));
    EXPECT_FLOAT_EQ(loaded->GetSpotCutoff(), PI);
    EXPECT_EQ(loaded->GetSpotCutoffCosine(), -1.0f);
}

TEST_F(Light, EqualsToleratesBelowOneMillionthOnEveryFloatAndComparesFlagsExactly)
{
    zuPointer<zuLight> light = sampleLight();
    float base[27];
    getFloats(*light, base);
    for (int i = 0; i < 27; ++i) {
        float values[27];
        std::memcpy(values, base, sizeof values);
        zuPointer<zuLight> other = sampleLight();
        values[i] = base[i] + 2e-7f;
        setFloats(*other, values);
        EXPECT_TRUE(light->Equals(other)) << "float " << i;
        values[i] = base[i] + 4e-6f * std::max(1.0f, std::fabs(base[i]));
        setFloats(*other, values);
        EXPECT_FALSE(light->Equals(other)) << "float " << i;
        EXPECT_FALSE(other->Equals(light)) << "float " << i;
    }
    zuPointer<zuLight> other = sampleLight();
    other->SetLightType(zuLight::LT_POINT);
    EXPECT_FALSE(light->Equals(other));
    other = sampleLight();
    other->SetAttenuate(false);
    EXPECT_FALSE(light->Equals(other));
    other = sampleLight();
    other->SetOn(true);
    EXPECT_FALSE(light->Equals(other));
    zuPointer<zuCamera> camera = new zuCamera;
    EXPECT_FALSE(light->Equals(camera));
    EXPECT_FALSE(light->Equals(nullptr));
}

TEST_F(Light, CloneCopiesEveryFieldIntoANewOrExistingLightOnly)
{
    zuPointer<zuLight> light = sampleLight();
    zuRttiInterface* target = nullptr;
    ASSERT_TRUE(light->Clone(target));
    zuPointer<zuLight> copy = static_cast<zuLight*>(target);
    float a[27], b[27];
    getFloats(*light, a);
    getFloats(*copy, b);
    EXPECT_EQ(std::memcmp(a, b, sizeof a), 0);
    EXPECT_EQ(copy->GetLightType(), zuLight::LT_SPOT);
    EXPECT_EQ(copy->GetSpotCutoffSine(), light->GetSpotCutoffSine());
    EXPECT_EQ(copy->GetSpotCutoffCosine(), light->GetSpotCutoffCosine());
    EXPECT_TRUE(copy->GetAttenuate());
    EXPECT_FALSE(copy->IsOn());
    EXPECT_EQ(copy->GetName(), "sun");

    zuPointer<zuLight> existing = new zuLight;
    target = existing.get();
    ASSERT_TRUE(light->Clone(target));
    EXPECT_EQ(target, existing.get());
    EXPECT_TRUE(existing->Equals(light));

    zuPointer<zuCamera> camera = new zuCamera;
    target = camera.get();
    EXPECT_FALSE(light->Clone(target));
}

} // namespace
} // namespace zu::test
