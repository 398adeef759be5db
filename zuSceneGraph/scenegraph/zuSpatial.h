#pragma once

#include <zuSceneGraph/math/zuGenericTransformation.h>
#include <zuSceneGraph/objects/zuNamedObject.h>
#include <zuSceneGraph/scenegraph/zuBoundingVolume.h>
#include <zuSceneGraph/scenegraph/zuMetadataInterface.h>

#include <cstdint>
#include <vector>

namespace zu {

class zuCuller;
class zuGlobalState;

// The abstract base of everything that has a place in the scene graph: grouping nodes and
// renderable leaves. It keeps a local transformation (relative to the parent) and the
// composed world transformation, a world bound, its parent (not owned), a culling mode,
// change marks, and the metadata records attached to it.
//
// The update pass runs downward for transformations and upward for bounds: UpdateGS on a
// changed object recomputes its subtree's world transformations and bounds and, as the
// initiator, the bounds of its ancestors. The flag-driven pass (UpdateGS_Flags from the
// root) only visits what the change marks say is stale. The culling walk enters through
// OnGetVisibleSet.
//
// Change marks: `dirtyMask` holds what a child reports to its ancestors, `updateMask`
// what is pending here: UPDATE_WORLD_DATA (the world transformation and everything below
// it) and UPDATE_WORLD_BOUND (only the bound). Derived classes choose the other bits.
//
// Persisted after the object part: the local and the world transformation, the culling
// mode (int); from 6.6 the world bound in its own form, before 6.6 two bools, a reference
// to a legacy bound object and the references of the global states; before 5.12 a list
// of references that is dropped; up to 5.0 a dropped float; from 5.1 to 5.12 exactly ten
// metadata references, after 5.12 a count and the metadata references.
class zuSpatial : public zuNamedObject {
public:
    static const zuRtti TYPE;
    // The transformations, the culling mode, the world bound and the metadata.
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // Culling modes, bits 0-1 of the spatial flags.
    enum CullingMode : int {
        CULL_DYNAMIC = 0,  // tested against the frustum
        CULL_ALWAYS = 1,   // never drawn
        CULL_NEVER = 2     // drawn without a test, with its whole subtree
    };
    // Bits of the update mask.
    static constexpr uint32_t UPDATE_WORLD_DATA = 0x01;
    static constexpr uint32_t UPDATE_WORLD_BOUND = 0x40;
    // Bits of the spatial flags; bits 5-7 belong to derived classes.
    static constexpr uint8_t FLAG_CULLING_MODE = 0x03;
    static constexpr uint8_t FLAG_IGNORED = 0x04;
    static constexpr uint8_t FLAG_WORLD_HELD = 0x08;
    static constexpr uint8_t FLAG_BOUND_FROM_BOX = 0x10;

    ~zuSpatial() override;

    // Clears both change masks.
    virtual void Clean_Flags();
    // Adds this object (a leaf) or its children (a node) to the culler's visible set.
    // `noCull` says that an ancestor is drawn without tests, so nothing below is tested.
    // `flag` is the one given to zuCuller::ComputeVisibleSet, handed down unchanged; the
    // library's own classes do not read it.
    virtual void GetVisibleSet(zuCuller& culler, bool noCull, bool flag) = 0;
    // Spreads a change mark downward and returns the resulting dirty mask. Nothing here.
    // `down` chooses what a leaf reports stale: true, its bound (it was attached, detached
    // or moved in the tree); false, its world data (a level-of-detail node now shows it).
    // Nodes hand it to their children.
    virtual uint32_t setDirtyDown(bool down);
    // Recomputes the world transformation (nodes then update their children).
    virtual void UpdateWorldData();
    // The same, in the flag-driven pass.
    virtual void UpdateWorldData_Flags();
    // Recomputes the world bound.
    virtual void UpdateWorldBound() = 0;
    // Render states that the object carries itself; the base keeps none. `state` replaces
    // the state of its kind; getGlobalState(i) gives the i-th state held (the numbering is
    // the derived class's), null when there is none.
    virtual void setGlobalState(zuGlobalState* state);
    virtual zuGlobalState* getGlobalState(int i) const;
    virtual int getGlobalStateQuantity() const;

    // World data down, world bound up. As the `initiator` (the object the application
    // calls it on) it also refreshes its ancestors' bounds; the walk calls its children
    // with false.
    void UpdateGS(bool initiator = true)
    {
        UpdateWorldData();
        UpdateWorldBound();
        if (initiator)
            PropagateBoundToRoot();
    }
    // The flag-driven pass: world data and bound when UPDATE_WORLD_DATA is pending, the
    // bound alone when only UPDATE_WORLD_BOUND is; both bits are cleared.
    void UpdateGS_Flags();
    // After the model data of a leaf changed: its bound and its ancestors' bounds.
    void UpdateBS();
    void PropagateBoundToRoot();
    // The culling walk's entry for this object: skips ignored and always-culled objects,
    // tests the bound unless culling is off here or `noCull` (an ancestor is drawn
    // untested), and restores the culler's plane state afterwards so that the next sibling
    // starts from the parent's state. `flag` goes on to GetVisibleSet.
    void OnGetVisibleSet(zuCuller& culler, bool noCull, bool flag);
    // Sets the ignored flag when `ignore`, clears it otherwise: an ignored object keeps its
    // world transformation through the update passes, does not count in its parent's bound
    // and is skipped by the culler. With `propagate`, setDirtyDown(down), then the dirty
    // mask is reported to this object's and every ancestor's masks.
    void forceIgnore(bool ignore, bool propagate, bool down);

    // Attaches a record: it replaces the record of the same type key, or is inserted so
    // that the list stays sorted by key. Null does nothing.
    void setMetadata(zuMetadataInterface* metadata);
    // The record of a type key, or null.
    zuMetadataInterface* getMetadata(uint32_t typeKey) const;
    // False when no record has that key.
    bool removeMetadata(uint32_t typeKey);
    // Drops every record (and the empty slots of old streams).
    void removeAllMetadata() { clearAttachedObjects(); }
    // The list as it is, null slots included (old streams hold ten slots).
    int getMetadataQuantity() const { return static_cast<int>(attachedObjects().size()); }
    zuMetadataInterface* getMetadataAt(int i) const
    {
        return i >= 0 && i < getMetadataQuantity() ? asMetadata(attachedObjects()[static_cast<size_t>(i)]) : nullptr;
    }

    // The parent node (not owned). Nodes set it when they attach or detach a child.
    zuSpatial* GetParent() const { return mParent; }
    void SetParent(zuSpatial* parent) { mParent = parent; }

    const zuGenericTransformation<float>& GetLocalTransform() const { return mLocalTransform; }
    zuGenericTransformation<float>& GetLocalTransform() { return mLocalTransform; }
    void SetLocalTransform(const zuGenericTransformation<float>& transformation) { mLocalTransform = transformation; }
    const zuGenericTransformation<float>& GetWorldTransform() const { return mWorldTransform; }
    zuGenericTransformation<float>& GetWorldTransform() { return mWorldTransform; }
    void SetWorldTransform(const zuGenericTransformation<float>& transformation) { mWorldTransform = transformation; }
    const zuBoundingVolume& GetWorldBound() const { return mWorldBound; }
    zuBoundingVolume& GetWorldBound() { return mWorldBound; }
    void SetWorldBound(const zuBoundingVolume& bound) { mWorldBound = bound; }

    uint32_t GetDirtyMask() const { return mDirtyMask; }
    void SetDirtyMask(uint32_t mask) { mDirtyMask = mask; }
    uint32_t GetUpdateMask() const { return mUpdateMask; }
    void SetUpdateMask(uint32_t mask) { mUpdateMask = mask; }
    // Marks this object: setDirtyDown(down), `extraBits` ORed into its dirty mask, then its
    // dirty mask ORed into both masks of itself and of every ancestor.
    void markDirty(bool down, uint32_t extraBits = 0);
    // ORs `bits` into both masks of this object and of every ancestor.
    void propagateDirtyToRoot(uint32_t bits);

    int GetCullingMode() const { return mSpatialFlags & FLAG_CULLING_MODE; }
    // Only bits 0-1 of the mode are kept.
    void SetCullingMode(int mode)
    {
        mSpatialFlags = static_cast<uint8_t>((mSpatialFlags & ~FLAG_CULLING_MODE) | (mode & FLAG_CULLING_MODE));
    }
    bool isIgnored() const { return (mSpatialFlags & FLAG_IGNORED) != 0; }
    // A held world transformation is not recomputed by the update passes (an owner sets it).
    bool isWorldTransformHeld() const { return (mSpatialFlags & FLAG_WORLD_HELD) != 0; }
    void holdWorldTransform(bool hold) { setFlag(FLAG_WORLD_HELD, hold); }
    // Whether the last bound read from a stream was a box (a legacy sphere clears it).
    bool isBoundFromBox() const { return (mSpatialFlags & FLAG_BOUND_FROM_BOX) != 0; }
    // Whether the object is a node, with a slot array of children.
    bool hasSlots() const { return mHasSlots; }
    uint8_t GetSpatialFlags() const { return mSpatialFlags; }
    void SetSpatialFlags(uint8_t flags) { mSpatialFlags = flags; }

    const zuRtti& GetType() const override { return TYPE; }
    bool Register(zuBaseStream& stream) const override;
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    void Link(zuBaseStream& stream, zuLink* link) override;
    // Hands this object to every attached record.
    bool PostLink() override;
    // Both transformations within 1e-6 and the culling modes; bounds and metadata are not
    // compared.
    bool Equals(const zuRttiInterface* other) const override;
    // Into an existing spatial target: both transformations, the culling mode, the bound
    // when it is valid, and the metadata records (shared, not copied). The target is
    // detached from its parent pointer.
    bool Clone(zuRttiInterface*& target) const override;

protected:
    zuSpatial();

    // Asks the cache for the bytes that the culling walk reads first (the bound and the
    // flags), a hint: null is allowed.
    static void prefetchBound(const zuSpatial* object)
    {
        if (!object)
            return;
        const char* bytes = reinterpret_cast<const char*>(&object->mWorldBound);
        __builtin_prefetch(object);
        __builtin_prefetch(bytes);
        __builtin_prefetch(bytes + sizeof(zuBoundingVolume) + 2 * sizeof(uint32_t));
    }

    // The world transformation from the parent's and the local one, unless this object is
    // ignored or its world transformation is held. The step every UpdateWorldData starts with.
    void updateWorldTransform()
    {
        if (mSpatialFlags & (FLAG_IGNORED | FLAG_WORLD_HELD))
            return;
        if (mParent)
            mWorldTransform.Product(mParent->mWorldTransform, mLocalTransform);
        else
            mWorldTransform = mLocalTransform;
    }
    void setHasSlots() { mHasSlots = true; }
    void setFlag(uint8_t flag, bool on)
    {
        mSpatialFlags = static_cast<uint8_t>(on ? mSpatialFlags | flag : mSpatialFlags & ~flag);
    }

private:
    // The metadata list is kept with the name and the controllers (attachedObjects): most
    // objects of a large scene carry none of them.
    static zuMetadataInterface* asMetadata(const zuPointer<zuObject>& entry)
    {
        return static_cast<zuMetadataInterface*>(entry.get());
    }

    zuSpatial* mParent = nullptr;
    // The bound with the flags and masks beside it: a culling walk that rejects an object
    // reads these bytes alone.
    zuBoundingVolume mWorldBound;
    uint8_t mSpatialFlags = 0;
    // Set by zuNode: the object has a slot array that the walks may fetch ahead.
    bool mHasSlots = false;
    uint32_t mDirtyMask = 0;
    uint32_t mUpdateMask = 0;
    zuGenericTransformation<float> mLocalTransform;
    zuGenericTransformation<float> mWorldTransform;
};

} // namespace zu
