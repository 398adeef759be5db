#pragma once

#include <zuSceneGraph/stream/zuStreamPosition.h>
#include <zuSceneGraph/stream/zuStreamVersion.h>

#include <cstdint>
#include <memory>
#include <string>

namespace zu {

class zuBaseStream;
class zuRtti;
class zuDynamicLoadingResourceHandler;
class zuFieldVisitor;
class zuRequestInterfaceForDynamicResource;
class zuResourceRequestClientInterface;

// A resource whose data block (vertex bytes, indices, pixels) can leave memory while the
// object stays in the scene, and be read back from the file it was loaded from or saved to.
//
// The resource remembers where its block lies (file path, 64-bit offset, stream version);
// per-kind requests, built through the request-builder table of the resource's handler
// type, read the block back (CPU load) or drop it (CPU delete), either at once on the
// caller's thread (zuRendererInterface) or on the worker threads of a zuResourceController.
// Whether a stream load reads a block at all is the load policy of the resource's type.
//
// Resource-type numbers are single bits (1, 2, 4, ...) so that a set of types fits in one
// mask; handler-type numbers count 1, 2, 3, ...
//
// The static tables (load policies, request builders) are filled at library start and by
// the application's thread before loads begin; they take no lock.
class zuDynamicLoadingResource {
public:
    // A 32-bit enumeration in files and in memory.
    enum DynamicResourceState : int32_t {
        RESOURCE_IDLE = 0,
        // A request for the resource is queued or running; the synchronous loads and
        // deletes of zuRendererInterface leave such a resource alone.
        RESOURCE_REQUEST_UNDER_WAY = 1,
        // A buffer that the library's generated geometry rewrites in memory; it has no file
        // and the resource controller refuses requests for it.
        RESOURCE_GENERATED = 2,
    };

    // The two forms of a request factory: from a resource identifier and a handler snapshot
    // (no access to the resource), or from the resource itself. The caller owns the result.
    using RequestFromHandler = zuRequestInterfaceForDynamicResource* (*)(unsigned long resourceID,
                                                                         zuResourceRequestClientInterface* client,
                                                                         const zuDynamicLoadingResourceHandler* handler);
    using RequestFromResource = zuRequestInterfaceForDynamicResource* (*)(zuDynamicLoadingResource* resource,
                                                                          zuResourceRequestClientInterface* client);

    // The load and delete factories of one side (CPU or GPU) of a handler type.
    struct RequestBuilders {
        bool registered = false;
        RequestFromHandler load = nullptr;
        RequestFromHandler remove = nullptr;
        RequestFromResource loadResource = nullptr;
        RequestFromResource removeResource = nullptr;
    };
    // The record of one handler type: its CPU and GPU sides are registered independently.
    struct RequestBuilderRecord {
        RequestBuilders cpu;
        RequestBuilders gpu;
    };

    zuDynamicLoadingResource() = default;
    // A copy refers to the same file block; no request is under way for it.
    zuDynamicLoadingResource(const zuDynamicLoadingResource& other);
    zuDynamicLoadingResource& operator=(const zuDynamicLoadingResource& other);
    // A resource destroyed while a request for it is under way leaves the registry of the
    // resource controller, so that the request's finalisation skips it.
    virtual ~zuDynamicLoadingResource();

    // The virtual operations keep this slot order.
    virtual unsigned long getResourceID() const = 0;
    // A new handler filled from the resource; the caller owns it.
    virtual zuDynamicLoadingResourceHandler* createHandler() const = 0;
    virtual unsigned int getResourceType() const = 0;
    virtual unsigned int getResourceHandlerType() const = 0;
    virtual uint64_t getGPUSize() const = 0;
    virtual bool isGPUResident() const = 0;
    virtual bool isGPUFreeable() const = 0;
    virtual uint64_t getCPUSize() const = 0;
    virtual bool isCPUResident() const = 0;
    virtual bool isCPUFreeable() const = 0;
    // The name of the resource's run-time type: the key of its load policy.
    virtual const char* getTypeName() const = 0;

    DynamicResourceState getResourceState() const { return mResourceState; }
    void setResourceState(DynamicResourceState state) { mResourceState = state; }
    // Empty when the block never came from or went to a file.
    const std::string& getResourceFilePath() const { return mResourceFilePath ? *mResourceFilePath : msNoPath; }
    // The same path as the one string that every resource recorded from a stream load
    // shares (null when there is none): a handler keeps it without a copy.
    const std::shared_ptr<const std::string>& getSharedResourceFilePath() const { return mResourceFilePath; }
    uint64_t getStreamOffset() const { return mStreamOffset; }
    const zuStreamVersion& getStreamVersion() const { return mStreamVersion; }

    // Records where the next bytes of `stream` go or come from: the name of a zuStream
    // container (the path given to its Load or Save; "" for a plain zuBaseStream, which has
    // no file), its absolute offset and its version. Save and Load call it just before the
    // block. A stream that keeps moved resources (zuBaseStream::keepMovedResources) is told
    // where the block was before.
    void storeStreamInfo(zuBaseStream* stream) const;
    // What a Load does at its block: records where the block starts (storeStreamInfo), then
    // reads `size` bytes into a new block when the resource must be loaded now and the
    // memory is there, or else skips them, so that the resource stays non-resident and can
    // be loaded later from the recorded file. The new block (freed with FreeBlock), or null.
    char* readBlock(zuBaseStream& stream, uint64_t size) const;
    // Gives `target` this resource's offset, version and path.
    void copyStreamInfo(zuDynamicLoadingResource* target) const;
    // Forgets the file: the block now exists only in memory (a kind whose block is
    // replaced in memory calls it, so that no delete drops the new block for the old one).
    void clearStreamInfo();
    // Exchanges offset, version and path with `other`.
    void swapFileInfos(zuDynamicLoadingResource& other);
    // Offset, version and path as one value: a writer whose save failed puts back what its
    // Save calls recorded (const, as storeStreamInfo is).
    zuStreamPosition getStreamPosition() const { return {mStreamOffset, mStreamVersion, mResourceFilePath}; }
    void setStreamPosition(const zuStreamPosition& position) const
    {
        mStreamOffset = position.offset;
        mStreamVersion = position.version;
        mResourceFilePath = position.path;
    }
    // True when the block must be read now: always when there is no file to read it from
    // later; otherwise the load policy of the type when one is set, else true.
    bool hasToLoad() const;
    // Reports the block's size in memory and where it is kept in a file (no file: "" and
    // 0), as the group "block".
    void DescribeBlock(zuFieldVisitor& visitor) const;

    // Resource-type numbers: 1 the first time, then each call doubles the previous value.
    // Once the 32 bits are used up the result is 0.
    static unsigned int GetNextResourceIdentifier();
    static unsigned int GetCurrentResourceIdentifier();
    // Handler-type numbers: 1, 2, 3, ...
    static unsigned int GetNextHandlerIdentifier();
    static unsigned int GetCurrentHandlerIdentifier();

    // The load-policy table, keyed by the type's name: whether stream loads read the blocks
    // of resources of that `type` (`load` true) or leave them in the file to be read back
    // on demand (false; as zuVertexBuffer::TYPE, zuIndexBuffer::TYPE, zuImage::TYPE).
    // Setting a policy creates the table when needed; GetLoadPolicy is true (and sets
    // `load`) when a policy exists.
    static void SetLoadPolicy(const zuRtti& type, bool load);
    static bool GetLoadPolicy(const zuRtti& type, bool& load);
    // Removes the policy of one type (its blocks are then read by every load).
    static void RemoveLoadPolicy(const zuRtti& type);
    // Frees the table (library end).
    static void ClearLoadPolicies();
    // Removes every policy and keeps the table.
    static void ClearLoadingPolicies();
    // Creates the table when it does not exist.
    static void CreateLoadPolicies();

    // Fill one side of a handler type's record. False, keeping the first registration,
    // when that side is registered already.
    static bool RegisterCPURequestBuilder(unsigned int handlerType, RequestFromHandler load,
                                          RequestFromHandler remove, RequestFromResource loadResource,
                                          RequestFromResource removeResource);
    static bool RegisterGPURequestBuilder(unsigned int handlerType, RequestFromHandler load,
                                          RequestFromHandler remove, RequestFromResource loadResource,
                                          RequestFromResource removeResource);
    // Clears both sides of the record.
    static void UnregisterRequestBuilder(unsigned int handlerType);
    // Null when the handler type has no record.
    static const RequestBuilderRecord* GetRequestBuilder(unsigned int handlerType);

    // Build a request through the record of the handler type (of the given handler, or of
    // the resource); null when no builder of that kind is registered or the argument is
    // null. The caller owns the request.
    static zuRequestInterfaceForDynamicResource* CreateCPULoadRequest(unsigned long resourceID,
                                                                      zuResourceRequestClientInterface* client,
                                                                      const zuDynamicLoadingResourceHandler* handler);
    static zuRequestInterfaceForDynamicResource* CreateCPUDeleteRequest(unsigned long resourceID,
                                                                        zuResourceRequestClientInterface* client,
                                                                        const zuDynamicLoadingResourceHandler* handler);
    static zuRequestInterfaceForDynamicResource* CreateGPULoadRequest(unsigned long resourceID,
                                                                      zuResourceRequestClientInterface* client,
                                                                      const zuDynamicLoadingResourceHandler* handler);
    static zuRequestInterfaceForDynamicResource* CreateGPUDeleteRequest(unsigned long resourceID,
                                                                        zuResourceRequestClientInterface* client,
                                                                        const zuDynamicLoadingResourceHandler* handler);
    static zuRequestInterfaceForDynamicResource* CreateCPULoadRequest(zuDynamicLoadingResource* resource,
                                                                      zuResourceRequestClientInterface* client);
    static zuRequestInterfaceForDynamicResource* CreateCPUDeleteRequest(zuDynamicLoadingResource* resource,
                                                                        zuResourceRequestClientInterface* client);
    static zuRequestInterfaceForDynamicResource* CreateGPULoadRequest(zuDynamicLoadingResource* resource,
                                                                      zuResourceRequestClientInterface* client);
    static zuRequestInterfaceForDynamicResource* CreateGPUDeleteRequest(zuDynamicLoadingResource* resource,
                                                                        zuResourceRequestClientInterface* client);

private:
    // Written by const Save and Load through storeStreamInfo.
    mutable uint64_t mStreamOffset = 0;
    mutable zuStreamVersion mStreamVersion;
    DynamicResourceState mResourceState = RESOURCE_IDLE;
    // Shared with the stream and every other resource it loaded: a load of many resources
    // then copies no path. Null when the block never came from or went to a file.
    mutable std::shared_ptr<const std::string> mResourceFilePath;
    static const std::string msNoPath;

    // Kept wider than the numbers handed out, so that running out of bits is seen.
    static uint64_t msResourceIdentifier;
    static unsigned int msHandlerIdentifier;
};

} // namespace zu
