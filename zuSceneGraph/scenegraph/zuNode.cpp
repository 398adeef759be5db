#include <zuSceneGraph/scenegraph/zuNode.h>

#include <zuSceneGraph/culling/zuCuller.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace zu {

const zuRtti zuNode::TYPE("zuCore.zuNode", &zuSpatial::TYPE);

zuNode::zuNode() = default;

namespace {

// The children that the outermost node destructor of this thread still has to release,
// or null when no node is being destroyed.
thread_local std::vector<zuPointer<zuSpatial>>* releaseQueue = nullptr;

} // namespace

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
        delete[] mChildren;
        return;
    }
    std::vector<zuPointer<zuSpatial>> queue;
    for (int i = 0; i < mChildCount; ++i)
        if (mChildren[i])
            queue.push_back(std::move(mChildren[i]));
    delete[] mChildren;
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
    zuPointer<zuSpatial>* slots = n > 0 ? new zuPointer<zuSpatial>[static_cast<size_t>(n)] : nullptr;
    const int kept = std::min(n, mChildCount);
    for (int i = 0; i < kept; ++i)
        slots[i] = std::move(mChildren[i]);
    // The slots beyond n release their children here.
    delete[] mChildren;
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
    for (int i = 0; i < mChildCount; ++i)
        if (zuSpatial* child = mChildren[i].get())
            child->OnGetVisibleSet(culler, noCull, flag);
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
    uint32_t bits = 0;
    for (int i = 0; i < mChildCount; ++i)
        if (zuSpatial* child = mChildren[i].get())
            bits |= child->setDirtyDown(down);
    bits |= UPDATE_WORLD_DATA;
    SetDirtyMask(GetDirtyMask() | bits);
    SetUpdateMask(GetUpdateMask() | bits);
    return GetDirtyMask();
}

void zuNode::UpdateWorldData()
{
    updateWorldTransform();
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
    zuPointer<zuSpatial>* slots = kept > 0 ? new zuPointer<zuSpatial>[static_cast<size_t>(kept)] : nullptr;
    for (int i = 0, j = 0; i < mChildCount; ++i)
        if (mChildren[i])
            slots[j++] = std::move(mChildren[i]);
    removed += mChildCount - kept;
    delete[] mChildren;
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
        if (!object || !object->IsDerived(zuSpatial::TYPE))
            continue;
        // setChild refuses a child that would close a cycle or that another slot took.
        setChild(i, static_cast<zuSpatial*>(object));
    }
}

bool zuNode::PostLink()
{
    const bool result = zuSpatial::PostLink();
    // The update and culling walks recurse once per level. A crafted file may nest nodes
    // deeper than any real scene: a node below MAX_LOADED_DEPTH ancestors leaves its
    // parent, and its subtree is dropped with the load unless something else holds it.
    int depth = 0;
    zuSpatial* parent = GetParent();
    for (const zuSpatial* ancestor = parent; ancestor && depth <= MAX_LOADED_DEPTH; ancestor = ancestor->GetParent())
        ++depth;
    if (depth > MAX_LOADED_DEPTH && parent->IsDerived(zuNode::TYPE)) {
        zuNode* node = static_cast<zuNode*>(parent);
        node->setChild(node->getChildIndex(this), nullptr);
    }
    return result;
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

} // namespace zu
