#pragma once

#include <zuSceneGraph/resources/zuDynamicLoadingResourceHandler.h>
#include <zuSceneGraph/stream/zuStreamVersion.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace zu {

class zuBlockReader;
class zuDynamicLoadingResource;

// The handler of a resource whose CPU block is one run of bytes in its file: what the
// generic CPU requests (zuDynamicResourceCPULoadRequest, zuDynamicResourceCPUDeleteRequest)
// need from a resource kind. A kind (vertex buffer, index buffer, image) derives its
// handler from this class, fills the snapshot from its resource (setBlockHandler) and
// implements:
// - clone and getResourceHandlerType;
// - getCPUBlock and setCPUBlock, the plain access to the resource's block pointer (the
//   requests free and replace blocks themselves);
// - optionally readCPUBlock and getMaxFileBytes, when the file holds the block in another
//   form than memory does (packed indices): it reads and decodes in one go, from the file
//   or from bytes read ahead with neighbouring blocks (zuBlockReader).
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
    const std::string& getResourceFilePath() const { return mResourceFilePath ? *mResourceFilePath : msNoPath; }
    void setCPUSize(uint64_t size) { mCPUSize = size; }
    void setGPUSize(uint64_t size) { mGPUSize = size; }
    void setStreamOffset(uint64_t offset) { mStreamOffset = offset; }
    void setStreamVersion(const zuStreamVersion& version) { mStreamVersion = version; }
    void setResourceFilePath(const std::string& path) { mResourceFilePath = std::make_shared<const std::string>(path); }

    // Fills `block` (getCPUSize() bytes) from `file`, which stands at the stream offset.
    // False when the file ends early or holds invalid data.
    bool readCPUBlock(std::FILE* file, char* block) const;
    // The same from a reader that stands at the stream offset. The default reads the bytes
    // as they are.
    virtual bool readCPUBlock(zuBlockReader& reader, char* block) const;
    // The most bytes the block can take in the file from the stream offset on (a batch
    // reads that far ahead). The default: the CPU size.
    virtual uint64_t getMaxFileBytes() const { return mCPUSize; }
    // The fewest bytes the block can take in the file from the stream offset on (a save
    // checks that its file still holds them). The default: the CPU size.
    virtual uint64_t getMinFileBytes() const { return mCPUSize; }
    // The block of `resource`, a resource of this handler's type (the caller checked it).
    virtual char* getCPUBlock(zuDynamicLoadingResource* resource) const = 0;
    // Sets the block pointer of `resource` (null: not resident) and frees nothing.
    virtual void setCPUBlock(zuDynamicLoadingResource* resource, char* block) const = 0;

    // A copy of `handler` as a block handler (the caller owns it), or null when the handler
    // is null or of another family.
    static zuBlockResourceHandler* CloneFrom(const zuDynamicLoadingResourceHandler* handler);
    // The resource's own handler as a block handler (the caller owns it), or null.
    static zuBlockResourceHandler* CreateFor(const zuDynamicLoadingResource* resource);
    // A block that never throws: null when the memory is not there. Blocks of up to 1 KB
    // come from the object pool's block chunks (no allocation header each); a block of 4 MB
    // or more is advised to the kernel as huge pages before anything touches it.
    static char* AllocateBlock(uint64_t size);
    // Asks for huge pages over the whole 2 MB pages of `bytes` from `block` (allocated, not
    // yet written): a large block is then filled with a few page faults instead of one per
    // 4 KB. Only advice: the kernel may decline, and nothing depends on it.
    static void AdviseHugePages(const void* block, uint64_t bytes);
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

protected:
    zuBlockResourceHandler() = default;
    zuBlockResourceHandler(const zuBlockResourceHandler&) = default;
    zuBlockResourceHandler& operator=(const zuBlockResourceHandler&) = default;

private:
    uint64_t mCPUSize = 0;
    uint64_t mGPUSize = 0;
    uint64_t mStreamOffset = 0;
    zuStreamVersion mStreamVersion;
    // Shared with the resource, as the requests of many blocks of one file are made at once.
    std::shared_ptr<const std::string> mResourceFilePath;
    static const std::string msNoPath;
};

} // namespace zu
