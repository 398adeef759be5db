#include <zuSceneGraph/resources/zuBlockResourceHandler.h>

#include <zuSceneGraph/objects/zuObjectPool.h>
#include <zuSceneGraph/resources/zuBlockReader.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>

#include <sys/mman.h>

#include <cstddef>
#include <cstring>
#include <limits>
#include <new>

namespace zu {

const std::string zuBlockResourceHandler::msNoPath;

void zuBlockResourceHandler::setBlockHandler(const zuDynamicLoadingResource* resource)
{
    if (!resource)
        return;
    mCPUSize = resource->getCPUSize();
    mGPUSize = resource->getGPUSize();
    mStreamOffset = resource->getStreamOffset();
    mStreamVersion = resource->getStreamVersion();
    mResourceFilePath = resource->getSharedResourceFilePath();
}

bool zuBlockResourceHandler::readCPUBlock(std::FILE* file, char* block) const
{
    zuBlockReader reader(file);
    return readCPUBlock(reader, block);
}

bool zuBlockResourceHandler::readCPUBlock(zuBlockReader& reader, char* block) const
{
    return reader.read(block, mCPUSize);
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
    char* block = static_cast<char*>(zuObjectPool::allocateBlock(static_cast<size_t>(size)));
    if (block && size >= (uint64_t(4) << 20))
        AdviseHugePages(block, size);
    return block;
}

void zuBlockResourceHandler::AdviseHugePages(const void* block, uint64_t bytes)
{
    constexpr uintptr_t HUGE_PAGE = uintptr_t(2) << 20;
    const uintptr_t start = (reinterpret_cast<uintptr_t>(block) + HUGE_PAGE - 1) & ~(HUGE_PAGE - 1);
    const uintptr_t stop = (reinterpret_cast<uintptr_t>(block) + bytes) & ~(HUGE_PAGE - 1);
    if (stop > start)
        ::madvise(reinterpret_cast<void*>(start), stop - start, MADV_HUGEPAGE);
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
    zuObjectPool::releaseBlock(block);
}

} // namespace zu
