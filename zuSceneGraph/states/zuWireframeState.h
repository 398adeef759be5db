#pragma once

#include <zuSceneGraph/states/zuGlobalState.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

namespace zu {

// Whether a renderer draws polygons as their edges only.
class zuWireframeState : public zuGlobalState {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuWireframeState>(stream); }
    static void RegisterFactory() { RegisterClass<zuWireframeState>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    zuWireframeState() = default;

    const zuRtti& GetType() const override { return TYPE; }
    StateType GetStateType() const override { return WIREFRAME; }

    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    bool Equals(const zuRttiInterface* other) const override;
    bool Clone(zuRttiInterface*& target) const override;

    bool Enabled = false;
};

} // namespace zu
