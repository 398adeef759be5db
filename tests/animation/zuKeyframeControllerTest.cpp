// The keyframe controller: key search sequences, interpolation against independent
// computations, what an update writes into the local transformation, references of the
// wrong array type in its record, its comparison and its copy.

#include "animation/zuAnimationTestHelpers.h"
#include "support/zuFactoryTest.h"

#include <zuSceneGraph/animation/zuKeyframeController.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace zu::test {
namespace {

using KeyframeController = zuFactoryTest;

// Which bracket a search settles on and where it leaves the index, from a given start; the
// random test below decides the bracket itself.
TEST_F(KeyframeController, KeySearchesMoveForwardAndBackwardAcrossManyKeys)
{
    // Keys at 0, 2, 4, ..., 38.
    std::vector<float> times(20);
    for (int k = 0; k < 20; ++k)
        times[static_cast<size_t>(k)] = 2.0f * static_cast<float>(k);
    const struct {
        int start;
        float t;
        int lastIndex, i0, i1;
        float normTime;
    } steps[] = {
        {0, 5.0f, 2, 2, 3, 0.5f},        // up over several keys: the lower key
        {15, 30.0f, 15, 15, 15, 0.0f},   // exactly on the last index
        {15, 29.0f, 15, 14, 15, 0.5f},   // just below: the pair under it, the index stays
        {15, 9.0f, 5, 4, 5, 0.5f},       // far down: the upper key
        {5, 10.0f, 5, 5, 5, 0.0f},       // on a key from above: that key
        {4, 10.0f, 5, 5, 6, 0.0f},       // the same key reached from below: the pair above it
        {19, 37.0f, 19, 18, 19, 0.5f},   // down from the last key: the index stays
    };
    for (const auto& step : steps) {
        float normTime = -1.0f;
        int lastIndex = step.start, i0 = -1, i1 = -1;
        zuKeyframeController::GetKeyInfo(step.t, 20, times.data(), lastIndex, normTime, i0, i1);
        EXPECT_TRUE(lastIndex == step.lastIndex && i0 == step.i0 && i1 == step.i1)
            << "t = " << step.t << ": " << lastIndex << " " << i0 << " " << i1;
        EXPECT_FLOAT_EQ(normTime, step.normTime) << "t = " << step.t;
    }
}

TEST_F(KeyframeController, RandomSearchesBracketTheTimeAsABinarySearchDoes)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> gap(0.01f, 3.0f);
    std::vector<float> times(200);
    float time = -50.0f;
    for (float& t : times) {
        t = time;
        time += gap(random);
    }
    const float first = times.front();
    const float last = times.back();
    std::uniform_real_distribution<float> anywhere(first - 10.0f, last + 10.0f);
    std::uniform_int_distribution<int> anyKey(0, 199);
    std::uniform_real_distribution<float> step(-4.0f, 4.0f);

    int lastIndex = 0;
    float t = 0.0f;
    for (int n = 0; n < 5000; ++n) {
        // Far jumps, short steps and times exactly on keys.
        switch (n % 3) {
        case 0: t = anywhere(random); break;
        case 1: t += step(random); break;
        default: t = times[static_cast<size_t>(anyKey(random))]; break;
        }
        float normTime = 0.0f;
        int i0 = 0;
        int i1 = 0;
        zuKeyframeController::GetKeyInfo(t, 200, times.data(), lastIndex, normTime, i0, i1);

        // The bracket of a binary search: the first key after t.
        const auto above = std::upper_bound(times.begin(), times.end(), t) - times.begin();
        if (t <= first) {
            ASSERT_TRUE(i0 == 0 && i1 == 0 && normTime == 0.0f && lastIndex == 0) << t;
        } else if (t >= last) {
            ASSERT_TRUE(i0 == 199 && i1 == 199 && normTime == 0.0f && lastIndex == 199) << t;
        } else {
            ASSERT_TRUE(i1 == i0 + 1 || i1 == i0) << t;
            ASSERT_LE(times[static_cast<size_t>(i0)], t);
            ASSERT_GE(times[static_cast<size_t>(i1)], t);
            ASSERT_TRUE(i0 == above - 1 || (i1 == above - 1 && times[static_cast<size_t>(i1)] == t)) << t;
            ASSERT_TRUE(lastIndex == i0 || lastIndex == i1) << t;
            // The interpolated time is t itself.
            const float back = times[static_cast<size_t>(i0)]
                + normTime * (times[static_cast<size_t>(i1)] - times[static_cast<size_t>(i0)]);
            ASSERT_NEAR(back, t, 1e-4f) << t;
        }
    }
}

TEST_F(KeyframeController, SearchesNeverLeaveTheArray)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    // A start index beyond the keys (the array was replaced by a shorter one).
    std::vector<float> times = {0.0f, 1.0f, 2.0f};
    int lastIndex = 40;
    float normTime = 0.0f;
    int i0 = -1;
    int i1 = -1;
    zuKeyframeController::GetKeyInfo(1.5f, 3, times.data(), lastIndex, normTime, i0, i1);
    EXPECT_TRUE(i0 == 1 && i1 == 2 && lastIndex == 2) << i0 << " " << i1 << " " << lastIndex;
    lastIndex = -5;
    zuKeyframeController::GetKeyInfo(0.5f, 3, times.data(), lastIndex, normTime, i0, i1);
    EXPECT_TRUE(i1 == 1 && lastIndex == 0) << i1 << " " << lastIndex;

    // Times that are not numbers, in every position, from every start (under the address
    // sanitizer a read outside the array fails the test).
    const std::vector<std::vector<float>> damaged = {
        {nan}, {nan, nan}, {nan, 1.0f, 2.0f}, {0.0f, nan, 2.0f}, {0.0f, 1.0f, nan}, {3.0f, 2.0f, 1.0f, 0.0f},
        {0.0f, 0.0f, 0.0f}, {-inf, 0.0f, inf}};
    for (const std::vector<float>& keys : damaged) {
        const int count = static_cast<int>(keys.size());
        for (float t : {nan, -inf, inf, -1.0f, 0.0f, 0.5f, 1.0f, 1.5f, 5.0f}) {
            for (int start = 0; start < count; ++start) {
                // A heap copy of exactly count floats, so that a read past it is caught.
                std::vector<float> exact(keys);
                exact.shrink_to_fit();
                lastIndex = start;
                zuKeyframeController::GetKeyInfo(t, count, exact.data(), lastIndex, normTime, i0, i1);
                ASSERT_TRUE(i0 >= 0 && i0 < count && i1 >= 0 && i1 < count && lastIndex >= 0 && lastIndex < count)
                    << "keys " << keys[0] << ".. (" << count << "), t = " << t << ", from " << start << ": " << i0
                    << " " << i1 << " " << lastIndex;
            }
        }
    }
}

TEST_F(KeyframeController, TranslationAndScaleAreLinearBetweenTheirKeys)
{
    zuPointer<zuKeyframeController> controller = new zuKeyframeController;
    controller->translationTimes = floats({0.0f, 1.0f, 3.0f});
    controller->translationKeys = vectors({Vec(0, 0, 0), Vec(2, -4, 8), Vec(-1, 5, 0.5f)});
    controller->scaleTimes = controller->translationTimes;
    controller->scaleKeys = vectors({Vec(1, 1, 1), Vec(2, 3, 4), Vec(0.5f, 0.5f, 0.5f)});

    for (float normTime : {0.0f, 0.125f, 0.5f, 0.8f, 1.0f}) {
        for (int pair = 0; pair < 2; ++pair) {
            const Vec& a = (*controller->translationKeys)[pair];
            const Vec& b = (*controller->translationKeys)[pair + 1];
            const Vec translate = controller->GetTranslate(normTime, pair, pair + 1);
            const Vec& sa = (*controller->scaleKeys)[pair];
            const Vec& sb = (*controller->scaleKeys)[pair + 1];
            const Vec scale = controller->GetScale(normTime, pair, pair + 1);
            for (int c = 0; c < 3; ++c) {
                const double s = normTime;
                EXPECT_NEAR(translate[c], a[c] * (1.0 - s) + b[c] * s, 1e-6);
                EXPECT_NEAR(scale[c], sa[c] * (1.0 - s) + sb[c] * s, 1e-6);
            }
        }
    }
    // Indices outside the keys give the neutral values.
    EXPECT_EQ(controller->GetTranslate(0.5f, 2, 3), Vec(0, 0, 0));
    EXPECT_EQ(controller->GetScale(0.5f, -1, 0), Vec(1, 1, 1));
    EXPECT_EQ(controller->GetRotate(0.5f, 0, 1), Wm4::Matrix3<float>::IDENTITY);
}

TEST_F(KeyframeController, RotationIsTheSphericalInterpolationOfTheKeysAsGiven)
{
    const RefQuat pairs[][2] = {
        {refAxisAngle(1, 2, 2, 20.0), refAxisAngle(0, 3, 4, 130.0)},
        {refAxisAngle(0, 0, 1, 0.0), refAxisAngle(1, 0, 0, 90.0)},
        {refAxisAngle(1, 1, 0, 45.0), refAxisAngle(1, 1, 0, 46.0)},
        // The dot product is negative: no sign is flipped, the long way is taken
        // (from 0 to 340 degrees about z, through 170 degrees, not -10).
        {refAxisAngle(0, 0, 1, 0.0), refAxisAngle(0, 0, 1, 340.0)},
        {refAxisAngle(3, -1, 2, 250.0), refAxisAngle(-1, 0.5, 2, 10.0)},
    };
    const Wm4::Vector3<double> probes[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0.3, -0.7, 1.9}};

    for (const auto& pair : pairs) {
        zuPointer<zuKeyframeController> controller = new zuKeyframeController;
        controller->rotationTimes = floats({0.0f, 1.0f});
        controller->rotationKeys = quaternions({toQuaternion(pair[0]), toQuaternion(pair[1])});
        for (float normTime : {0.0f, 0.1f, 0.37f, 0.5f, 0.9f, 1.0f}) {
            const RefQuat expected = refSlerp(pair[0], pair[1], normTime);
            const Wm4::Matrix3<float> rotation = controller->GetRotate(normTime, 0, 1);
            for (const auto& probe : probes) {
                const Wm4::Vector3<double> want = refRotate(expected, probe);
                const Wm4::Vector3<float> got = rotation * Wm4::Vector3<float>(static_cast<float>(probe[0]),
                                                                              static_cast<float>(probe[1]),
                                                                              static_cast<float>(probe[2]));
                for (int c = 0; c < 3; ++c)
                    EXPECT_NEAR(got[c], want[c], 2e-5) << "normTime " << normTime;
            }
        }
    }
}

TEST_F(KeyframeController, KeysWhoseDotProductReachesOneGiveTheFirstKey)
{
    // 0.6 and 0.8 round so that the float dot product of the key with itself is 1 or more;
    // the identity and a key a hair away from it have a dot product of exactly 1.
    const Wm4::Quaternion<float> q0(0.6f, 0.8f, 0.0f, 0.0f);
    ASSERT_GE(q0.Dot(q0), 1.0f);
    const Wm4::Quaternion<float> identity(1.0f, 0.0f, 0.0f, 0.0f);
    const Wm4::Quaternion<float> near(1.0f, 1e-4f, 0.0f, 0.0f);
    ASSERT_EQ(identity.Dot(near), 1.0f);

    zuPointer<zuKeyframeController> controller = new zuKeyframeController;
    controller->rotationTimes = floats({0.0f, 1.0f, 2.0f, 3.0f});
    controller->rotationKeys = quaternions({q0, q0, identity, near});
    Wm4::Matrix3<float> expected;
    q0.ToRotationMatrix(expected);
    EXPECT_EQ(controller->GetRotate(0.5f, 0, 1), expected);
    EXPECT_EQ(controller->GetRotate(0.75f, 2, 3), Wm4::Matrix3<float>::IDENTITY);
    EXPECT_EQ(controller->GetRotate(1.0f, 2, 3), Wm4::Matrix3<float>::IDENTITY) << "the first key, even at its end";
}

TEST_F(KeyframeController, UpdateWritesEveryTrackIntoTheLocalTransformation)
{
    zuPointer<zuNode> node = new zuNode;
    zuPointer<zuKeyframeController> controller = new zuKeyframeController;
    controller->translationTimes = floats({0.0f, 2.0f});
    controller->translationKeys = vectors({Vec(0, 0, 0), Vec(4, -2, 6)});
    controller->rotationTimes = floats({0.0f, 4.0f});
    controller->rotationKeys = quaternions({turn(0, 0, 1, 0.0), turn(0, 0, 1, 120.0)});
    controller->scaleTimes = floats({1.0f, 3.0f});
    controller->scaleKeys = vectors({Vec(1, 1, 1), Vec(3, 3, 3)});
    controller->maxTime = 10.0;
    ASSERT_TRUE(node->AttachController(controller));

    ASSERT_TRUE(node->UpdateControllers(1.0));
    const zuGenericTransformation<float>& local = node->GetLocalTransform();
    EXPECT_EQ(local.GetTranslate(), Vec(2, -1, 3));
    const Vec x = local.GetRotate() * Vec(1, 0, 0);
    EXPECT_NEAR(x[0], std::cos(30.0 * Wm4::Math<double>::DEG_TO_RAD), 1e-6);
    EXPECT_NEAR(x[1], std::sin(30.0 * Wm4::Math<double>::DEG_TO_RAD), 1e-6);
    EXPECT_TRUE(local.IsUniformScale() && local.GetUniformScale() == 1.0f);

    // The same time again changes nothing; the world follows with UpdateGS.
    EXPECT_FALSE(node->UpdateControllers(1.0));
    ASSERT_TRUE(node->UpdateControllers(2.0));
    EXPECT_EQ(local.GetUniformScale(), 2.0f);
    EXPECT_EQ(node->GetWorldTransform().GetTranslate(), Vec(0, 0, 0));
    node->UpdateGS();
    EXPECT_EQ(node->GetWorldTransform().GetTranslate(), Vec(4, -2, 6));
    const Vec mapped = node->GetWorldTransform().ApplyForward(Vec(1, 0, 0));
    EXPECT_NEAR(mapped[0], 4 + 2 * std::cos(60.0 * Wm4::Math<double>::DEG_TO_RAD), 1e-5);
    EXPECT_NEAR(mapped[1], -2 + 2 * std::sin(60.0 * Wm4::Math<double>::DEG_TO_RAD), 1e-5);

    // Scales with unequal components are set as three scales; where they agree, uniform.
    controller->scaleKeys = vectors({Vec(1, 2, 3), Vec(3, 2, 1)});
    ASSERT_TRUE(node->UpdateControllers(1.5));
    EXPECT_TRUE(local.GetScale() == Vec(1.5f, 2.0f, 2.5f) && !local.IsUniformScale());
    ASSERT_TRUE(node->UpdateControllers(2.0));
    EXPECT_TRUE(local.GetScale() == Vec(2, 2, 2) && local.IsUniformScale());
}

TEST_F(KeyframeController, AbsentTracksOrObjectsChangeNothing)
{
    zuPointer<zuNode> node = new zuNode;
    node->GetLocalTransform().SetRotate(Wm4::Matrix3<float>(Vec(0, 1, 0), 0.5f));
    node->GetLocalTransform().SetTranslate(Vec(7, 8, 9));
    node->GetLocalTransform().SetScale(Vec(1, 2, 3));
    const zuGenericTransformation<float> before = node->GetLocalTransform();

    zuPointer<zuKeyframeController> controller = new zuKeyframeController;
    node->AttachController(controller);
    controller->maxTime = 1.0;
    // No track at all, then a translation track whose keys array is empty, then a times
    // array without keys: nothing changes.
    EXPECT_TRUE(controller->Update(0.5));
    controller->translationTimes = floats({0.0f, 1.0f});
    controller->translationKeys = new zuVector3fArray;
    EXPECT_TRUE(controller->Update(0.6));
    controller->rotationTimes = floats({0.0f});
    EXPECT_TRUE(controller->Update(0.7));
    EXPECT_TRUE(node->GetLocalTransform() == before);

    // A translation track alone moves only the translation.
    controller->translationKeys = vectors({Vec(0, 0, 0), Vec(10, 0, 0)});
    EXPECT_TRUE(controller->Update(0.8));
    EXPECT_EQ(node->GetLocalTransform().GetTranslate(), Vec(8, 0, 0));
    EXPECT_EQ(node->GetLocalTransform().GetScale(), Vec(1, 2, 3));

    // Without an object, or on an object that is not spatial, nothing changes.
    node->DetachController(controller);
    EXPECT_FALSE(controller->Update(0.5));
    zuPointer<zuTestNode> plain = new zuTestNode("plain");
    plain->AttachController(controller);
    EXPECT_FALSE(controller->Update(0.6) || plain->UpdateControllers(0.7));
}

TEST_F(KeyframeController, AKeysArrayShorterThanItsTimesIsUsedUpToItsEnd)
{
    zuPointer<zuNode> node = new zuNode;
    zuPointer<zuKeyframeController> controller = new zuKeyframeController;
    controller->maxTime = 100.0;
    controller->translationTimes = floats({0.0f, 1.0f, 2.0f, 3.0f, 4.0f});
    controller->translationKeys = vectors({Vec(0, 0, 0), Vec(1, 0, 0), Vec(2, 0, 0)});
    // Longer keys than times: the times decide.
    controller->scaleTimes = floats({0.0f, 1.0f});
    controller->scaleKeys = vectors({Vec(1, 1, 1), Vec(2, 2, 2), Vec(9, 9, 9)});
    node->AttachController(controller);

    for (double time : {0.5, 1.5, 2.0, 3.5, 50.0, 2.5, 0.0}) {
        ASSERT_TRUE(controller->Update(time));
        const float expected = static_cast<float>(std::min(time, 2.0));
        EXPECT_EQ(node->GetLocalTransform().GetTranslate(), Vec(expected, 0, 0)) << time;
        const float scale = static_cast<float>(1.0 + std::min(time, 1.0));
        EXPECT_EQ(node->GetLocalTransform().GetScale(), Vec(scale, scale, scale)) << time;
        EXPECT_LE(controller->GetLastTranslationIndex(), 2);
    }
}

TEST_F(KeyframeController, TracksSharingTimesSearchOnceAndGiveTheSameResult)
{
    zuPointer<zuFloatArray> shared = floats({0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f});
    zuPointer<zuVector3fArray> moves = vectors({Vec(0, 0, 0), Vec(1, 1, 0), Vec(2, 0, 1), Vec(3, 3, 3),
                                                Vec(4, 0, 0), Vec(5, 5, 5)});
    zuPointer<zuQuaternionfArray> turns = quaternions({turn(0, 0, 1, 0.0), turn(0, 0, 1, 30.0), turn(0, 1, 0, 60.0),
                                                       turn(1, 0, 0, 90.0), turn(0, 0, 1, 120.0), turn(1, 1, 1, 150.0)});
    zuPointer<zuVector3fArray> sizes = vectors({Vec(1, 1, 1), Vec(2, 2, 2), Vec(1, 2, 3), Vec(3, 3, 3),
                                                Vec(1, 1, 1), Vec(4, 4, 4)});

    // One controller shares one times array; the other has three equal copies.
    zuPointer<zuNode> a = new zuNode;
    zuPointer<zuNode> b = new zuNode;
    zuPointer<zuKeyframeController> sharing = new zuKeyframeController;
    zuPointer<zuKeyframeController> separate = new zuKeyframeController;
    for (zuKeyframeController* c : {sharing.get(), separate.get()}) {
        c->repeatType = zuController::RT_CYCLE;
        c->maxTime = 5.0;
        c->translationKeys = moves;
        c->rotationKeys = turns;
        c->scaleKeys = sizes;
    }
    sharing->translationTimes = sharing->rotationTimes = sharing->scaleTimes = shared;
    separate->translationTimes = floats({0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f});
    separate->rotationTimes = floats({0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f});
    separate->scaleTimes = floats({0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f});
    a->AttachController(sharing);
    b->AttachController(separate);

    for (double time = -3.0; time < 17.0; time += 0.35) {
        ASSERT_TRUE(a->UpdateControllers(time));
        ASSERT_TRUE(b->UpdateControllers(time));
        EXPECT_TRUE(a->GetLocalTransform() == b->GetLocalTransform()) << time;
        const int index = sharing->GetLastTranslationIndex();
        EXPECT_TRUE(sharing->GetLastRotationIndex() == index && sharing->GetLastScaleIndex() == index
                    && separate->GetLastRotationIndex() == index) << time;
    }

    // A track that joins a shared array takes over the index of the track it shares with.
    zuPointer<zuKeyframeController> joining = new zuKeyframeController;
    zuPointer<zuNode> c = new zuNode;
    c->AttachController(joining);
    joining->maxTime = 5.0;
    joining->translationTimes = shared;
    joining->translationKeys = moves;
    joining->rotationTimes = floats({0.0f, 5.0f});
    joining->rotationKeys = quaternions({turn(0, 0, 1, 0.0), turn(0, 0, 1, 50.0)});
    const auto indices = [&] {
        return std::make_pair(joining->GetLastTranslationIndex(), joining->GetLastRotationIndex());
    };
    ASSERT_TRUE(joining->Update(4.5));
    EXPECT_EQ(indices(), std::make_pair(4, 0));
    joining->rotationKeys = turns;
    joining->rotationTimes = shared;
    ASSERT_TRUE(joining->Update(4.6));
    EXPECT_EQ(joining->GetLastRotationIndex(), 4);

    // Sharing a times array with a shorter keys array searches on its own.
    joining->rotationKeys = quaternions({turn(0, 0, 1, 0.0), turn(0, 0, 1, 50.0)});
    ASSERT_TRUE(joining->Update(4.7));
    EXPECT_EQ(indices(), std::make_pair(4, 1));
}

TEST_F(KeyframeController, ReferencesOfAnotherArrayTypeAreDropped)
{
    zuPointer<zuFloatArray> times = floats({0.0f, 1.5f});
    zuPointer<zuVector3fArray> moves = vectors({Vec(1, 2, 3), Vec(4, 5, 6)});
    zuPointer<zuQuaternionfArray> turns =
        quaternions({Wm4::Quaternion<float>(1, 0, 0, 0), Wm4::Quaternion<float>(0, 1, 0, 0)});
    zuPointer<zuKeyframeController> controller = new zuKeyframeController;
    controller->SetName("walk");
    controller->translationTimes = controller->rotationTimes = controller->scaleTimes = times;
    controller->translationKeys = controller->scaleKeys = moves;
    controller->rotationKeys = turns;

    // The six references follow the record header and the controller part: the name, no
    // controllers, 45 bytes of time mapping and controlled object.
    const std::vector<char> saved = saveToBytes({controller}, zuStreamVersion(6, 32));
    const size_t references = (4 + 9) + (4 + 27 + 4 + 8) + (4 + 4) + 4 + 45;

    // Swap the translation times and keys references, and point the rotation keys at the
    // times: each names an array of another type and is dropped.
    std::vector<char> damaged = saved;
    std::memcpy(&damaged[references], &saved[references + 8], 8);
    std::memcpy(&damaged[references + 8], &saved[references], 8);
    std::memcpy(&damaged[references + 24], &saved[references], 8);
    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    ASSERT_TRUE(stream.Load(damaged.data(), damaged.size()));
    auto* loaded = static_cast<zuKeyframeController*>(stream.GetObjectAt(0));
    EXPECT_TRUE(!loaded->translationTimes && !loaded->translationKeys && !loaded->rotationKeys);
    EXPECT_TRUE(loaded->rotationTimes && loaded->scaleTimes && loaded->scaleKeys);
}

TEST_F(KeyframeController, EqualsIgnoresTheKeysOnPurposeAndCloneSharesThem)
{
    zuPointer<zuNode> node = new zuNode;
    zuPointer<zuKeyframeController> source = new zuKeyframeController;
    source->SetName("orbit");
    source->repeatType = zuController::RT_WRAP;
    source->maxTime = 4.0;
    source->phase = 0.5;
    source->translationTimes = floats({0.0f, 1.0f, 2.0f, 3.0f});
    source->translationKeys = vectors({Vec(0, 0, 0), Vec(1, 0, 0), Vec(2, 0, 0), Vec(3, 0, 0)});
    source->rotationTimes = source->translationTimes;
    source->rotationKeys = quaternions({Wm4::Quaternion<float>(1, 0, 0, 0), Wm4::Quaternion<float>(1, 0, 0, 0),
                                        Wm4::Quaternion<float>(1, 0, 0, 0), Wm4::Quaternion<float>(1, 0, 0, 0)});
    source->scaleTimes = floats({0.0f});
    source->scaleKeys = vectors({Vec(2, 2, 2)});
    node->AttachController(source);
    source->Update(2.0);
    ASSERT_EQ(source->GetLastTranslationIndex(), 2);

    zuRttiInterface* target = nullptr;
    ASSERT_TRUE(source->Clone(target));
    zuPointer<zuRttiInterface> owner = target;
    ASSERT_TRUE(target->IsExactly(zuKeyframeController::TYPE));
    auto* copy = static_cast<zuKeyframeController*>(target);
    EXPECT_TRUE(copy->Equals(source) && copy->translationKeys == source->translationKeys && copy->rotationKeys == source->rotationKeys
                && copy->scaleTimes == source->scaleTimes);
    EXPECT_EQ(copy->GetLastTranslationIndex(), 0);
    EXPECT_EQ(copy->GetObject(), nullptr) << "a copy controls what it is attached to";

    // Attached elsewhere, it animates the same way.
    zuPointer<zuNode> other = new zuNode;
    other->AttachController(copy);
    ASSERT_TRUE(copy->Update(2.75));
    ASSERT_TRUE(source->Update(2.75));
    EXPECT_TRUE(other->GetLocalTransform() == node->GetLocalTransform());

    // Keys and times are not compared: only the mapping is.
    copy->translationKeys = nullptr;
    copy->rotationTimes = floats({0.0f, 5.0f});
    EXPECT_TRUE(copy->Equals(source) && source->Equals(copy));
    copy->frequency = 2.0;
    EXPECT_FALSE(copy->Equals(source));
    EXPECT_FALSE(source->Equals(zuPointer<zuTestController>(new zuTestController))) << "another kind of controller";
}

} // namespace
} // namespace zu::test
