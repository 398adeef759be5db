#pragma once

#include <zuSceneGraph/states/zuGlobalState.h>

#include <Wm4/Wm4ColorRGB.h>

namespace zu {

// The surface of a leaf (state type 2): its colours, shininess and opacity.
//
// Defaults: ambient (0.2, 0.2, 0.2), diffuse (0.8, 0.8, 0.8), specular and emissive black,
// shininess 1, opacity 1. Record: the object part, then the four colours (three floats
// each), shininess and opacity (floats): 56 bytes, the same at every stream version.
class zuMaterialState : public zuGlobalState {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream);
    static void RegisterFactory();
    static void UnRegisterFactory();
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    zuMaterialState();

    StateType GetStateType() const override { return MATERIAL; }

    Wm4::ColorRGB Ambient;
    Wm4::ColorRGB Diffuse;
    Wm4::ColorRGB Specular;
    Wm4::ColorRGB Emissive;
    float Shininess;
    // 1 opaque, 0 fully transparent.
    float Opacity;

    const zuRtti& GetType() const override { return TYPE; }
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    // The object part, then every float within 1e-6 (taken in double).
    bool Equals(const zuRttiInterface* other) const override;
    bool Clone(zuRttiInterface*& target) const override;
};

} // namespace zu
