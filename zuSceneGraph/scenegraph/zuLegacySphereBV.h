#pragma once

#include <zuSceneGraph/scenegraph/zuLegacyBoundingVolume.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

namespace zu {

// The legacy sphere bound, persisted as "zuCore.zuLegacySphereBV": after the object part,
// the centre (3 floats) and the radius (float), 16 bytes.
class zuLegacySphereBV : public zuLegacyBoundingVolume {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuLegacySphereBV>(stream); }
    static void RegisterFactory() { RegisterClass<zuLegacySphereBV>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // A point sphere at the origin.
    zuLegacySphereBV() = default;
    zuLegacySphereBV(const Wm4::Vector3<float>& center, float radius) : mCenter(center), mRadius(radius) {}

    const Wm4::Vector3<float>& GetCenter() const override { return mCenter; }
    void SetCenter(const Wm4::Vector3<float>& center) override { mCenter = center; }
    float GetRadius() const { return mRadius; }
    void SetRadius(float radius) { mRadius = radius; }

    const zuRtti& GetType() const override { return TYPE; }
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    bool Equals(const zuRttiInterface* other) const override;
    bool Clone(zuRttiInterface*& target) const override;

private:
    Wm4::Vector3<float> mCenter;
    float mRadius = 0.0f;
};

} // namespace zu
