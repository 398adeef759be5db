// The index buffer: resizing, ConvertToShort at the 16-bit limit, the delta packing and its
// widths, exact records at 6.32 and at the 4.2, 5.2 and 6.32 gates, empty 32-bit buffers
// with and without a first index, and hostile records.

#include "resources/zuResourceTestSupport.h"
#include "support/zuOutputCapture.h"

#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuResourceIdentifier.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zu::test {
namespace {

using Values = std::vector<unsigned int>;

zuPointer<zuIndexBuffer> makeIndices(const Values& values, zuIndexBuffer::IndexBufferType type = zuIndexBuffer::INDEX_32)
{
    zuPointer<zuIndexBuffer> buffer = new zuIndexBuffer(static_cast<int>(values.size()), type);
    for (size_t k = 0; k < values.size(); ++k)
        buffer->SetIndex(static_cast<int>(k), values[k]);
    return buffer;
}

Values valuesOf(const zuIndexBuffer& buffer)
{
    Values values;
    for (int k = 0; k < buffer.GetIndexQuantity(); ++k)
        values.push_back(buffer.GetIndex(k));
    return values;
}

std::vector<char> streamOf(const zuBytes& fields, uint64_t identity, zuStreamVersion version)
{
    return recordStream("zuCore.zuIndexBuffer", fields, identity, version);
}

// Loads quietly: the failing loads report on stderr.
zuPointer<zuIndexBuffer> loadBuffer(std::vector<char> bytes, zuStreamVersion version, std::string* errors = nullptr)
{
    zuOutputCapture capturedErr(zuOutputCapture::STDERR);
    zuPointer<zuIndexBuffer> loaded = loadSingle<zuIndexBuffer>(std::move(bytes), version);
    const std::string captured = capturedErr.take();
    if (errors)
        *errors = captured;
    return loaded;
}

class IndexBuffer : public ResourceLibrary {};

TEST_F(IndexBuffer, ConstructionResizeAndCopies)
{
    zuIndexBuffer buffer(3, zuIndexBuffer::INDEX_16);
    EXPECT_EQ(buffer.getCPUSize(), 6u);
    EXPECT_EQ(valuesOf(buffer), (Values{0, 0, 0}));
    EXPECT_EQ(buffer.GetIndices32(), nullptr);
    buffer.SetIndex(0, 7);
    buffer.SetIndex(2, 9);
    buffer.SetIndex(3, 1);  // outside: ignored

    ASSERT_TRUE(buffer.resizeIndexBuffer(5));
    EXPECT_EQ(valuesOf(buffer), (Values{7, 0, 9, 0, 0}));
    ASSERT_TRUE(buffer.resizeIndexBuffer(2));
    EXPECT_EQ(valuesOf(buffer), (Values{7, 0}));
    EXPECT_EQ(buffer.getGPUSize(), 4u);
    // Growing beyond what the format holds fails and leaves the buffer as it was.
    EXPECT_FALSE(buffer.resizeIndexBuffer(0x7FFFFFFF));
    EXPECT_EQ(buffer.GetIndexQuantity(), 2);

    zuIndexBuffer copy(&buffer);
    EXPECT_TRUE(copy.Equals(&buffer));
    copy.SetIndex(1, 1);
    EXPECT_FALSE(copy.Equals(&buffer));

    // Clone copies count and type, and the indices only when asked.
    zuPointer<zuIndexBuffer> source = makeIndices({4, 5, 6});
    zuRttiInterface* plain = nullptr;
    ASSERT_TRUE(source->Clone(plain));
    zuPointer<zuIndexBuffer> clone = static_cast<zuIndexBuffer*>(plain);
    EXPECT_EQ(clone->GetIndexQuantity(), 3);
    EXPECT_FALSE(clone->isCPUResident());
    EXPECT_FALSE(clone->Equals(source));
    zuRttiInterface* full = nullptr;
    ASSERT_TRUE(source->CloneIndexBuffer(full, true));
    zuPointer<zuIndexBuffer> fullClone = static_cast<zuIndexBuffer*>(full);
    EXPECT_TRUE(fullClone->Equals(source));
}

TEST_F(IndexBuffer, ConvertToShortAtTheSixteenBitLimitAndNotWhileBound)
{
    zuPointer<zuIndexBuffer> fits = makeIndices({0, 65535, 12});
    ASSERT_TRUE(fits->ConvertToShort());
    EXPECT_EQ(fits->GetIndexType(), zuIndexBuffer::INDEX_16);
    EXPECT_EQ(fits->getCPUSize(), 6u);
    EXPECT_EQ(valuesOf(*fits), (Values{0, 65535, 12}));
    EXPECT_TRUE(fits->ConvertToShort());  // already 16-bit

    zuPointer<zuIndexBuffer> tooLarge = makeIndices({0, 65536, 12});
    const void* data = tooLarge->GetData();
    EXPECT_FALSE(tooLarge->ConvertToShort());
    EXPECT_EQ(tooLarge->GetIndexType(), zuIndexBuffer::INDEX_32);
    EXPECT_EQ(tooLarge->GetData(), data);
    EXPECT_EQ(valuesOf(*tooLarge), (Values{0, 65536, 12}));

    zuPointer<zuIndexBuffer> bound = makeIndices({1, 2});
    zuResourceIdentifier binding;
    bound->onLoad(nullptr, &binding);
    zuOutputCapture capturedOut(zuOutputCapture::STDOUT);
    EXPECT_FALSE(bound->ConvertToShort());
    EXPECT_EQ(capturedOut.take(), "cannot convert iBuffer if already loaded\n");
    EXPECT_EQ(bound->GetIndexType(), zuIndexBuffer::INDEX_32);
    EXPECT_FALSE(bound->swapIndexBuffer(*fits));
    bound->onRelease(&binding);

    ASSERT_TRUE(bound->swapIndexBuffer(*fits));
    EXPECT_EQ(bound->GetIndexType(), zuIndexBuffer::INDEX_16);
    EXPECT_EQ(valuesOf(*fits), (Values{1, 2}));
}

TEST_F(IndexBuffer, DeltaWidthFollowsTheLargestNeighbourDifference)
{
    struct Case {
        Values values;
        int width;
    };
    // The limits of each width, up and down.
    const Case cases[] = {{{0, 1, 2, 130}, 2},     {{0, 40000}, 4},      {{5, 4, 3}, 1},       {{0, 127, 0}, 1},
                          {{0, 127, 0, 32767}, 2}, {{0, 32767, 65535}, 4}, {{32767, 0}, 2},     {{128, 0}, 2},
                          {{100, 100 + 32768}, 4}, {{4000000000u}, 1}};
    for (const Case& c : cases)
        EXPECT_EQ(zuIndexBuffer::PackedDeltaWidth(static_cast<int>(c.values.size()), c.values.data()), c.width)
            << c.values.size() << " values ending " << c.values.back();
}

// Exact records at every gate, loaded back. From 6.32 the 32-bit indices are packed as a
// width byte, the first index and the differences; 16-bit ones stay raw. From 5.2 to 6.31:
// count, type, raw ints, a trailing 0. Before 5.2 no type (16-bit indices are widened); before
// 4.2 no trailing int either.
TEST_F(IndexBuffer, RecordsAtEachGate)
{
    const auto I16 = zuIndexBuffer::INDEX_16;
    const auto I32 = zuIndexBuffer::INDEX_32;
    struct Case {
        const char* what;
        Values values;
        zuIndexBuffer::IndexBufferType type;
        zuStreamVersion version;
        zuBytes fields;
        int loadedType;
    };
    const Case cases[] = {
        {"2-byte deltas", {0, 1, 2, 130}, I32, {6, 32}, zuBytes().i32(4).i32(1).u8(2).i32(0).raw("\x01\x00\x01\x00\x80\x00", 6), I32},
        {"4-byte deltas", {0, 40000}, I32, {6, 32}, zuBytes().i32(2).i32(1).u8(4).i32(0).i32(40000), I32},
        {"1-byte deltas down", {5, 4, 3}, I32, {6, 32}, zuBytes().i32(3).i32(1).u8(1).i32(5).u8(0xFF).u8(0xFF), I32},
        {"one index", {4000000000u}, I32, {6, 32}, zuBytes().i32(1).i32(1).u8(1).i32(static_cast<int32_t>(4000000000u)), I32},
        {"16-bit not packed", {65535, 2, 0}, I16, {6, 32}, zuBytes().i32(3).i32(0).raw("\xFF\xFF\x02\x00\x00\x00", 6), I16},
        {"raw at 6.31", {3, 70000, 1}, I32, {6, 31}, zuBytes().i32(3).i32(1).i32(3).i32(70000).i32(1).i32(0), I32},
        {"raw at 5.2", {3, 70000, 1}, I32, {5, 2}, zuBytes().i32(3).i32(1).i32(3).i32(70000).i32(1).i32(0), I32},
        {"no type at 5.1", {3, 70000, 1}, I32, {5, 1}, zuBytes().i32(3).i32(3).i32(70000).i32(1).i32(0), I32},
        {"no type at 4.2", {3, 70000, 1}, I32, {4, 2}, zuBytes().i32(3).i32(3).i32(70000).i32(1).i32(0), I32},
        {"no trailing int at 4.1", {3, 70000, 1}, I32, {4, 1}, zuBytes().i32(3).i32(3).i32(70000).i32(1), I32},
        {"16-bit widened at 5.1", {40000, 5}, I16, {5, 1}, zuBytes().i32(2).i32(40000).i32(5).i32(0), I32},
        {"empty at 5.2", {}, I32, {5, 2}, zuBytes().i32(0).i32(1).i32(0), I32},
        // No width byte and no first index for an empty 32-bit buffer.
        {"empty 32-bit at 6.32", {}, I32, {6, 32}, zuBytes().i32(0).i32(1), I32},
        {"empty 16-bit at 6.32", {}, I16, {6, 32}, zuBytes().i32(0).i32(0), I16},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        zuPointer<zuIndexBuffer> buffer = makeIndices(c.values, c.type);
        const std::vector<char> expected = streamOf(c.fields, idOf(static_cast<zuRttiInterface*>(buffer.get())), c.version);
        EXPECT_EQ(saveToBytes({buffer}, c.version), expected);
        zuPointer<zuIndexBuffer> loaded = loadBuffer(expected, c.version);
        ASSERT_TRUE(loaded);
        EXPECT_EQ(loaded->GetIndexType(), c.loadedType);
        EXPECT_EQ(valuesOf(*loaded), c.values);
        if (c.loadedType == c.type) {
            EXPECT_TRUE(loaded->Equals(buffer));
        }
    }
}

TEST_F(IndexBuffer, LargeBuffersRoundTripThroughEveryWidthAndChunk)
{
    // More indices than one chunk of deltas, at each width.
    for (unsigned int step : {1u, 300u, 100000u}) {
        Values values(10000);
        unsigned int value = 17;
        for (size_t k = 0; k < values.size(); ++k) {
            values[k] = value;
            value = (k % 3 == 0) ? value + step : value - step / 2;
        }
        zuPointer<zuIndexBuffer> loaded = loadBuffer(saveToBytes({makeIndices(values)}, {6, 32}), {6, 32});
        ASSERT_TRUE(loaded) << step;
        EXPECT_EQ(valuesOf(*loaded), values) << step;
    }
}

TEST_F(IndexBuffer, HostileRecordsFailCleanly)
{
    const zuStreamVersion version(6, 32);
    for (int width : {0, 3, 8, 255}) {
        std::vector<char> delta(static_cast<size_t>(width), 0);
        std::string errors;
        const zuBytes fields = zuBytes().i32(2).i32(1).u8(static_cast<uint8_t>(width)).i32(0).raw(delta.data(), delta.size());
        EXPECT_FALSE(loadBuffer(streamOf(fields, 3, version), version, &errors)) << width;
        EXPECT_NE(errors.find("corrupt"), std::string::npos) << width;
    }
    // Counts beyond the data: packed, negative, raw, and before 6.32.
    EXPECT_FALSE(loadBuffer(streamOf(zuBytes().i32(0x7FFFFFFF).i32(1).u8(1).i32(0).u8(1), 3, version), version));
    EXPECT_FALSE(loadBuffer(streamOf(zuBytes().i32(-5).i32(1).u8(1).i32(0), 3, version), version));
    EXPECT_FALSE(loadBuffer(streamOf(zuBytes().i32(0x40000000).i32(0).i32(0).i32(0), 3, version), version));
    EXPECT_FALSE(loadBuffer(streamOf(zuBytes().i32(1000).i32(1).i32(0), 3, {5, 2}), {5, 2}));

    for (const zuStreamVersion v : {zuStreamVersion(6, 32), zuStreamVersion(5, 2)}) {
        const std::vector<char> whole = saveToBytes({makeIndices({1, 500, 2, 70000, 3})}, v);
        ASSERT_TRUE(loadBuffer(whole, v));
        for (size_t size = 0; size < whole.size(); ++size)
            EXPECT_FALSE(loadBuffer(std::vector<char>(whole.begin(), whole.begin() + static_cast<long>(size)), v))
                << size;
    }
}

} // namespace
} // namespace zu::test
