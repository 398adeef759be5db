#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace zu {

class zuIoDevice;

// Hands the full blocks of a save to the device on a thread of its own, so that the
// device's copy of one block runs while the stream fills the next. The blocks are written
// in the order they were handed over; after the first failed write the others are dropped.
class zuBlockWriter {
public:
    // `spareBlocks` blocks of `blockSize` bytes are allocated here, beside the stream's own.
    zuBlockWriter(zuIoDevice& device, size_t blockSize, int spareBlocks);
    zuBlockWriter(const zuBlockWriter&) = delete;
    zuBlockWriter& operator=(const zuBlockWriter&) = delete;
    // Waits for the blocks still queued.
    ~zuBlockWriter();

    // Queues the first `size` bytes of `block`, which lie at stream offset `offset`, and
    // returns a block to fill next, waiting until one is written when none is free. The
    // queued block must stay untouched until it comes back from here or finish() returns.
    char* submit(char* block, size_t size, uint64_t offset);
    // Waits until every queued block is written; false when a write failed.
    bool finish();
    // Whether a write failed, and the stream offset where the first block that failed starts.
    bool failed() const;
    uint64_t failedOffset() const;

private:
    struct Job {
        char* block;
        size_t size;
        uint64_t offset;
    };
    void run();

    zuIoDevice& mDevice;
    std::vector<std::unique_ptr<char[]>> mSpares;
    mutable std::mutex mMutex;
    std::condition_variable mChanged;
    std::deque<Job> mQueue;
    std::vector<char*> mFree;
    bool mWriting = false;   // the thread holds a job out of the queue
    bool mStopping = false;
    bool mFailed = false;
    uint64_t mFailedOffset = 0;
    std::thread mThread;
};

} // namespace zu
