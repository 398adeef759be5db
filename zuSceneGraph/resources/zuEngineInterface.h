#pragma once

namespace zu {

class zuDynamicLoadingResource;

// What the resource requests need from the engine that owns the scene when they are
// finalised. The controller's finalise step passes the application's engine (or a default
// one) to each request.
class zuEngineInterface {
public:
    virtual ~zuEngineInterface() = default;

    // The live resource of identifier `resourceID`, or null when it is gone. The default
    // answers from the registry of resources that have a request under way in a resource
    // controller (zuRC_ResourceRegistry); an engine that keeps its own table of resources
    // may answer from it instead.
    virtual zuDynamicLoadingResource* findDynamicResource(unsigned long resourceID);
};

} // namespace zu
