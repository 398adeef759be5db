#pragma once

#include <zuSceneGraph/scenegraph/zuBoundingVolume.h>

#include <Wm4/Wm4Plane3.h>
#include <Wm4/Wm4Vector3.h>

#include <cstdint>
#include <vector>

namespace zu {

class zuCamera;
class zuLODPolicy;
class zuRenderableSpatial;
class zuSpatial;

// Decides which renderable leaves of a scene can be seen from a camera and collects them,
// in walk order, into a visible set (raw pointers, valid while the scene is unchanged).
//
// The culler keeps the camera's frustum as world-space planes (a point X is inside the
// plane (n, c) when n·X - c > 0), followed by up to 26 user clip planes. The walk itself
// lives in the spatial classes (zuSpatial::OnGetVisibleSet); the culler supplies the
// tests, the level-of-detail policy of the current run and the collection.
//
// The plane state is the walk's economy: bit i set means plane i must still be tested in
// the current subtree. A bound entirely inside plane i clears bit i for its whole subtree,
// and every object restores the state it found, so siblings start from their parent's.
//
// Usage: SetCamera (again whenever the camera moves), ComputeVisibleSet once per frame,
// then read the set with GetVisibleSet.
class zuCuller {
public:
    static constexpr int MAX_PLANE_QUANTITY = 32;
    // Planes 0-5, in this order, come from the camera.
    enum FrustumPlane : int {
        PLANE_NEAR,
        PLANE_FAR,
        PLANE_BOTTOM,
        PLANE_TOP,
        PLANE_LEFT,
        PLANE_RIGHT,
        FRUSTUM_PLANE_QUANTITY
    };

    // No camera, the six frustum planes active (zero until a camera is set), an empty set.
    zuCuller();
    virtual ~zuCuller();
    zuCuller(const zuCuller&) = delete;
    zuCuller& operator=(const zuCuller&) = delete;

    // Keeps the camera (not owned). A camera's frustum values are copied, planes 0-5
    // recomputed from its frame and projection, and every plane made active for the next
    // test. Null is stored and changes nothing else.
    void SetCamera(const zuCamera* camera);
    const zuCamera* GetCamera() const { return mCamera; }
    // The frustum values copied from the camera: dmin, dmax, umin, umax, rmin, rmax.
    const float* GetFrustum() const { return mFrustum; }

    // Empties the set and walks `scene` (usually the root; any subtree works) from all
    // planes active. `policy` chooses the level each zuLODNode shows during the walk
    // (zuLODNode::GetBasePolicy() by distance); with null, level-of-detail nodes show
    // nothing. `flag` is handed unchanged to every GetVisibleSet of the walk: the library's
    // own classes do not read it, it is there for derived nodes and leaves that collect
    // differently in some walks (pass false otherwise). Without a camera or a scene the
    // previous set is kept.
    void ComputeVisibleSet(zuSpatial* scene, zuLODPolicy* policy, bool flag);
    // The policy of the running ComputeVisibleSet; null outside it.
    zuLODPolicy* getLODPolicy() const { return mLODPolicy; }
    // `out` becomes a copy of the set.
    void GetVisibleSet(std::vector<zuRenderableSpatial*>& out) const { out = mVisibleSet; }
    const std::vector<zuRenderableSpatial*>& GetVisibleSet() const { return mVisibleSet; }

    // Appends a leaf to the set (leaves call it from their GetVisibleSet). The set grows
    // by doubling, from one slot.
    virtual void Insert(zuRenderableSpatial* leaf);

    // The hierarchical test of the walk, for the bound `bv` of the object being visited:
    // the active planes from the last to the first, each with bit 1 << index; a plane
    // whose bit is clear is skipped. A bound outside a plane is not visible (the remaining
    // bits stay as they are); a bound inside a plane clears its bit; a straddling (or
    // invalid) bound keeps it. No active plane: visible.
    bool IsVisible(const zuBoundingVolume& bv)
    {
        for (int i = mPlaneQuantity - 1; i >= 0 && mPlaneState != 0; --i) {
            const uint32_t bit = 1u << i;
            if (!(mPlaneState & bit))
                continue;
            const int side = bv.whichBoxSide(mPlanes[i]);
            if (side < 0)
                return false;
            if (side > 0)
                mPlaneState &= ~bit;
        }
        return true;
    }
    // `bv` against every active plane, first to last, ignoring and keeping the plane
    // state.
    bool isVisibleNoHierachy(const zuBoundingVolume& bv) const;
    // The hierarchical test of a point: outside a plane whose bit is set, not visible;
    // strictly inside, the bit is cleared; on the plane, kept.
    bool IsVisible(const Wm4::Vector3<float>& point);
    // Tests the `count` points from `points`: false when for some active plane (the near
    // plane skipped with `ignoreNearPlane`) every point lies outside; the plane state is
    // neither read nor changed. No points are outside every plane, so an empty set is not
    // visible.
    bool IsVisible(int count, const Wm4::Vector3<float>* points, bool ignoreNearPlane) const;
    // Where the camera's view volume lies: +1 all eight corners on the plane's positive
    // side, -1 all on its negative side, 0 otherwise (and without a camera).
    int WhichSide(const Wm4::Plane3<float>& plane) const;

    int GetPlaneQuantity() const { return mPlaneQuantity; }
    // Plane i, unchecked: i from 0 to MAX_PLANE_QUANTITY - 1 (the active ones below
    // GetPlaneQuantity()).
    const Wm4::Plane3<float>& GetPlane(int i) const { return mPlanes[i]; }
    const Wm4::Plane3<float>* GetPlanes() const { return mPlanes; }
    // Adds a user clip plane after the active ones, active for the next test; false when
    // all 32 slots are in use.
    bool PushPlane(const Wm4::Plane3<float>& plane);
    // Removes the last user clip plane; false when only the frustum planes remain.
    bool PopPlane();

    // The walk saves and restores the state around each object: bit i of `state` set means
    // plane i is still tested.
    uint32_t GetPlaneState() const { return mPlaneState; }
    void SetPlaneState(uint32_t state) { mPlaneState = state; }

protected:
    // For derived cullers that filter or reorder what they insert.
    std::vector<zuRenderableSpatial*>& visibleSet() { return mVisibleSet; }

private:
    void computeFrustumPlanes();

    const zuCamera* mCamera = nullptr;
    float mFrustum[6] = {};
    int mPlaneQuantity = FRUSTUM_PLANE_QUANTITY;
    std::vector<zuRenderableSpatial*> mVisibleSet;
    Wm4::Plane3<float> mPlanes[MAX_PLANE_QUANTITY];
    uint32_t mPlaneState = ~0u;
    zuLODPolicy* mLODPolicy = nullptr;
};

} // namespace zu
