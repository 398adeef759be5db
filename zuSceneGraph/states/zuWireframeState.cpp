#include <zuSceneGraph/states/zuWireframeState.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

namespace zu {

const zuRtti zuWireframeState::TYPE("zuCore.zuWireframeState", &zuGlobalState::TYPE);

// One bool.
int zuWireframeState::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuGlobalState::GetDiskUsed(stream) + 1;
}

void zuWireframeState::Save(zuBaseStream& stream) const
{
    zuGlobalState::Save(stream);
    stream.Write(Enabled);
}

void zuWireframeState::Load(zuBaseStream& stream, zuLink* link)
{
    zuGlobalState::Load(stream, link);
    stream.Read(Enabled);
}

bool zuWireframeState::Equals(const zuRttiInterface* other) const
{
    if (!zuGlobalState::Equals(other) || !other->IsDerived(TYPE))
        return false;
    return Enabled == static_cast<const zuWireframeState*>(other)->Enabled;
}

bool zuWireframeState::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuWireframeState;
    if (!target->IsDerived(TYPE) || !zuGlobalState::Clone(target))
        return false;
    static_cast<zuWireframeState*>(target)->Enabled = Enabled;
    return true;
}

void zuWireframeState::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuGlobalState::DescribeFields(object, visitor);
    visitor.Flag("Enabled", static_cast<const zuWireframeState&>(object).Enabled);
}

} // namespace zu
