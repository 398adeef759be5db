#pragma once

// A small dynamically loaded resource with a byte block, standing in for the buffers in
// the tests of the resource machinery: it is persistable (its block follows its size, at
// the offset storeStreamInfo records), bindable, and registers the generic CPU requests
// under a handler type of its own, as every block resource kind does.

#include <zuSceneGraph/objects/zuUnnamedObject.h>
#include <zuSceneGraph/resources/zuBindable.h>
#include <zuSceneGraph/resources/zuBlockResourceHandler.h>
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
    static void RegisterRequests();
    static unsigned int msTestResourceID;
    static unsigned int msTestHandlerID;
    static int msLiving;

    unsigned long getResourceID() const override { return GetID(); }
    zuDynamicLoadingResourceHandler* createHandler() const override;
    unsigned int getResourceType() const override { return msTestResourceID; }
    unsigned int getResourceHandlerType() const override { return msTestHandlerID; }
    uint64_t getGPUSize() const override { return getCPUSize(); }
    bool isGPUResident() const override { return getIdentifier() != nullptr; }
    bool isGPUFreeable() const override { return GetReferences() == 1; }
    uint64_t getCPUSize() const override { return static_cast<uint64_t>(mSize); }
    bool isCPUResident() const override { return mData != nullptr; }
    bool isCPUFreeable() const override { return GetReferences() == 1; }
    const char* getTypeName() const override { return GetType().GetName(); }

    const zuRtti& GetType() const override { return TYPE; }
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;

private:
    friend class zuTestBlockHandler;

    char* mData = nullptr;
    int mSize = 0;
};

// The handler of zuTestBlockResource: the block lies in the file as in memory.
class zuTestBlockHandler : public zuBlockResourceHandler {
public:
    zuDynamicLoadingResourceHandler* clone() const override { return new zuTestBlockHandler(*this); }
    unsigned int getResourceHandlerType() const override { return zuTestBlockResource::msTestHandlerID; }
    char* getCPUBlock(zuDynamicLoadingResource* resource) const override
    {
        return static_cast<zuTestBlockResource*>(resource)->mData;
    }
    void setCPUBlock(zuDynamicLoadingResource* resource, char* block) const override
    {
        static_cast<zuTestBlockResource*>(resource)->mData = block;
    }
};

} // namespace zu::test
