// The light: the spot cone's cached sine and cosine, values read from a file outside their
// range, comparison and cloning.

#include "states/zuStateRecords.h"
#include "support/zuFactoryTest.h"
#include "support/zuSampleObjects.h"

#include <zuSceneGraph/states/zuLight.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace zu::test {
namespace {

constexpr float PI = 3.14159265358979f;

using Light = zuFactoryTest;

// The 27 floats of a light in their persisted order.
std::vector<float> getFloats(const zuLight& light)
{
    std::vector<float> v;
    const float* triples[] = {light.GetLocation(), light.GetDVector(), light.GetUVector(), light.GetRVector(),
                              light.GetAmbient(),  light.GetDiffuse(), light.GetSpecular()};
    for (const float* triple : triples)
        v.insert(v.end(), triple, triple + 3);
    v.insert(v.end(), {light.GetIntensity(), light.GetConstant(), light.GetLinear(), light.GetQuadratic(),
                       light.GetSpotCutoff(), light.GetSpotExponent()});
    return v;
}

// Offsets in a one-light stream saved at 6.0 or later: the type after the object part,
// the spot cutoff after the type, 12 vectors, intensity, attenuation and its flag.
size_t typeOffset(const std::string& name)
{
    return (4 + 9) + (4 + 14) + 4 + 8 + (4 + name.size()) + 4;
}
const size_t cutoffOffset = typeOffset("sun") + 4 + 48 + 36 + 4 + 12 + 1;

TEST_F(Light, SpotCutoffSetterKeepsSineAndCosineConsistentAndClampsToZeroPi)
{
    zuLight light(zuLight::LT_SPOT);
    // Clamped to [0, pi], NaN to 0; the exact values where the cosine and sine are exact.
    const struct {
        float cutoff, stored, cosine, sine;
        double cosineTolerance, sineTolerance;
    } cases[] = {
        {PI / 3, PI / 3, 0.5f, 0.8660254f, 1e-6, 1e-6},
        {PI / 4, PI / 4, 0.70710678f, 0.70710678f, 1e-6, 1e-6},
        {0.0f, 0.0f, 1.0f, 0.0f, 0, 0},
        {4.0f, PI, -1.0f, 0.0f, 0, 1e-6},
        {-0.5f, 0.0f, 1.0f, 0.0f, 0, 0},
        {std::numeric_limits<float>::quiet_NaN(), 0.0f, 1.0f, 0.0f, 0, 0},
    };
    for (const auto& c : cases) {
        light.SetSpotCutoff(c.cutoff);
        EXPECT_FLOAT_EQ(light.GetSpotCutoff(), c.stored) << c.cutoff;
        EXPECT_NEAR(light.GetSpotCutoffCosine(), c.cosine, c.cosineTolerance) << c.cutoff;
        EXPECT_NEAR(light.GetSpotCutoffSine(), c.sine, c.sineTolerance) << c.cutoff;
    }
}

TEST_F(Light, ATypeOutsideTheEnumerationLoadsAsReadAndACutoffOutsideZeroPiIsClamped)
{
    zuPointer<zuLight> light = spotLight();
    const std::vector<char> saved = saveToBytes({light}, V6_32);
    for (int32_t type : {4, 99, -3}) {
        std::vector<char> patched = saved;
        std::memcpy(&patched[typeOffset("sun")], &type, 4);
        const std::vector<zuPointer<zuObject>> loaded = loadRecords(patched);
        ASSERT_EQ(loaded.size(), 1u);
        const zuLight* copy = static_cast<const zuLight*>(loaded[0].get());
        EXPECT_EQ(static_cast<int>(copy->GetLightType()), type);
        EXPECT_STREQ(zuLight::GetLightTypeName(copy->GetLightType()), "UNKNOWN");
        EXPECT_FALSE(copy->Equals(light));
        // Saved again, the value comes back unchanged.
        EXPECT_EQ(saveToBytes({loaded[0]}, V6_32).size(), patched.size());
        int32_t resaved = 0;
        std::memcpy(&resaved, &saveToBytes({loaded[0]}, V6_32)[typeOffset("sun")], 4);
        EXPECT_EQ(resaved, type);
    }

    std::vector<char> patched = saved;
    float cutoff = 0;
    std::memcpy(&cutoff, &patched[cutoffOffset], 4);
    ASSERT_EQ(cutoff, 0.5f);
    cutoff = 7.0f;
    std::memcpy(&patched[cutoffOffset], &cutoff, 4);
    const std::vector<zuPointer<zuObject>> loaded = loadRecords(patched);
    ASSERT_EQ(loaded.size(), 1u);
    EXPECT_FLOAT_EQ(static_cast<const zuLight*>(loaded[0].get())->GetSpotCutoff(), PI);
    EXPECT_EQ(static_cast<const zuLight*>(loaded[0].get())->GetSpotCutoffCosine(), -1.0f);
}

TEST_F(Light, EqualsComparesFlagsExactly)
{
    zuPointer<zuLight> light = spotLight();
    for (void (*change)(zuLight&) : {+[](zuLight& l) { l.SetLightType(zuLight::LT_POINT); },
                                     +[](zuLight& l) { l.SetAttenuate(false); }, +[](zuLight& l) { l.SetOn(true); }}) {
        zuPointer<zuLight> other = spotLight();
        change(*other);
        EXPECT_FALSE(light->Equals(other));
    }
}

TEST_F(Light, CloneCopiesEveryFieldWithTheCachedCone)
{
    zuPointer<zuLight> light = spotLight();
    zuRttiInterface* target = nullptr;
    ASSERT_TRUE(light->Clone(target));
    zuPointer<zuLight> copy = static_cast<zuLight*>(target);
    EXPECT_TRUE(getFloats(*copy) == getFloats(*light) && copy->Equals(light));
    EXPECT_EQ(copy->GetSpotCutoffSine(), light->GetSpotCutoffSine());
    EXPECT_TRUE(copy->GetSpotCutoffCosine() == light->GetSpotCutoffCosine() && copy->GetName() == "sun");
}

} // namespace
} // namespace zu::test
