#include <zuSceneGraph/resources/zuDynamicResourceCPULoadRequest.h>

#include <zuSceneGraph/resources/zuBlockReader.h>
#include <zuSceneGraph/resources/zuBlockResourceHandler.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>

#include <cstdint>
#include <cstdio>
#include <limits>
#include <sys/types.h>

namespace zu {

static_assert(sizeof(off_t) == 8, "block offsets are 64-bit");

zuDynamicResourceCPULoadRequest::zuDynamicResourceCPULoadRequest(unsigned long resourceID,
                                                                 zuResourceRequestClientInterface* client,
                                                                 zuBlockResourceHandler* handler,
                                                                 SchedulingPolicy policy)
    : zuRequestInterfaceForDynamicResource(resourceID, client, policy), mHandler(handler)
{
}

zuDynamicResourceCPULoadRequest::~zuDynamicResourceCPULoadRequest()
{
    zuBlockResourceHandler::FreeBlock(mBlock);
    delete mHandler;
}

void zuDynamicResourceCPULoadRequest::execute(zuRC_WorkingThreadContext*)
{
    if (mBlock) {
        mStatus = STATUS_DONE;
        return;
    }
    if (!mHandler || mHandler->getResourceFilePath().empty()) {
        mStatus = STATUS_NO_FILE;
        return;
    }
    std::FILE* file = fopen64(mHandler->getResourceFilePath().c_str(), "rb");
    if (!file) {
        mStatus = STATUS_IO_ERROR;
        return;
    }
    const uint64_t offset = mHandler->getStreamOffset();
    if (offset > static_cast<uint64_t>(std::numeric_limits<off_t>::max())
        || fseeko(file, static_cast<off_t>(offset), SEEK_SET) != 0) {
        std::fclose(file);
        mStatus = STATUS_IO_ERROR;
        return;
    }
    zuBlockReader reader(file);
    readBlock(reader);
    std::fclose(file);
}

void zuDynamicResourceCPULoadRequest::readBlock(zuBlockReader& reader)
{
    char* block = zuBlockResourceHandler::AllocateBlock(mHandler->getCPUSize());
    if (!block) {
        mStatus = STATUS_OUT_OF_MEMORY;
        return;
    }
    if (mHandler->readCPUBlock(reader, block)) {
        mBlock = block;
        mStatus = STATUS_DONE;
    } else {
        zuBlockResourceHandler::FreeBlock(block);
        mStatus = STATUS_IO_ERROR;
    }
}

uint64_t zuDynamicResourceCPULoadRequest::getThreadCPUMemoryAllocation() const
{
    return mHandler ? mHandler->getCPUSize() : 0;
}

void zuDynamicResourceCPULoadRequest::cancelRequest()
{
    zuBlockResourceHandler::FreeBlock(mBlock);
    mBlock = nullptr;
}

void zuDynamicResourceCPULoadRequest::finalizeRequest(zuEngineInterface* engine)
{
    finalizeDynamicResourceRequest(findResource(engine), true, false);
}

void zuDynamicResourceCPULoadRequest::finalizeDynamicResourceRequest(zuDynamicLoadingResource* resource, bool, bool)
{
    if (!resource || !mBlock || !mHandler)
        return;
    if (resource->getResourceHandlerType() != mHandler->getResourceHandlerType())
        return;
    // A resource resized since the request was made would get a block of the wrong size.
    if (resource->getCPUSize() != mHandler->getCPUSize())
        return;
    char* current = mHandler->getCPUBlock(resource);
    if (current != mBlock)
        zuBlockResourceHandler::FreeBlock(current);
    mHandler->setCPUBlock(resource, mBlock);
    mBlock = nullptr;
}

} // namespace zu
