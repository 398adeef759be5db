#include <zuSceneGraph/states/zuAlphaState.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

namespace zu {

const zuRtti zuAlphaState::TYPE("zuCore.zuAlphaState", &zuGlobalState::TYPE);

const char* const zuAlphaState::ms_aacSrcBlend[SBF_QUANTITY] = {
    "SBF_ZERO",
    "SBF_ONE",
    "SBF_DST_COLOR",
    "SBF_ONE_MINUS_DST_COLOR",
    "SBF_SRC_ALPHA",
    "SBF_ONE_MINUS_SRC_ALPHA",
    "SBF_DST_ALPHA",
    "SBF_ONE_MINUS_DST_ALPHA",
    "SBF_SRC_ALPHA_SATURATE",
    "SBF_CONSTANT_COLOR",
    "SBF_ONE_MINUS_CONSTANT_COLOR",
    "SBF_CONSTANT_ALPHA",
    "SBF_ONE_MINUS_CONSTANT_ALPHA",
};

const char* const zuAlphaState::ms_aacDstBlend[DBF_QUANTITY] = {
    "DBF_ZERO",
    "DBF_ONE",
    "DBF_SRC_COLOR",
    "DBF_ONE_MINUS_SRC_COLOR",
    "DBF_SRC_ALPHA",
    "DBF_ONE_MINUS_SRC_ALPHA",
    "DBF_DST_ALPHA",
    "DBF_ONE_MINUS_DST_ALPHA",
    "DBF_CONSTANT_COLOR",
    "DBF_ONE_MINUS_CONSTANT_COLOR",
    "DBF_CONSTANT_ALPHA",
    "DBF_ONE_MINUS_CONSTANT_ALPHA",
};

const char* const zuAlphaState::ms_aacTestMode[TF_QUANTITY] = {
    "TF_NEVER",
    "TF_LESS",
    "TF_EQUAL",
    "TF_LEQUAL",
    "TF_GREATER",
    "TF_NOTEQUAL",
    "TF_GEQUAL",
    "TF_ALWAYS",
};

// bool, int, int, bool, int, float; the constant colour is not saved.
int zuAlphaState::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuGlobalState::GetDiskUsed(stream) + 1 + 4 + 4 + 1 + 4 + 4;
}

void zuAlphaState::Save(zuBaseStream& stream) const
{
    zuGlobalState::Save(stream);
    stream.Write(BlendEnabled);
    stream.Write(static_cast<int>(SrcBlend));
    stream.Write(static_cast<int>(DstBlend));
    stream.Write(TestEnabled);
    stream.Write(static_cast<int>(Test));
    stream.Write(Reference);
}

void zuAlphaState::Load(zuBaseStream& stream, zuLink* link)
{
    zuGlobalState::Load(stream, link);
    int srcBlend = 0;
    int dstBlend = 0;
    int test = 0;
    stream.Read(BlendEnabled);
    stream.Read(srcBlend);
    stream.Read(dstBlend);
    stream.Read(TestEnabled);
    stream.Read(test);
    stream.Read(Reference);
    // Kept as read, even outside the enumerations: see GetSrcBlendName and its siblings.
    SrcBlend = static_cast<SrcBlendMode>(srcBlend);
    DstBlend = static_cast<DstBlendMode>(dstBlend);
    Test = static_cast<TestMode>(test);
    ConstantColor = Wm4::ColorRGBA();
}

bool zuAlphaState::Equals(const zuRttiInterface* other) const
{
    if (!zuGlobalState::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const zuAlphaState* state = static_cast<const zuAlphaState*>(other);
    // DstBlend is deliberately not compared: two states that differ only in their
    // destination factor are equal. This is the established behaviour, not an oversight.
    return BlendEnabled == state->BlendEnabled && SrcBlend == state->SrcBlend
        && TestEnabled == state->TestEnabled && Test == state->Test && Reference == state->Reference
        && ConstantColor == state->ConstantColor;
}

bool zuAlphaState::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuAlphaState;
    if (!target->IsDerived(TYPE) || !zuGlobalState::Clone(target))
        return false;
    zuAlphaState* state = static_cast<zuAlphaState*>(target);
    state->BlendEnabled = BlendEnabled;
    state->SrcBlend = SrcBlend;
    state->DstBlend = DstBlend;
    state->TestEnabled = TestEnabled;
    state->Test = Test;
    state->Reference = Reference;
    state->ConstantColor = ConstantColor;
    return true;
}

void zuAlphaState::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuGlobalState::DescribeFields(object, visitor);
    const auto& state = static_cast<const zuAlphaState&>(object);
    visitor.BeginGroup(nullptr);
    visitor.Flag("BlendEnabled", state.BlendEnabled);
    visitor.Enumerator("SrcBlend", state.SrcBlend, GetSrcBlendName(state.SrcBlend));
    visitor.Enumerator("DstBlend", state.DstBlend, GetDstBlendName(state.DstBlend));
    visitor.EndGroup();
    visitor.BeginGroup(nullptr);
    visitor.Flag("TestEnabled", state.TestEnabled);
    visitor.Enumerator("Test", state.Test, GetTestModeName(state.Test));
    visitor.Number("Reference", state.Reference);
    visitor.EndGroup();
}

} // namespace zu
