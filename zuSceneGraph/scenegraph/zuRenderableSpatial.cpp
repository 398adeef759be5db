#include <zuSceneGraph/scenegraph/zuRenderableSpatial.h>

namespace zu {

const zuRtti zuRenderableSpatial::TYPE("zuCore.zuRenderableSpatial", &zuSpatial::TYPE);

bool zuRenderableSpatial::Equals(const zuRttiInterface* other) const
{
    return other && other->IsDerived(TYPE) && zuSpatial::Equals(other);
}

bool zuRenderableSpatial::Clone(zuRttiInterface*& target) const
{
    if (!target || !target->IsDerived(TYPE) || !zuSpatial::Clone(target))
        return false;
    static_cast<zuRenderableSpatial*>(target)->copyDescription(*this);
    return true;
}

} // namespace zu
