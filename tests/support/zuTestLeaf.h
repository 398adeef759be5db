#pragma once

// A drawable leaf for tests and benchmarks of the scene graph: a renderable spatial with a
// model bound that the test sets, which counts the passes that reach it and keeps global
// states. It stands in for a geometry leaf, with the same change marks.

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/scenegraph/zuRenderableSpatial.h>
#include <zuSceneGraph/states/zuGlobalState.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <cstdint>
#include <vector>

namespace zu::test {

// Record: the spatial part, then the model bound in the bound's own form.
class zuTestLeaf : public zuRenderableSpatial {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuTestLeaf>(stream); }
    static void RegisterFactory() { RegisterFactoryFunction(TYPE.GetName(), Factory, CreateDefault<zuTestLeaf>); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }

    zuTestLeaf() = default;
    explicit zuTestLeaf(const zuBoundingVolume& modelBound) : mModelBound(modelBound) {}
    // A leaf whose model bound is the box of that centre and those half-sizes.
    zuTestLeaf(const Wm4::Vector3<float>& center, const Wm4::Vector3<float>& extents) : mModelBound(center, extents) {}

    const zuBoundingVolume& GetModelBound() const { return mModelBound; }
    void SetModelBound(const zuBoundingVolume& bound) { mModelBound = bound; }

    // Inserts itself, after noting the plane state it was handed.
    void GetVisibleSet(zuCuller& culler, bool noCull, bool) override
    {
        ++mVisits;
        mPlaneStateSeen = culler.GetPlaneState();
        mNoCullSeen = noCull;
        culler.Insert(this);
    }
    void UpdateWorldBound() override
    {
        ++mBoundUpdates;
        mModelBound.transformBoxBy(GetWorldTransform(), GetWorldBound());
    }
    void UpdateWorldData() override
    {
        ++mWorldUpdates;
        zuRenderableSpatial::UpdateWorldData();
    }
    void UpdateWorldData_Flags() override
    {
        ++mWorldUpdates;
        zuRenderableSpatial::UpdateWorldData_Flags();
    }
    // As a geometry leaf: going down marks the bound and a world-data bit of its own.
    uint32_t setDirtyDown(bool down) override
    {
        const uint32_t bits = down ? 0x2040u : 0x09u;
        SetDirtyMask(GetDirtyMask() | bits);
        SetUpdateMask(GetUpdateMask() | bits);
        return GetDirtyMask();
    }
    // One slot per state type; getGlobalState counts the held states from 0.
    void setGlobalState(zuGlobalState* state) override;
    zuGlobalState* getGlobalState(int i) const override;
    int getGlobalStateQuantity() const override;
    bool checkRenderable(bool) override { return true; }
    void getResources(std::vector<zuDynamicLoadingResource*>& resources) const override { resources.clear(); }

    const zuRtti& GetType() const override { return TYPE; }
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    bool Equals(const zuRttiInterface* other) const override;
    bool Clone(zuRttiInterface*& target) const override;

    int mVisits = 0;
    int mBoundUpdates = 0;
    int mWorldUpdates = 0;
    uint32_t mPlaneStateSeen = 0;
    bool mNoCullSeen = false;

private:
    zuBoundingVolume mModelBound;
    zuPointer<zuGlobalState> mStates[zuGlobalState::MAX_STATE_TYPE];
};

// A culler that counts the leaves it is handed and the plane state each arrived with.
class zuCountingCuller : public zuCuller {
public:
    void Insert(zuRenderableSpatial* leaf) override
    {
        ++mInserts;
        mPlaneStates.push_back(GetPlaneState());
        zuCuller::Insert(leaf);
    }

    int mInserts = 0;
    std::vector<uint32_t> mPlaneStates;
};

} // namespace zu::test
