#pragma once

#include <zuSceneGraph/resources/zuBlockResourceHandlerOf.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>


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
    bool readCPUBlock(zuBlockReader& reader, char* block) const override;
    // Packed: the width byte, the first index and 4 bytes per later index at the widest;
    // widened: 4 bytes per index.
    uint64_t getMaxFileBytes() const override { return fileBytes(4); }
    // Packed: the width byte, the first index and 1 byte per later index at the narrowest.
    uint64_t getMinFileBytes() const override { return fileBytes(1); }

private:
    // The bytes of the indices in the file, with packed deltas of `deltaWidth` bytes.
    uint64_t fileBytes(uint64_t deltaWidth) const;
    bool readPackedBlock(zuBlockReader& reader, unsigned int* indices, uint64_t count) const;
    bool readWidenedBlock(zuBlockReader& reader, unsigned short* indices, uint64_t count) const;

    bool mPacked = false;
    bool mWidened = false;
    int mIndexSize = 4;
};

} // namespace zu
