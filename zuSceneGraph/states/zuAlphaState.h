#pragma once

#include <zuSceneGraph/states/zuGlobalState.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <Wm4/Wm4ColorRGBA.h>

namespace zu {

// How a renderer blends a drawn fragment with the frame buffer and whether it drops
// fragments by their alpha.
class zuAlphaState : public zuGlobalState {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuAlphaState>(stream); }
    static void RegisterFactory() { RegisterClass<zuAlphaState>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // The enumerations have an int underlying type, so any value read from a file is a
    // valid value of the field even when it names no enumerator.
    enum SrcBlendMode : int {
        SBF_ZERO,
        SBF_ONE,
        SBF_DST_COLOR,
        SBF_ONE_MINUS_DST_COLOR,
        SBF_SRC_ALPHA,
        SBF_ONE_MINUS_SRC_ALPHA,
        SBF_DST_ALPHA,
        SBF_ONE_MINUS_DST_ALPHA,
        SBF_SRC_ALPHA_SATURATE,
        SBF_CONSTANT_COLOR,
        SBF_ONE_MINUS_CONSTANT_COLOR,
        SBF_CONSTANT_ALPHA,
        SBF_ONE_MINUS_CONSTANT_ALPHA,
        SBF_QUANTITY
    };

    enum DstBlendMode : int {
        DBF_ZERO,
        DBF_ONE,
        DBF_SRC_COLOR,
        DBF_ONE_MINUS_SRC_COLOR,
        DBF_SRC_ALPHA,
        DBF_ONE_MINUS_SRC_ALPHA,
        DBF_DST_ALPHA,
        DBF_ONE_MINUS_DST_ALPHA,
        DBF_CONSTANT_COLOR,
        DBF_ONE_MINUS_CONSTANT_COLOR,
        DBF_CONSTANT_ALPHA,
        DBF_ONE_MINUS_CONSTANT_ALPHA,
        DBF_QUANTITY
    };

    enum TestMode : int {
        TF_NEVER,
        TF_LESS,
        TF_EQUAL,
        TF_LEQUAL,
        TF_GREATER,
        TF_NOTEQUAL,
        TF_GEQUAL,
        TF_ALWAYS,
        TF_QUANTITY
    };

    zuAlphaState() = default;

    const zuRtti& GetType() const override { return TYPE; }
    StateType GetStateType() const override { return ALPHA; }

    // The enumerator names; "UNKNOWN" for a value outside the enumeration.
    static const char* GetSrcBlendName(int value) { return NameOf(ms_aacSrcBlend, value); }
    static const char* GetDstBlendName(int value) { return NameOf(ms_aacDstBlend, value); }
    static const char* GetTestModeName(int value) { return NameOf(ms_aacTestMode, value); }

    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    // Compares every field but DstBlend: two states that differ only there are equal.
    bool Equals(const zuRttiInterface* other) const override;
    bool Clone(zuRttiInterface*& target) const override;

    bool BlendEnabled = false;
    SrcBlendMode SrcBlend = SBF_SRC_ALPHA;
    DstBlendMode DstBlend = DBF_ONE_MINUS_SRC_ALPHA;
    bool TestEnabled = false;
    TestMode Test = TF_ALWAYS;
    float Reference = 0.0f;
    // Not saved: a loaded state has (0, 0, 0, 0).
    Wm4::ColorRGBA ConstantColor;

    static const char* const ms_aacSrcBlend[SBF_QUANTITY];
    static const char* const ms_aacDstBlend[DBF_QUANTITY];
    static const char* const ms_aacTestMode[TF_QUANTITY];
};

} // namespace zu
