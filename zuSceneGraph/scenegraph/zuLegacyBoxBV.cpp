#include <zuSceneGraph/scenegraph/zuLegacyBoxBV.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

namespace zu {

const zuRtti zuLegacyBoxBV::TYPE("zuCore.zuLegacyBoxBV", &zuLegacyBoundingVolume::TYPE);

zuLegacyBoxBV::zuLegacyBoxBV()
    : mBox(Wm4::Vector3<float>::ZERO, Wm4::Vector3<float>::UNIT_X, Wm4::Vector3<float>::UNIT_Y,
           Wm4::Vector3<float>::UNIT_Z, 0.0f, 0.0f, 0.0f)
{
}

int zuLegacyBoxBV::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuLegacyBoundingVolume::GetDiskUsed(stream) + 12 + 36 + 12;
}

void zuLegacyBoxBV::Save(zuBaseStream& stream) const
{
    zuLegacyBoundingVolume::Save(stream);
    stream.Write(mBox.Center);
    stream.Write(3, mBox.Axis);
    stream.Write(3, mBox.Extent);
}

void zuLegacyBoxBV::Load(zuBaseStream& stream, zuLink* link)
{
    zuLegacyBoundingVolume::Load(stream, link);
    stream.Read(mBox.Center);
    stream.Read(3, mBox.Axis);
    stream.Read(3, mBox.Extent);
}

bool zuLegacyBoxBV::Equals(const zuRttiInterface* other) const
{
    if (!zuLegacyBoundingVolume::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const Wm4::Box3<float>& box = static_cast<const zuLegacyBoxBV*>(other)->mBox;
    for (int i = 0; i < 3; ++i)
        if (!nearlyEqual(mBox.Axis[i], box.Axis[i]) || !nearlyEqual(mBox.Extent[i], box.Extent[i]))
            return false;
    return true;
}

bool zuLegacyBoxBV::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuLegacyBoxBV;
    if (!target->IsDerived(TYPE) || !zuLegacyBoundingVolume::Clone(target))
        return false;
    static_cast<zuLegacyBoxBV*>(target)->mBox = mBox;
    return true;
}

void zuLegacyBoxBV::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuLegacyBoundingVolume::DescribeFields(object, visitor);
    const Wm4::Box3<float>& box = static_cast<const zuLegacyBoxBV&>(object).mBox;
    float axes[9];
    for (int i = 0; i < 9; ++i)
        axes[i] = box.Axis[i / 3][i % 3];
    visitor.BeginGroup(nullptr);
    visitor.Numbers("centre", box.Center, 3, 3);
    visitor.Numbers("axes", axes, 9, 3);
    visitor.Numbers("extents", box.Extent, 3, 3);
    visitor.EndGroup();
}

} // namespace zu
