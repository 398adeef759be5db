#include <zuSceneGraph/resources/zuIndexBufferHandler.h>

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

bool zuIndexBufferHandler::readCPUBlock(std::FILE* file, char* block) const
{
    const uint64_t count = getCPUSize() / static_cast<uint64_t>(mIndexSize);
    // The writer writes nothing for an empty buffer.
    if (count == 0)
        return true;
    if (mPacked)
        return readPackedBlock(file, reinterpret_cast<unsigned int*>(block), count);
    if (mWidened)
        return readWidenedBlock(file, reinterpret_cast<unsigned short*>(block), count);
    return zuBlockResourceHandler::readCPUBlock(file, block);
}

uint64_t zuIndexBufferHandler::getFileBlockSize() const
{
    const uint64_t count = getCPUSize() / static_cast<uint64_t>(mIndexSize);
    if (count == 0)
        return 0;
    if (mPacked)
        return 5 + (count - 1);
    return mWidened ? 4 * count : getCPUSize();
}

bool zuIndexBufferHandler::readPackedBlock(std::FILE* file, unsigned int* indices, uint64_t count) const
{
    char width = 0;
    char first[4];
    if (!ReadBytes(file, &width, 1) || (width != 1 && width != 2 && width != 4) || !ReadBytes(file, first, 4))
        return false;
    unsigned int running = 0;
    Wm4::System::Read4le(first, 1, &running);
    indices[0] = running;
    std::vector<char> chunk(static_cast<size_t>(zuIndexBuffer::DELTA_CHUNK) * 4);
    for (uint64_t done = 1; done < count;) {
        const int n = static_cast<int>(std::min<uint64_t>(zuIndexBuffer::DELTA_CHUNK, count - done));
        if (!ReadBytes(file, chunk.data(), static_cast<uint64_t>(n) * static_cast<uint64_t>(width)))
            return false;
        zuIndexBuffer::DecodePackedDeltas(chunk.data(), width, n, running, indices + done);
        done += static_cast<uint64_t>(n);
    }
    return true;
}

bool zuIndexBufferHandler::readWidenedBlock(std::FILE* file, unsigned short* indices, uint64_t count) const
{
    std::vector<char> chunk(static_cast<size_t>(zuIndexBuffer::DELTA_CHUNK) * 4);
    for (uint64_t done = 0; done < count;) {
        const int n = static_cast<int>(std::min<uint64_t>(zuIndexBuffer::DELTA_CHUNK, count - done));
        if (!ReadBytes(file, chunk.data(), static_cast<uint64_t>(n) * 4))
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
