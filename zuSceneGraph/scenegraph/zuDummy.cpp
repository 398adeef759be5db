#include <zuSceneGraph/scenegraph/zuDummy.h>

namespace zu {

const zuRtti zuDummy::TYPE("zuCore.zuDummy", &zuSpatial::TYPE);

zuDummy::zuDummy() = default;

zuDummy::~zuDummy() = default;

void zuDummy::GetVisibleSet(zuCuller&, bool, bool)
{
}

void zuDummy::UpdateWorldBound()
{
}

uint32_t zuDummy::setDirtyDown(bool)
{
    SetDirtyMask(GetDirtyMask() | UPDATE_WORLD_DATA);
    SetUpdateMask(GetUpdateMask() | UPDATE_WORLD_DATA);
    return GetDirtyMask();
}

bool zuDummy::Equals(const zuRttiInterface* other) const
{
    return zuSpatial::Equals(other) && other->IsDerived(TYPE);
}

bool zuDummy::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuDummy;
    return target->IsDerived(TYPE) && zuSpatial::Clone(target);
}

} // namespace zu
