#pragma once

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

    // The four factories Register installs, under the names the kinds publish.
    static constexpr auto& LoadFromHandler = zuDynamicResourceCPULoadRequest::CreateFromHandler;
    static constexpr auto& DeleteFromHandler = zuDynamicResourceCPUDeleteRequest::CreateFromHandler;
    static constexpr auto& LoadFromResource = zuDynamicResourceCPULoadRequest::CreateFromResource;
    static constexpr auto& DeleteFromResource = zuDynamicResourceCPUDeleteRequest::CreateFromResource;
};

} // namespace zu
