#pragma once

#include <zuSceneGraph/resources/zuBlockResourceHandler.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/resources/zuDynamicResourceCPUDeleteRequest.h>
#include <zuSceneGraph/resources/zuDynamicResourceCPULoadRequest.h>

namespace zu {

// The request set every block resource kind (vertex buffer, index buffer, image) registers:
// the generic CPU load and delete requests, which read or drop the one run of bytes its
// handler describes. The kinds differ only in the numbers they hold, so they share this.
class zuBlockResourceRequests {
public:
    // Takes the resource-type and handler-type numbers the first time (both 0 before) and
    // registers the generic CPU requests for the handler type. A second call keeps the
    // numbers and the first registration.
    static void Register(unsigned int& resourceType, unsigned int& handlerType);
    // Clears the request builders of the handler type; the numbers stay.
    static void Unregister(unsigned int handlerType);

    // The two builder forms of a request taking (identifier, client, handler). Null when the
    // handler (or the resource's handler) is not a zuBlockResourceHandler.
    template <class Request>
    static zuRequestInterfaceForDynamicResource* FromHandler(unsigned long resourceID,
                                                             zuResourceRequestClientInterface* client,
                                                             const zuDynamicLoadingResourceHandler* handler)
    {
        zuBlockResourceHandler* copy = zuBlockResourceHandler::CloneFrom(handler);
        return copy ? new Request(resourceID, client, copy) : nullptr;
    }
    template <class Request>
    static zuRequestInterfaceForDynamicResource* FromResource(zuDynamicLoadingResource* resource,
                                                              zuResourceRequestClientInterface* client)
    {
        zuBlockResourceHandler* handler = zuBlockResourceHandler::CreateFor(resource);
        return handler ? new Request(resource->getResourceID(), client, handler) : nullptr;
    }

    // The four factories Register installs, under the names the kinds publish.
    static constexpr auto& LoadFromHandler = FromHandler<zuDynamicResourceCPULoadRequest>;
    static constexpr auto& DeleteFromHandler = FromHandler<zuDynamicResourceCPUDeleteRequest>;
    static constexpr auto& LoadFromResource = FromResource<zuDynamicResourceCPULoadRequest>;
    static constexpr auto& DeleteFromResource = FromResource<zuDynamicResourceCPUDeleteRequest>;
};

} // namespace zu
