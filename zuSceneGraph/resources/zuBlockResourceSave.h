#pragma once

#include <zuSceneGraph/resources/zuRendererInterface.h>

#include <algorithm>
#include <string>

namespace zu {

class zuBaseStream;
class zuDynamicLoadingResource;

// What a block resource's save does so that it never writes a block it did not read.
//
// In the register pass of a save, Check refuses the save when the block is not in memory
// and cannot be read from its file, before a byte is written. Save then holds an object of
// this class while it writes: it brings the block in from its file, even while a request
// for it is under way, and drops it again afterwards when it was not in memory before. A
// block that still cannot be read (its file changed since the check) refuses the save too;
// the record is then written with zeros, so that its size stays what GetDiskUsed said, and
// the resource keeps referring to the file it had.
class zuBlockResourceSave {
public:
    zuBlockResourceSave(zuBaseStream& stream, const zuDynamicLoadingResource& resource);
    zuBlockResourceSave(const zuBlockResourceSave&) = delete;
    zuBlockResourceSave& operator=(const zuBlockResourceSave&) = delete;

    // The block is in memory (or empty): the record holds it, and the resource may record
    // its new place in the stream.
    bool isReadable() const { return mReadable; }
    // Writes a block that lies in the file as in memory: `size` bytes of `data`, or zeros when
    // the block is not at hand; a readable block is found in this stream from now on.
    void writeBlock(zuBaseStream& stream, const char* data, int size) const;

    // Asks the cache for the first lines of a block that a save writes after a few fields:
    // the blocks of a large scene are long out of the cache. A hint; null is allowed.
    static void PrefetchStart(const char* data, int size)
    {
        if (data)
            for (int offset = 0; offset < std::min(size, PREFETCHED_BYTES); offset += 64)
                __builtin_prefetch(data + offset);
    }

    static void Check(zuBaseStream& stream, const zuDynamicLoadingResource& resource);
    // Refuses the save, naming the resource (type and object identifier) and the reason.
    static void Refuse(zuBaseStream& stream, const zuDynamicLoadingResource& resource, const std::string& reason);

private:
    static constexpr int PREFETCHED_BYTES = 1024;

    const zuDynamicLoadingResource& mResource;
    zuRendererInterface::ResidentScope mScope;
    bool mReadable;
};

} // namespace zu
