#pragma once

#include <zuSceneGraph/states/zuGlobalState.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <string>

namespace zu {

// The depth test a renderer applies to each fragment and whether passing fragments
// write their depth.
class zuZBufferState : public zuGlobalState {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuZBufferState>(stream); }
    static void RegisterFactory() { RegisterClass<zuZBufferState>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // An int underlying type keeps any value read from a file a valid field value.
    enum CompareMode : int {
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

    zuZBufferState() = default;

    const zuRtti& GetType() const override { return TYPE; }
    StateType GetStateType() const override { return ZBUFFER; }

    // The enumerator name; "UNKNOWN" for a value outside the enumeration.
    static const char* GetCompareModeName(int value) { return NameOf(ms_aacCompareMode, value); }

    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    // Compares the saved fields; the label is not compared.
    bool Equals(const zuRttiInterface* other) const override;
    // The label is copied too.
    bool Clone(zuRttiInterface*& target) const override;

    bool Enabled = true;
    bool Writable = true;
    CompareMode Compare = CF_LEQUAL;
    // The application's free text about this depth set-up (for instance the pass that
    // installed it), shown by tools. Neither saved nor compared.
    std::string Label;

    static const char* const ms_aacCompareMode[CF_QUANTITY];
};

} // namespace zu
