// The camera: its frame and frustum as the culler reads them, the field-of-view helper and
// comparison.

#include "states/zuStateRecords.h"
#include "support/zuFactoryTest.h"
#include "support/zuSampleObjects.h"

#include <zuSceneGraph/states/zuCamera.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace zu::test {
namespace {

using Vec = Wm4::Vector3<float>;

using Camera = zuFactoryTest;

// The 18 floats of a camera in their persisted order.
std::vector<float> getFloats(const zuCamera& camera)
{
    std::vector<float> v;
    for (const Vec* vector : {&camera.GetLocation(), &camera.GetDVector(), &camera.GetUVector(), &camera.GetRVector()})
        v.insert(v.end(), {(*vector)[0], (*vector)[1], (*vector)[2]});
    v.insert(v.end(), camera.GetFrustum(), camera.GetFrustum() + zuCamera::VF_QUANTITY);
    return v;
}

TEST_F(Camera, FieldOfViewHelperBuildsTheSymmetricFrustumAndRefusesOthers)
{
    zuCamera camera;
    // 90 degrees: tan(45) = 1, so the half-height at the near plane is the near distance.
    camera.SetFrustum(90.0f, 1.0f, 2.0f, 100.0f);
    const float expected90[] = {2, 100, -2, 2, -2, 2};
    for (int i = 0; i < 6; ++i)
        EXPECT_FLOAT_EQ(camera.GetFrustum()[i], expected90[i]) << i;

    // 60 degrees, aspect 1.5, near 0.5: umax = 0.5 tan 30 = 0.5 / sqrt 3, rmax = 1.5 umax.
    camera.SetFrustum(60.0f, 1.5f, 0.5f, 40.0f);
    EXPECT_NEAR(camera.GetUMin(), -0.28867513, 1e-7);
    EXPECT_NEAR(camera.GetRMax(), 0.43301270, 1e-7);
    float fov = 0, aspect = 0, dMin = 0, dMax = 0;
    ASSERT_TRUE(camera.GetFrustum(fov, aspect, dMin, dMax));
    EXPECT_NEAR(fov, 60.0f, 1e-4);
    EXPECT_NEAR(aspect, 1.5f, 1e-6);
    EXPECT_TRUE(dMin == 0.5f && dMax == 40.0f);

    // Asymmetric in u or r, no near distance, or no window: refused, the outputs left alone.
    fov = aspect = dMin = dMax = -1;
    const float refused[][6] = {{1, 10, -1, 2, -1, 1}, {1, 10, -1, 1, -2, 1}, {0, 10, -1, 1, -1, 1}, {1, 10, 0, 0, 0, 0}};
    for (const auto& v : refused) {
        camera.SetFrustum(v[0], v[1], v[2], v[3], v[4], v[5]);
        EXPECT_FALSE(camera.GetFrustum(fov, aspect, dMin, dMax));
    }
    EXPECT_EQ((std::vector<float>{fov, aspect, dMin, dMax}), std::vector<float>(4, -1.0f));
}

TEST_F(Camera, SetFrameStoresWhatTheCullerReads)
{
    zuPointer<zuCamera> camera = sampleCamera(true);
    // The view volume's near top-right corner E + dmin D + umax U + rmax R, by hand:
    // (1, 2, 3) + 0.5 (0, 1, 0) + 0.375 (0, 0, 1) + 0.625 (1, 0, 0).
    const Vec corner = camera->GetLocation() + camera->GetDVector() * camera->GetDMin()
        + camera->GetUVector() * camera->GetUMax() + camera->GetRVector() * camera->GetRMax();
    EXPECT_EQ(corner, Vec(1.625f, 2.5f, 3.375f));
    // The perspective top plane through E: normal (umax D - dmin U) / sqrt(dmin^2 + umax^2)
    // = (0, 0.6, -0.8), constant normal . E = -1.2; the corner lies on it.
    const Vec normal = (camera->GetDVector() * camera->GetUMax() - camera->GetUVector() * camera->GetDMin())
        / std::sqrt(camera->GetDMin() * camera->GetDMin() + camera->GetUMax() * camera->GetUMax());
    EXPECT_NEAR(normal.Dot(camera->GetLocation()), -1.2f, 1e-6);
    EXPECT_NEAR(normal.Dot(corner), -1.2f, 1e-6);

    // The axes are kept exactly as given, unit or not, and the frustum is untouched.
    std::vector<float> expected = {1, 2, 3, 0, 2, 0, 0.1f, 0, 1, 3, 0, 0, 0.5f, 250.0f, -0.25f, 0.375f, -0.5f, 0.625f};
    camera->SetAxes(Vec(0, 2, 0), Vec(0.1f, 0, 1), Vec(3, 0, 0));
    EXPECT_EQ(getFloats(*camera), expected);
    camera->SetLocation(Vec(-4, 5, -6));
    expected[0] = -4;
    expected[1] = 5;
    expected[2] = -6;
    EXPECT_EQ(getFloats(*camera), expected);
}

TEST_F(Camera, EqualsComparesProjectionAndName)
{
    zuPointer<zuCamera> camera = sampleCamera(true);
    EXPECT_TRUE(camera->Equals(sampleCamera(true)));
    EXPECT_FALSE(camera->Equals(sampleCamera(false)));
    zuPointer<zuCamera> other = sampleCamera(true);
    other->SetName("other");
    EXPECT_FALSE(camera->Equals(other));
}

} // namespace
} // namespace zu::test
