#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zu {

// Records of N values of T in blocks of 2^14 records: growing never copies more than the
// last block and never holds more than one partly filled block, so a large file's arrays
// take what they hold and no doubling reserve. The last block starts small and doubles up
// to its full size, so that the many small arrays of a file of many small groups stay small.
template <class T, int N>
class zuObjBlockArray {
public:
    static constexpr int BLOCK_SHIFT = 14;
    static constexpr size_t BLOCK_RECORDS = size_t(1) << BLOCK_SHIFT;
    static constexpr size_t FIRST_RECORDS = 16;

    size_t size() const { return mSize; }
    bool empty() const { return mSize == 0; }
    const T* operator[](size_t i) const { return mBlocks[i >> BLOCK_SHIFT].data() + (i & (BLOCK_RECORDS - 1)) * N; }
    T* operator[](size_t i) { return mBlocks[i >> BLOCK_SHIFT].data() + (i & (BLOCK_RECORDS - 1)) * N; }

    // Appends `records` records from `values` (records × N values).
    void append(const T* values, size_t records)
    {
        while (records > 0) {
            const size_t taken = reserveRun(records);
            mBlocks.back().insert(mBlocks.back().end(), values, values + taken * N);
            values += taken * N;
            mSize += taken;
            records -= taken;
        }
    }
    // Appends `records` records whose every value is `value`.
    void appendFilled(T value, size_t records)
    {
        while (records > 0) {
            const size_t taken = reserveRun(records);
            mBlocks.back().insert(mBlocks.back().end(), taken * N, value);
            mSize += taken;
            records -= taken;
        }
    }
    [[gnu::always_inline]] void push_back(const T* record)
    {
        if ((mSize & (BLOCK_RECORDS - 1)) == 0 || mBlocks.back().size() == mBlocks.back().capacity())
            reserveRun(1);
        std::vector<T>& block = mBlocks.back();
        for (int k = 0; k < N; ++k)
            block.push_back(record[k]);
        ++mSize;
    }
    // Frees every block.
    void clear()
    {
        mBlocks.clear();
        mBlocks.shrink_to_fit();
        mSize = 0;
    }

private:
    // Makes room for the next records in the last block and returns how many of `wanted`
    // fit there.
    size_t reserveRun(size_t wanted)
    {
        const size_t offset = mSize & (BLOCK_RECORDS - 1);
        if (offset == 0)
            mBlocks.emplace_back();
        std::vector<T>& block = mBlocks.back();
        const size_t room = BLOCK_RECORDS - offset;
        const size_t taken = wanted < room ? wanted : room;
        if (block.capacity() < (offset + taken) * N) {
            size_t capacity = block.capacity() / N;
            capacity = capacity == 0 ? FIRST_RECORDS : capacity;
            while (capacity < offset + taken)
                capacity *= 2;
            block.reserve((capacity < BLOCK_RECORDS ? capacity : BLOCK_RECORDS) * N);
        }
        return taken;
    }

    std::vector<std::vector<T>> mBlocks;
    size_t mSize = 0;
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
