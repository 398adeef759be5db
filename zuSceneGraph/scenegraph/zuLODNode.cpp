#include <zuSceneGraph/scenegraph/zuLODNode.h>

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/scenegraph/zuBaseLODPolicy.h>

#include <iostream>

namespace zu {

const zuRtti zuLODNode::TYPE("zuCore.zuLODNode", &zuNode::TYPE);

zuLODNode::zuLODNode() = default;

zuLODNode::~zuLODNode() = default;

int zuLODNode::attachChild(zuSpatial*)
{
    std::cerr << "Can't use AttachChild With LOD Nodes, you have to use AttachLODChild instead" << std::endl;
    return -1;
}

bool zuLODNode::attachLODChild(int i, zuSpatial* child)
{
    if (i < 0 || (child && !acceptsChild(child)))
        return false;
    if (i >= getNbChildren())
        setNbChildren(i + 1);
    if (getChild(i) == mCurrentLOD)
        mCurrentLOD = nullptr;
    return replaceChildAt(i, child);
}

zuPointer<zuSpatial> zuLODNode::removeLODChild(int i)
{
    zuPointer<zuSpatial> removed = getChild(i);
    if (!removed)
        return nullptr;
    if (removed.get() == mCurrentLOD)
        mCurrentLOD = nullptr;
    replaceChildAt(i, nullptr);
    return removed;
}

zuBaseLODPolicy* zuLODNode::GetBasePolicy()
{
    // Stateless, so one instance serves every producer and culler of the process.
    static zuBaseLODPolicy policy;
    return &policy;
}

void zuLODNode::computeVisibleLOD(const zuCamera* camera, const zuLODPolicy* policy, zuSpatial*& child)
{
    if (!policy)
        child = nullptr;
    else if (policy == GetBasePolicy())
        child = zuBaseLODPolicy::selectBand(this, camera);
    else
        child = policy->selectItem(this, camera);
    if (child == mCurrentLOD)
        return;
    mCurrentLOD = child;
    if (child)
        child->markDirty(false);
}

void zuLODNode::GetVisibleSet(zuCuller& culler, bool noCull, bool flag)
{
    const zuLODPolicy* policy = culler.getLODPolicy();
    if (!policy)
        return;
    zuSpatial* child = nullptr;
    computeVisibleLOD(culler.GetCamera(), policy, child);
    if (child)
        child->OnGetVisibleSet(culler, noCull, flag);
}

// ---------------------------------------------------------------------------------------
// Persistence after the node part: below 6.6 a list of ints that no reader uses any more.

int zuLODNode::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuNode::GetDiskUsed(stream) + (stream.GetVersion() < zuStreamVersion(6, 6) ? 4 : 0);
}

void zuLODNode::Save(zuBaseStream& stream) const
{
    zuNode::Save(stream);
    if (stream.GetVersion() < zuStreamVersion(6, 6))
        stream.Write(0);
}

void zuLODNode::Load(zuBaseStream& stream, zuLink* link)
{
    zuNode::Load(stream, link);
    if (stream.GetVersion() < zuStreamVersion(6, 6)) {
        int count = 0;
        stream.Read(count);
        if (!stream.CheckCount(count, 4))
            return;
        stream.Skip(4 * static_cast<uint64_t>(count));
    }
}

bool zuLODNode::Equals(const zuRttiInterface* other) const
{
    return zuNode::Equals(other) && other->IsDerived(TYPE);
}

bool zuLODNode::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuLODNode;
    return target->IsDerived(TYPE) && zuNode::Clone(target);
}

} // namespace zu
