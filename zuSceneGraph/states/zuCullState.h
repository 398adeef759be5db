#pragma once

#include <zuSceneGraph/states/zuGlobalState.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

namespace zu {

// Which winding makes a triangle front-facing and which faces a renderer discards.
class zuCullState : public zuGlobalState {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuCullState>(stream); }
    static void RegisterFactory() { RegisterClass<zuCullState>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // An int underlying type keeps any value read from a file a valid field value.
    enum FrontMode : int {
        FT_CCW,
        FT_CW,
        FT_QUANTITY
    };

    enum CullMode : int {
        CT_FRONT,
        CT_BACK,
        CT_QUANTITY
    };

    zuCullState() = default;

    const zuRtti& GetType() const override { return TYPE; }
    StateType GetStateType() const override { return CULL; }

    // The enumerator names; "UNKNOWN" for a value outside the enumeration.
    static const char* GetFrontModeName(int value) { return NameOf(ms_aacFrontMode, value); }
    static const char* GetCullModeName(int value) { return NameOf(ms_aacCullMode, value); }

    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    bool Equals(const zuRttiInterface* other) const override;
    bool Clone(zuRttiInterface*& target) const override;

    bool Enabled = true;
    FrontMode FrontFace = FT_CCW;
    CullMode CullFace = CT_BACK;

    static const char* const ms_aacFrontMode[FT_QUANTITY];
    static const char* const ms_aacCullMode[CT_QUANTITY];
};

} // namespace zu
