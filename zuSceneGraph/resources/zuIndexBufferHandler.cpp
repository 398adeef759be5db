#include <zuSceneGraph/resources/zuIndexBufferHandler.h>

#include <zuSceneGraph/resources/zuBlockReader.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>

#include <Wm4/Wm4System.h>

#include <algorithm>
#include <vector>

namespace zu {

void zuIndexBufferHandler::setBufferHandler(const zuIndexBuffer* buffer)
{
    if (!buffer)
        return;
    setBlockHandler(buffer);
    const bool is32 = buffer->GetIndexType() == zuIndexBuffer::INDEX_32;
    mIndexSize = is32 ? 4 : 2;
    mPacked = is32 && getStreamVersion() >= zuStreamVersion(6, 32);
    mWidened = !is32 && getStreamVersion() < zuStreamVersion(5, 2);
}

uint64_t zuIndexBufferHandler::fileBytes(uint64_t deltaWidth) const
{
    const uint64_t count = getCPUSize() / static_cast<uint64_t>(mIndexSize);
    if (count == 0)
        return 0;
    if (mPacked)
        return 5 + (count - 1) * deltaWidth;
    return mWidened ? 4 * count : getCPUSize();
}

bool zuIndexBufferHandler::readCPUBlock(zuBlockReader& reader, char* block) const
{
    const uint64_t count = getCPUSize() / static_cast<uint64_t>(mIndexSize);
    // The writer writes nothing for an empty buffer.
    if (count == 0)
        return true;
    if (mPacked)
        return readPackedBlock(reader, reinterpret_cast<unsigned int*>(block), count);
    if (mWidened)
        return readWidenedBlock(reader, reinterpret_cast<unsigned short*>(block), count);
    return zuBlockResourceHandler::readCPUBlock(reader, block);
}

bool zuIndexBufferHandler::readPackedBlock(zuBlockReader& reader, unsigned int* indices, uint64_t count) const
{
    char width = 0;
    char first[4];
    if (!reader.read(&width, 1) || (width != 1 && width != 2 && width != 4) || !reader.read(first, 4))
        return false;
    unsigned int running = 0;
    Wm4::System::Read4le(first, 1, &running);
    indices[0] = running;
    std::vector<char> chunk;
    for (uint64_t done = 1; done < count;) {
        const int n = static_cast<int>(std::min<uint64_t>(zuIndexBuffer::DELTA_CHUNK, count - done));
        const uint64_t bytes = static_cast<uint64_t>(n) * static_cast<uint64_t>(width);
        // Bytes read ahead are decoded where they lie.
        const char* deltas = reader.take(bytes);
        if (!deltas) {
            chunk.resize(static_cast<size_t>(zuIndexBuffer::DELTA_CHUNK) * 4);
            if (!reader.read(chunk.data(), bytes))
                return false;
            deltas = chunk.data();
        }
        zuIndexBuffer::DecodePackedDeltas(deltas, width, n, running, indices + done);
        done += static_cast<uint64_t>(n);
    }
    return true;
}

bool zuIndexBufferHandler::readWidenedBlock(zuBlockReader& reader, unsigned short* indices, uint64_t count) const
{
    std::vector<char> chunk(static_cast<size_t>(zuIndexBuffer::DELTA_CHUNK) * 4);
    for (uint64_t done = 0; done < count;) {
        const int n = static_cast<int>(std::min<uint64_t>(zuIndexBuffer::DELTA_CHUNK, count - done));
        if (!reader.read(chunk.data(), static_cast<uint64_t>(n) * 4))
            return false;
        for (int k = 0; k < n; ++k) {
            unsigned int value = 0;
            Wm4::System::Read4le(chunk.data() + 4 * k, 1, &value);
            indices[done + static_cast<uint64_t>(k)] = static_cast<unsigned short>(value);
        }
        done += static_cast<uint64_t>(n);
    }
    return true;
}

} // namespace zu
