#include "support/zuTestObjects.h"

#include <zuSceneGraph/stream/zuFileStream.h>
#include <zuSceneGraph/zuSceneGraph.h>

#include <zuSystem/zuMemoryIoDevice.h>

namespace zu::test {

const zuRtti zuTestNode::TYPE("zuTest.zuTestNode", &zuObject::TYPE);
const zuRtti zuTestController::TYPE("zuTest.zuTestController", &zuController::TYPE);
const zuRtti zuShortRecord::TYPE("zuTest.zuShortRecord", &zuObject::TYPE);
const zuRtti zuTestOtherNode::TYPE("zuTest.zuTestOtherNode", &zuTestNode::TYPE);
const zuRtti zuTestPlain::TYPE("zuTest.zuTestPlain", &zuRttiInterface::TYPE);

int zuTestInformation::msLiving = 0;

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
    zuTestNode::msPostLinkCalls = 0;
    zuTestNode::msPostLinkResult = true;
}

zuTestFactories::~zuTestFactories()
{
    zuTestController::UnRegisterFactory();
    zuTestNode::UnRegisterFactory();
    terminateZuSceneGraph();
}

zuLogCapture::zuLogCapture()
{
    mPrevious = zuLog::instance().setSink([this](const std::string& category, const std::string& message) {
        mMessages.emplace_back(category, message);
    });
}

zuLogCapture::~zuLogCapture()
{
    zuLog::instance().setSink(mPrevious);
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

std::vector<char> saveToFileBytes(const std::vector<zuRttiInterface*>& topLevel, zuStreamVersion version,
                                  int blockSize)
{
    zuFileStream stream(blockSize);
    stream.SetVersion(version);
    for (zuRttiInterface* object : topLevel)
        stream.InsertTopLevel(object);
    zuMemoryIoDevice device;
    if (!stream.Save(device, "memory", false))
        return {};
    return device.data();
}

::testing::AssertionResult isSmallGraph(const zuRttiInterface* object)
{
    if (!object || !object->IsExactly(zuTestNode::TYPE))
        return ::testing::AssertionFailure() << "the root is not a zuTestNode";
    const auto* root = static_cast<const zuTestNode*>(object);
    if (root->GetName() != "root" || root->GetValue() != 7 || root->GetChildQuantity() != 2)
        return ::testing::AssertionFailure() << "the root's fields differ";
    const zuTestNode* a = root->GetChild(0);
    const zuTestNode* b = root->GetChild(1);
    if (!a || !b || a->GetName() != "a" || a->GetValue() != 1 || a->GetChildQuantity() != 0)
        return ::testing::AssertionFailure() << "child a differs";
    if (b->GetName() != "b" || b->GetValue() != 2 || b->GetChildQuantity() != 1 || b->GetChild(0) != a)
        return ::testing::AssertionFailure() << "child b differs or does not share a";
    if (root->GetControllerQuantity() != 1 || !root->GetController(0)
        || !root->GetController(0)->IsExactly(zuTestController::TYPE) || root->GetController(0)->GetName() != "ctl"
        || root->GetController(0)->GetObject() != root)
        return ::testing::AssertionFailure() << "the controller differs";
    return ::testing::AssertionSuccess();
}

} // namespace zu::test
