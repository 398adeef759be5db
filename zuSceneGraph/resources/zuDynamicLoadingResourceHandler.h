#pragma once

namespace zu {

// The snapshot of a resource that a request needs to find the resource's block again
// without touching the resource itself (a worker thread must not). Each resource kind has
// its own handler class; the handler-type number (zuDynamicLoadingResource::
// GetNextHandlerIdentifier) selects the request builders of the kind.
class zuDynamicLoadingResourceHandler {
public:
    virtual ~zuDynamicLoadingResourceHandler() = default;

    // A new copy of the same kind; the caller owns it.
    virtual zuDynamicLoadingResourceHandler* clone() const = 0;
    virtual unsigned int getResourceHandlerType() const = 0;

protected:
    zuDynamicLoadingResourceHandler() = default;
    zuDynamicLoadingResourceHandler(const zuDynamicLoadingResourceHandler&) = default;
    zuDynamicLoadingResourceHandler& operator=(const zuDynamicLoadingResourceHandler&) = default;
};

} // namespace zu
