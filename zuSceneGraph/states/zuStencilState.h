#pragma once

#include <zuSceneGraph/states/zuGlobalState.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

namespace zu {

// The stencil test a renderer applies to each fragment and how it updates the stencil
// buffer after the stencil and depth tests.
class zuStencilState : public zuGlobalState {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuStencilState>(stream); }
    static void RegisterFactory() { RegisterClass<zuStencilState>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // An int underlying type keeps any value read from a file a valid field value.
    enum CompareFunction : int {
        CF_NEVER,
        CF_LESS,
        CF_EQUAL,
        CF_LEQUAL,
        CF_GREATER,
        CF_NOTEQUAL,
        CF_GEQUAL,
        CF_ALWAYS,
        CF_QUANTITY
    };

    enum OperationType : int {
        OT_KEEP,
        OT_ZERO,
        OT_REPLACE,
        OT_INCREMENT,
        OT_DECREMENT,
        OT_INVERT,
        OT_QUANTITY
    };

    zuStencilState() = default;

    const zuRtti& GetType() const override { return TYPE; }
    StateType GetStateType() const override { return STENCIL; }

    // The enumerator names; "UNKNOWN" for a value outside the enumeration.
    static const char* GetCompareName(int value) { return NameOf(ms_aacCompare, value); }
    static const char* GetOperationName(int value) { return NameOf(ms_aacOperation, value); }

    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    bool Equals(const zuRttiInterface* other) const override;
    bool Clone(zuRttiInterface*& target) const override;

    bool Enabled = false;
    CompareFunction Compare = CF_NEVER;
    unsigned int Reference = 0;
    unsigned int Mask = 0xFFFFFFFFu;
    unsigned int WriteMask = 0xFFFFFFFFu;
    OperationType OnFail = OT_KEEP;   // the stencil test fails
    OperationType OnZFail = OT_KEEP;  // the stencil test passes, the depth test fails
    OperationType OnZPass = OT_KEEP;  // both tests pass

    static const char* const ms_aacCompare[CF_QUANTITY];
    static const char* const ms_aacOperation[OT_QUANTITY];
};

} // namespace zu
