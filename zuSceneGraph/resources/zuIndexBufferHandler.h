#pragma once

#include <zuSceneGraph/resources/zuBlockResourceHandlerOf.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>

#include <cstdio>

namespace zu {

// What a load request needs to read an index buffer's indices back without touching the
// buffer: its CPU and GPU sizes, the offset of the data, the stream version and the file
// path, and the form the data takes in the file, which follows from the stream version at
// the time the offset was recorded and the index type:
// - packed: 32-bit indices of a 6.32 stream, stored as deltas (decoded while reading);
// - widened: 16-bit indices written to a stream older than 5.2, stored as ints;
// - otherwise the indices lie in the file as in memory.
class zuIndexBufferHandler : public zuBlockResourceHandlerOf<zuIndexBuffer, zuIndexBufferHandler> {
public:
    zuIndexBufferHandler() = default;
    zuIndexBufferHandler(const zuIndexBufferHandler&) = default;
    zuIndexBufferHandler& operator=(const zuIndexBufferHandler&) = default;

    // Takes the snapshot of `buffer` (nothing for null).
    void setBufferHandler(const zuIndexBuffer* buffer);
    void setBufferHandler(const zuIndexBufferHandler& other) { *this = other; }

    bool isPacked() const { return mPacked; }
    bool isWidened() const { return mWidened; }
    // Bytes per index in memory: 4 or 2.
    int getIndexSize() const { return mIndexSize; }

    // Reads the indices in the file's form into the memory form. False on a short read
    // or an unknown delta width.
    bool readCPUBlock(std::FILE* file, char* block) const override;
    // Packed indices take at least a width byte, the first index and a byte per delta.
    uint64_t getFileBlockSize() const override;

private:
    bool readPackedBlock(std::FILE* file, unsigned int* indices, uint64_t count) const;
    bool readWidenedBlock(std::FILE* file, unsigned short* indices, uint64_t count) const;

    bool mPacked = false;
    bool mWidened = false;
    int mIndexSize = 4;
};

} // namespace zu
