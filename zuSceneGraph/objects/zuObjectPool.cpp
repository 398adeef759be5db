#include <zuSceneGraph/objects/zuObjectPool.h>

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
constexpr size_t CHUNK_SIZE = 64 * 1024;

struct FreeBlock {
    FreeBlock* next;
};

class Pool {
public:
    void* allocate(size_t index)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (FreeBlock* block = mFree[index]) {
            mFree[index] = block->next;
            return block;
        }
        const size_t size = (index + 1) * GRANULE;
        SizeClass& sizeClass = mClasses[index];
        if (static_cast<size_t>(sizeClass.end - sizeClass.next) < size) {
            sizeClass.next = static_cast<char*>(::operator new(CHUNK_SIZE));
            sizeClass.end = sizeClass.next + CHUNK_SIZE;
        }
        void* block = sizeClass.next;
        sizeClass.next += size;
        return block;
    }
    void release(void* block, size_t index) noexcept
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        auto* freed = static_cast<FreeBlock*>(block);
        freed->next = mFree[index];
        mFree[index] = freed;
    }

private:
    struct SizeClass {
        char* next = nullptr;
        char* end = nullptr;
    };
    std::mutex mMutex;
    FreeBlock* mFree[CLASS_QUANTITY] = {};
    SizeClass mClasses[CLASS_QUANTITY];
};

// Never destroyed: objects may be released while static objects are torn down.
Pool& pool()
{
    static Pool* instance = new Pool;
    return *instance;
}

} // namespace

void* zuObjectPool::allocate(size_t size)
{
    if (!POOLED || size == 0 || size > MAX_POOLED_SIZE)
        return ::operator new(size);
    return pool().allocate((size - 1) / GRANULE);
}

void zuObjectPool::release(void* block, size_t size) noexcept
{
    if (!block)
        return;
    if (!POOLED || size == 0 || size > MAX_POOLED_SIZE) {
        ::operator delete(block);
        return;
    }
    pool().release(block, (size - 1) / GRANULE);
}

} // namespace zu
