#include <zuSceneGraph/scenegraph/zuLegacySphereBV.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

namespace zu {

const zuRtti zuLegacySphereBV::TYPE("zuCore.zuLegacySphereBV", &zuLegacyBoundingVolume::TYPE);

int zuLegacySphereBV::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuLegacyBoundingVolume::GetDiskUsed(stream) + 12 + 4;
}

void zuLegacySphereBV::Save(zuBaseStream& stream) const
{
    zuLegacyBoundingVolume::Save(stream);
    stream.Write(mCenter);
    stream.Write(mRadius);
}

void zuLegacySphereBV::Load(zuBaseStream& stream, zuLink* link)
{
    zuLegacyBoundingVolume::Load(stream, link);
    stream.Read(mCenter);
    stream.Read(mRadius);
}

bool zuLegacySphereBV::Equals(const zuRttiInterface* other) const
{
    if (!zuLegacyBoundingVolume::Equals(other) || !other->IsDerived(TYPE))
        return false;
    return nearlyEqual(mRadius, static_cast<const zuLegacySphereBV*>(other)->mRadius);
}

bool zuLegacySphereBV::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuLegacySphereBV;
    if (!target->IsDerived(TYPE) || !zuLegacyBoundingVolume::Clone(target))
        return false;
    zuLegacySphereBV* sphere = static_cast<zuLegacySphereBV*>(target);
    sphere->mCenter = mCenter;
    sphere->mRadius = mRadius;
    return true;
}

void zuLegacySphereBV::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuLegacyBoundingVolume::DescribeFields(object, visitor);
    const auto& sphere = static_cast<const zuLegacySphereBV&>(object);
    visitor.BeginGroup(nullptr);
    visitor.Numbers("centre", sphere.mCenter, 3, 3);
    visitor.Number("radius", sphere.mRadius);
    visitor.EndGroup();
}

} // namespace zu
