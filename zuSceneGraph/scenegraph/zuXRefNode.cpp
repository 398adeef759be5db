#include <zuSceneGraph/scenegraph/zuXRefNode.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

namespace zu {

const zuRtti zuXRefNode::TYPE("zuCore.zuXRefNode", &zuNode::TYPE);

zuXRefNode::zuXRefNode() = default;

zuXRefNode::zuXRefNode(const std::string& reference) : mReference(reference)
{
}

zuXRefNode::~zuXRefNode() = default;

// ---------------------------------------------------------------------------------------
// Persistence after the node part: the reference.

int zuXRefNode::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuNode::GetDiskUsed(stream) + 4 + static_cast<int>(mReference.size());
}

void zuXRefNode::Save(zuBaseStream& stream) const
{
    zuNode::Save(stream);
    stream.Write(mReference);
}

void zuXRefNode::Load(zuBaseStream& stream, zuLink* link)
{
    zuNode::Load(stream, link);
    stream.Read(mReference);
}

bool zuXRefNode::Equals(const zuRttiInterface* other) const
{
    return zuNode::Equals(other) && other->IsDerived(TYPE);
}

bool zuXRefNode::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuXRefNode;
    if (!target->IsDerived(TYPE) || !zuNode::Clone(target))
        return false;
    static_cast<zuXRefNode*>(target)->mReference = mReference;
    return true;
}

void zuXRefNode::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuNode::DescribeFields(object, visitor);
    visitor.Text("reference", static_cast<const zuXRefNode&>(object).GetReference());
}

} // namespace zu
