// The camera: its frame and frustum as the culler reads them, the field-of-view helper,
// the exact record it writes, and its round trips.

#include "states/zuFileRoundTrip.h"
#include "support/zuTestObjects.h"

#include <zuSceneGraph/states/zuCamera.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace zu::test {
namespace {

using Vec = Wm4::Vector3<float>;

class Camera : public ::testing::Test {
protected:
    zuTestFactories factories;
};

uint64_t id(const void* object)
{
    return reinterpret_cast<uintptr_t>(object);
}

// A camera at (1, 2, 3) looking down +y with up +z (so right is +x), with an asymmetric,
// exactly representable frustum.
zuPointer<zuCamera> sampleCamera(bool perspective)
{
    zuPointer<zuCamera> camera = new zuCamera(perspective);
    camera->SetName("cam");
    camera->SetFrame(Vec(1, 2, 3), Vec(0, 1, 0), Vec(0, 0, 1), Vec(1, 0, 0));
    camera->SetFrustum(0.5f, 250.0f, -0.25f, 0.375f, -0.5f, 0.625f);
    return camera;
}

// The 18 floats of a camera in their persisted order, read and written through the public
// interface.
void setFloats(zuCamera& camera, const float (&v)[18])
{
    camera.SetFrame(Vec(v[0], v[1], v[2]), Vec(v[3], v[4], v[5]), Vec(v[6], v[7], v[8]), Vec(v[9], v[10], v[11]));
    camera.SetFrustum(v[12], v[13], v[14], v[15], v[16], v[17]);
}

void getFloats(const zuCamera& camera, float (&v)[18])
{
    const Vec* vectors[] = {&camera.GetLocation(), &camera.GetDVector(), &camera.GetUVector(), &camera.GetRVector()};
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 3; ++j)
            v[3 * i + j] = (*vectors[i])[j];
    for (int i = 0; i < zuCamera::VF_QUANTITY; ++i)
        v[12 + i] = camera.GetFrustum()[i];
}

TEST_F(Camera, DefaultsToAPerspectiveNinetyDegreeViewDownXWithARightHandedFrame)
{
    zuCamera camera;
    EXPECT_TRUE(camera.IsPerspective());
    EXPECT_FALSE(zuCamera(false).IsPerspective());
    EXPECT_EQ(camera.GetLocation(), Vec(0, 0, 0));
    EXPECT_EQ(camera.GetDVector(), Vec(1, 0, 0));
    EXPECT_EQ(camera.GetUVector(), Vec(0, 0, 1));
    EXPECT_EQ(camera.GetRVector(), camera.GetDVector().Cross(camera.GetUVector()));
    EXPECT_FLOAT_EQ(camera.GetDMin(), 1.0f);
    EXPECT_FLOAT_EQ(camera.GetDMax(), 1000.0f);
    EXPECT_FLOAT_EQ(camera.GetUMin(), -1.0f);
    EXPECT_FLOAT_EQ(camera.GetUMax(), 1.0f);
    EXPECT_FLOAT_EQ(camera.GetRMin(), -1.0f);
    EXPECT_FLOAT_EQ(camera.GetRMax(), 1.0f);
}

TEST_F(Camera, FieldOfViewHelperBuildsTheSymmetricFrustumAndReadsItBack)
{
    zuCamera camera;
    // 90 degrees: tan(45) = 1, so the half-height at the near plane is the near distance.
    camera.SetFrustum(90.0f, 1.0f, 2.0f, 100.0f);
    EXPECT_FLOAT_EQ(camera.GetDMin(), 2.0f);
    EXPECT_FLOAT_EQ(camera.GetDMax(), 100.0f);
    EXPECT_FLOAT_EQ(camera.GetUMax(), 2.0f);
    EXPECT_FLOAT_EQ(camera.GetUMin(), -2.0f);
    EXPECT_FLOAT_EQ(camera.GetRMax(), 2.0f);
    EXPECT_FLOAT_EQ(camera.GetRMin(), -2.0f);

    // 60 degrees, aspect 1.5, near 0.5: umax = 0.5 tan 30 = 0.5 / sqrt 3, rmax = 1.5 umax.
    camera.SetFrustum(60.0f, 1.5f, 0.5f, 40.0f);
    EXPECT_NEAR(camera.GetUMax(), 0.28867513, 1e-7);
    EXPECT_NEAR(camera.GetUMin(), -0.28867513, 1e-7);
    EXPECT_NEAR(camera.GetRMax(), 0.43301270, 1e-7);
    EXPECT_NEAR(camera.GetRMin(), -0.43301270, 1e-7);

    float fov = 0, aspect = 0, dMin = 0, dMax = 0;
    ASSERT_TRUE(camera.GetFrustum(fov, aspect, dMin, dMax));
    EXPECT_NEAR(fov, 60.0f, 1e-4);
    EXPECT_NEAR(aspect, 1.5f, 1e-6);
    EXPECT_EQ(dMin, 0.5f);
    EXPECT_EQ(dMax, 40.0f);
}

TEST_F(Camera, FieldOfViewIsRefusedForAnAsymmetricOrDegenerateFrustum)
{
    zuCamera camera;
    float fov = -1, aspect = -1, dMin = -1, dMax = -1;
    camera.SetFrustum(1, 10, -1, 2, -1, 1);
    EXPECT_FALSE(camera.GetFrustum(fov, aspect, dMin, dMax));
    camera.SetFrustum(1, 10, -1, 1, -2, 1);
    EXPECT_FALSE(camera.GetFrustum(fov, aspect, dMin, dMax));
    camera.SetFrustum(0, 10, -1, 1, -1, 1);  // no near distance: no angle
    EXPECT_FALSE(camera.GetFrustum(fov, aspect, dMin, dMax));
    camera.SetFrustum(1, 10, 0, 0, 0, 0);
    EXPECT_FALSE(camera.GetFrustum(fov, aspect, dMin, dMax));
    // A refused query leaves the outputs alone.
    EXPECT_EQ(fov, -1.0f);
    EXPECT_EQ(aspect, -1.0f);
    EXPECT_EQ(dMin, -1.0f);
    EXPECT_EQ(dMax, -1.0f);
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
    camera->SetAxes(Vec(0, 2, 0), Vec(0.1f, 0, 1), Vec(3, 0, 0));
    EXPECT_EQ(camera->GetDVector(), Vec(0, 2, 0));
    EXPECT_EQ(camera->GetUVector(), Vec(0.1f, 0, 1));
    EXPECT_EQ(camera->GetRVector(), Vec(3, 0, 0));
    EXPECT_EQ(camera->GetLocation(), Vec(1, 2, 3));
    camera->SetLocation(Vec(-4, 5, -6));
    EXPECT_EQ(camera->GetLocation(), Vec(-4, 5, -6));
    EXPECT_EQ(camera->GetDVector(), Vec(0, 2, 0));
    EXPECT_EQ(camera->GetDMin(), 0.5f);
    EXPECT_EQ(camera->GetRMax(), 0.625f);
}

TEST_F(Camera, RecordAt632IsTheObjectPartThenFrameFrustumAndFlag)
{
    zuPointer<zuCamera> camera = sampleCamera(false);
    const std::vector<char> saved = saveToBytes({camera}, zuStreamVersion(6, 32));

    const int header = 4 + 15 + 4 + 8;  // "zuCore.zuCamera", size, identity
    const int objectPart = 4 + 3 + 4;   // "cam", no controllers
    zuBytes expected;
    expected.str("Top Level").str("zuCore.zuCamera").i32(header + objectPart + 73).u64(id(camera.get()));
    expected.str("cam").i32(0);
    expected.f32(1).f32(2).f32(3);        // location
    expected.f32(0).f32(1).f32(0);        // D
    expected.f32(0).f32(0).f32(1);        // U
    expected.f32(1).f32(0).f32(0);        // R
    expected.f32(0.5f).f32(250.0f);       // dmin, dmax
    expected.f32(-0.25f).f32(0.375f);     // umin, umax
    expected.f32(-0.5f).f32(0.625f);      // rmin, rmax
    expected.u8(0);                       // orthographic
    EXPECT_EQ(saved, expected.bytes());

    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    EXPECT_EQ(camera->GetDiskUsed(stream), header + objectPart + 73);
}

TEST_F(Camera, DiskUsedIsWhatSaveWritesWithAndWithoutTheSizeField)
{
    zuPointer<zuCamera> camera = sampleCamera(true);
    zuPointer<zuTestController> controller = new zuTestController;
    camera->AttachController(controller);
    for (zuStreamVersion version : {zuStreamVersion(5, 20), zuStreamVersion(6, 0), zuStreamVersion(6, 32)}) {
        zuBaseStream stream;
        stream.SetVersion(version);
        const std::vector<char> saved = saveToBytes({camera}, version);
        const int controllerRecord = controller->GetDiskUsed(stream);
        EXPECT_EQ(saved.size(), size_t(4 + 9) + camera->GetDiskUsed(stream) + controllerRecord)
            << version.GetMajor() << "." << version.GetMinor();
    }
}

TEST_F(Camera, RoundTripsThroughAFileStreamWithFieldsAcrossBlockBoundaries)
{
    zuPointer<zuCamera> camera = sampleCamera(true);
    camera->AttachController(new zuTestController);
    // Blocks of 16 bytes split every vector and most floats of the record.
    for (int blockSize : {16, 24, zuFileStream::DEFAULT_BLOCK_SIZE}) {
        const std::vector<char> file = saveThroughFile(camera, zuStreamVersion(6, 32), blockSize);
        ASSERT_FALSE(file.empty());
        zuPointer<zuObject> loaded = loadThroughFile(file, blockSize);
        ASSERT_TRUE(loaded);
        ASSERT_TRUE(loaded->IsExactly(zuCamera::TYPE));
        const zuCamera* copy = static_cast<const zuCamera*>(loaded.get());
        EXPECT_TRUE(copy->Equals(camera));
        EXPECT_EQ(copy->GetName(), "cam");
        EXPECT_EQ(copy->GetControllerQuantity(), 1);
        EXPECT_EQ(copy->GetLocation(), camera->GetLocation());
        EXPECT_EQ(copy->GetRVector(), camera->GetRVector());
        EXPECT_EQ(std::memcmp(copy->GetFrustum(), camera->GetFrustum(), 6 * sizeof(float)), 0);
        EXPECT_TRUE(copy->IsPerspective());
    }
}

TEST_F(Camera, TruncatedRecordFailsTheLoadWithoutHandingOutACamera)
{
    zuPointer<zuCamera> camera = sampleCamera(true);
    std::vector<char> saved = saveToBytes({camera}, zuStreamVersion(6, 32));
    saved.pop_back();  // the perspective flag
    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    EXPECT_FALSE(stream.Load(saved.data(), saved.size()));
    EXPECT_EQ(stream.GetObjectCount(), 0);
}

TEST_F(Camera, EqualsToleratesBelowOneMillionthOnEveryFloatAndNothingMore)
{
    zuPointer<zuCamera> camera = sampleCamera(true);
    float base[18];
    getFloats(*camera, base);
    for (int i = 0; i < 18; ++i) {
        float values[18];
        std::memcpy(values, base, sizeof values);
        zuPointer<zuCamera> other = sampleCamera(true);
        values[i] = base[i] + 2e-7f;
        setFloats(*other, values);
        EXPECT_TRUE(camera->Equals(other)) << "float " << i;
        // Far values need more than 1e-6 to change at all in float.
        values[i] = base[i] + 4e-6f * std::max(1.0f, std::fabs(base[i]));
        setFloats(*other, values);
        EXPECT_FALSE(camera->Equals(other)) << "float " << i;
        EXPECT_FALSE(other->Equals(camera)) << "float " << i;
    }
    zuPointer<zuCamera> other = sampleCamera(false);
    EXPECT_FALSE(camera->Equals(other));
    other = sampleCamera(true);
    other->SetName("other");
    EXPECT_FALSE(camera->Equals(other));
    zuPointer<zuTestNode> node = new zuTestNode("cam");
    EXPECT_FALSE(camera->Equals(node));
    EXPECT_FALSE(camera->Equals(nullptr));
}

TEST_F(Camera, CloneCopiesEveryFieldIntoANewOrExistingCameraOnly)
{
    zuPointer<zuCamera> camera = sampleCamera(false);
    zuRttiInterface* target = nullptr;
    ASSERT_TRUE(camera->Clone(target));
    zuPointer<zuCamera> copy = static_cast<zuCamera*>(target);
    ASSERT_TRUE(copy->IsExactly(zuCamera::TYPE));
    float a[18], b[18];
    getFloats(*camera, a);
    getFloats(*copy, b);
    EXPECT_EQ(std::memcmp(a, b, sizeof a), 0);
    EXPECT_FALSE(copy->IsPerspective());
    EXPECT_EQ(copy->GetName(), "cam");
    EXPECT_NE(copy->GetID(), camera->GetID());

    zuPointer<zuCamera> existing = new zuCamera;
    target = existing.get();
    ASSERT_TRUE(camera->Clone(target));
    EXPECT_EQ(target, existing.get());
    EXPECT_TRUE(existing->Equals(camera));

    zuPointer<zuTestNode> node = new zuTestNode;
    target = node.get();
    EXPECT_FALSE(camera->Clone(target));
}

} // namespace
} // namespace zu::test
