#include <zuSceneGraph/resources/zuBlockResourceSave.h>

#include <zuSceneGraph/resources/zuBlockResourceHandler.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <memory>

namespace zu {

namespace {

std::string unreadableBlock(const zuDynamicLoadingResource& resource)
{
    if (resource.getResourceFilePath().empty())
        return "its block is not in memory and it has no file to read it from";
    return "its block is not in memory and cannot be read from \"" + resource.getResourceFilePath() + "\" at offset "
        + std::to_string(resource.getStreamOffset());
}

} // namespace

zuBlockResourceSave::zuBlockResourceSave(zuBaseStream& stream, const zuDynamicLoadingResource& resource)
    : mResource(resource), mScope(&resource, true), mReadable(resource.isCPUResident() || resource.getCPUSize() == 0)
{
    if (!mReadable)
        Refuse(stream, resource, unreadableBlock(resource));
}

void zuBlockResourceSave::writeBlock(zuBaseStream& stream, const char* data, int size) const
{
    if (mReadable)
        mResource.storeStreamInfo(&stream);
    if (data)
        stream.Write(size, data);
    else
        stream.WriteZeros(static_cast<uint64_t>(size));
}

void zuBlockResourceSave::Check(zuBaseStream& stream, const zuDynamicLoadingResource& resource)
{
    if (resource.isCPUResident() || resource.getCPUSize() == 0)
        return;
    // The block is read when its record is written; here its file need only hold it.
    const std::unique_ptr<zuBlockResourceHandler> handler(zuBlockResourceHandler::CreateFor(&resource));
    const std::string& path = resource.getResourceFilePath();
    const int64_t size = path.empty() ? -1 : stream.GetFileSizeForSave(path);
    if (size < 0 || !handler || static_cast<uint64_t>(size) < resource.getStreamOffset() + handler->getMinFileBytes())
        Refuse(stream, resource, unreadableBlock(resource));
}

void zuBlockResourceSave::Refuse(zuBaseStream& stream, const zuDynamicLoadingResource& resource,
                                 const std::string& reason)
{
    stream.refuseSave(std::string("Cannot save \"") + resource.getTypeName() + "\" (object "
                      + std::to_string(resource.getResourceID()) + "): " + reason);
}

} // namespace zu
