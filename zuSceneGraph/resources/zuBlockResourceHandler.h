#pragma once

#include <zuSceneGraph/resources/zuDynamicLoadingResourceHandler.h>
#include <zuSceneGraph/stream/zuStreamVersion.h>

#include <cstdint>
#include <cstdio>
#include <string>

namespace zu {

class zuDynamicLoadingResource;

// The handler of a resource whose CPU block is one run of bytes in its file: what the
// generic CPU requests (zuDynamicResourceCPULoadRequest, zuDynamicResourceCPUDeleteRequest)
// need from a resource kind. A kind (vertex buffer, index buffer, image) derives its
// handler from this class, fills the snapshot from its resource (setBlockHandler) and
// implements:
// - clone and getResourceHandlerType;
// - getCPUBlock and setCPUBlock, the plain access to the resource's block pointer (the
//   requests free and replace blocks themselves);
// - optionally readCPUBlock, when the file holds the block in another form than memory
//   does (packed indices): it reads and decodes in one go.
//
// Blocks pass between requests and resources as `char` arrays made by AllocateBlock and
// freed by FreeBlock; a kind keeps its block in that form (it may view it as another type).
class zuBlockResourceHandler : public zuDynamicLoadingResourceHandler {
public:
    // Takes the resource's CPU size, GPU size, stream offset, stream version and file path.
    void setBlockHandler(const zuDynamicLoadingResource* resource);
    void setBlockHandler(const zuBlockResourceHandler& other) { *this = other; }

    uint64_t getCPUSize() const { return mCPUSize; }
    uint64_t getGPUSize() const { return mGPUSize; }
    uint64_t getStreamOffset() const { return mStreamOffset; }
    const zuStreamVersion& getStreamVersion() const { return mStreamVersion; }
    const std::string& getResourceFilePath() const { return mResourceFilePath; }
    void setCPUSize(uint64_t size) { mCPUSize = size; }
    void setGPUSize(uint64_t size) { mGPUSize = size; }
    void setStreamOffset(uint64_t offset) { mStreamOffset = offset; }
    void setStreamVersion(const zuStreamVersion& version) { mStreamVersion = version; }
    void setResourceFilePath(const std::string& path) { mResourceFilePath = path; }

    // Fills `block` (getCPUSize() bytes) from `file`, which stands at the stream offset.
    // False when the file ends early or holds invalid data. The default reads the bytes as
    // they are.
    virtual bool readCPUBlock(std::FILE* file, char* block) const;
    // The fewest bytes the block takes in its file from the stream offset on: the CPU size
    // unless the file holds another form.
    virtual uint64_t getFileBlockSize() const { return mCPUSize; }
    // The block of `resource`, a resource of this handler's type (the caller checked it).
    virtual char* getCPUBlock(zuDynamicLoadingResource* resource) const = 0;
    // Sets the block pointer of `resource` (null: not resident) and frees nothing.
    virtual void setCPUBlock(zuDynamicLoadingResource* resource, char* block) const = 0;

    // A copy of `handler` as a block handler (the caller owns it), or null when the handler
    // is null or of another family.
    static zuBlockResourceHandler* CloneFrom(const zuDynamicLoadingResourceHandler* handler);
    // The resource's own handler as a block handler (the caller owns it), or null.
    static zuBlockResourceHandler* CreateFor(const zuDynamicLoadingResource* resource);
    // new char[size] that never throws: null when the memory is not there.
    static char* AllocateBlock(uint64_t size);
    static void FreeBlock(char* block);
    // A block for the constructors and resizes of a kind: null for a size of 0 or less,
    // zero-filled on request. A block the memory cannot hold, or one too large for the int
    // sizes of the format, throws std::bad_alloc as new does.
    static char* NewBlock(int64_t size, bool zeroed);
    // Frees the block in `slot` unless it is `block` itself, then stores `block` there.
    static void ReplaceBlock(char*& slot, char* block)
    {
        if (block != slot)
            FreeBlock(slot);
        slot = block;
    }
    // Reads exactly `size` bytes; false on a short read.
    static bool ReadBytes(std::FILE* file, void* destination, uint64_t size);

protected:
    zuBlockResourceHandler() = default;
    zuBlockResourceHandler(const zuBlockResourceHandler&) = default;
    zuBlockResourceHandler& operator=(const zuBlockResourceHandler&) = default;

private:
    uint64_t mCPUSize = 0;
    uint64_t mGPUSize = 0;
    uint64_t mStreamOffset = 0;
    zuStreamVersion mStreamVersion;
    std::string mResourceFilePath;
};

} // namespace zu
