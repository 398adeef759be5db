#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

namespace zu {

// Memory of the blocks of zuObjBlockArray after the first: 2 MB, aligned to 2 MB and
// advised to the kernel as a huge page, so that filling it costs one page fault instead of
// 512 (the kernel may decline; nothing depends on it).
struct zuObjHugeBlocks {
    static constexpr size_t BYTES = size_t(2) << 20;
    // Throws std::bad_alloc when the memory is not there.
    static void* Allocate();
    static void Free(void* block);
};

// Records of N values of T (a plain number type) in blocks: growing never copies more than
// the first block and never holds more than one partly filled block, so a large file's arrays
// take what they hold and no doubling reserve. The first block starts small and doubles up
// to its full size, so that the many small arrays of a file of many small groups stay small;
// the blocks after it are whole huge pages (a page counts once written).
template <class T, int N>
class zuObjBlockArray {
public:
    static constexpr size_t BLOCK_RECORDS = zuObjHugeBlocks::BYTES / (N * sizeof(T));
    static constexpr size_t FIRST_RECORDS = 16;

    zuObjBlockArray() = default;
    zuObjBlockArray(const zuObjBlockArray&) = delete;
    zuObjBlockArray& operator=(const zuObjBlockArray&) = delete;
    ~zuObjBlockArray() { clear(); }

    size_t size() const { return mSize; }
    bool empty() const { return mSize == 0; }
    const T* operator[](size_t i) const { return mBlocks[i / BLOCK_RECORDS] + (i % BLOCK_RECORDS) * N; }
    T* operator[](size_t i) { return mBlocks[i / BLOCK_RECORDS] + (i % BLOCK_RECORDS) * N; }

    // Appends `records` records from `values` (records × N values).
    void append(const T* values, size_t records)
    {
        while (records > 0) {
            const size_t taken = makeRoom(records);
            std::memcpy(mNext, values, taken * N * sizeof(T));
            values += taken * N;
            mNext += taken * N;
            mSize += taken;
            records -= taken;
        }
    }
    // Appends `records` records whose every value is `value`.
    void appendFilled(T value, size_t records)
    {
        while (records > 0) {
            const size_t taken = makeRoom(records);
            std::fill(mNext, mNext + taken * N, value);
            mNext += taken * N;
            mSize += taken;
            records -= taken;
        }
    }
    [[gnu::always_inline]] void push_back(const T* record)
    {
        if (mNext == mLimit)
            makeRoom(1);
        for (int k = 0; k < N; ++k)
            mNext[k] = record[k];
        mNext += N;
        ++mSize;
    }
    // Calls `run(values, records)` for the records of each block in order.
    template <class Run>
    void forEachBlock(Run&& run) const
    {
        for (size_t block = 0; block < mBlocks.size(); ++block) {
            const size_t first = block * BLOCK_RECORDS;
            run(static_cast<const T*>(mBlocks[block]), std::min(mSize - first, BLOCK_RECORDS));
        }
    }
    // Frees every block.
    void clear()
    {
        for (size_t block = 0; block < mBlocks.size(); ++block) {
            if (block == 0)
                std::free(mBlocks[block]);
            else
                zuObjHugeBlocks::Free(mBlocks[block]);
        }
        mBlocks.clear();
        mBlocks.shrink_to_fit();
        mSize = 0;
        mCapacity = 0;
        mNext = mLimit = nullptr;
    }

private:
    // Makes room for the next records and returns how many of `wanted` fit in the last block.
    size_t makeRoom(size_t wanted)
    {
        if (mSize == mCapacity) {
            if (mBlocks.empty() || (mBlocks.size() == 1 && mCapacity < BLOCK_RECORDS)) {
                size_t capacity = mCapacity == 0 ? FIRST_RECORDS : mCapacity;
                while (capacity < mSize + wanted && capacity < BLOCK_RECORDS)
                    capacity *= 2;
                capacity = std::min(capacity, BLOCK_RECORDS);
                T* first = static_cast<T*>(std::realloc(mBlocks.empty() ? nullptr : mBlocks[0], capacity * N * sizeof(T)));
                if (!first)
                    throw std::bad_alloc();
                if (mBlocks.empty())
                    mBlocks.push_back(first);
                else
                    mBlocks[0] = first;
                mCapacity = capacity;
                mNext = first + mSize * N;
                mLimit = first + capacity * N;
            } else {
                mBlocks.reserve(mBlocks.size() + 1);
                T* block = static_cast<T*>(zuObjHugeBlocks::Allocate());
                mBlocks.push_back(block);
                mCapacity += BLOCK_RECORDS;
                mNext = block;
                mLimit = block + BLOCK_RECORDS * N;
            }
        }
        return std::min(wanted, mCapacity - mSize);
    }

    std::vector<T*> mBlocks;
    size_t mSize = 0;
    size_t mCapacity = 0;  // records the blocks can hold
    T* mNext = nullptr;    // where the next record goes
    T* mLimit = nullptr;   // the end of the last block
};

// The vertex statements of a whole OBJ file, in file order, as the faces refer to them.
// Colours exist for every position once any vertex has one (white for the others).
struct zuObjVertexData {
    zuObjBlockArray<float, 3> positions;
    zuObjBlockArray<float, 4> colors;
    zuObjBlockArray<float, 2> texCoords;
    zuObjBlockArray<float, 3> normals;
    bool hasAlpha = false;

    bool hasColors() const { return !colors.empty(); }
    void clear()
    {
        positions.clear();
        colors.clear();
        texCoords.clear();
        normals.clear();
        hasAlpha = false;
    }
};

} // namespace zu
