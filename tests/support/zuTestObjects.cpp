#include "support/zuTestObjects.h"
#include "support/zuTestLeaf.h"

#include <zuSceneGraph/zuSceneGraph.h>

namespace zu::test {

const zuRtti zuTestNode::TYPE("zuTest.zuTestNode", &zuObject::TYPE);
const zuRtti zuTestController::TYPE("zuTest.zuTestController", &zuController::TYPE);
const zuRtti zuShortRecord::TYPE("zuTest.zuShortRecord", &zuObject::TYPE);

int zuTestNode::msLiving = 0;
int zuTestNode::msPostLinkCalls = 0;
bool zuTestNode::msPostLinkResult = true;

bool zuTestNode::Register(zuBaseStream& stream) const
{
    if (!zuNamedObject::Register(stream))
        return false;
    for (const auto& child : mChildren)
        if (child)
            child->Register(stream);
    return true;
}

int zuTestNode::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuNamedObject::GetDiskUsed(stream) + 4 + 4 + 8 * GetChildQuantity();
}

void zuTestNode::Save(zuBaseStream& stream) const
{
    zuNamedObject::Save(stream);
    stream.Write(mValue);
    stream.Write(GetChildQuantity());
    for (const auto& child : mChildren)
        stream.Write(static_cast<const zuRttiInterface*>(child.get()));
}

void zuTestNode::Load(zuBaseStream& stream, zuLink* link)
{
    zuNamedObject::Load(stream, link);
    stream.Read(mValue);
    int quantity = 0;
    stream.Read(quantity);
    if (!stream.CheckCount(quantity, 8))
        return;
    mChildren.resize(static_cast<size_t>(quantity));
    for (int i = 0; i < quantity; ++i)
        stream.ReadLink(link);
}

void zuTestNode::Link(zuBaseStream& stream, zuLink* link)
{
    zuNamedObject::Link(stream, link);
    for (auto& child : mChildren) {
        zuRttiInterface* object = stream.getFromMapAndRemove(link->getLinkID());
        child = object && object->IsDerived(TYPE) ? static_cast<zuTestNode*>(object) : nullptr;
    }
}

bool zuTestNode::PostLink()
{
    ++msPostLinkCalls;
    return msPostLinkResult;
}

bool zuTestNode::Equals(const zuRttiInterface* other) const
{
    if (!zuNamedObject::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const zuTestNode* node = static_cast<const zuTestNode*>(other);
    if (mValue != node->mValue || GetChildQuantity() != node->GetChildQuantity())
        return false;
    for (int i = 0; i < GetChildQuantity(); ++i) {
        const zuTestNode* a = GetChild(i);
        const zuTestNode* b = node->GetChild(i);
        if ((a == nullptr) != (b == nullptr) || (a && !a->Equals(b)))
            return false;
    }
    return true;
}

bool zuTestNode::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuTestNode;
    if (!target->IsDerived(TYPE) || !zuNamedObject::Clone(target))
        return false;
    static_cast<zuTestNode*>(target)->mValue = mValue;
    return true;
}

zuTestFactories::zuTestFactories()
{
    initializeZuSceneGraph();
    zuTestNode::RegisterFactory();
    zuTestController::RegisterFactory();
    zuTestLeaf::RegisterFactory();
    zuTestNode::msPostLinkCalls = 0;
    zuTestNode::msPostLinkResult = true;
}

zuTestFactories::~zuTestFactories()
{
    zuTestLeaf::UnRegisterFactory();
    zuTestController::UnRegisterFactory();
    zuTestNode::UnRegisterFactory();
    terminateZuSceneGraph();
}

std::vector<char> saveToBytes(const std::vector<zuRttiInterface*>& topLevel, zuStreamVersion version)
{
    zuBaseStream stream;
    stream.SetVersion(version);
    for (zuRttiInterface* object : topLevel)
        stream.InsertTopLevel(object);
    char* buffer = nullptr;
    unsigned long size = 0;
    std::vector<char> bytes;
    if (stream.Save(buffer, size))
        bytes.assign(buffer, buffer + size);
    delete[] buffer;
    return bytes;
}

} // namespace zu::test
