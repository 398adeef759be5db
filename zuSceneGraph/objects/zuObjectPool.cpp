#include <zuSceneGraph/objects/zuObjectPool.h>

#include <cstdint>
#include <mutex>
#include <new>

namespace zu {

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool POOLED = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
constexpr bool POOLED = false;
#else
constexpr bool POOLED = true;
#endif
#else
constexpr bool POOLED = true;
#endif

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
    bool listed = false;

    char* end() { return reinterpret_cast<char*>(this) + CHUNK_SIZE; }
};

class Pool {
public:
    void* allocate(size_t index)
    {
        const size_t size = (index + 1) * GRANULE;
        const std::lock_guard<std::mutex> lock(mMutex);
        Chunk* chunk = mRoomy[index];
        if (!chunk) {
            chunk = new (::operator new(CHUNK_SIZE, std::align_val_t(CHUNK_SIZE))) Chunk;
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
        auto* chunk = reinterpret_cast<Chunk*>(reinterpret_cast<uintptr_t>(block) & ~(uintptr_t(CHUNK_SIZE) - 1));
        const std::lock_guard<std::mutex> lock(mMutex);
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
            ::operator delete(chunk, std::align_val_t(CHUNK_SIZE));
        }
    }

private:
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
};

// Never destroyed: objects may be released while static objects are torn down.
Pool& pool()
{
    static Pool* instance = new Pool;
    return *instance;
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

} // namespace zu
