#include <zuSceneGraph/io/zuObjVertexData.h>

#include <zuSceneGraph/resources/zuBlockResourceHandler.h>

#include <sys/mman.h>

#include <cstdint>

namespace zu {

void* zuObjHugeBlocks::Allocate()
{
    // Twice the size is mapped and the ends cut off, which leaves one aligned block.
    void* mapped = ::mmap(nullptr, 2 * BYTES, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED)
        throw std::bad_alloc();
    const uintptr_t start = reinterpret_cast<uintptr_t>(mapped);
    const uintptr_t block = (start + BYTES - 1) & ~uintptr_t(BYTES - 1);
    if (block > start)
        ::munmap(mapped, block - start);
    if (const uintptr_t tail = start + 2 * BYTES - (block + BYTES))
        ::munmap(reinterpret_cast<void*>(block + BYTES), tail);
    zuBlockResourceHandler::AdviseHugePages(reinterpret_cast<void*>(block), BYTES);
    return reinterpret_cast<void*>(block);
}

void zuObjHugeBlocks::Free(void* block)
{
    if (block)
        ::munmap(block, BYTES);
}

} // namespace zu
