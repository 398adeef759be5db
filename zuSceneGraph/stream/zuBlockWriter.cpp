#include <zuSceneGraph/stream/zuBlockWriter.h>

#include <zuSystem/zuIoDevice.h>

#include <utility>

namespace zu {

zuBlockWriter::zuBlockWriter(zuIoDevice& device, size_t blockSize, int spareBlocks) : mDevice(device)
{
    for (int i = 0; i < spareBlocks; ++i) {
        // Not zeroed: a block is written before it is read.
        std::unique_ptr<char[]> block(new char[blockSize]);
        mFree.push_back(block.get());
        mSpares.push_back(std::move(block));
    }
    mThread = std::thread([this] { run(); });
}

zuBlockWriter::~zuBlockWriter()
{
    finish();
    {
        std::lock_guard<std::mutex> lock(mMutex);
        mStopping = true;
    }
    mChanged.notify_all();
    mThread.join();
}

char* zuBlockWriter::submit(char* block, size_t size, uint64_t offset)
{
    std::unique_lock<std::mutex> lock(mMutex);
    mQueue.push_back(Job{block, size, offset});
    mChanged.notify_all();
    mChanged.wait(lock, [this] { return !mFree.empty(); });
    char* next = mFree.back();
    mFree.pop_back();
    return next;
}

bool zuBlockWriter::finish()
{
    std::unique_lock<std::mutex> lock(mMutex);
    mChanged.wait(lock, [this] { return mQueue.empty() && !mWriting; });
    return !mFailed;
}

bool zuBlockWriter::failed() const
{
    std::lock_guard<std::mutex> lock(mMutex);
    return mFailed;
}

uint64_t zuBlockWriter::failedOffset() const
{
    std::lock_guard<std::mutex> lock(mMutex);
    return mFailedOffset;
}

void zuBlockWriter::run()
{
    std::unique_lock<std::mutex> lock(mMutex);
    for (;;) {
        mChanged.wait(lock, [this] { return mStopping || !mQueue.empty(); });
        if (mQueue.empty())
            return;
        const Job job = mQueue.front();
        mQueue.pop_front();
        const bool failed = mFailed;
        mWriting = true;
        lock.unlock();
        bool written = true;
        if (!failed) {
            // A device of the application's that throws fails the save, as a failed write.
            try {
                const int64_t size = static_cast<int64_t>(job.size);
                written = mDevice.write(job.block, size) == size && !mDevice.isError();
            } catch (...) {
                written = false;
            }
        }
        lock.lock();
        mWriting = false;
        if (!written && !mFailed) {
            mFailed = true;
            mFailedOffset = job.offset;
        }
        mFree.push_back(job.block);
        mChanged.notify_all();
    }
}

} // namespace zu
