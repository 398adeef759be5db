#pragma once

#include <zuSceneGraph/resources/zuBlockResourceHandler.h>

namespace zu {

// The part of a block resource kind's handler that only names the kind: its handler type
// (Resource::GetResourceHandlerType()), the copy, and the access to the kind's block
// pointer `mData` (a kind declared with ZU_BLOCK_RESOURCE_OPERATIONS lets this class in).
// `Handler` is the concrete handler deriving from it.
template <class Resource, class Handler> class zuBlockResourceHandlerOf : public zuBlockResourceHandler {
public:
    zuDynamicLoadingResourceHandler* clone() const override { return new Handler(static_cast<const Handler&>(*this)); }
    unsigned int getResourceHandlerType() const override { return Resource::GetResourceHandlerType(); }
    // The requests check the handler type before they call these, so the resource is of
    // this kind.
    char* getCPUBlock(zuDynamicLoadingResource* resource) const override
    {
        return static_cast<Resource*>(resource)->mData;
    }
    void setCPUBlock(zuDynamicLoadingResource* resource, char* block) const override
    {
        static_cast<Resource*>(resource)->mData = block;
    }

protected:
    zuBlockResourceHandlerOf() = default;
    zuBlockResourceHandlerOf(const zuBlockResourceHandlerOf&) = default;
    zuBlockResourceHandlerOf& operator=(const zuBlockResourceHandlerOf&) = default;
};

} // namespace zu
