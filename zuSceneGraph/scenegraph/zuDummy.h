#pragma once

#include <zuSceneGraph/scenegraph/zuSpatial.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

namespace zu {

// An empty place in the scene graph: a spatial object with a name, controllers and a
// frame, but no children and nothing to draw (a marker, an attachment point, a stand-in
// for content not loaded). Its bound stays as it is set or read; the culler never
// collects it.
//
// Persisted: the spatial part only.
class zuDummy : public zuSpatial {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuDummy>(stream); }
    static void RegisterFactory() { RegisterClass<zuDummy>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }

    zuDummy();
    ~zuDummy() override;

    // Nothing to draw.
    void GetVisibleSet(zuCuller& culler, bool noCull, bool flag) override;
    // Nothing to bound: the world bound is left as it is.
    void UpdateWorldBound() override;
    // UPDATE_WORLD_DATA into both masks; returns the dirty mask.
    uint32_t setDirtyDown(bool down) override;

    const zuRtti& GetType() const override { return TYPE; }
    // The spatial part; the other object must be a dummy too.
    bool Equals(const zuRttiInterface* other) const override;
    // The spatial part into a dummy (created for an empty target).
    bool Clone(zuRttiInterface*& target) const override;
};

} // namespace zu
