#include <zuSceneGraph/scenegraph/zuLegacyBoundingVolume.h>

#include <cmath>

namespace zu {

const zuRtti zuLegacyBoundingVolume::TYPE("zuCore.zuLegacyBoundingVolume", &zuUnnamedObject::TYPE);

bool zuLegacyBoundingVolume::nearlyEqual(float a, float b)
{
    return std::fabs(static_cast<double>(a) - static_cast<double>(b)) < 1e-6;
}

bool zuLegacyBoundingVolume::nearlyEqual(const Wm4::Vector3<float>& a, const Wm4::Vector3<float>& b)
{
    return nearlyEqual(a[0], b[0]) && nearlyEqual(a[1], b[1]) && nearlyEqual(a[2], b[2]);
}

bool zuLegacyBoundingVolume::Equals(const zuRttiInterface* other) const
{
    if (!zuUnnamedObject::Equals(other) || !other->IsDerived(TYPE))
        return false;
    return nearlyEqual(GetCenter(), static_cast<const zuLegacyBoundingVolume*>(other)->GetCenter());
}

} // namespace zu
