#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace zu {

// Records of N values of T in blocks of 2^14 records: growing never copies what is stored
// and never holds more than one partly filled block, so a large file's arrays take what
// they hold and no doubling reserve.
template <class T, int N>
class zuObjBlockArray {
public:
    static constexpr int BLOCK_SHIFT = 14;
    static constexpr size_t BLOCK_RECORDS = size_t(1) << BLOCK_SHIFT;

    size_t size() const { return mSize; }
    bool empty() const { return mSize == 0; }
    const T* operator[](size_t i) const { return mBlocks[i >> BLOCK_SHIFT].get() + (i & (BLOCK_RECORDS - 1)) * N; }
    T* operator[](size_t i) { return mBlocks[i >> BLOCK_SHIFT].get() + (i & (BLOCK_RECORDS - 1)) * N; }

    // Appends `records` records from `values` (records × N values).
    void append(const T* values, size_t records)
    {
        while (records > 0) {
            const size_t taken = reserveRun(records);
            std::copy(values, values + taken * N, (*this)[mSize]);
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
            std::fill((*this)[mSize], (*this)[mSize] + taken * N, value);
            mSize += taken;
            records -= taken;
        }
    }
    void push_back(const T* record)
    {
        const size_t offset = mSize & (BLOCK_RECORDS - 1);
        if (offset == 0 && (mSize >> BLOCK_SHIFT) == mBlocks.size())
            mBlocks.emplace_back(new T[BLOCK_RECORDS * N]);
        std::copy(record, record + N, mBlocks[mSize >> BLOCK_SHIFT].get() + offset * N);
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
    // Makes room for the next record and returns how many of `wanted` fit in its block.
    size_t reserveRun(size_t wanted)
    {
        const size_t offset = mSize & (BLOCK_RECORDS - 1);
        if (offset == 0 && (mSize >> BLOCK_SHIFT) == mBlocks.size())
            mBlocks.emplace_back(new T[BLOCK_RECORDS * N]);
        const size_t room = BLOCK_RECORDS - offset;
        return wanted < room ? wanted : room;
    }

    std::vector<std::unique_ptr<T[]>> mBlocks;
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
