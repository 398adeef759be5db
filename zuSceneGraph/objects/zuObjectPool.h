#pragma once

#include <cstddef>

namespace zu {

// Memory for the objects of a scene tree, in size classes of 16 bytes carved from large
// chunks, so that objects made one after another lie next to one another whatever else the
// application allocates between them (a mesh's buffers, their data): the update and culling
// walks then read a scene in long runs of memory instead of one object per page.
//
// A freed block is reused by the next object of its size; a chunk whose blocks are all free
// gives its memory back to the system (but the last one with room in its size class).
// Blocks above MAX_POOLED_SIZE come from the global operator new. Thread-safe. Address and
// memory sanitizer builds use the global operator new for every block, so that their checks
// see each object.
class zuObjectPool {
public:
    static constexpr size_t MAX_POOLED_SIZE = 1024;

    static void* allocate(size_t size);
    // `size` is the one given to allocate.
    static void release(void* block, size_t size) noexcept;

    // Data blocks (a buffer's bytes), from chunks of their own: freed by address alone, as
    // their owners free them. allocateBlock gives null when the memory is not there; a
    // block of 0 bytes is a distinct address, as new char[0] gives.
    static void* allocateBlock(size_t size) noexcept;
    static void releaseBlock(void* block) noexcept;

    // While one of these lives (in any thread), a thread of the pool makes the pages of the
    // next chunks of every size class before they are handed out, so that a large load
    // spends its time reading and not waiting for the system to provide fresh memory. A
    // machine with a single processor gets no thread.
    class Prefill {
    public:
        Prefill();
        ~Prefill();
        Prefill(const Prefill&) = delete;
        Prefill& operator=(const Prefill&) = delete;
    };
    // While a Prefill lives, its thread also makes the pages of this range soon: a hint for
    // memory about to be written (the next part of a growing array), dropped when the
    // thread has many waiting or none runs. The range must stay mapped while a Prefill lives.
    static void prefault(const void* address, size_t bytes) noexcept;
};

} // namespace zu
