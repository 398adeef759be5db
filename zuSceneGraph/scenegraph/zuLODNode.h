#pragma once

#include <zuSceneGraph/scenegraph/zuNode.h>

namespace zu {

class zuBaseLODPolicy;
class zuCamera;
class zuLODPolicy;

// A level-of-detail node: its slots hold the same content at different levels of detail,
// and the culling walk draws one of them, chosen by the culler's level-of-detail policy
// for the culler's camera. The shared distance-band policy (GetBasePolicy) expects slot 0
// to hold the nearest level and the last slot the farthest. Without a policy (outside
// zuCuller::ComputeVisibleSet) the node draws nothing.
//
// The slots are positions, so children are placed by index (attachLODChild) and emptied
// in place (removeLODChild); attachChild is refused. Placing and emptying mark like
// replaceChildAt: the ancestors learn that their bound changed.
//
// Persisted after the node part: nothing from 6.6 on. Older streams held a list of ints
// (a count, then the values), which is read and dropped; writing to such a stream puts an
// empty list.
class zuLODNode : public zuNode {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuLODNode>(stream); }
    static void RegisterFactory() { RegisterClass<zuLODNode>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }

    zuLODNode();
    ~zuLODNode() override;

    // Refused: a level belongs at a position. Writes a line to the standard error stream
    // and returns -1, leaving the node unchanged.
    int attachChild(zuSpatial* child) override;
    // Puts `child` (or nothing) in slot i as replaceChildAt does. Beyond the last slot the
    // array first grows to i + 1 slots, the new ones between empty. False, with nothing
    // changed, for a negative i or a child that replaceChildAt refuses.
    bool attachLODChild(int i, zuSpatial* child);
    // Empties slot i with replaceChildAt(i, nullptr) and returns its former child; the
    // slot count is unchanged. Null when i is out of range or the slot was empty.
    zuPointer<zuSpatial> removeLODChild(int i);

    // The shared distance-band policy, the default of every visible-set producer.
    static zuBaseLODPolicy* GetBasePolicy();

    // The child that `policy` chooses for `camera` (the shared distance-band policy's rule
    // is applied without a virtual call), stored in `child`. A choice other than the
    // previous one becomes the current level and is marked (setDirtyDown(false), its dirty
    // mask reported to itself and every ancestor), so that the next flag-driven update
    // brings its world data up to date. A null policy chooses nothing.
    void computeVisibleLOD(const zuCamera* camera, const zuLODPolicy* policy, zuSpatial*& child);
    // The level chosen last. Only compared, never used to reach the child: a level that
    // left the node through removeLODChild or attachLODChild stops being current.
    const zuSpatial* getCurrentLOD() const { return mCurrentLOD; }

    // The level that the culler's policy chooses for the culler's camera walks on; nothing
    // is drawn without a policy.
    void GetVisibleSet(zuCuller& culler, bool noCull, bool flag) override;

    const zuRtti& GetType() const override { return TYPE; }
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    // The node part; the other object must be a level-of-detail node too.
    bool Equals(const zuRttiInterface* other) const override;
    // The node part into a level-of-detail node (created for an empty target).
    bool Clone(zuRttiInterface*& target) const override;

private:
    const zuSpatial* mCurrentLOD = nullptr;
};

} // namespace zu
