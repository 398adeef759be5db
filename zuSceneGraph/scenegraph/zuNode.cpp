#include <zuSceneGraph/scenegraph/zuNode.h>

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/objects/zuFieldVisitor.h>

#include <algorithm>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zu {

const zuRtti zuNode::TYPE("zuCore.zuNode", &zuSpatial::TYPE);

zuNode::zuNode()
{
    setHasSlots();
}

namespace {

// The children that the outermost node destructor of this thread still has to release,
// or null when no node is being destroyed.
thread_local std::vector<zuPointer<zuSpatial>>* releaseQueue = nullptr;

using Slot = zuPointer<zuSpatial>;

// The slot arrays come from the object pool too, so that the arrays of nodes made one after
// another lie together, as the nodes do: the update walk then finds them in the cache.
Slot* allocateSlots(int n)
{
    if (n <= 0)
        return nullptr;
    Slot* slots = static_cast<Slot*>(zuObjectPool::allocate(static_cast<size_t>(n) * sizeof(Slot)));
    std::uninitialized_value_construct_n(slots, n);
    return slots;
}

// Releases what the slots still hold, the last slot first, then the array.
void releaseSlots(Slot* slots, int n)
{
    if (!slots)
        return;
    for (int i = n; i-- > 0;)
        slots[i].~Slot();
    zuObjectPool::release(slots, static_cast<size_t>(n) * sizeof(Slot));
}

} // namespace

// The explicit stack of the walks that a deep tree must not run on the thread's stack:
// frames live in place for ordinary depths and on the heap beyond.
class zuNode::NodeStack {
public:
    void push(const NodeFrame& frame)
    {
        if (mSize < INLINE_FRAMES)
            mInline[mSize] = frame;
        else
            mSpilled.push_back(frame);
        ++mSize;
    }
    void pop()
    {
        if (--mSize >= INLINE_FRAMES)
            mSpilled.pop_back();
    }
    NodeFrame& top() { return mSize > INLINE_FRAMES ? mSpilled.back() : mInline[mSize - 1]; }
    bool empty() const { return mSize == 0; }
    size_t size() const { return mSize; }

private:
    static constexpr size_t INLINE_FRAMES = 32;
    NodeFrame mInline[INLINE_FRAMES];
    std::vector<NodeFrame> mSpilled;
    size_t mSize = 0;
};

zuNode::~zuNode()
{
    // A child that someone else still holds must not point back to a freed node.
    for (int i = 0; i < mChildCount; ++i)
        if (zuSpatial* child = mChildren[i].get(); child && child->GetParent() == this)
            child->SetParent(nullptr);
    // Children are released in a loop by the outermost destructor rather than each by its
    // parent's, so that freeing a deep tree does not recurse as deep as the tree.
    if (releaseQueue) {
        for (int i = 0; i < mChildCount; ++i)
            if (mChildren[i])
                releaseQueue->push_back(std::move(mChildren[i]));
        releaseSlots(mChildren, mChildCount);
        return;
    }
    std::vector<zuPointer<zuSpatial>> queue;
    for (int i = 0; i < mChildCount; ++i)
        if (mChildren[i])
            queue.push_back(std::move(mChildren[i]));
    releaseSlots(mChildren, mChildCount);
    releaseQueue = &queue;
    while (!queue.empty()) {
        // Released at the end of the iteration; a node freed here queues its own children.
        zuPointer<zuSpatial> child = std::move(queue.back());
        queue.pop_back();
    }
    releaseQueue = nullptr;
}

void zuNode::resizeSlots(int n)
{
    n = std::max(n, 0);
    Slot* slots = allocateSlots(n);
    const int kept = std::min(n, mChildCount);
    for (int i = 0; i < kept; ++i)
        slots[i] = std::move(mChildren[i]);
    // The slots beyond n release their children here.
    releaseSlots(mChildren, mChildCount);
    mChildren = slots;
    mChildCount = n;
}

bool zuNode::isSelfOrAncestor(const zuSpatial* object) const
{
    for (const zuSpatial* ancestor = this; ancestor; ancestor = ancestor->GetParent())
        if (ancestor == object)
            return true;
    return false;
}

// ---------------------------------------------------------------------------------------
// Look-ups

zuObject* zuNode::GetObjectByName(const std::string& name)
{
    if (zuObject* found = zuSpatial::GetObjectByName(name))
        return found;
    for (int i = 0; i < mChildCount; ++i)
        if (zuSpatial* child = mChildren[i].get())
            if (zuObject* found = child->GetObjectByName(name))
                return found;
    return nullptr;
}

void zuNode::GetAllObjectsByName(const std::string& name, std::vector<zuObject*>& objects)
{
    zuSpatial::GetAllObjectsByName(name, objects);
    for (int i = 0; i < mChildCount; ++i)
        if (zuSpatial* child = mChildren[i].get())
            child->GetAllObjectsByName(name, objects);
}

zuObject* zuNode::GetObjectByID(unsigned int id)
{
    if (zuObject* found = zuSpatial::GetObjectByID(id))
        return found;
    for (int i = 0; i < mChildCount; ++i)
        if (zuSpatial* child = mChildren[i].get())
            if (zuObject* found = child->GetObjectByID(id))
                return found;
    return nullptr;
}

// ---------------------------------------------------------------------------------------
// Passes

void zuNode::Clean_Flags()
{
    zuSpatial::Clean_Flags();
    for (int i = 0; i < mChildCount; ++i)
        if (zuSpatial* child = mChildren[i].get(); child && child->GetDirtyMask() != 0)
            child->Clean_Flags();
}

void zuNode::GetVisibleSet(zuCuller& culler, bool noCull, bool flag)
{
    // The children lie apart in memory: their bounds are asked for all at once. Below a
    // child node the walk would wait on three fetches one after another (the node's slot
    // pointer, its slot array, its children's bounds): they are asked for three, two and one
    // children ahead, while the children before are walked.
    for (int i = 0; i < mChildCount; ++i)
        prefetchBound(mChildren[i].get());
    for (int i = 0; i < mChildCount; ++i) {
        if (const zuNode* node = childNode(i + 3))
            __builtin_prefetch(&node->mChildren);
        if (const zuNode* node = childNode(i + 2))
            __builtin_prefetch(node->mChildren);
        if (const zuNode* node = childNode(i + 1))
            for (int j = 0; j < node->mChildCount && j < PREFETCHED_GRANDCHILDREN; ++j)
                prefetchBound(node->mChildren[j].get());
        if (zuSpatial* child = mChildren[i].get())
            child->OnGetVisibleSet(culler, noCull, flag);
    }
}

bool zuNode::UpdateSubtreeControllers(double time)
{
    bool changed = UpdateControllers(time);
    for (int i = 0; i < mChildCount; ++i) {
        zuSpatial* child = mChildren[i].get();
        if (!child)
            continue;
        if (child->IsDerived(TYPE))
            changed = static_cast<zuNode*>(child)->UpdateSubtreeControllers(time) || changed;
        else
            changed = child->UpdateControllers(time) || changed;
    }
    return changed;
}

uint32_t zuNode::setDirtyDown(bool down)
{
    // The recursion the marks describe, run on a stack of our own: a subtree may be far
    // deeper than the thread's stack allows. A node's result is its children's results,
    // UPDATE_WORLD_DATA, and what its dirty mask held.
    NodeStack stack;
    stack.push({this, 0, 0});
    for (;;) {
        NodeFrame& frame = stack.top();
        if (frame.next < frame.node->mChildCount) {
            zuSpatial* child = frame.node->mChildren[frame.next++].get();
            if (!child)
                continue;
            if (child->IsDerived(TYPE))
                stack.push({static_cast<zuNode*>(child), 0, 0});
            else
                frame.bits |= child->setDirtyDown(down);
            continue;
        }
        zuNode* node = frame.node;
        const uint32_t bits = frame.bits | UPDATE_WORLD_DATA;
        node->SetDirtyMask(node->GetDirtyMask() | bits);
        node->SetUpdateMask(node->GetUpdateMask() | bits);
        stack.pop();
        if (stack.empty())
            return node->GetDirtyMask();
        stack.top().bits |= node->GetDirtyMask();
    }
}

void zuNode::UpdateWorldData()
{
    updateWorldTransform();
    // No prefetching: the pool lays a tree out in the order it was made, which is the order
    // of this walk, and the processor streams it by itself.
    for (int i = 0; i < mChildCount; ++i)
        if (zuSpatial* child = mChildren[i].get())
            child->UpdateGS(false);
}

void zuNode::UpdateWorldData_Flags()
{
    updateWorldTransform();
    for (int i = 0; i < mChildCount; ++i)
        if (zuSpatial* child = mChildren[i].get())
            child->UpdateGS_Flags();
}

void zuNode::UpdateWorldBound()
{
    zuBoundingVolume& bound = GetWorldBound();
    bool first = true;
    for (int i = 0; i < mChildCount; ++i) {
        const zuSpatial* child = mChildren[i].get();
        if (!child || child->isIgnored())
            continue;
        if (first) {
            // An invalid first bound leaves the previous one in place, and the others grow it.
            bound.copyFrom(child->GetWorldBound());
            first = false;
        } else {
            bound.growToContainBox(child->GetWorldBound());
        }
    }
    if (first)
        bound.invalidate();
}

// ---------------------------------------------------------------------------------------
// Children

int zuNode::attachChild(zuSpatial* child)
{
    if (!acceptsChild(child))
        return -1;
    child->SetParent(this);
    resizeSlots(mChildCount + 1);
    const int index = mChildCount - 1;
    mChildren[index] = child;
    child->markDirty(true);
    return index;
}

zuPointer<zuSpatial> zuNode::setChild(int i, zuSpatial* child)
{
    if (i < 0 || i >= mChildCount || (child && !acceptsChild(child)))
        return nullptr;
    zuPointer<zuSpatial> previous = mChildren[i];
    if (previous) {
        // Detached first: the old child's marks stay with it.
        previous->SetParent(nullptr);
        previous->markDirty(true);
    }
    if (child) {
        child->SetParent(this);
        child->markDirty(true);
    }
    mChildren[i] = child;
    return previous;
}

bool zuNode::replaceChildAt(int i, zuSpatial* child)
{
    if (i < 0 || i >= mChildCount || (child && !acceptsChild(child)))
        return false;
    // Held until the slot lets it go, so that marking and detaching see a live object.
    zuPointer<zuSpatial> previous = mChildren[i];
    if (previous) {
        // Marked while still attached: this node and its ancestors learn that their bound
        // changed.
        previous->markDirty(true, UPDATE_WORLD_BOUND);
        previous->SetParent(nullptr);
    }
    mChildren[i] = child;
    if (child) {
        child->SetParent(this);
        child->markDirty(true, UPDATE_WORLD_BOUND);
    }
    return true;
}

bool zuNode::replaceChild(zuSpatial* oldChild, zuSpatial* child)
{
    if (child && !acceptsChild(child))
        return false;
    const int i = getChildIndex(oldChild);
    return i >= 0 && replaceChildAt(i, child);
}

int zuNode::getChildIndex(const zuSpatial* child) const
{
    for (int i = 0; i < mChildCount; ++i)
        if (mChildren[i].get() == child)
            return i;
    return -1;
}

zuPointer<zuSpatial> zuNode::removeChildAt(int i)
{
    if (i < 0 || i >= mChildCount)
        return nullptr;
    zuPointer<zuSpatial> removed = mChildren[i];
    if (removed) {
        removed->markDirty(true);
        removed->SetParent(nullptr);
    }
    for (int j = i; j + 1 < mChildCount; ++j)
        mChildren[j] = std::move(mChildren[j + 1]);
    resizeSlots(mChildCount - 1);
    return removed;
}

bool zuNode::removeChild(zuSpatial* child)
{
    const int i = getChildIndex(child);
    if (i < 0)
        return false;
    removeChildAt(i);
    return true;
}

void zuNode::removeAllChildren()
{
    for (int i = 0; i < mChildCount; ++i) {
        if (zuSpatial* child = mChildren[i].get()) {
            child->markDirty(true);
            child->SetParent(nullptr);
        }
    }
    resizeSlots(0);
}

int zuNode::removeNullChildren(bool recursive, bool flag)
{
    int removed = 0;
    if (recursive) {
        for (int i = 0; i < mChildCount; ++i)
            if (zuSpatial* child = mChildren[i].get(); child && child->IsDerived(zuNode::TYPE))
                removed += static_cast<zuNode*>(child)->removeNullChildren(true, flag);
    }
    int kept = 0;
    for (int i = 0; i < mChildCount; ++i)
        if (mChildren[i])
            ++kept;
    if (kept == mChildCount)
        return removed;
    Slot* slots = allocateSlots(kept);
    for (int i = 0, j = 0; i < mChildCount; ++i)
        if (mChildren[i])
            slots[j++] = std::move(mChildren[i]);
    removed += mChildCount - kept;
    releaseSlots(mChildren, mChildCount);
    mChildren = slots;
    mChildCount = kept;
    return removed;
}

void zuNode::setNbChildren(int n)
{
    resizeSlots(n);
}

// ---------------------------------------------------------------------------------------
// Persistence after the spatial part: int slot count, then one reference per slot.

bool zuNode::Register(zuBaseStream& stream) const
{
    if (!zuSpatial::Register(stream))
        return false;
    for (int i = 0; i < mChildCount; ++i)
        if (const zuSpatial* child = mChildren[i].get())
            child->Register(stream);
    return true;
}

int zuNode::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuSpatial::GetDiskUsed(stream) + 4 + 8 * mChildCount;
}

void zuNode::Save(zuBaseStream& stream) const
{
    zuSpatial::Save(stream);
    stream.Write(mChildCount);
    for (int i = 0; i < mChildCount; ++i)
        stream.Write(static_cast<const zuRttiInterface*>(mChildren[i].get()));
}

void zuNode::Load(zuBaseStream& stream, zuLink* link)
{
    zuSpatial::Load(stream, link);
    int count = 0;
    stream.Read(count);
    if (!stream.CheckCount(count, 8))
        return;
    resizeSlots(0);
    resizeSlots(count);
    for (int i = 0; i < count; ++i)
        stream.ReadLink(link);
}

void zuNode::Link(zuBaseStream& stream, zuLink* link)
{
    zuSpatial::Link(stream, link);
    for (int i = 0; i < mChildCount; ++i) {
        zuRttiInterface* object = stream.getFromMapAndRemove(link->getLinkID());
        // A child has one parent and one slot; one that another slot took stays there.
        if (!object || object == this || !object->IsDerived(zuSpatial::TYPE))
            continue;
        auto* child = static_cast<zuSpatial*>(object);
        if (child->GetParent())
            continue;
        // Installed without marks or the ancestor check, which cost the depth of the tree
        // per child: the load's tree pass sets the marks, breaks the cycles a file can make
        // and bounds the depth, once for all the trees of the load.
        child->SetParent(this);
        mChildren[i] = child;
    }
    stream.requestLinkedPass(finishLoadedTrees);
    stream.noteForLinkedPass(this);
}

// ---------------------------------------------------------------------------------------
// The tree pass of a load

void zuNode::finishLoadedTrees(zuBaseStream& stream)
{
    // Only the nodes matter: a leaf is marked from its parent's walk, and one without a
    // parent has nothing to mark. Every node is reached from a parentless one unless it
    // hangs in a cycle of parents.
    const std::vector<zuRttiInterface*>& nodes = stream.GetNotedForLinkedPass();
    size_t count = 0;
    size_t reached = 0;
    for (zuRttiInterface* object : nodes) {
        if (!object->IsDerived(TYPE))
            continue;
        ++count;
        if (auto* node = static_cast<zuNode*>(object); !node->GetParent())
            reached += finishLoadedTree(node);
    }
    if (reached < count)
        breakLoadedCycles(stream);
}

size_t zuNode::finishLoadedTree(zuSpatial* root)
{
    if (!root->IsDerived(TYPE))
        return 0;
    size_t reached = 0;
    std::vector<zuNode*> roots{static_cast<zuNode*>(root)};
    NodeStack stack;
    while (!roots.empty()) {
        // A root was attached to nothing, so it gets only what its descendants report.
        stack.push({roots.back(), 0, 0});
        roots.pop_back();
        ++reached;
        while (!stack.empty()) {
            NodeFrame& frame = stack.top();
            if (frame.next == frame.node->mChildCount) {
                zuNode* node = frame.node;
                const uint32_t bits = frame.bits;
                node->SetDirtyMask(node->GetDirtyMask() | bits);
                node->SetUpdateMask(node->GetUpdateMask() | bits);
                stack.pop();
                if (!stack.empty())
                    stack.top().bits |= bits;
                continue;
            }
            const int slot = frame.next++;
            zuSpatial* child = frame.node->mChildren[slot].get();
            if (!child)
                continue;
            if (!child->IsDerived(TYPE)) {
                // What attaching the leaf marked: its own bits, then its dirty mask reported
                // to itself and, through the gathered bits, to its ancestors.
                child->setDirtyDown(true);
                child->SetUpdateMask(child->GetUpdateMask() | child->GetDirtyMask());
                frame.bits |= child->GetDirtyMask();
                continue;
            }
            auto* node = static_cast<zuNode*>(child);
            if (stack.size() > static_cast<size_t>(MAX_LOADED_DEPTH)) {
                // Too deep: cut off, and finished as a root of its own. The load's link still
                // holds it, so it is freed with the load unless something else holds it.
                node->SetParent(nullptr);
                frame.node->mChildren[slot] = nullptr;
                roots.push_back(node);
                continue;
            }
            // Attached to a node with no children yet, a node marks UPDATE_WORLD_DATA on
            // itself and reports its whole dirty mask upward.
            node->SetDirtyMask(node->GetDirtyMask() | UPDATE_WORLD_DATA);
            node->SetUpdateMask(node->GetUpdateMask() | UPDATE_WORLD_DATA);
            stack.push({node, 0, node->GetDirtyMask()});
            ++reached;
        }
    }
    return reached;
}

void zuNode::breakLoadedCycles(zuBaseStream& stream)
{
    // Only a crafted file gets here, so hash maps may keep, per object, its place in the
    // reading order and its state: 1 on the path being climbed, 2 settled (in a finished tree).
    std::unordered_map<const zuSpatial*, size_t> order;
    std::unordered_map<const zuSpatial*, uint8_t> state;
    for (size_t i = 0; i < stream.GetLoadedObjectCount(); ++i)
        if (zuRttiInterface* object = stream.GetLoadedObjectAt(i); object->IsDerived(zuSpatial::TYPE))
            order.emplace(static_cast<zuSpatial*>(object), i);
    std::vector<zuSpatial*> path;
    for (size_t i = 0; i < stream.GetLoadedObjectCount(); ++i) {
        zuRttiInterface* object = stream.GetLoadedObjectAt(i);
        if (!object->IsDerived(zuSpatial::TYPE))
            continue;
        path.clear();
        for (auto* spatial = static_cast<zuSpatial*>(object); spatial; spatial = spatial->GetParent()) {
            uint8_t& seen = state[spatial];
            if (seen == 2)
                break;
            if (seen == 1) {
                // The climb came round. Linking child by child would have refused the link
                // that closed the cycle, the one its parent made last: cut that one, and the
                // child becomes the root of what hung in the cycle.
                zuSpatial* cut = spatial;
                for (zuSpatial* member = spatial->GetParent(); member != spatial; member = member->GetParent())
                    if (order[member->GetParent()] > order[cut->GetParent()])
                        cut = member;
                zuSpatial* parent = cut->GetParent();
                cut->SetParent(nullptr);
                if (parent->IsDerived(TYPE)) {
                    auto* node = static_cast<zuNode*>(parent);
                    if (const int slot = node->getChildIndex(cut); slot >= 0)
                        node->mChildren[slot] = nullptr;
                }
                finishLoadedTree(cut);
                break;
            }
            seen = 1;
            path.push_back(spatial);
        }
        for (zuSpatial* spatial : path)
            state[spatial] = 2;
    }
}

bool zuNode::Equals(const zuRttiInterface* other) const
{
    if (!zuSpatial::Equals(other) || !other->IsDerived(TYPE))
        return false;
    return mChildCount == static_cast<const zuNode*>(other)->mChildCount;
}

bool zuNode::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuNode;
    return target->IsDerived(TYPE) && zuSpatial::Clone(target);
}

void zuNode::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuSpatial::DescribeFields(object, visitor);
    const auto& node = static_cast<const zuNode&>(object);
    visitor.References("children", node.mChildCount, [&](int64_t i) { return node.getChild(static_cast<int>(i)); });
}

} // namespace zu
