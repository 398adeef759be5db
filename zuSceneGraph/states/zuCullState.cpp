#include <zuSceneGraph/states/zuCullState.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

namespace zu {

const zuRtti zuCullState::TYPE("zuCore.zuCullState", &zuGlobalState::TYPE);

const char* const zuCullState::ms_aacFrontMode[FT_QUANTITY] = {
    "FT_CCW",
    "FT_CW",
};

const char* const zuCullState::ms_aacCullMode[CT_QUANTITY] = {
    "CT_FRONT",
    "CT_BACK",
};

// bool, int, int.
int zuCullState::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuGlobalState::GetDiskUsed(stream) + 1 + 4 + 4;
}

void zuCullState::Save(zuBaseStream& stream) const
{
    zuGlobalState::Save(stream);
    stream.Write(Enabled);
    stream.Write(static_cast<int>(FrontFace));
    stream.Write(static_cast<int>(CullFace));
}

void zuCullState::Load(zuBaseStream& stream, zuLink* link)
{
    zuGlobalState::Load(stream, link);
    int frontFace = 0;
    int cullFace = 0;
    stream.Read(Enabled);
    stream.Read(frontFace);
    stream.Read(cullFace);
    // Kept as read, even outside the enumerations: see GetFrontModeName and GetCullModeName.
    FrontFace = static_cast<FrontMode>(frontFace);
    CullFace = static_cast<CullMode>(cullFace);
}

bool zuCullState::Equals(const zuRttiInterface* other) const
{
    if (!zuGlobalState::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const zuCullState* state = static_cast<const zuCullState*>(other);
    return Enabled == state->Enabled && FrontFace == state->FrontFace && CullFace == state->CullFace;
}

bool zuCullState::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuCullState;
    if (!target->IsDerived(TYPE) || !zuGlobalState::Clone(target))
        return false;
    zuCullState* state = static_cast<zuCullState*>(target);
    state->Enabled = Enabled;
    state->FrontFace = FrontFace;
    state->CullFace = CullFace;
    return true;
}

void zuCullState::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuGlobalState::DescribeFields(object, visitor);
    const auto& state = static_cast<const zuCullState&>(object);
    visitor.BeginGroup(nullptr);
    visitor.Flag("Enabled", state.Enabled);
    visitor.Enumerator("FrontFace", state.FrontFace, GetFrontModeName(state.FrontFace));
    visitor.Enumerator("CullFace", state.CullFace, GetCullModeName(state.CullFace));
    visitor.EndGroup();
}

} // namespace zu
