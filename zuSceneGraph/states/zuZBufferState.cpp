#include <zuSceneGraph/states/zuZBufferState.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

namespace zu {

const zuRtti zuZBufferState::TYPE("zuCore.zuZBufferState", &zuGlobalState::TYPE);

const char* const zuZBufferState::ms_aacCompareMode[CF_QUANTITY] = {
    "CF_NEVER",
    "CF_LESS",
    "CF_EQUAL",
    "CF_LEQUAL",
    "CF_GREATER",
    "CF_NOTEQUAL",
    "CF_GEQUAL",
    "CF_ALWAYS",
};

// Two bools, one int; the label is not saved.
int zuZBufferState::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuGlobalState::GetDiskUsed(stream) + 1 + 1 + 4;
}

void zuZBufferState::Save(zuBaseStream& stream) const
{
    zuGlobalState::Save(stream);
    stream.Write(Enabled);
    stream.Write(Writable);
    stream.Write(static_cast<int>(Compare));
}

void zuZBufferState::Load(zuBaseStream& stream, zuLink* link)
{
    zuGlobalState::Load(stream, link);
    int compare = 0;
    stream.Read(Enabled);
    stream.Read(Writable);
    stream.Read(compare);
    // Kept as read, even outside the enumeration: see GetCompareModeName.
    Compare = static_cast<CompareMode>(compare);
}

bool zuZBufferState::Equals(const zuRttiInterface* other) const
{
    if (!zuGlobalState::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const zuZBufferState* state = static_cast<const zuZBufferState*>(other);
    // The label is a note, not render state: a saved and reloaded state equals its original.
    return Enabled == state->Enabled && Writable == state->Writable && Compare == state->Compare;
}

bool zuZBufferState::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuZBufferState;
    if (!target->IsDerived(TYPE) || !zuGlobalState::Clone(target))
        return false;
    zuZBufferState* state = static_cast<zuZBufferState*>(target);
    state->Enabled = Enabled;
    state->Writable = Writable;
    state->Compare = Compare;
    state->Label = Label;
    return true;
}

void zuZBufferState::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuGlobalState::DescribeFields(object, visitor);
    const auto& state = static_cast<const zuZBufferState&>(object);
    visitor.BeginGroup(nullptr);
    visitor.Flag("Enabled", state.Enabled);
    visitor.Flag("Writable", state.Writable);
    visitor.Enumerator("Compare", state.Compare, GetCompareModeName(state.Compare));
    visitor.EndGroup();
    // The label is the application's and never saved: a loaded state has none.
    if (!state.Label.empty())
        visitor.Text("Label", state.Label);
}

} // namespace zu
