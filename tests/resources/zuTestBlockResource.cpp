#include "resources/zuTestBlockResource.h"

#include <zuSceneGraph/resources/zuBlockResourceSave.h>

namespace zu::test {

const zuRtti zuTestBlockResource::TYPE("zuTest.zuTestBlockResource", &zuObject::TYPE);
unsigned int zuTestBlockResource::msTestResourceID = 0;
unsigned int zuTestBlockResource::msTestHandlerID = 0;
int zuTestBlockResource::msLiving = 0;

zuTestBlockResource::zuTestBlockResource(int size, int seed) : zuTestBlockResource()
{
    mSize = size > 0 ? size : 0;
    mData = zuBlockResourceHandler::AllocateBlock(static_cast<uint64_t>(mSize));
    for (int i = 0; i < mSize; ++i)
        mData[i] = Pattern(seed, i);
}

zuTestBlockResource::~zuTestBlockResource()
{
    release();
    zuBlockResourceHandler::FreeBlock(mData);
    --msLiving;
}

bool zuTestBlockResource::HasPattern(int seed) const
{
    if (!mData)
        return false;
    for (int i = 0; i < mSize; ++i)
        if (mData[i] != Pattern(seed, i))
            return false;
    return true;
}

zuDynamicLoadingResourceHandler* zuTestBlockResource::createHandler() const
{
    zuTestBlockHandler* handler = new zuTestBlockHandler;
    handler->setBlockHandler(this);
    return handler;
}

int zuTestBlockResource::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuUnnamedObject::GetDiskUsed(stream) + 4 + mSize;
}

void zuTestBlockResource::checkSave(zuBaseStream& stream) const
{
    zuBlockResourceSave::Check(stream, *this);
}

void zuTestBlockResource::Save(zuBaseStream& stream) const
{
    zuUnnamedObject::Save(stream);
    stream.Write(mSize);
    const zuBlockResourceSave block(stream, *this);
    block.writeBlock(stream, mData, mSize);
}

bool zuTestBlockResource::Equals(const zuRttiInterface* other) const
{
    return zuUnnamedObject::Equals(other);
}

bool zuTestBlockResource::Clone(zuRttiInterface*& target) const
{
    return zuUnnamedObject::Clone(target);
}

void zuTestBlockResource::Load(zuBaseStream& stream, zuLink* link)
{
    zuUnnamedObject::Load(stream, link);
    int size = 0;
    stream.Read(size);
    if (!stream.CheckCount(size, 1))
        return;
    mSize = size;
    mData = readBlock(stream, static_cast<uint64_t>(mSize));
}

} // namespace zu::test
