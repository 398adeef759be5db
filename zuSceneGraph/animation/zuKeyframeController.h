#pragma once

#include <zuSceneGraph/objects/zuController.h>
#include <zuSceneGraph/objects/zuTSharedArray.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <Wm4/Wm4Matrix3.h>
#include <Wm4/Wm4Vector3.h>

namespace zu {

// Animates the local transformation of a spatial object from keyed translations,
// rotations and scales. Each of the three tracks is a times array (ascending) and a keys
// array held in shared arrays; tracks may share a times array, and several controllers
// may share any array. A track counts only when both its arrays are present and hold at
// least one element; it uses as many keys as the shorter of its two arrays holds, so a
// keys array shorter than its times array is never read past its end.
//
// Update, when the controller's gate passes and its object is a zuSpatial: the control
// time, narrowed to float, selects two keys of each track (GetKeyInfo, from that track's
// last index); translation and scale are interpolated linearly, rotation by spherical
// interpolation; then the local transformation takes the rotation (SetRotate), the
// translation (SetTranslate) and the scale (SetUniformScale when its three components are
// equal, SetScale otherwise). An absent track leaves its part of the transformation as it
// was. Only the local transformation changes: the caller runs UpdateGS on the animated
// subtree (or marks it for the flag-driven pass), as after any change of a local
// transformation.
//
// Persisted after the controller part: six references, in the order translation times,
// translation keys, rotation times, rotation keys, scale times, scale keys: 48 bytes at
// every version. The last indices are not persisted.
class zuKeyframeController : public zuController {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuKeyframeController>(stream); }
    static void RegisterFactory() { RegisterClass<zuKeyframeController>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    zuKeyframeController() = default;
    ~zuKeyframeController() override = default;

    // Finds the keys around t among the first `count` (at least 1) of `times`, starting
    // from `lastIndex` (taken within [0, count - 1]). Before the first key: key 0 with
    // normTime 0; at or after the last: the last key with normTime 0. Otherwise i0 and i1
    // are neighbouring keys with times[i0] <= t <= times[i1] and normTime in [0, 1].
    // An upward search leaves lastIndex at the lower key it found, a downward search at
    // the upper one; the next search starts from there. Times that are not numbers or not
    // ascending give meaningless keys, never an index outside the array.
    static void GetKeyInfo(float t, int count, const float* times, int& lastIndex, float& normTime, int& i0, int& i1);

    // The interpolated values between keys i0 and i1 of each track. Indices outside the
    // usable keys (or an absent track) give the zero translation, the unit scale and the
    // identity rotation.
    Wm4::Vector3<float> GetTranslate(float normTime, int i0, int i1) const;
    Wm4::Vector3<float> GetScale(float normTime, int i0, int i1) const;
    // Spherical interpolation of the two quaternions as they are (no sign is flipped): the
    // angle is acos of their dot product (pi at or below -1, 0 at or above 1); below
    // ZERO_TOLERANCE the result is the first key. Keys q and -q (the same rotation) make
    // sin(angle) vanish, so the values between them are not meaningful: neighbouring keys
    // are meant to have a non-negative dot product.
    Wm4::Matrix3<float> GetRotate(float normTime, int i0, int i1) const;

    // The gate of zuController, then the tracks into the object's local transformation.
    // False when the gate refuses or the object is not a zuSpatial (nothing changes).
    bool Update(double appTime) override;

    // Last key indices of the three tracks (kept in memory only; 0 after construction and
    // after a load).
    int GetLastTranslationIndex() const { return mLastTranslationIndex; }
    int GetLastRotationIndex() const { return mLastRotationIndex; }
    int GetLastScaleIndex() const { return mLastScaleIndex; }

    const zuRtti& GetType() const override { return TYPE; }
    // The controller part, then each present array.
    bool Register(zuBaseStream& stream) const override;
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    // A reference to an array of another type than the track expects is dropped.
    void Link(zuBaseStream& stream, zuLink* link) override;
    // Deliberately the controller comparison alone (after the type check): two keyframe
    // controllers with different keys compare equal.
    bool Equals(const zuRttiInterface* other) const override;
    // A new controller for a null target. The copy shares the six arrays (they are shared
    // objects, as in a stream) and starts its searches from key 0.
    bool Clone(zuRttiInterface*& target) const override;

    zuPointer<zuFloatArray> translationTimes;
    zuPointer<zuVector3fArray> translationKeys;
    zuPointer<zuFloatArray> rotationTimes;
    zuPointer<zuQuaternionfArray> rotationKeys;
    zuPointer<zuFloatArray> scaleTimes;
    zuPointer<zuVector3fArray> scaleKeys;

private:
    int mLastTranslationIndex = 0;
    int mLastRotationIndex = 0;
    int mLastScaleIndex = 0;
};

} // namespace zu
