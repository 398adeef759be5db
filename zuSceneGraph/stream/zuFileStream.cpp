#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSceneGraph/stream/zuBlockWriter.h>

#include <zuSystem/zuIoDevice.h>
#include <zuSystem/zuLog.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>

namespace zu {

namespace {

int roundedBlockSize(int blockSize)
{
    if (blockSize % 8 != 0) {
        std::cout << "Warning stream size has been truncatured to be a multiple of 8 (zu::zuStream constructor)\n";
        blockSize -= blockSize % 8;
    }
    // A block must hold at least one 8-byte value.
    return std::max(blockSize, 8);
}

} // namespace

zuFileStream::zuFileStream(int blockSize, zuCatalog<zuImage>* catalog, char* block)
    : zuStream(catalog), mBlock(block), mBlockSize(roundedBlockSize(blockSize))
{
    if (!mBlock) {
        // Not zeroed: only the bytes a window holds are ever read, and a small file then
        // touches the first pages of the block alone.
        mOwnedBlock.reset(new char[static_cast<size_t>(mBlockSize)]);
        mBlock = mOwnedBlock.get();
    }
}

zuFileStream::~zuFileStream() = default;

void zuFileStream::releaseDevice()
{
    // Waits for the blocks still being written: the device is the caller's again after this.
    mWriter.reset();
    mWriterRefused = false;
    resetBufferState();
    mInput = nullptr;
    mOutput = nullptr;
    mLeftToFetch = 0;
}

void zuFileStream::reportDeviceError(const char* what)
{
    reportDeviceError(what, GetOffset());
}

void zuFileStream::reportDeviceError(const char* what, uint64_t offset)
{
    if (isStreamError())
        return;
    std::string text = std::string(what) + " '" + GetName() + "' at offset " + std::to_string(offset);
    zuLog::instance().write("zustream", text);
    recordError(std::move(text));
}

bool zuFileStream::Save(zuIoDevice& device, const std::string& name, bool append)
{
    SetName(name);
    clearObjectMap();
    clearStreamError();
    mOutput = &device;
    const uint64_t start = append && device.pos() > 0 ? static_cast<uint64_t>(device.pos()) : 0;
    resetBufferState();
    setWindow(mBlock, start, static_cast<uint64_t>(mBlockSize));
    if (device.isError())
        reportDeviceError("Cannot write the stream");
    const bool result = save(append);
    releaseDevice();
    return result;
}

bool zuFileStream::Load(zuIoDevice& device, const std::string& name)
{
    SetName(name);
    // As zuBaseStream::Load: nothing of a previous run survives, the top-level list included.
    clearObjectMap();
    RemoveAllToLevel();
    clearCustomInformations();
    clearStreamError();
    resetBufferState();
    mInput = &device;
    mDeviceFollows = true;
    mWindowGoal = 0;
    mSparseWindow = FIRST_SPARSE_WINDOW;
    mSparse = false;
    if (device.isError())
        reportDeviceError("Cannot read the stream");
    device.seek(0, zuIoDevice::SeekEnd);
    const int64_t size = device.pos();
    device.seek(0, zuIoDevice::SeekSet);
    mStreamSize = size > 0 ? static_cast<uint64_t>(size) : 0;
    mLeftToFetch = mStreamSize;
    setDataEnd(mStreamSize);
    if (mStreamSize < static_cast<uint64_t>(zuStreamVersion::LENGTH_V6))
        reportDeviceError("The stream is too short to hold a header:");
    bool result = false;
    if (!isStreamError() && fetchNextWindow(0)) {
        int length = 0;
        char* header = nullptr;
        if (readNullTerminatedString(length, &header)) {
            SetVersion(zuStreamVersion(header, length));
            result = load();
        } else {
            reportDeviceError("The stream has no version header:");
        }
    }
    releaseDevice();
    return result && !isStreamError();
}

bool zuFileStream::fetchNextWindow(uint64_t skip)
{
    if (!mInput || mLeftToFetch == 0 || skip > mLeftToFetch)
        return false;
    const uint64_t next = GetOffset() + skip;
    if (next > static_cast<uint64_t>(INT64_MAX)) {
        setCorrupt("the device cannot seek over the skipped bytes");
        mLeftToFetch = 0;
        return false;
    }
    mLeftToFetch -= skip;
    if (mLeftToFetch == 0) {
        // The skip ends with the data: an empty window there, as reading through would leave.
        setWindow(mBlock, next, 0);
        return true;
    }
    const uint64_t size = std::min(mLeftToFetch, nextWindowSize());
    // Once the device has been read at an offset, every read names its offset; before, a
    // device that cannot seek still serves a stream read straight through.
    const bool inOrder = skip == 0 && mDeviceFollows;
    const int64_t got = inOrder ? mInput->read(mBlock, static_cast<int64_t>(size))
                                : mInput->readAt(static_cast<int64_t>(next), mBlock, static_cast<int64_t>(size));
    mDeviceFollows = inOrder;
    if (got != static_cast<int64_t>(size) || mInput->isError()) {
        reportDeviceError("Cannot read the stream");
        mLeftToFetch = 0;
        return false;
    }
    mLeftToFetch -= size;
    setWindow(mBlock, next, size);
    return true;
}

uint64_t zuFileStream::nextWindowSize()
{
    const uint64_t block = static_cast<uint64_t>(mBlockSize);
    if (takeLongestSkip() >= SEEK_WORTHY_SKIP) {
        // The records lie between blocks passed over: a window holding the next record's
        // fields, not the block after them, costs one call instead of a copy of the block.
        mSparse = true;
        mWindowGoal = std::min(mSparseWindow, block);
    } else {
        // A record outgrew its window: the next sparse window starts larger, and this one
        // doubles towards whole blocks. The first window is small as well, so that a file
        // whose records lie between large blocks does not copy a whole block of them first.
        if (mSparse && mSparseWindow < MAX_SPARSE_WINDOW)
            mSparseWindow *= 2;
        mSparse = false;
        mWindowGoal = std::min(std::max(2 * mWindowGoal, FIRST_WINDOW), block);
    }
    return mWindowGoal;
}

bool zuFileStream::flushWindow()
{
    return writeWindow(true);
}

bool zuFileStream::writeWindow(bool moreToCome)
{
    if (!mOutput)
        return false;
    const uint64_t filled = GetOffset() - windowStart();
    char* next = windowBuffer();
    if (filled > 0) {
        // A save that ends within its first block writes it here: a thread for one block
        // would cost more than the write.
        if (moreToCome && !mWriter && !mWriterRefused && mBlockSize >= MIN_THREADED_BLOCK_SIZE
            && mOutput->isWritableFromAnyThread()) {
            // Without memory for the spare blocks or a thread to run, this thread writes.
            try {
                mWriter = std::make_unique<zuBlockWriter>(*mOutput, static_cast<size_t>(mBlockSize), SPARE_BLOCKS);
            } catch (...) {
                mWriterRefused = true;
            }
        }
        if (mWriter) {
            next = mWriter->submit(windowBuffer(), filled, windowStart());
            if (mWriter->failed()) {
                reportDeviceError("Cannot write the stream", mWriter->failedOffset());
                return false;
            }
        } else {
            const int64_t written = mOutput->write(windowBuffer(), static_cast<int64_t>(filled));
            if (written != static_cast<int64_t>(filled) || mOutput->isError()) {
                reportDeviceError("Cannot write the stream", windowStart());
                return false;
            }
        }
    }
    setWindow(next, windowStart() + filled, static_cast<uint64_t>(mBlockSize));
    return true;
}

bool zuFileStream::flushWriteBuffer()
{
    if (!writeWindow(false))
        return false;
    if (mWriter && !mWriter->finish()) {
        reportDeviceError("Cannot write the stream", mWriter->failedOffset());
        return false;
    }
    if (!mOutput->flush()) {
        reportDeviceError("Cannot write the stream");
        return false;
    }
    return true;
}

void zuFileStream::writeNullTerminatedString(int length, const char* text)
{
    if (length > 0)
        writeValues(text, 1, static_cast<uint64_t>(length));
}

bool zuFileStream::readNullTerminatedString(int& length, char** text)
{
    // The text ends within the longest header field, whatever the block size: a block that
    // holds the whole field is searched in place, a smaller one has the field gathered
    // across blocks, and both stop at the same byte.
    const size_t limit = static_cast<size_t>(zuStreamVersion::LENGTH_V4);
    const uint64_t offset = GetOffset() - windowStart();
    const uint64_t available = windowEnd() - offset;
    char* begin = windowBuffer() + offset;
    if (const void* nul = std::memchr(begin, '\0', std::min<uint64_t>(available, limit))) {
        length = static_cast<int>(static_cast<const char*>(nul) - begin) + 1;
        *text = begin;
        Skip(static_cast<uint64_t>(length));
        return true;
    }
    if (available >= limit) {
        // Passed over as the gathering below would have, so that the failure lies at the
        // same offset.
        Skip(limit);
        return false;
    }
    mText.clear();
    while (mText.size() < limit && GetRemaining() > 0) {
        char c = 0;
        readValues(&c, 1, 1);
        mText.push_back(c);
        if (c == '\0') {
            length = static_cast<int>(mText.size());
            *text = mText.data();
            return true;
        }
    }
    return false;
}

void zuFileStream::writeData(int size, int count, const void* source)
{
    if (size > 0 && count > 0)
        writeValues(source, 1, static_cast<uint64_t>(size) * static_cast<uint64_t>(count));
}

void zuFileStream::readData(int size, int count, void* destination)
{
    if (size > 0 && count > 0)
        readValues(destination, 1, static_cast<uint64_t>(size) * static_cast<uint64_t>(count));
}

} // namespace zu
