#pragma once

#include <zuSceneGraph/scenegraph/zuLegacyBoundingVolume.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <Wm4/Wm4Box3.h>

namespace zu {

// The legacy oriented box bound, persisted as "zuCore.zuLegacyBoxBV": after the object
// part, the centre (3 floats), the three axes (3 floats each) and the three extents
// (floats), 60 bytes. Converted into a bound, its axes are dropped.
class zuLegacyBoxBV : public zuLegacyBoundingVolume {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuLegacyBoxBV>(stream); }
    static void RegisterFactory() { RegisterClass<zuLegacyBoxBV>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // A point box at the origin along the world axes.
    zuLegacyBoxBV();
    explicit zuLegacyBoxBV(const Wm4::Box3<float>& box) : mBox(box) {}

    const Wm4::Vector3<float>& GetCenter() const override { return mBox.Center; }
    void SetCenter(const Wm4::Vector3<float>& center) override { mBox.Center = center; }
    const Wm4::Box3<float>& GetBox() const { return mBox; }
    void SetBox(const Wm4::Box3<float>& box) { mBox = box; }

    const zuRtti& GetType() const override { return TYPE; }
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    bool Equals(const zuRttiInterface* other) const override;
    bool Clone(zuRttiInterface*& target) const override;

private:
    Wm4::Box3<float> mBox;
};

} // namespace zu
