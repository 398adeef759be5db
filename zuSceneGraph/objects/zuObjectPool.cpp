#include <zuSceneGraph/objects/zuObjectPool.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <new>
#include <thread>
#include <vector>

#include <sys/mman.h>

namespace zu {

namespace {

// Address and memory checks must see each object; the thread checker sees the pool's lock.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool POOLED = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)
constexpr bool POOLED = false;
#else
constexpr bool POOLED = true;
#endif
#else
constexpr bool POOLED = true;
#endif

// Makes the pages of a range as a write would, in one call; a kernel without the advice
// refuses it, and the pages fault in when first written.
#ifdef MADV_POPULATE_WRITE
constexpr int POPULATE_WRITE = MADV_POPULATE_WRITE;
#else
constexpr int POPULATE_WRITE = 23;
#endif
constexpr uintptr_t PAGE_SIZE = 4096;

// Makes the pages of the range from `address` on, as writes would (from the page that holds
// `address`).
void populatePages(const void* address, size_t bytes) noexcept
{
    const uintptr_t begin = reinterpret_cast<uintptr_t>(address) & ~(PAGE_SIZE - 1);
    const uintptr_t end = reinterpret_cast<uintptr_t>(address) + bytes;
    ::madvise(reinterpret_cast<void*>(begin), end - begin, POPULATE_WRITE);
}

constexpr size_t GRANULE = 16;
constexpr size_t CLASS_QUANTITY = zuObjectPool::MAX_POOLED_SIZE / GRANULE;
// Chunks are aligned to their size, so that a block finds its chunk by its address.
constexpr size_t CHUNK_SIZE = 64 * 1024;

struct FreeBlock {
    FreeBlock* next;
};

// The head of a chunk; its blocks follow. A chunk with room (a freed block or space never
// used) is on its size class's list; a full one is on no list.
struct alignas(GRANULE) Chunk {
    Chunk* previous = nullptr;
    Chunk* next = nullptr;
    FreeBlock* freed = nullptr;
    char* unused = nullptr;
    size_t live = 0;
    uint32_t index = 0;  // the size class
    bool listed = false;

    char* end() { return reinterpret_cast<char*>(this) + CHUNK_SIZE; }
};

// Chunks come from the system in batches of 2 MB, mapped once and trimmed to the chunk
// alignment: an aligned heap allocation per chunk would leave a gap of up to a chunk beside
// each one (64 bytes a leaf in a tree of small meshes). A chunk that falls empty gives its pages back
// to the system (all but the first, which links it) and waits for reuse.
class ChunkSource {
public:
    // Chunks whose pages the prefill thread made ahead, and how many it keeps at hand.
    static constexpr size_t READY_TARGET = 32;

    void* take()
    {
        if (mReadyCount > 0) {
            void* chunk = mReady[mReadyFirst];
            mReadyFirst = (mReadyFirst + 1) % READY_TARGET;
            --mReadyCount;
            return chunk;
        }
        void* chunk = carve();
        populate(chunk);
        return chunk;
    }
    // A chunk whose pages are not made yet.
    void* carve()
    {
        void* chunk;
        if (mSpare) {
            chunk = mSpare;
            mSpare = *static_cast<void**>(chunk);
        } else {
            if (mNext == mEnd && !mapBatch())
                throw std::bad_alloc();
            chunk = mNext;
            mNext += CHUNK_SIZE;
        }
        return chunk;
    }
    // A chunk handed out is about to be filled: its pages are made in one call rather than
    // by a fault each. Kernels without the advice fault them in as before.
    static void populate(void* chunk) noexcept { populatePages(chunk, CHUNK_SIZE); }
    // How many chunks the prefill thread may make ready now (some may be on their way).
    size_t readyWanted() const { return READY_TARGET - mReadyCount - mReadyComing; }
    size_t readyCount() const { return mReadyCount; }
    void expectReady(size_t count) { mReadyComing += count; }
    void addReady(void* chunk)
    {
        mReady[(mReadyFirst + mReadyCount) % READY_TARGET] = chunk;
        ++mReadyCount;
        --mReadyComing;
    }
    // Whether `address` lies in a chunk this source mapped.
    bool owns(const void* address) const
    {
        const auto at = reinterpret_cast<uintptr_t>(address);
        const auto after = std::upper_bound(mBatches.begin(), mBatches.end(), at);
        return after != mBatches.begin() && at - *(after - 1) < BATCH_SIZE;
    }
    void give(void* chunk) noexcept
    {
        ::madvise(static_cast<char*>(chunk) + PAGE_SIZE, CHUNK_SIZE - PAGE_SIZE, MADV_DONTNEED);
        *static_cast<void**>(chunk) = mSpare;
        mSpare = chunk;
    }

private:
    static constexpr size_t BATCH_SIZE = 32 * CHUNK_SIZE;

    bool mapBatch()
    {
        const size_t length = BATCH_SIZE + CHUNK_SIZE;
        void* mapped = ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED)
            return false;
        try {
            mBatches.reserve(mBatches.size() + 1);
        } catch (const std::bad_alloc&) {
            ::munmap(mapped, length);
            return false;
        }
        const uintptr_t begin = reinterpret_cast<uintptr_t>(mapped);
        const uintptr_t start = (begin + CHUNK_SIZE - 1) & ~(uintptr_t(CHUNK_SIZE) - 1);
        const size_t head = start - begin;
        if (head != 0)
            ::munmap(mapped, head);
        if (length - head > BATCH_SIZE)
            ::munmap(reinterpret_cast<char*>(start + BATCH_SIZE), length - head - BATCH_SIZE);
        mNext = reinterpret_cast<char*>(start);
        mEnd = mNext + BATCH_SIZE;
        mBatches.insert(std::upper_bound(mBatches.begin(), mBatches.end(), start), start);
        return true;
    }

    // The first address of every batch, in order.
    std::vector<uintptr_t> mBatches;
    char* mNext = nullptr;
    char* mEnd = nullptr;
    void* mSpare = nullptr;
    // A ring of the chunks made ready, oldest first (lower addresses are handed out first).
    void* mReady[READY_TARGET] = {};
    size_t mReadyFirst = 0;
    size_t mReadyCount = 0;
    size_t mReadyComing = 0;  // carved by the prefill thread, pages being made
};

void wakePrefill() noexcept;

class Pool {
public:
    void* allocate(size_t index)
    {
        const size_t size = (index + 1) * GRANULE;
        const std::lock_guard<std::mutex> lock(mMutex);
        Chunk* chunk = mRoomy[index];
        if (!chunk) {
            chunk = new (mChunks.take()) Chunk;
            if (mChunks.readyCount() < ChunkSource::READY_TARGET / 2)
                wakePrefill();
            chunk->index = static_cast<uint32_t>(index);
            chunk->unused = reinterpret_cast<char*>(chunk + 1);
            link(index, chunk);
        }
        void* block;
        if (chunk->freed) {
            block = chunk->freed;
            chunk->freed = chunk->freed->next;
        } else {
            block = chunk->unused;
            chunk->unused += size;
        }
        ++chunk->live;
        if (!chunk->freed && static_cast<size_t>(chunk->end() - chunk->unused) < size)
            unlink(index, chunk);
        return block;
    }

    void release(void* block, size_t index) noexcept
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        releaseLocked(block, index);
    }

    // Tops up the chunks made ready, making their pages outside the lock; true when it made
    // any.
    bool prefill() noexcept
    {
        void* chunks[ChunkSource::READY_TARGET];
        size_t count = 0;
        {
            const std::lock_guard<std::mutex> lock(mMutex);
            try {
                for (size_t wanted = mChunks.readyWanted(); count < wanted; ++count)
                    chunks[count] = mChunks.carve();
            } catch (const std::bad_alloc&) {
            }
            mChunks.expectReady(count);
        }
        for (size_t i = 0; i < count; ++i)
            ChunkSource::populate(chunks[i]);
        const std::lock_guard<std::mutex> lock(mMutex);
        for (size_t i = 0; i < count; ++i)
            mChunks.addReady(chunks[i]);
        return count > 0;
    }

    // A block of this pool is released and true returned; any other address gives false.
    bool releaseOwned(void* block) noexcept
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (!mChunks.owns(block))
            return false;
        releaseLocked(block, chunkOf(block)->index);
        return true;
    }

private:
    static Chunk* chunkOf(void* block)
    {
        return reinterpret_cast<Chunk*>(reinterpret_cast<uintptr_t>(block) & ~(uintptr_t(CHUNK_SIZE) - 1));
    }

    void releaseLocked(void* block, size_t index) noexcept
    {
        Chunk* chunk = chunkOf(block);
        auto* freed = static_cast<FreeBlock*>(block);
        freed->next = chunk->freed;
        chunk->freed = freed;
        --chunk->live;
        if (!chunk->listed)
            link(index, chunk);
        // An empty chunk goes back, unless it is the last one with room for its class.
        if (chunk->live == 0 && (chunk->previous || chunk->next)) {
            unlink(index, chunk);
            chunk->~Chunk();
            mChunks.give(chunk);
        }
    }

    // New chunks and chunks that got room go first, so that objects made together stay
    // together.
    void link(size_t index, Chunk* chunk)
    {
        chunk->previous = nullptr;
        chunk->next = mRoomy[index];
        if (chunk->next)
            chunk->next->previous = chunk;
        mRoomy[index] = chunk;
        chunk->listed = true;
    }
    void unlink(size_t index, Chunk* chunk)
    {
        if (chunk->previous)
            chunk->previous->next = chunk->next;
        else
            mRoomy[index] = chunk->next;
        if (chunk->next)
            chunk->next->previous = chunk->previous;
        chunk->previous = chunk->next = nullptr;
        chunk->listed = false;
    }

    std::mutex mMutex;
    Chunk* mRoomy[CLASS_QUANTITY] = {};
    ChunkSource mChunks;
};

// Never destroyed: objects may be released while static objects are torn down.
Pool& pool()
{
    static Pool* instance = new Pool;
    return *instance;
}

// Data blocks have chunks of their own, so that they do not come between the objects of a
// tree.
Pool& blockPool()
{
    static Pool* instance = new Pool;
    return *instance;
}

// The thread that makes chunks ready while a Prefill lives: it makes the pages of the ranges
// it was given, tops up every pool, then sleeps until a pool has handed out half of its ready
// chunks or a range comes.
class PrefillThread {
public:
    void begin()
    {
        const std::lock_guard<std::mutex> life(mLifeMutex);
        if (mUsers++ > 0 || !POOLED || std::thread::hardware_concurrency() < 2)
            return;
        try {
            mStop = false;
            mWanted = true;
            mThread = std::thread([this] { run(); });
            mActive.store(true, std::memory_order_relaxed);
        } catch (const std::system_error&) {
            // No thread: the pools make their pages as they hand chunks out.
        }
    }
    void end()
    {
        const std::lock_guard<std::mutex> life(mLifeMutex);
        if (--mUsers > 0 || !mThread.joinable())
            return;
        mActive.store(false, std::memory_order_relaxed);
        {
            const std::lock_guard<std::mutex> lock(mMutex);
            mStop = true;
        }
        mWake.notify_one();
        mThread.join();
    }
    void wake() noexcept
    {
        if (!mActive.load(std::memory_order_relaxed))
            return;
        {
            const std::lock_guard<std::mutex> lock(mMutex);
            mWanted = true;
        }
        mWake.notify_one();
    }
    void prefault(const void* address, size_t bytes) noexcept
    {
        if (!mActive.load(std::memory_order_relaxed) || bytes == 0)
            return;
        {
            const std::lock_guard<std::mutex> lock(mMutex);
            if (mRangeCount == RANGES)
                return;
            mRanges[(mRangeFirst + mRangeCount++) % RANGES] = {static_cast<const char*>(address), bytes};
            mWanted = true;
        }
        mWake.notify_one();
    }

private:
    void run()
    {
        std::unique_lock<std::mutex> lock(mMutex);
        while (!mStop) {
            if (!mWanted) {
                mWake.wait(lock);
                continue;
            }
            mWanted = false;
            while (mRangeCount > 0) {
                const Range range = mRanges[mRangeFirst];
                mRangeFirst = (mRangeFirst + 1) % RANGES;
                --mRangeCount;
                lock.unlock();
                populatePages(range.begin, range.bytes);
                lock.lock();
            }
            lock.unlock();
            // The pools' locks are never taken while this one is held: a pool wakes the
            // thread under its own lock.
            pool().prefill();
            blockPool().prefill();
            lock.lock();
        }
        mRangeCount = 0;
    }

    struct Range {
        const char* begin;
        size_t bytes;
    };

    std::mutex mLifeMutex;  // begin and end, whole
    int mUsers = 0;
    std::thread mThread;
    std::atomic<bool> mActive{false};
    std::mutex mMutex;  // the flags and the ranges
    std::condition_variable mWake;
    bool mWanted = false;
    bool mStop = false;
    static constexpr size_t RANGES = 8;
    Range mRanges[RANGES] = {};
    size_t mRangeFirst = 0;
    size_t mRangeCount = 0;
};

PrefillThread& prefillThread()
{
    static PrefillThread* instance = new PrefillThread;
    return *instance;
}

void wakePrefill() noexcept
{
    prefillThread().wake();
}

bool pooled(size_t size)
{
    return POOLED && size > 0 && size <= zuObjectPool::MAX_POOLED_SIZE;
}

} // namespace

void* zuObjectPool::allocate(size_t size)
{
    if (!pooled(size))
        return ::operator new(size);
    return pool().allocate((size - 1) / GRANULE);
}

void zuObjectPool::release(void* block, size_t size) noexcept
{
    if (!block)
        return;
    if (!pooled(size)) {
        ::operator delete(block);
        return;
    }
    pool().release(block, (size - 1) / GRANULE);
}

void* zuObjectPool::allocateBlock(size_t size) noexcept
{
    if (!pooled(size))
        return new (std::nothrow) char[size];
    try {
        return blockPool().allocate((size - 1) / GRANULE);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void zuObjectPool::prefault(const void* address, size_t bytes) noexcept
{
    prefillThread().prefault(address, bytes);
}

zuObjectPool::Prefill::Prefill()
{
    prefillThread().begin();
}

zuObjectPool::Prefill::~Prefill()
{
    prefillThread().end();
}

void zuObjectPool::releaseBlock(void* block) noexcept
{
    if (block && !(POOLED && blockPool().releaseOwned(block)))
        delete[] static_cast<char*>(block);
}

} // namespace zu
