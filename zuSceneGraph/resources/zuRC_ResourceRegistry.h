#pragma once

#include <cstddef>

namespace zu {

class zuDynamicLoadingResource;

// The resources that have a request under way in a resource controller, by identifier.
//
// A resource enters when the controller accepts a request for it (its state becomes 1,
// "request under way") and leaves when that request is finalised or cancelled (state back
// to 0), or when the resource is destroyed first (its destructor removes it), so that the
// request's finalisation finds nothing and skips it. Only resources with a request under
// way are listed: creating and destroying the many resources of a load costs nothing here.
//
// A resource has at most one request under way. The registry is process-wide (a resource
// does not know which controller holds its request) and guarded by its own mutex.
class zuRC_ResourceRegistry {
public:
    // Lists the resource and sets its state to 1. False, changing nothing, when the
    // resource is null, already has a request under way (state 1), is a generated buffer
    // (state 2), or another live resource is listed under the same identifier.
    static bool beginRequest(zuDynamicLoadingResource* resource);
    // Unlists the resource of `resourceID` and sets its state back to 0; nothing when it
    // is not listed (destroyed meanwhile).
    static void endRequest(unsigned long resourceID);
    // The listed resource of `resourceID`, or null.
    static zuDynamicLoadingResource* find(unsigned long resourceID);
    // Called by a resource's destructor while its state is 1.
    static void forget(const zuDynamicLoadingResource* resource);
    // The number of listed resources.
    static size_t size();
};

} // namespace zu
