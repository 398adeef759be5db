#pragma once

// A small dynamically loaded resource with a byte block, standing in for the buffers in
// the tests of the resource machinery: it is persistable (its block follows its size, at
// the offset storeStreamInfo records), bindable, and registers the generic CPU requests
// under a handler type of its own, as every block resource kind does.

#include <zuSceneGraph/objects/zuUnnamedObject.h>
#include <zuSceneGraph/resources/zuBindable.h>
#include <zuSceneGraph/resources/zuBlockResource.h>
#include <zuSceneGraph/resources/zuBlockResourceHandlerOf.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <cstdint>

namespace zu::test {

class zuTestBlockResource : public zuBindable, public zuDynamicLoadingResource, public zuUnnamedObject {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuTestBlockResource>(stream); }
    static void RegisterFactory() { RegisterFactoryFunction(TYPE.GetName(), Factory, CreateDefault<zuTestBlockResource>); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }

    zuTestBlockResource() { ++msLiving; }
    // A block of `size` bytes holding Pattern(seed, i).
    zuTestBlockResource(int size, int seed);
    ~zuTestBlockResource() override;

    static char Pattern(int seed, int i) { return static_cast<char>((seed * 31 + i * 7 + (i >> 8)) & 0xFF); }
    // True when resident and every byte is Pattern(seed, i).
    bool HasPattern(int seed) const;
    const char* GetData() const { return mData; }
    int GetSize() const { return mSize; }

    // Takes the resource-type and handler-type numbers once and registers the generic CPU
    // requests for the handler type.
    static void RegisterRequests() { zuBlockResourceRequests::Register(msTestResourceID, msTestHandlerID); }
    static unsigned int GetResourceHandlerType() { return msTestHandlerID; }
    static unsigned int msTestResourceID;
    static unsigned int msTestHandlerID;
    static int msLiving;

    ZU_BLOCK_RESOURCE_OPERATIONS(zuUnnamedObject, msTestResourceID, msTestHandlerID, mSize);

private:
    char* mData = nullptr;
    int mSize = 0;
};

// The handler of zuTestBlockResource: the block lies in the file as in memory.
class zuTestBlockHandler : public zuBlockResourceHandlerOf<zuTestBlockResource, zuTestBlockHandler> {};

} // namespace zu::test
