#include <zuSceneGraph/resources/zuIndexBuffer.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/resources/zuBlockResourceHandler.h>
#include <zuSceneGraph/resources/zuBlockResourceSave.h>
#include <zuSceneGraph/resources/zuIndexBufferHandler.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <algorithm>
#include <cstring>
#include <iostream>
#include <limits>
#include <new>
#include <utility>

namespace zu {

const zuRtti zuIndexBuffer::TYPE("zuCore.zuIndexBuffer", &zuObject::TYPE);
unsigned int zuIndexBuffer::msIndexBufferID = 0;
unsigned int zuIndexBuffer::msIndexBufferHandlerID = 0;

namespace {

zuIndexBuffer::IndexBufferType normalized(int type)
{
    return type == zuIndexBuffer::INDEX_32 ? zuIndexBuffer::INDEX_32 : zuIndexBuffer::INDEX_16;
}

} // namespace

zuIndexBuffer::zuIndexBuffer() = default;

zuIndexBuffer::zuIndexBuffer(int quantity, IndexBufferType type)
    : mIndexQuantity(std::max(quantity, 0)), mIndexType(normalized(type))
{
    mData = zuBlockResourceHandler::NewBlock(static_cast<int64_t>(mIndexQuantity) * GetIndexSize(), true);
}

zuIndexBuffer::zuIndexBuffer(const zuIndexBuffer* source)
{
    if (!source)
        return;
    mIndexQuantity = source->mIndexQuantity;
    mIndexType = source->mIndexType;
    if (source->mData) {
        const int64_t bytes = static_cast<int64_t>(getCPUSize());
        mData = zuBlockResourceHandler::NewBlock(bytes, false);
        if (mData)
            std::memcpy(mData, source->mData, static_cast<size_t>(bytes));
    }
}

zuIndexBuffer::~zuIndexBuffer()
{
    release();
    zuBlockResourceHandler::FreeBlock(mData);
}

void zuIndexBuffer::clearContents()
{
    zuBlockResourceHandler::ReplaceBlock(mData, nullptr);
    mIndexQuantity = 0;
    mIndexType = INDEX_32;
    mFileDeltaWidth = 0;
}

unsigned int zuIndexBuffer::GetIndex(int i) const
{
    if (!mData || i < 0 || i >= mIndexQuantity)
        return 0;
    if (mIndexType == INDEX_32)
        return reinterpret_cast<const unsigned int*>(mData)[i];
    return reinterpret_cast<const unsigned short*>(mData)[i];
}

void zuIndexBuffer::SetIndex(int i, unsigned int value)
{
    if (!mData || i < 0 || i >= mIndexQuantity)
        return;
    if (mIndexType == INDEX_32)
        reinterpret_cast<unsigned int*>(mData)[i] = value;
    else
        reinterpret_cast<unsigned short*>(mData)[i] = static_cast<unsigned short>(value);
}

bool zuIndexBuffer::resizeIndexBuffer(int quantity)
{
    quantity = std::max(quantity, 0);
    const int64_t bytes = static_cast<int64_t>(quantity) * GetIndexSize();
    const int64_t oldBytes = static_cast<int64_t>(getCPUSize());
    char* block = nullptr;
    if (quantity > mIndexQuantity) {
        if (bytes > std::numeric_limits<int>::max())
            return false;
        block = zuBlockResourceHandler::AllocateBlock(static_cast<uint64_t>(bytes));
        if (!block)
            return false;
    } else {
        block = zuBlockResourceHandler::NewBlock(bytes, false);
    }
    const int64_t kept = mData ? std::min(bytes, oldBytes) : 0;
    if (kept > 0)
        std::memcpy(block, mData, static_cast<size_t>(kept));
    if (bytes > kept)
        std::memset(block + kept, 0, static_cast<size_t>(bytes - kept));
    zuBlockResourceHandler::ReplaceBlock(mData, block);
    mIndexQuantity = quantity;
    forgetFile();
    return true;
}

bool zuIndexBuffer::ConvertToShort()
{
    if (isGPUResident()) {
        std::cout << "cannot convert iBuffer if already loaded\n";
        return false;
    }
    if (mIndexType != INDEX_32)
        return true;
    if (mIndexQuantity > 0 && !mData)
        return false;
    char* block = zuBlockResourceHandler::NewBlock(static_cast<int64_t>(mIndexQuantity) * 2, false);
    const unsigned int* from = reinterpret_cast<const unsigned int*>(mData);
    unsigned short* to = reinterpret_cast<unsigned short*>(block);
    for (int k = 0; k < mIndexQuantity; ++k) {
        if (from[k] > 65535) {
            zuBlockResourceHandler::FreeBlock(block);
            return false;
        }
        to[k] = static_cast<unsigned short>(from[k]);
    }
    mIndexType = INDEX_16;
    zuBlockResourceHandler::ReplaceBlock(mData, block);
    forgetFile();
    return true;
}

void zuIndexBuffer::forgetFile()
{
    // The file holds the indices in their old form or count: reading them back from there
    // as they are now would give other numbers.
    clearStreamInfo();
    mFileDeltaWidth = 0;
}

bool zuIndexBuffer::swapIndexBuffer(zuIndexBuffer& other)
{
    if (isGPUResident() || other.isGPUResident())
        return false;
    std::swap(mIndexQuantity, other.mIndexQuantity);
    std::swap(mIndexType, other.mIndexType);
    std::swap(mData, other.mData);
    std::swap(mFileDeltaWidth, other.mFileDeltaWidth);
    swapFileInfos(other);
    return true;
}

bool zuIndexBuffer::CloneIndexBuffer(zuRttiInterface*& target, bool withData) const
{
    if (target && !target->IsDerived(TYPE))
        return false;
    if (!target)
        target = new zuIndexBuffer;
    if (!zuUnnamedObject::Clone(target))
        return false;
    zuIndexBuffer* clone = static_cast<zuIndexBuffer*>(target);
    clone->mIndexQuantity = mIndexQuantity;
    clone->mIndexType = mIndexType;
    if (!withData)
        return true;
    const int64_t bytes = static_cast<int64_t>(getCPUSize());
    char* block = zuBlockResourceHandler::NewBlock(bytes, false);
    if (mData) {
        if (block)
            std::memcpy(block, mData, static_cast<size_t>(bytes));
    } else {
        // As for vertex buffers: loaded and dropped again, the clone's array left unfilled.
        const zuRendererInterface::ResidentScope resident(this);
    }
    zuBlockResourceHandler::ReplaceBlock(clone->mData, block);
    return true;
}

// ---------------------------------------------------------------------------------------
// Delta packing

int zuIndexBuffer::PackedDeltaWidth(int count, const unsigned int* indices)
{
    if (!indices || count < 2)
        return 1;
    // Indices below 2^31 differ by less than 2^31, so their differences are exact in 32
    // bits, where the loop runs on vector lanes; larger ones take the 64-bit loop.
    uint32_t all = indices[0];
    int32_t lowest = 0;
    int32_t highest = 0;
    for (int k = 1; k < count; ++k) {
        all |= indices[k];
        const int32_t difference = static_cast<int32_t>(indices[k] - indices[k - 1]);
        lowest = std::min(lowest, difference);
        highest = std::max(highest, difference);
    }
    int64_t largest = std::max<int64_t>(highest, -static_cast<int64_t>(lowest));
    if (all >> 31) {
        largest = 0;
        for (int k = 1; k < count; ++k) {
            const int64_t difference = static_cast<int64_t>(indices[k]) - static_cast<int64_t>(indices[k - 1]);
            largest = std::max(largest, difference < 0 ? -difference : difference);
        }
    }
    if (largest <= 127)
        return 1;
    return largest > 32767 ? 4 : 2;
}

void zuIndexBuffer::DecodePackedDeltas(const char* deltas, int width, int count, unsigned int& running,
                                       unsigned int* indices)
{
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(deltas);
    for (int k = 0; k < count; ++k, bytes += width) {
        uint32_t delta = bytes[0];
        if (width == 1) {
            delta = static_cast<uint32_t>(static_cast<int32_t>(static_cast<int8_t>(bytes[0])));
        } else if (width == 2) {
            const uint16_t value = static_cast<uint16_t>(bytes[0] | (bytes[1] << 8));
            delta = static_cast<uint32_t>(static_cast<int32_t>(static_cast<int16_t>(value)));
        } else {
            delta = uint32_t(bytes[0]) | (uint32_t(bytes[1]) << 8) | (uint32_t(bytes[2]) << 16)
                | (uint32_t(bytes[3]) << 24);
        }
        // Unsigned arithmetic: a 4-byte delta wraps exactly as the writer's subtraction did.
        running += delta;
        indices[k] = running;
    }
}

bool zuIndexBuffer::isPackedIn(const zuStreamVersion& version) const
{
    return mIndexType == INDEX_32 && version >= zuStreamVersion(6, 32);
}

int zuIndexBuffer::deltaWidthForSave() const
{
    if (mData)
        return PackedDeltaWidth(mIndexQuantity, reinterpret_cast<const unsigned int*>(mData));
    if (mFileDeltaWidth != 0)
        return mFileDeltaWidth;
    // Indices from an older file, not resident: the width needs them.
    const zuRendererInterface::ResidentScope resident(this, true);
    return PackedDeltaWidth(mIndexQuantity, reinterpret_cast<const unsigned int*>(mData));
}

bool zuIndexBuffer::readPacked(zuBaseStream& stream, bool load)
{
    char width = 0;
    stream.Read(width);
    if (stream.isStreamError())
        return false;
    if (width != 1 && width != 2 && width != 4) {
        stream.setCorrupt("an unknown index delta width");
        return false;
    }
    mFileDeltaWidth = width;
    // An empty buffer's first index stands for nothing.
    const int64_t deltaBytes = (std::max(mIndexQuantity, 1) - 1) * static_cast<int64_t>(width);
    char* block = nullptr;
    if (load && mIndexQuantity > 0 && stream.CheckCount(mIndexQuantity - 1, static_cast<uint64_t>(width)))
        block = zuBlockResourceHandler::AllocateBlock(static_cast<uint64_t>(mIndexQuantity) * 4);
    if (stream.isStreamError())
        return false;
    if (!block) {
        // Not wanted now (or no memory for it): skip the first index and the deltas.
        stream.Skip(static_cast<uint64_t>(deltaBytes + 4));
        return !stream.isStreamError();
    }
    int first = 0;
    stream.Read(first);
    unsigned int* indices = reinterpret_cast<unsigned int*>(block);
    unsigned int running = static_cast<unsigned int>(first);
    indices[0] = running;
    char chunk[DELTA_CHUNK * 4];
    for (int done = 1; done < mIndexQuantity;) {
        const int count = std::min(DELTA_CHUNK, mIndexQuantity - done);
        stream.Read(count * width, chunk);
        if (stream.isStreamError()) {
            zuBlockResourceHandler::FreeBlock(block);
            return false;
        }
        DecodePackedDeltas(chunk, width, count, running, indices + done);
        done += count;
    }
    mData = block;
    return true;
}

// ---------------------------------------------------------------------------------------
// Resource requests

zuDynamicLoadingResourceHandler* zuIndexBuffer::createHandler() const
{
    zuIndexBufferHandler* handler = new zuIndexBufferHandler;
    handler->setBufferHandler(this);
    return handler;
}

// ---------------------------------------------------------------------------------------
// Persistence

int zuIndexBuffer::GetDiskUsed(const zuBaseStream& stream) const
{
    const zuStreamVersion& version = stream.GetVersion();
    int size = zuUnnamedObject::GetDiskUsed(stream) + 4;
    if (version >= zuStreamVersion(5, 2))
        size += 4;
    if (mIndexQuantity != 0) {
        if (isPackedIn(version))
            size += 1 + 4 + (mIndexQuantity - 1) * deltaWidthForSave();
        else if (mIndexType == INDEX_32 || version < zuStreamVersion(5, 2))
            size += 4 * mIndexQuantity;
        else
            size += 2 * mIndexQuantity;
    }
    if (version >= zuStreamVersion(4, 2) && version < zuStreamVersion(6, 32))
        size += 4;
    return size;
}

void zuIndexBuffer::checkSave(zuBaseStream& stream) const
{
    zuBlockResourceSave::Check(stream, *this);
}

void zuIndexBuffer::Save(zuBaseStream& stream) const
{
    zuBlockResourceSave::PrefetchStart(mData, mIndexQuantity * (mIndexType == INDEX_32 ? 4 : 2));
    zuUnnamedObject::Save(stream);
    const zuStreamVersion& version = stream.GetVersion();
    stream.Write(mIndexQuantity);
    if (version >= zuStreamVersion(5, 2))
        stream.Write(static_cast<int>(mIndexType));
    const bool packed = mIndexQuantity != 0 && isPackedIn(version);
    // Taken before the indices are brought in: in the state GetDiskUsed saw them.
    const int width = packed ? deltaWidthForSave() : 0;
    const zuBlockResourceSave block(stream, *this);
    // From now on the data is found in the stream being written.
    if (block.isReadable()) {
        storeStreamInfo(&stream);
        mFileDeltaWidth = width;
    }
    const unsigned int* indices32 = mIndexType == INDEX_32 ? reinterpret_cast<const unsigned int*>(mData) : nullptr;
    const unsigned short* indices16 = mIndexType == INDEX_32 ? nullptr : reinterpret_cast<const unsigned short*>(mData);
    if (packed) {
        stream.Write(static_cast<char>(width));
        stream.Write(static_cast<int>(indices32 ? indices32[0] : 0u));
        if (indices32)
            writeDeltas(stream, width);
        else
            stream.WriteZeros(static_cast<uint64_t>(mIndexQuantity - 1) * width);
    } else if (mIndexQuantity != 0 && mIndexType == INDEX_32) {
        if (indices32)
            stream.Write(mIndexQuantity, indices32);
        else
            stream.WriteZeros(static_cast<uint64_t>(mIndexQuantity) * 4);
    } else if (mIndexQuantity != 0 && version < zuStreamVersion(5, 2)) {
        // These streams know only 32-bit indices.
        for (int k = 0; k < mIndexQuantity; ++k)
            stream.Write(static_cast<unsigned int>(indices16 ? indices16[k] : 0));
    } else if (indices16) {
        stream.Write(mIndexQuantity, indices16);
    } else {
        stream.WriteZeros(static_cast<uint64_t>(mIndexQuantity) * 2);
    }
    if (version >= zuStreamVersion(4, 2) && version < zuStreamVersion(6, 32))
        stream.Write(0);
}

namespace {

// Packs the deltas of indices[0..count) from their predecessors as little-endian Deltas;
// false when one does not fit.
template <class Delta>
bool packDeltas(const unsigned int* indices, int count, unsigned char* out)
{
    bool fits = true;
    for (int k = 0; k < count; ++k) {
        const uint32_t delta = indices[k] - indices[k - 1];
        fits &= static_cast<int32_t>(static_cast<Delta>(delta)) == static_cast<int32_t>(delta);
        for (size_t b = 0; b < sizeof(Delta); ++b)
            out[k * sizeof(Delta) + b] = static_cast<unsigned char>(delta >> (8 * b));
    }
    return fits;
}

} // namespace

void zuIndexBuffer::writeDeltas(zuBaseStream& stream, int width) const
{
    const unsigned int* indices = reinterpret_cast<const unsigned int*>(mData);
    unsigned char chunk[DELTA_CHUNK * 4];
    bool fits = true;
    for (int done = 1; done < mIndexQuantity;) {
        const int count = std::min(DELTA_CHUNK, mIndexQuantity - done);
        if (width == 1)
            fits &= packDeltas<int8_t>(indices + done, count, chunk);
        else if (width == 2)
            fits &= packDeltas<int16_t>(indices + done, count, chunk);
        else
            packDeltas<int32_t>(indices + done, count, chunk);
        stream.Write(count * width, reinterpret_cast<const char*>(chunk));
        done += count;
    }
    // A delta that does not fit the width the record was sized with cannot be written.
    if (!fits)
        zuBlockResourceSave::Refuse(stream, *this, "its indices changed since their size was counted");
}

void zuIndexBuffer::Load(zuBaseStream& stream, zuLink* link)
{
    zuUnnamedObject::Load(stream, link);
    clearContents();
    const zuStreamVersion& version = stream.GetVersion();

    int quantity = 0;
    stream.Read(quantity);
    IndexBufferType type = INDEX_32;
    if (version >= zuStreamVersion(5, 2)) {
        int stored = INDEX_32;
        stream.Read(stored);
        type = normalized(stored);
    }
    mIndexType = type;
    const bool packed = isPackedIn(version);
    const uint64_t bytesPerIndex = packed ? 1 : static_cast<uint64_t>(GetIndexSize());
    if (!stream.CheckCount(quantity, bytesPerIndex)) {
        clearContents();
        return;
    }
    mIndexQuantity = quantity;

    storeStreamInfo(&stream);
    const bool load = hasToLoad();
    bool valid = true;
    if (packed) {
        // An empty buffer has a width and a first index only when its record holds them
        // (see the class comment).
        if (mIndexQuantity != 0 || stream.GetRecordBytesLeft() > 0)
            valid = readPacked(stream, load);
    } else if (mIndexQuantity != 0) {
        const int64_t bytes = static_cast<int64_t>(getCPUSize());
        char* block = load ? zuBlockResourceHandler::AllocateBlock(static_cast<uint64_t>(bytes)) : nullptr;
        if (block && mIndexType == INDEX_32)
            stream.Read(mIndexQuantity, reinterpret_cast<unsigned int*>(block));
        else if (block)
            stream.Read(mIndexQuantity, reinterpret_cast<unsigned short*>(block));
        else
            stream.Skip(static_cast<uint64_t>(bytes));
        mData = block;
    }
    if (version >= zuStreamVersion(4, 2) && version < zuStreamVersion(6, 32)) {
        int unused = 0;
        stream.Read(unused);
    }
    if (!valid || stream.isStreamError())
        clearContents();
}

bool zuIndexBuffer::Equals(const zuRttiInterface* other) const
{
    if (!zuUnnamedObject::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const zuIndexBuffer* buffer = static_cast<const zuIndexBuffer*>(other);
    if (mIndexQuantity != buffer->mIndexQuantity || mIndexType != buffer->mIndexType)
        return false;
    const uint64_t bytes = getCPUSize();
    if (bytes == 0)
        return true;
    if (!mData || !buffer->mData)
        return !mData && !buffer->mData;
    return std::memcmp(mData, buffer->mData, static_cast<size_t>(bytes)) == 0;
}

bool zuIndexBuffer::Clone(zuRttiInterface*& target) const
{
    return CloneIndexBuffer(target, false);
}

namespace {

const char* const indexTypeNames[] = {"INDEX_16", "INDEX_32"};

} // namespace

void zuIndexBuffer::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuUnnamedObject::DescribeFields(object, visitor);
    const auto& buffer = static_cast<const zuIndexBuffer&>(object);
    visitor.BeginGroup(nullptr);
    visitor.Integer("quantity", buffer.mIndexQuantity);
    visitor.EnumeratorOf("type", buffer.mIndexType, indexTypeNames);
    visitor.EndGroup();
    buffer.DescribeBlock(visitor);
    // The indices themselves only while they are in memory: describing reads no file.
    if (buffer.mData)
        visitor.List("indices", buffer.mIndexQuantity,
                     [&](int64_t i) { visitor.Integer(nullptr, buffer.GetIndex(static_cast<int>(i))); });
}

} // namespace zu
