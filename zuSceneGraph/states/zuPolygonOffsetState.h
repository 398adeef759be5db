#pragma once

#include <zuSceneGraph/states/zuGlobalState.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

namespace zu {

// A depth offset, scale * (depth slope) + bias * (smallest depth step), that a renderer
// adds to polygons so that coplanar geometry (edges over faces, decals) wins the depth test.
class zuPolygonOffsetState : public zuGlobalState {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuPolygonOffsetState>(stream); }
    static void RegisterFactory() { RegisterClass<zuPolygonOffsetState>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    zuPolygonOffsetState() = default;

    const zuRtti& GetType() const override { return TYPE; }
    StateType GetStateType() const override { return POLYGONOFFSET; }

    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    bool Equals(const zuRttiInterface* other) const override;
    bool Clone(zuRttiInterface*& target) const override;

    // The offset applies to polygons drawn filled, as lines (wireframe) and as points,
    // each switched on by its own flag.
    bool FillEnabled = false;
    bool LineEnabled = false;
    bool PointEnabled = false;
    float Scale = 0.0f;
    float Bias = 0.0f;
};

} // namespace zu
