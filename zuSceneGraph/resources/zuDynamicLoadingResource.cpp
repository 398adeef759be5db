#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/objects/zuRtti.h>
#include <zuSceneGraph/resources/zuBlockResourceHandler.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResourceHandler.h>
#include <zuSceneGraph/resources/zuRC_ResourceRegistry.h>
#include <zuSceneGraph/stream/zuStream.h>

#include <map>
#include <functional>
#include <memory>
#include <string_view>
#include <utility>

namespace zu {

uint64_t zuDynamicLoadingResource::msResourceIdentifier = 0;
unsigned int zuDynamicLoadingResource::msHandlerIdentifier = 0;
const std::string zuDynamicLoadingResource::msNoPath;

namespace {

// The transparent comparison finds a type's policy by its name without building a string.
using LoadPolicyTable = std::map<std::string, bool, std::less<>>;
using RequestBuilderTable = std::map<unsigned int, zuDynamicLoadingResource::RequestBuilderRecord>;

std::unique_ptr<LoadPolicyTable>& loadPolicies()
{
    static std::unique_ptr<LoadPolicyTable> table;
    return table;
}

RequestBuilderTable& requestBuilders()
{
    static RequestBuilderTable table;
    return table;
}

bool registerSide(zuDynamicLoadingResource::RequestBuilders& side, zuDynamicLoadingResource::RequestFromHandler load,
                  zuDynamicLoadingResource::RequestFromHandler remove,
                  zuDynamicLoadingResource::RequestFromResource loadResource,
                  zuDynamicLoadingResource::RequestFromResource removeResource)
{
    if (side.registered)
        return false;
    side.registered = true;
    side.load = load;
    side.remove = remove;
    side.loadResource = loadResource;
    side.removeResource = removeResource;
    return true;
}

const zuDynamicLoadingResource::RequestBuilders* cpuSide(unsigned int handlerType)
{
    const zuDynamicLoadingResource::RequestBuilderRecord* record =
        zuDynamicLoadingResource::GetRequestBuilder(handlerType);
    return record && record->cpu.registered ? &record->cpu : nullptr;
}

const zuDynamicLoadingResource::RequestBuilders* gpuSide(unsigned int handlerType)
{
    const zuDynamicLoadingResource::RequestBuilderRecord* record =
        zuDynamicLoadingResource::GetRequestBuilder(handlerType);
    return record && record->gpu.registered ? &record->gpu : nullptr;
}

zuRequestInterfaceForDynamicResource* build(const zuDynamicLoadingResource::RequestBuilders* side,
                                            zuDynamicLoadingResource::RequestFromHandler zuDynamicLoadingResource::RequestBuilders::*factory,
                                            unsigned long resourceID, zuResourceRequestClientInterface* client,
                                            const zuDynamicLoadingResourceHandler* handler)
{
    if (!side || !(side->*factory))
        return nullptr;
    return (side->*factory)(resourceID, client, handler);
}

zuRequestInterfaceForDynamicResource* build(const zuDynamicLoadingResource::RequestBuilders* side,
                                            zuDynamicLoadingResource::RequestFromResource zuDynamicLoadingResource::RequestBuilders::*factory,
                                            zuDynamicLoadingResource* resource, zuResourceRequestClientInterface* client)
{
    if (!side || !(side->*factory))
        return nullptr;
    return (side->*factory)(resource, client);
}

} // namespace

zuDynamicLoadingResource::zuDynamicLoadingResource(const zuDynamicLoadingResource& other)
    : mStreamOffset(other.mStreamOffset), mStreamVersion(other.mStreamVersion),
      mResourceFilePath(other.mResourceFilePath)
{
}

zuDynamicLoadingResource& zuDynamicLoadingResource::operator=(const zuDynamicLoadingResource& other)
{
    // The state is this object's own: a request under way stays under way.
    if (this != &other)
        other.copyStreamInfo(this);
    return *this;
}

zuDynamicLoadingResource::~zuDynamicLoadingResource()
{
    if (mResourceState == RESOURCE_REQUEST_UNDER_WAY)
        zuRC_ResourceRegistry::forget(this);
}

void zuDynamicLoadingResource::storeStreamInfo(zuBaseStream* stream) const
{
    if (!stream)
        return;
    // Asked first: the position holds a counted reference to the path, worth taking only
    // when it is kept.
    if (stream->isKeepingMovedResources())
        stream->noteMovedResource(this, getStreamPosition());
    // Only a container has a path; a plain stream's is null.
    if (mResourceFilePath != stream->GetSharedPath())
        mResourceFilePath = stream->GetSharedPath();
    mStreamOffset = stream->GetOffset();
    mStreamVersion = stream->GetVersion();
}

char* zuDynamicLoadingResource::readBlock(zuBaseStream& stream, uint64_t size) const
{
    storeStreamInfo(&stream);
    char* block = size > 0 && hasToLoad() ? zuBlockResourceHandler::AllocateBlock(size) : nullptr;
    if (block)
        stream.Read(static_cast<int>(size), block);
    else
        stream.Skip(size);
    return block;
}

void zuDynamicLoadingResource::copyStreamInfo(zuDynamicLoadingResource* target) const
{
    if (!target || target == this)
        return;
    target->mStreamOffset = mStreamOffset;
    target->mStreamVersion = mStreamVersion;
    target->mResourceFilePath = mResourceFilePath;
}

void zuDynamicLoadingResource::clearStreamInfo()
{
    mStreamOffset = 0;
    mStreamVersion = zuStreamVersion();
    mResourceFilePath.reset();
}

void zuDynamicLoadingResource::swapFileInfos(zuDynamicLoadingResource& other)
{
    std::swap(mStreamOffset, other.mStreamOffset);
    std::swap(mStreamVersion, other.mStreamVersion);
    mResourceFilePath.swap(other.mResourceFilePath);
}

bool zuDynamicLoadingResource::hasToLoad() const
{
    // A block that cannot be reloaded later must be read now, whatever the policy says.
    if (getResourceFilePath().empty())
        return true;
    const std::unique_ptr<LoadPolicyTable>& table = loadPolicies();
    if (!table)
        return true;
    const char* name = getTypeName();
    const auto found = table->find(std::string_view(name ? name : ""));
    return found == table->end() || found->second;
}

unsigned int zuDynamicLoadingResource::GetNextResourceIdentifier()
{
    if (msResourceIdentifier == 0)
        msResourceIdentifier = 1;
    else if (msResourceIdentifier <= 0xFFFFFFFFull)
        msResourceIdentifier <<= 1;
    return msResourceIdentifier <= 0xFFFFFFFFull ? static_cast<unsigned int>(msResourceIdentifier) : 0u;
}

unsigned int zuDynamicLoadingResource::GetCurrentResourceIdentifier()
{
    return msResourceIdentifier <= 0xFFFFFFFFull ? static_cast<unsigned int>(msResourceIdentifier) : 0u;
}

unsigned int zuDynamicLoadingResource::GetNextHandlerIdentifier()
{
    return ++msHandlerIdentifier;
}

unsigned int zuDynamicLoadingResource::GetCurrentHandlerIdentifier()
{
    return msHandlerIdentifier;
}

void zuDynamicLoadingResource::SetLoadPolicy(const zuRtti& type, bool load)
{
    CreateLoadPolicies();
    (*loadPolicies())[type.GetName()] = load;
}

bool zuDynamicLoadingResource::GetLoadPolicy(const zuRtti& type, bool& load)
{
    const std::unique_ptr<LoadPolicyTable>& table = loadPolicies();
    if (!table)
        return false;
    const auto found = table->find(type.GetName());
    if (found == table->end())
        return false;
    load = found->second;
    return true;
}

void zuDynamicLoadingResource::RemoveLoadPolicy(const zuRtti& type)
{
    if (loadPolicies())
        loadPolicies()->erase(type.GetName());
}

void zuDynamicLoadingResource::ClearLoadPolicies()
{
    loadPolicies().reset();
}

void zuDynamicLoadingResource::ClearLoadingPolicies()
{
    if (loadPolicies())
        loadPolicies()->clear();
}

void zuDynamicLoadingResource::CreateLoadPolicies()
{
    if (!loadPolicies())
        loadPolicies() = std::make_unique<LoadPolicyTable>();
}

bool zuDynamicLoadingResource::RegisterCPURequestBuilder(unsigned int handlerType, RequestFromHandler load,
                                                         RequestFromHandler remove, RequestFromResource loadResource,
                                                         RequestFromResource removeResource)
{
    return registerSide(requestBuilders()[handlerType].cpu, load, remove, loadResource, removeResource);
}

bool zuDynamicLoadingResource::RegisterGPURequestBuilder(unsigned int handlerType, RequestFromHandler load,
                                                         RequestFromHandler remove, RequestFromResource loadResource,
                                                         RequestFromResource removeResource)
{
    return registerSide(requestBuilders()[handlerType].gpu, load, remove, loadResource, removeResource);
}

void zuDynamicLoadingResource::UnregisterRequestBuilder(unsigned int handlerType)
{
    requestBuilders().erase(handlerType);
}

const zuDynamicLoadingResource::RequestBuilderRecord* zuDynamicLoadingResource::GetRequestBuilder(unsigned int handlerType)
{
    const RequestBuilderTable& table = requestBuilders();
    const auto found = table.find(handlerType);
    return found == table.end() ? nullptr : &found->second;
}

zuRequestInterfaceForDynamicResource* zuDynamicLoadingResource::CreateCPULoadRequest(
    unsigned long resourceID, zuResourceRequestClientInterface* client, const zuDynamicLoadingResourceHandler* handler)
{
    if (!handler)
        return nullptr;
    return build(cpuSide(handler->getResourceHandlerType()), &RequestBuilders::load, resourceID, client, handler);
}

zuRequestInterfaceForDynamicResource* zuDynamicLoadingResource::CreateCPUDeleteRequest(
    unsigned long resourceID, zuResourceRequestClientInterface* client, const zuDynamicLoadingResourceHandler* handler)
{
    if (!handler)
        return nullptr;
    return build(cpuSide(handler->getResourceHandlerType()), &RequestBuilders::remove, resourceID, client, handler);
}

zuRequestInterfaceForDynamicResource* zuDynamicLoadingResource::CreateGPULoadRequest(
    unsigned long resourceID, zuResourceRequestClientInterface* client, const zuDynamicLoadingResourceHandler* handler)
{
    if (!handler)
        return nullptr;
    return build(gpuSide(handler->getResourceHandlerType()), &RequestBuilders::load, resourceID, client, handler);
}

zuRequestInterfaceForDynamicResource* zuDynamicLoadingResource::CreateGPUDeleteRequest(
    unsigned long resourceID, zuResourceRequestClientInterface* client, const zuDynamicLoadingResourceHandler* handler)
{
    if (!handler)
        return nullptr;
    return build(gpuSide(handler->getResourceHandlerType()), &RequestBuilders::remove, resourceID, client, handler);
}

zuRequestInterfaceForDynamicResource* zuDynamicLoadingResource::CreateCPULoadRequest(
    zuDynamicLoadingResource* resource, zuResourceRequestClientInterface* client)
{
    if (!resource)
        return nullptr;
    return build(cpuSide(resource->getResourceHandlerType()), &RequestBuilders::loadResource, resource, client);
}

zuRequestInterfaceForDynamicResource* zuDynamicLoadingResource::CreateCPUDeleteRequest(
    zuDynamicLoadingResource* resource, zuResourceRequestClientInterface* client)
{
    if (!resource)
        return nullptr;
    return build(cpuSide(resource->getResourceHandlerType()), &RequestBuilders::removeResource, resource, client);
}

zuRequestInterfaceForDynamicResource* zuDynamicLoadingResource::CreateGPULoadRequest(
    zuDynamicLoadingResource* resource, zuResourceRequestClientInterface* client)
{
    if (!resource)
        return nullptr;
    return build(gpuSide(resource->getResourceHandlerType()), &RequestBuilders::loadResource, resource, client);
}

zuRequestInterfaceForDynamicResource* zuDynamicLoadingResource::CreateGPUDeleteRequest(
    zuDynamicLoadingResource* resource, zuResourceRequestClientInterface* client)
{
    if (!resource)
        return nullptr;
    return build(gpuSide(resource->getResourceHandlerType()), &RequestBuilders::removeResource, resource, client);
}

void zuDynamicLoadingResource::DescribeBlock(zuFieldVisitor& visitor) const
{
    visitor.BeginGroup("block");
    visitor.Integer("bytes", static_cast<int64_t>(getCPUSize()));
    visitor.Text("file", getResourceFilePath());
    visitor.Integer("offset", static_cast<int64_t>(mStreamOffset));
    visitor.EndGroup();
}

} // namespace zu
