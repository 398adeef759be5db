#include <zuSceneGraph/animation/zuKeyframeController.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/scenegraph/zuSpatial.h>

#include <Wm4/Wm4Math.h>
#include <Wm4/Wm4Quaternion.h>

#include <algorithm>
#include <cmath>

namespace zu {

const zuRtti zuKeyframeController::TYPE("zuCore.zuKeyframeController", &zuController::TYPE);

namespace {

// The keys a track can use: as many as the shorter of its two arrays holds, 0 when either
// is absent.
template <class Keys>
int usableKeys(const zuPointer<zuFloatArray>& times, const zuPointer<Keys>& keys)
{
    if (!times || !keys || !times->GetData() || !keys->GetData())
        return 0;
    return std::min(times->GetQuantity(), keys->GetQuantity());
}

// The result of one key search, kept so that a track with the same times array reuses it.
struct KeySearch {
    const zuFloatArray* times = nullptr;
    int count = 0;
    float normTime = 0.0f;
    int i0 = 0;
    int i1 = 0;

    bool serves(const zuFloatArray* otherTimes, int otherCount) const
    {
        return count > 0 && times == otherTimes && count == otherCount;
    }
};

KeySearch searchKeys(float t, const zuPointer<zuFloatArray>& times, int count, int& lastIndex)
{
    KeySearch search;
    search.times = times.get();
    search.count = count;
    zuKeyframeController::GetKeyInfo(t, count, times->GetData(), lastIndex, search.normTime, search.i0, search.i1);
    return search;
}

bool validPair(int i0, int i1, int count)
{
    return i0 >= 0 && i1 >= 0 && i0 < count && i1 < count;
}

// The array a saved reference names, when it is of the type the track expects.
template <class Array>
Array* linkedArray(zuBaseStream& stream, zuLink* link)
{
    zuRttiInterface* object = stream.getFromMapAndRemove(link->getLinkID());
    return object && object->IsDerived(Array::TYPE) ? static_cast<Array*>(object) : nullptr;
}

} // namespace

// ---------------------------------------------------------------------------------------
// Key search

void zuKeyframeController::GetKeyInfo(float t, int count, const float* times, int& lastIndex, float& normTime,
                                      int& i0, int& i1)
{
    normTime = 0.0f;
    if (count <= 0 || !times) {
        lastIndex = i0 = i1 = 0;
        return;
    }
    // The index may come from an array that has since been replaced by a shorter one.
    const int i = std::clamp(lastIndex, 0, count - 1);
    lastIndex = i;

    if (times[0] >= t) {
        lastIndex = i0 = i1 = 0;
        return;
    }
    if (t >= times[count - 1]) {
        lastIndex = i0 = i1 = count - 1;
        return;
    }

    // With ordinary ascending numbers times[0] < t < times[count - 1] holds from here on,
    // which stops both scans inside the array. A time that is not a number fails every
    // comparison and could run a scan to either end: the bounds checks catch that case,
    // which then takes the first or the last key.
    if (t > times[i]) {
        // Upwards; t > times[i] rules out i = count - 1 (the second case took it).
        if (t < times[i + 1]) {
            i0 = i;
            i1 = i + 1;
        } else {
            int j = i + 1;
            while (j + 1 < count && t >= times[j + 1])
                ++j;
            if (j + 1 >= count) {
                lastIndex = i0 = i1 = count - 1;
                return;
            }
            i0 = j;
            i1 = j + 1;
            lastIndex = j;
        }
    } else if (t == times[i]) {
        i0 = i1 = lastIndex;
        return;
    } else {
        // Downwards.
        if (i > 0 && times[i - 1] < t) {
            i0 = i - 1;
            i1 = i;
        } else {
            int j = i - 1;
            while (j > 0 && times[j - 1] >= t)
                --j;
            if (j <= 0) {
                lastIndex = i0 = i1 = 0;
                return;
            }
            lastIndex = j;
            i1 = j;
            i0 = j - 1;
        }
    }
    normTime = (t - times[i0]) / (times[i1] - times[i0]);
}

// ---------------------------------------------------------------------------------------
// Interpolation

Wm4::Vector3<float> zuKeyframeController::GetTranslate(float normTime, int i0, int i1) const
{
    if (!validPair(i0, i1, usableKeys(translationTimes, translationKeys)))
        return Wm4::Vector3<float>::ZERO;
    const Wm4::Vector3<float>& k0 = (*translationKeys)[i0];
    const Wm4::Vector3<float>& k1 = (*translationKeys)[i1];
    return k0 + normTime * (k1 - k0);
}

Wm4::Vector3<float> zuKeyframeController::GetScale(float normTime, int i0, int i1) const
{
    if (!validPair(i0, i1, usableKeys(scaleTimes, scaleKeys)))
        return Wm4::Vector3<float>::ONE;
    const Wm4::Vector3<float>& k0 = (*scaleKeys)[i0];
    const Wm4::Vector3<float>& k1 = (*scaleKeys)[i1];
    return k0 + normTime * (k1 - k0);
}

Wm4::Matrix3<float> zuKeyframeController::GetRotate(float normTime, int i0, int i1) const
{
    if (!validPair(i0, i1, usableKeys(rotationTimes, rotationKeys)))
        return Wm4::Matrix3<float>::IDENTITY;
    using Math = Wm4::Math<float>;
    const Wm4::Quaternion<float>& q0 = (*rotationKeys)[i0];
    const Wm4::Quaternion<float>& q1 = (*rotationKeys)[i1];

    const float d = q0.Dot(q1);
    float angle = 0.0f;
    if (d > -1.0f && d < 1.0f)
        angle = std::acos(d);
    else if (d <= -1.0f)
        angle = Math::PI;
    // d >= 1, or not a number: no angle, the first key.

    Wm4::Quaternion<float> q = q0;
    if (angle >= Math::ZERO_TOLERANCE) {
        const float invSin = 1.0f / std::sin(angle);
        const float w0 = std::sin((1.0f - normTime) * angle) * invSin;
        const float w1 = std::sin(normTime * angle) * invSin;
        q = q0 * w0 + q1 * w1;
    }
    Wm4::Matrix3<float> rotation;
    q.ToRotationMatrix(rotation);
    return rotation;
}

// ---------------------------------------------------------------------------------------
// Update

bool zuKeyframeController::Update(double appTime)
{
    if (!zuController::Update(appTime))
        return false;
    zuObject* object = GetObject();
    if (!object || !object->IsDerived(zuSpatial::TYPE))
        return false;
    zuGenericTransformation<float>& local = static_cast<zuSpatial*>(object)->GetLocalTransform();
    const float ctrlTime = static_cast<float>(GetControlTime(appTime));

    // Tracks over the same times array (the same object, with as many usable keys) share
    // one search; the track that reuses a search takes over its last index too.
    KeySearch translation;
    const int translationCount = usableKeys(translationTimes, translationKeys);
    if (translationCount > 0) {
        translation = searchKeys(ctrlTime, translationTimes, translationCount, mLastTranslationIndex);
        local.SetTranslate(GetTranslate(translation.normTime, translation.i0, translation.i1));
    }

    KeySearch rotation;
    const int rotationCount = usableKeys(rotationTimes, rotationKeys);
    if (rotationCount > 0) {
        if (translation.serves(rotationTimes.get(), rotationCount)) {
            rotation = translation;
            mLastRotationIndex = mLastTranslationIndex;
        } else {
            rotation = searchKeys(ctrlTime, rotationTimes, rotationCount, mLastRotationIndex);
        }
        local.SetRotate(GetRotate(rotation.normTime, rotation.i0, rotation.i1));
    }

    const int scaleCount = usableKeys(scaleTimes, scaleKeys);
    if (scaleCount > 0) {
        KeySearch search;
        if (translation.serves(scaleTimes.get(), scaleCount)) {
            search = translation;
            mLastScaleIndex = mLastTranslationIndex;
        } else if (rotation.serves(scaleTimes.get(), scaleCount)) {
            search = rotation;
            mLastScaleIndex = mLastRotationIndex;
        } else {
            search = searchKeys(ctrlTime, scaleTimes, scaleCount, mLastScaleIndex);
        }
        const Wm4::Vector3<float> scale = GetScale(search.normTime, search.i0, search.i1);
        if (scale.X() == scale.Y() && scale.X() == scale.Z())
            local.SetUniformScale(scale.X());
        else
            local.SetScale(scale);
    }
    return true;
}

// ---------------------------------------------------------------------------------------
// Persistence

bool zuKeyframeController::Register(zuBaseStream& stream) const
{
    if (!zuController::Register(stream))
        return false;
    const zuObject* arrays[] = {translationTimes.get(), translationKeys.get(), rotationTimes.get(),
                                rotationKeys.get(),     scaleTimes.get(),      scaleKeys.get()};
    for (const zuObject* array : arrays)
        if (array)
            array->Register(stream);
    return true;
}

int zuKeyframeController::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuController::GetDiskUsed(stream) + 6 * 8;
}

void zuKeyframeController::Save(zuBaseStream& stream) const
{
    zuController::Save(stream);
    stream.Write(static_cast<const zuRttiInterface*>(translationTimes.get()));
    stream.Write(static_cast<const zuRttiInterface*>(translationKeys.get()));
    stream.Write(static_cast<const zuRttiInterface*>(rotationTimes.get()));
    stream.Write(static_cast<const zuRttiInterface*>(rotationKeys.get()));
    stream.Write(static_cast<const zuRttiInterface*>(scaleTimes.get()));
    stream.Write(static_cast<const zuRttiInterface*>(scaleKeys.get()));
}

void zuKeyframeController::Load(zuBaseStream& stream, zuLink* link)
{
    zuController::Load(stream, link);
    translationTimes = nullptr;
    translationKeys = nullptr;
    rotationTimes = nullptr;
    rotationKeys = nullptr;
    scaleTimes = nullptr;
    scaleKeys = nullptr;
    mLastTranslationIndex = mLastRotationIndex = mLastScaleIndex = 0;
    for (int i = 0; i < 6; ++i)
        stream.ReadLink(link);
}

void zuKeyframeController::Link(zuBaseStream& stream, zuLink* link)
{
    zuController::Link(stream, link);
    translationTimes = linkedArray<zuFloatArray>(stream, link);
    translationKeys = linkedArray<zuVector3fArray>(stream, link);
    rotationTimes = linkedArray<zuFloatArray>(stream, link);
    rotationKeys = linkedArray<zuQuaternionfArray>(stream, link);
    scaleTimes = linkedArray<zuFloatArray>(stream, link);
    scaleKeys = linkedArray<zuVector3fArray>(stream, link);
}

bool zuKeyframeController::Equals(const zuRttiInterface* other) const
{
    if (!other || !other->IsDerived(TYPE))
        return false;
    return zuController::Equals(other);
}

bool zuKeyframeController::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuKeyframeController;
    if (!target->IsDerived(TYPE) || !zuController::Clone(target))
        return false;
    zuKeyframeController* controller = static_cast<zuKeyframeController*>(target);
    controller->translationTimes = translationTimes;
    controller->translationKeys = translationKeys;
    controller->rotationTimes = rotationTimes;
    controller->rotationKeys = rotationKeys;
    controller->scaleTimes = scaleTimes;
    controller->scaleKeys = scaleKeys;
    controller->mLastTranslationIndex = controller->mLastRotationIndex = controller->mLastScaleIndex = 0;
    return true;
}

void zuKeyframeController::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuController::DescribeFields(object, visitor);
    const auto& controller = static_cast<const zuKeyframeController&>(object);
    const auto track = [&](const char* name, const zuFloatArray* times, const zuRttiInterface* keys) {
        visitor.BeginGroup(name);
        visitor.Reference("times", times);
        visitor.Reference("keys", keys);
        visitor.EndGroup();
    };
    track("translation", controller.translationTimes.get(), controller.translationKeys.get());
    track("rotation", controller.rotationTimes.get(), controller.rotationKeys.get());
    track("scale", controller.scaleTimes.get(), controller.scaleKeys.get());
}

} // namespace zu
