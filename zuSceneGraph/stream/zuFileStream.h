#pragma once

#include <zuSceneGraph/stream/zuStream.h>

#include <cstdint>
#include <memory>
#include <string>

namespace zu {

class zuBlockWriter;
class zuIoDevice;

// The stream container over an IO device, through a block buffer: records are written
// into the block, which goes to the device whenever it is full, and read back block by
// block. The block size is a multiple of 8. A save of more than one block to a device that
// may be written from any thread hands the full blocks to a writer thread, so that the
// device's copy of one block runs while the next is filled.
class zuFileStream : public zuStream {
public:
    static constexpr int DEFAULT_BLOCK_SIZE = 1 << 20;

    // With a null `block`, a block of `blockSize` bytes is allocated and owned; otherwise the
    // caller's block (of at least blockSize bytes) is used and never freed. `catalog` as
    // for zuStream.
    explicit zuFileStream(int blockSize = DEFAULT_BLOCK_SIZE, zuCatalog<zuImage>* catalog = nullptr,
                          char* block = nullptr);
    ~zuFileStream() override;

    using zuStream::Load;
    using zuStream::Save;
    bool Load(zuIoDevice& device, const std::string& name) override;
    // Writes the stream version set with SetVersion: a stream that was given none (0.0)
    // fails, so name one before saving (see zuStream).
    bool Save(zuIoDevice& device, const std::string& name, bool append) override;

    void writeNullTerminatedString(int length, const char* text) override;
    bool readNullTerminatedString(int& length, char** text) override;
    void writeData(int size, int count, const void* source) override;
    void readData(int size, int count, void* destination) override;
    bool flushWriteBuffer() override;
    uint64_t getStreamSize() const override { return mStreamSize; }

    int GetBlockSize() const { return mBlockSize; }

protected:
    // Passes over `skip` bytes of the device (a device that cannot seek marks the stream
    // corrupt), then reads the next window from there.
    bool fetchNextWindow(uint64_t skip) override;
    bool flushWindow() override;

private:
    // A skip this long is worth a call of its own: reading the next record alone costs about
    // what copying this many bytes through the window does.
    static constexpr uint64_t SEEK_WORTHY_SKIP = 8 << 10;
    static constexpr uint64_t FIRST_WINDOW = 64 << 10;
    static constexpr uint64_t FIRST_SPARSE_WINDOW = 512;
    static constexpr uint64_t MAX_SPARSE_WINDOW = 64 << 10;

    uint64_t nextWindowSize();
    // Blocks of at least this size go to a writer thread (smaller ones are written here: a
    // hand-over per few bytes would cost more than it saves).
    static constexpr int MIN_THREADED_BLOCK_SIZE = 1 << 16;
    // Blocks beside the stream's own while a writer thread runs: one being written, one
    // being filled, one to spare while the device is slow.
    static constexpr int SPARE_BLOCKS = 2;
    // Hands the window's bytes to the device and starts the next window; `moreToCome` when
    // the window is full, not when the save flushes what it wrote.
    bool writeWindow(bool moreToCome);
    void releaseDevice();
    void reportDeviceError(const char* what);
    void reportDeviceError(const char* what, uint64_t offset);

    char* mBlock;
    int mBlockSize;
    std::unique_ptr<char[]> mOwnedBlock;
    uint64_t mStreamSize = 0;
    uint64_t mLeftToFetch = 0;
    // Reading: the bytes the next window asks of the device, and the smaller window used
    // while the records lie between large blocks passed over.
    uint64_t mWindowGoal = 0;
    uint64_t mSparseWindow = 0;
    bool mSparse = false;        // the window holds one record between skipped blocks
    bool mDeviceFollows = true;  // the device's position is the end of the window
    zuIoDevice* mInput = nullptr;
    zuIoDevice* mOutput = nullptr;
    std::unique_ptr<zuBlockWriter> mWriter;
    bool mWriterRefused = false;  // no writer thread could be made for this save
    std::string mText;  // a header text gathered across blocks
};

} // namespace zu
