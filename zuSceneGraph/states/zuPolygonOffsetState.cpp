#include <zuSceneGraph/states/zuPolygonOffsetState.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

namespace zu {

const zuRtti zuPolygonOffsetState::TYPE("zuCore.zuPolygonOffsetState", &zuGlobalState::TYPE);

// Three bools, two floats.
int zuPolygonOffsetState::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuGlobalState::GetDiskUsed(stream) + 1 + 1 + 1 + 4 + 4;
}

void zuPolygonOffsetState::Save(zuBaseStream& stream) const
{
    zuGlobalState::Save(stream);
    stream.Write(FillEnabled);
    stream.Write(LineEnabled);
    stream.Write(PointEnabled);
    stream.Write(Scale);
    stream.Write(Bias);
}

void zuPolygonOffsetState::Load(zuBaseStream& stream, zuLink* link)
{
    zuGlobalState::Load(stream, link);
    stream.Read(FillEnabled);
    stream.Read(LineEnabled);
    stream.Read(PointEnabled);
    stream.Read(Scale);
    stream.Read(Bias);
}

bool zuPolygonOffsetState::Equals(const zuRttiInterface* other) const
{
    if (!zuGlobalState::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const zuPolygonOffsetState* state = static_cast<const zuPolygonOffsetState*>(other);
    return FillEnabled == state->FillEnabled && LineEnabled == state->LineEnabled
        && PointEnabled == state->PointEnabled && Scale == state->Scale && Bias == state->Bias;
}

bool zuPolygonOffsetState::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuPolygonOffsetState;
    if (!target->IsDerived(TYPE) || !zuGlobalState::Clone(target))
        return false;
    zuPolygonOffsetState* state = static_cast<zuPolygonOffsetState*>(target);
    state->FillEnabled = FillEnabled;
    state->LineEnabled = LineEnabled;
    state->PointEnabled = PointEnabled;
    state->Scale = Scale;
    state->Bias = Bias;
    return true;
}

void zuPolygonOffsetState::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuGlobalState::DescribeFields(object, visitor);
    const auto& state = static_cast<const zuPolygonOffsetState&>(object);
    visitor.BeginGroup(nullptr);
    visitor.Flag("FillEnabled", state.FillEnabled);
    visitor.Flag("LineEnabled", state.LineEnabled);
    visitor.Flag("PointEnabled", state.PointEnabled);
    visitor.EndGroup();
    visitor.BeginGroup(nullptr);
    visitor.Number("Scale", state.Scale);
    visitor.Number("Bias", state.Bias);
    visitor.EndGroup();
}

} // namespace zu
