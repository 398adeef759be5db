#pragma once

#include <zuSceneGraph/scenegraph/zuSpatial.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

namespace zu {

// The grouping node: a spatial object with an ordered array of child slots (a slot may be
// empty). It composes world transformations downward, merges its children's bounds
// upward, hands the culling walk to its children and spreads change marks.
//
// Ownership: a node holds one reference per slot on its child and is the child's parent;
// a child has at most one parent, so attaching a child that has one fails (detach it
// first). The array holds exactly as many slots as children: every change reallocates it.
//
// Marks. To mark a child is to call its setDirtyDown(true) and report its dirty mask to
// the masks of the child and of every ancestor reachable at that moment. setChild detaches
// an old child before marking it, so only that child learns of the change; replaceChildAt
// marks it while still attached, with UPDATE_WORLD_BOUND added, so that this node and its
// ancestors learn that their bound must be recomputed. The difference is intended.
//
// Cycles are refused: a node never takes itself or one of its ancestors as a child, so
// the update and culling walks always end.
//
// Persisted after the spatial part: the slot count (int) and one reference per slot (null
// for an empty slot). Link installs the children through setChild.
class zuNode : public zuSpatial {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuNode>(stream); }
    static void RegisterFactory() { RegisterClass<zuNode>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // The deepest a loaded node may sit (its number of ancestors): far beyond real scenes,
    // well within the stack that the recursive walks need. A load cuts a node nested deeper
    // off its parent (see finishLoadedTrees).
    static constexpr int MAX_LOADED_DEPTH = 4096;

    zuNode();
    // Releases the children (a deep tree without a deep recursion); those that live on
    // elsewhere lose their parent pointer.
    ~zuNode() override;
    zuNode(const zuNode&) = delete;
    zuNode& operator=(const zuNode&) = delete;

    // This node first, then the children depth-first in slot order.
    zuObject* GetObjectByName(const std::string& name) override;
    void GetAllObjectsByName(const std::string& name, std::vector<zuObject*>& objects) override;
    zuObject* GetObjectByID(unsigned int id) override;

    // Clears this node's masks, then cleans the children whose dirty mask is set.
    void Clean_Flags() override;
    // Each child's OnGetVisibleSet in slot order.
    void GetVisibleSet(zuCuller& culler, bool noCull, bool flag) override;
    // The children's results ORed into both masks, then UPDATE_WORLD_DATA; returns the
    // dirty mask.
    uint32_t setDirtyDown(bool down) override;
    // This node's world transformation, then UpdateGS(false) on each child.
    void UpdateWorldData() override;
    // This node's world transformation, then UpdateGS_Flags() on each child.
    void UpdateWorldData_Flags() override;
    // The merge of the bounds of the children that are not ignored: the first one's copied
    // (an invalid one leaves the previous bound in place), the others grown into it. No
    // such child: an invalid bound.
    void UpdateWorldBound() override;

    // Appends a child in a new slot and marks it; returns its index, or -1 when the child
    // is null, has a parent, is this node or one of its ancestors.
    virtual int attachChild(zuSpatial* child);
    // The child in a slot; null for an empty slot or an index outside [0, count).
    virtual zuSpatial* getChild(int i) const
    {
        return i >= 0 && i < mChildCount ? mChildren[i].get() : nullptr;
    }

    int getNbChildren() const { return mChildCount; }
    // Updates the controllers of this node and of every object below it for the
    // application's `time` (in the unit the controllers' times use, usually seconds), each
    // node before its children; true when any of them changed something. UpdateControllers, as for
    // every object, updates this node's own controllers only. Follow it with UpdateGS to
    // carry the new local transformations into the world transformations and bounds.
    bool UpdateSubtreeControllers(double time);
    // Puts `child` (or nothing) in slot i and returns the former occupant, which is
    // detached, then marked. Refused (null returned, nothing changed) when i is out of
    // range or `child` has a parent, is this node or one of its ancestors.
    zuPointer<zuSpatial> setChild(int i, zuSpatial* child);
    // Puts `child` (or nothing) in slot i. The former occupant is marked with
    // UPDATE_WORLD_BOUND added while still attached, then detached; the new child is
    // attached and marked the same way. False when i is out of range or `child` has a
    // parent, is this node or one of its ancestors.
    bool replaceChildAt(int i, zuSpatial* child);
    // replaceChildAt at the first slot holding `oldChild`, with `child` (or nothing); false
    // when there is none.
    bool replaceChild(zuSpatial* oldChild, zuSpatial* child);
    // The first slot holding `child`, or -1.
    int getChildIndex(const zuSpatial* child) const;
    // Removes slot i: its child is marked while still attached, then detached, and the
    // later children move down one slot. Null when i is out of range.
    zuPointer<zuSpatial> removeChildAt(int i);
    // removeChildAt at the first slot holding `child`; false when there is none.
    bool removeChild(zuSpatial* child);
    // Marks and detaches every child; no slot remains.
    void removeAllChildren();
    // Drops the empty slots, keeping the order; with `recursive`, in the child nodes first.
    // `flag` is not read here: it is handed down the recursion, for derived nodes. Returns
    // the number of slots dropped in all.
    int removeNullChildren(bool recursive, bool flag);
    // Resizes the array to n slots (none for n < 1), keeping the first children. Dropped
    // children are released without detaching or marking them: a raw step for loaders.
    void setNbChildren(int n);

    const zuRtti& GetType() const override { return TYPE; }
    bool Register(zuBaseStream& stream) const override;
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    // A reference that is not a spatial object, or is this node, or names a child that has
    // a parent already, leaves its slot empty. The children are installed without marks;
    // the load's tree pass (finishLoadedTrees) marks them afterwards.
    void Link(zuBaseStream& stream, zuLink* link) override;
    // The spatial part and the slot count; the children are not compared.
    bool Equals(const zuRttiInterface* other) const override;
    // The node itself: a node is created for an empty target; children are not copied (a
    // child has one parent, and copying a subtree is the caller's choice).
    bool Clone(zuRttiInterface*& target) const override;

protected:
    // Whether `object` is this node or one of its ancestors.
    bool isSelfOrAncestor(const zuSpatial* object) const;
    // Whether `child` may take a slot: not null, no parent, no cycle.
    bool acceptsChild(const zuSpatial* child) const
    {
        return child && !child->GetParent() && !isSelfOrAncestor(child);
    }

private:
    struct NodeFrame {
        zuNode* node;
        int next;       // the next slot to visit
        uint32_t bits;  // the marks gathered from the children so far
    };
    class NodeStack;

    // The culling walk fetches the bounds of at most this many children of a child node
    // ahead of its visit.
    static constexpr int PREFETCHED_GRANDCHILDREN = 16;
    // The child in slot i when it is a node (a node has slots), else null; i may be count or more.
    zuNode* childNode(int i) const
    {
        zuSpatial* child = i < mChildCount ? mChildren[i].get() : nullptr;
        return child && child->hasSlots() ? static_cast<zuNode*>(child) : nullptr;
    }

    // Reallocates the array to exactly n slots, moving the first min(n, count) children.
    void resizeSlots(int n);

    // The tree pass of a load, run once after every record is linked. Each tree is walked
    // once, on a stack of its own: its marks become those that attaching the children one
    // by one in reading order gives (the order of every file Save writes), a node with more
    // than MAX_LOADED_DEPTH ancestors is cut off its parent (and finished as a root of its
    // own), and a cycle of parents that a crafted file can make is cut open.
    static void finishLoadedTrees(zuBaseStream& stream);
    // Finishes the tree of a parentless object; returns the nodes it reached, those cut off
    // included.
    static size_t finishLoadedTree(zuSpatial* root);
    static void breakLoadedCycles(zuBaseStream& stream);

    zuPointer<zuSpatial>* mChildren = nullptr;
    int mChildCount = 0;
};

} // namespace zu
