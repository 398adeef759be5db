#include <zuSceneGraph/states/zuStencilState.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

namespace zu {

const zuRtti zuStencilState::TYPE("zuCore.zuStencilState", &zuGlobalState::TYPE);

const char* const zuStencilState::ms_aacCompare[CF_QUANTITY] = {
    "CF_NEVER",
    "CF_LESS",
    "CF_EQUAL",
    "CF_LEQUAL",
    "CF_GREATER",
    "CF_NOTEQUAL",
    "CF_GEQUAL",
    "CF_ALWAYS",
};

const char* const zuStencilState::ms_aacOperation[OT_QUANTITY] = {
    "OT_KEEP",
    "OT_ZERO",
    "OT_REPLACE",
    "OT_INCREMENT",
    "OT_DECREMENT",
    "OT_INVERT",
};

// bool, int, three unsigned ints, three ints.
int zuStencilState::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuGlobalState::GetDiskUsed(stream) + 1 + 4 + 4 + 4 + 4 + 4 + 4 + 4;
}

void zuStencilState::Save(zuBaseStream& stream) const
{
    zuGlobalState::Save(stream);
    stream.Write(Enabled);
    stream.Write(static_cast<int>(Compare));
    stream.Write(Reference);
    stream.Write(Mask);
    stream.Write(WriteMask);
    stream.Write(static_cast<int>(OnFail));
    stream.Write(static_cast<int>(OnZFail));
    stream.Write(static_cast<int>(OnZPass));
}

void zuStencilState::Load(zuBaseStream& stream, zuLink* link)
{
    zuGlobalState::Load(stream, link);
    int compare = 0;
    int onFail = 0;
    int onZFail = 0;
    int onZPass = 0;
    stream.Read(Enabled);
    stream.Read(compare);
    stream.Read(Reference);
    stream.Read(Mask);
    stream.Read(WriteMask);
    stream.Read(onFail);
    stream.Read(onZFail);
    stream.Read(onZPass);
    // Kept as read, even outside the enumerations: see GetCompareName and GetOperationName.
    Compare = static_cast<CompareFunction>(compare);
    OnFail = static_cast<OperationType>(onFail);
    OnZFail = static_cast<OperationType>(onZFail);
    OnZPass = static_cast<OperationType>(onZPass);
}

bool zuStencilState::Equals(const zuRttiInterface* other) const
{
    if (!zuGlobalState::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const zuStencilState* state = static_cast<const zuStencilState*>(other);
    return Enabled == state->Enabled && Compare == state->Compare && Reference == state->Reference
        && Mask == state->Mask && WriteMask == state->WriteMask && OnFail == state->OnFail
        && OnZFail == state->OnZFail && OnZPass == state->OnZPass;
}

bool zuStencilState::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuStencilState;
    if (!target->IsDerived(TYPE) || !zuGlobalState::Clone(target))
        return false;
    zuStencilState* state = static_cast<zuStencilState*>(target);
    state->Enabled = Enabled;
    state->Compare = Compare;
    state->Reference = Reference;
    state->Mask = Mask;
    state->WriteMask = WriteMask;
    state->OnFail = OnFail;
    state->OnZFail = OnZFail;
    state->OnZPass = OnZPass;
    return true;
}

void zuStencilState::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuGlobalState::DescribeFields(object, visitor);
    const auto& state = static_cast<const zuStencilState&>(object);
    visitor.BeginGroup(nullptr);
    visitor.Flag("Enabled", state.Enabled);
    visitor.Enumerator("Compare", state.Compare, GetCompareName(state.Compare));
    visitor.Integer("Reference", state.Reference);
    visitor.Mask("Mask", state.Mask, 32);
    visitor.Mask("WriteMask", state.WriteMask, 32);
    visitor.EndGroup();
    visitor.BeginGroup(nullptr);
    visitor.Enumerator("OnFail", state.OnFail, GetOperationName(state.OnFail));
    visitor.Enumerator("OnZFail", state.OnZFail, GetOperationName(state.OnZFail));
    visitor.Enumerator("OnZPass", state.OnZPass, GetOperationName(state.OnZPass));
    visitor.EndGroup();
}

} // namespace zu
