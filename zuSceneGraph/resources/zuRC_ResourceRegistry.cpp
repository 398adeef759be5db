#include <zuSceneGraph/resources/zuRC_ResourceRegistry.h>

#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>

#include <zuSystem/zuMutex.h>

#include <mutex>
#include <unordered_map>

namespace zu {

namespace {

struct Registry {
    zuMutex mutex;
    std::unordered_map<unsigned long, zuDynamicLoadingResource*> byIdentifier;
    // The destructor of a resource cannot ask for its identifier any more (the derived
    // parts that answer are gone), so it is found again by address.
    std::unordered_map<const zuDynamicLoadingResource*, unsigned long> byAddress;
};

// Never destroyed: a resource held by a static object may be destroyed after this file's
// statics are gone.
Registry& registry()
{
    static Registry* instance = new Registry;
    return *instance;
}

} // namespace

bool zuRC_ResourceRegistry::beginRequest(zuDynamicLoadingResource* resource)
{
    if (!resource || resource->getResourceState() != zuDynamicLoadingResource::RESOURCE_IDLE)
        return false;
    const unsigned long identifier = resource->getResourceID();
    Registry& r = registry();
    std::lock_guard<zuMutex> lock(r.mutex);
    if (!r.byIdentifier.emplace(identifier, resource).second)
        return false;
    r.byAddress.emplace(resource, identifier);
    resource->setResourceState(zuDynamicLoadingResource::RESOURCE_REQUEST_UNDER_WAY);
    return true;
}

void zuRC_ResourceRegistry::endRequest(unsigned long resourceID)
{
    Registry& r = registry();
    std::lock_guard<zuMutex> lock(r.mutex);
    const auto found = r.byIdentifier.find(resourceID);
    if (found == r.byIdentifier.end())
        return;
    zuDynamicLoadingResource* resource = found->second;
    r.byAddress.erase(resource);
    r.byIdentifier.erase(found);
    resource->setResourceState(zuDynamicLoadingResource::RESOURCE_IDLE);
}

zuDynamicLoadingResource* zuRC_ResourceRegistry::find(unsigned long resourceID)
{
    Registry& r = registry();
    std::lock_guard<zuMutex> lock(r.mutex);
    const auto found = r.byIdentifier.find(resourceID);
    return found == r.byIdentifier.end() ? nullptr : found->second;
}

void zuRC_ResourceRegistry::forget(const zuDynamicLoadingResource* resource)
{
    Registry& r = registry();
    std::lock_guard<zuMutex> lock(r.mutex);
    const auto found = r.byAddress.find(resource);
    if (found == r.byAddress.end())
        return;
    r.byIdentifier.erase(found->second);
    r.byAddress.erase(found);
}

size_t zuRC_ResourceRegistry::size()
{
    Registry& r = registry();
    std::lock_guard<zuMutex> lock(r.mutex);
    return r.byIdentifier.size();
}

} // namespace zu
