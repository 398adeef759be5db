#include <zuSceneGraph/resources/zuBlockResourceHandler.h>

#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>

#include <cstddef>
#include <cstring>
#include <limits>
#include <new>

namespace zu {

void zuBlockResourceHandler::setBlockHandler(const zuDynamicLoadingResource* resource)
{
    if (!resource)
        return;
    mCPUSize = resource->getCPUSize();
    mGPUSize = resource->getGPUSize();
    mStreamOffset = resource->getStreamOffset();
    mStreamVersion = resource->getStreamVersion();
    mResourceFilePath = resource->getResourceFilePath();
}

bool zuBlockResourceHandler::readCPUBlock(std::FILE* file, char* block) const
{
    return ReadBytes(file, block, mCPUSize);
}

zuBlockResourceHandler* zuBlockResourceHandler::CloneFrom(const zuDynamicLoadingResourceHandler* handler)
{
    if (!handler || !dynamic_cast<const zuBlockResourceHandler*>(handler))
        return nullptr;
    zuDynamicLoadingResourceHandler* copy = handler->clone();
    zuBlockResourceHandler* block = dynamic_cast<zuBlockResourceHandler*>(copy);
    if (!block)
        delete copy;
    return block;
}

zuBlockResourceHandler* zuBlockResourceHandler::CreateFor(const zuDynamicLoadingResource* resource)
{
    if (!resource)
        return nullptr;
    zuDynamicLoadingResourceHandler* handler = resource->createHandler();
    zuBlockResourceHandler* block = dynamic_cast<zuBlockResourceHandler*>(handler);
    if (!block)
        delete handler;
    return block;
}

char* zuBlockResourceHandler::AllocateBlock(uint64_t size)
{
    if (size > std::numeric_limits<size_t>::max())
        return nullptr;
    return new (std::nothrow) char[static_cast<size_t>(size)];
}

char* zuBlockResourceHandler::NewBlock(int64_t size, bool zeroed)
{
    if (size <= 0)
        return nullptr;
    if (size > std::numeric_limits<int>::max())
        throw std::bad_alloc();
    char* block = AllocateBlock(static_cast<uint64_t>(size));
    if (!block)
        throw std::bad_alloc();
    if (zeroed)
        std::memset(block, 0, static_cast<size_t>(size));
    return block;
}

void zuBlockResourceHandler::FreeBlock(char* block)
{
    delete[] block;
}

bool zuBlockResourceHandler::ReadBytes(std::FILE* file, void* destination, uint64_t size)
{
    if (size == 0)
        return true;
    if (!file || !destination || size > std::numeric_limits<size_t>::max())
        return false;
    return std::fread(destination, 1, static_cast<size_t>(size), file) == static_cast<size_t>(size);
}

} // namespace zu
