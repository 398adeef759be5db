// The index buffer: resizing, ConvertToShort at the 16-bit limit, the delta packing and its
// widths, exact records at 6.32 and at the 4.2, 5.2 and 6.32 gates, the reader's asymmetry
// for empty 32-bit buffers, and hostile records.

#include "resources/zuResourceTestSupport.h"

#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuResourceIdentifier.h>

#include "support/zuTestObjects.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace zu::test {
namespace {

const char TYPE_NAME[] = "zuCore.zuIndexBuffer";

uint64_t id(const zuRttiInterface* object)
{
    return reinterpret_cast<uintptr_t>(object);
}

zuPointer<zuIndexBuffer> indices32(const std::vector<unsigned int>& values)
{
    zuPointer<zuIndexBuffer> buffer = new zuIndexBuffer(static_cast<int>(values.size()), zuIndexBuffer::INDEX_32);
    for (size_t k = 0; k < values.size(); ++k)
        buffer->SetIndex(static_cast<int>(k), values[k]);
    return buffer;
}

std::vector<unsigned int> valuesOf(const zuIndexBuffer& buffer)
{
    std::vector<unsigned int> values;
    for (int k = 0; k < buffer.GetIndexQuantity(); ++k)
        values.push_back(buffer.GetIndex(k));
    return values;
}

// A whole stream holding one index-buffer record (see the vertex-buffer stream test).
std::vector<char> streamOf(const zuBytes& fields, uint64_t identity, zuStreamVersion version)
{
    zuBytes bytes;
    bytes.str("Top Level").str(TYPE_NAME);
    const int header = 4 + static_cast<int>(std::strlen(TYPE_NAME)) + 8;
    if (version >= zuStreamVersion(6, 0))
        bytes.i32(header + 4 + 8 + static_cast<int>(fields.size()));
    bytes.u64(identity).str("").i32(0);
    bytes.raw(fields.bytes().data(), fields.size());
    return bytes.bytes();
}

zuPointer<zuIndexBuffer> loadBuffer(std::vector<char> bytes, zuStreamVersion version)
{
    zuBaseStream stream;
    stream.SetVersion(version);
    if (!stream.Load(bytes.data(), bytes.size()) || stream.GetObjectCount() != 1)
        return nullptr;
    zuRttiInterface* object = stream.GetObjectAt(0);
    if (!object || !object->IsExactly(zuIndexBuffer::TYPE))
        return nullptr;
    return static_cast<zuIndexBuffer*>(object);
}

class IndexBuffer : public ResourceLibrary {};

TEST_F(IndexBuffer, ConstructionResizeAndCopies)
{
    zuIndexBuffer buffer(3, zuIndexBuffer::INDEX_16);
    EXPECT_EQ(buffer.getCPUSize(), 6u);
    EXPECT_EQ(valuesOf(buffer), (std::vector<unsigned int>{0, 0, 0}));
    EXPECT_EQ(buffer.GetIndices32(), nullptr);
    buffer.SetIndex(0, 7);
    buffer.SetIndex(2, 9);
    buffer.SetIndex(3, 1);  // outside: ignored

    ASSERT_TRUE(buffer.resizeIndexBuffer(5));
    EXPECT_EQ(valuesOf(buffer), (std::vector<unsigned int>{7, 0, 9, 0, 0}));
    ASSERT_TRUE(buffer.resizeIndexBuffer(2));
    EXPECT_EQ(valuesOf(buffer), (std::vector<unsigned int>{7, 0}));
    EXPECT_EQ(buffer.getGPUSize(), 4u);

    zuIndexBuffer copy(&buffer);
    EXPECT_TRUE(copy.Equals(&buffer));
    copy.SetIndex(1, 1);
    EXPECT_FALSE(copy.Equals(&buffer));

    zuIndexBuffer defaults;
    EXPECT_EQ(defaults.GetIndexType(), zuIndexBuffer::INDEX_32);
    EXPECT_EQ(defaults.GetIndexQuantity(), 0);
    EXPECT_FALSE(defaults.isCPUResident());
    // Growing beyond what the format holds fails and leaves the buffer as it was.
    EXPECT_FALSE(buffer.resizeIndexBuffer(0x7FFFFFFF));
    EXPECT_EQ(buffer.GetIndexQuantity(), 2);
}

TEST_F(IndexBuffer, ConvertToShortAtTheSixteenBitLimit)
{
    zuPointer<zuIndexBuffer> fits = indices32({0, 65535, 12});
    ASSERT_TRUE(fits->ConvertToShort());
    EXPECT_EQ(fits->GetIndexType(), zuIndexBuffer::INDEX_16);
    EXPECT_EQ(fits->getCPUSize(), 6u);
    EXPECT_EQ(valuesOf(*fits), (std::vector<unsigned int>{0, 65535, 12}));
    EXPECT_TRUE(fits->ConvertToShort());  // already 16-bit

    zuPointer<zuIndexBuffer> tooLarge = indices32({0, 65536, 12});
    const void* data = tooLarge->GetData();
    EXPECT_FALSE(tooLarge->ConvertToShort());
    EXPECT_EQ(tooLarge->GetIndexType(), zuIndexBuffer::INDEX_32);
    EXPECT_EQ(tooLarge->GetData(), data);
    EXPECT_EQ(valuesOf(*tooLarge), (std::vector<unsigned int>{0, 65536, 12}));

    zuPointer<zuIndexBuffer> bound = indices32({1, 2});
    zuResourceIdentifier binding;
    bound->onLoad(nullptr, &binding);
    testing::internal::CaptureStdout();
    EXPECT_FALSE(bound->ConvertToShort());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "cannot convert iBuffer if already loaded\n");
    EXPECT_EQ(bound->GetIndexType(), zuIndexBuffer::INDEX_32);
    EXPECT_FALSE(bound->swapIndexBuffer(*fits));
    bound->onRelease(&binding);

    ASSERT_TRUE(bound->swapIndexBuffer(*fits));
    EXPECT_EQ(bound->GetIndexType(), zuIndexBuffer::INDEX_16);
    EXPECT_EQ(valuesOf(*fits), (std::vector<unsigned int>{1, 2}));
}

TEST_F(IndexBuffer, DeltaWidthFollowsTheLargestNeighbourDifference)
{
    const std::vector<unsigned int> two = {0, 1, 2, 130};
    const std::vector<unsigned int> four = {0, 40000};
    const std::vector<unsigned int> one = {5, 4, 3};
    EXPECT_EQ(zuIndexBuffer::PackedDeltaWidth(4, two.data()), 2);
    EXPECT_EQ(zuIndexBuffer::PackedDeltaWidth(2, four.data()), 4);
    EXPECT_EQ(zuIndexBuffer::PackedDeltaWidth(3, one.data()), 1);
    // The limits of each width, up and down.
    const std::vector<unsigned int> limits = {0, 127, 0, 32767, 32767 + 32768};
    EXPECT_EQ(zuIndexBuffer::PackedDeltaWidth(3, limits.data()), 1);
    EXPECT_EQ(zuIndexBuffer::PackedDeltaWidth(4, limits.data()), 2);
    EXPECT_EQ(zuIndexBuffer::PackedDeltaWidth(5, limits.data()), 4);
    const std::vector<unsigned int> down = {32767, 0, 128, 0};
    EXPECT_EQ(zuIndexBuffer::PackedDeltaWidth(2, down.data()), 2);
    EXPECT_EQ(zuIndexBuffer::PackedDeltaWidth(2, down.data() + 2), 2);
    const std::vector<unsigned int> over = {100, 100 + 32768};
    EXPECT_EQ(zuIndexBuffer::PackedDeltaWidth(2, over.data()), 4);
    const std::vector<unsigned int> single = {4000000000u};
    EXPECT_EQ(zuIndexBuffer::PackedDeltaWidth(1, single.data()), 1);
}

TEST_F(IndexBuffer, PackedRecordsAtTheCurrentVersion)
{
    const zuStreamVersion version(6, 32);
    struct Case {
        std::vector<unsigned int> values;
        zuBytes deltas;
    };
    std::vector<Case> cases(4);
    cases[0].values = {0, 1, 2, 130};
    cases[0].deltas.u8(2).i32(0).raw("\x01\x00\x01\x00\x80\x00", 6);
    cases[1].values = {0, 40000};
    cases[1].deltas.u8(4).i32(0).i32(40000);
    cases[2].values = {5, 4, 3};
    cases[2].deltas.u8(1).i32(5).u8(0xFF).u8(0xFF);
    cases[3].values = {4000000000u};
    cases[3].deltas.u8(1).i32(static_cast<int32_t>(4000000000u));
    for (const Case& c : cases) {
        zuPointer<zuIndexBuffer> buffer = indices32(c.values);
        zuBytes fields;
        fields.i32(static_cast<int>(c.values.size())).i32(1).raw(c.deltas.bytes().data(), c.deltas.size());
        const std::vector<char> expected = streamOf(fields, id(buffer.get()), version);
        EXPECT_EQ(saveToBytes({buffer}, version), expected) << c.values.size();
        zuPointer<zuIndexBuffer> loaded = loadBuffer(expected, version);
        ASSERT_TRUE(loaded);
        EXPECT_EQ(valuesOf(*loaded), c.values);
        EXPECT_TRUE(loaded->Equals(buffer));
    }
}

TEST_F(IndexBuffer, SixteenBitRecordsAreNotPacked)
{
    const zuStreamVersion version(6, 32);
    zuPointer<zuIndexBuffer> buffer = new zuIndexBuffer(3, zuIndexBuffer::INDEX_16);
    buffer->SetIndex(0, 65535);
    buffer->SetIndex(1, 2);
    zuBytes fields;
    fields.i32(3).i32(0).raw("\xFF\xFF\x02\x00\x00\x00", 6);
    const std::vector<char> expected = streamOf(fields, id(buffer.get()), version);
    EXPECT_EQ(saveToBytes({buffer}, version), expected);
    zuPointer<zuIndexBuffer> loaded = loadBuffer(expected, version);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->GetIndexType(), zuIndexBuffer::INDEX_16);
    EXPECT_TRUE(loaded->Equals(buffer));
}

TEST_F(IndexBuffer, GatesOfTheTypeAndTheTrailingInt)
{
    zuPointer<zuIndexBuffer> buffer = indices32({3, 70000, 1});
    const uint64_t identity = id(buffer.get());
    // From 5.2 to 6.32: count, type, raw ints, trailing 0.
    for (const zuStreamVersion version : {zuStreamVersion(5, 2), zuStreamVersion(6, 31)}) {
        zuBytes fields;
        fields.i32(3).i32(1).i32(3).i32(70000).i32(1).i32(0);
        const std::vector<char> expected = streamOf(fields, identity, version);
        EXPECT_EQ(saveToBytes({buffer}, version), expected) << version.GetMinor();
        zuPointer<zuIndexBuffer> loaded = loadBuffer(expected, version);
        ASSERT_TRUE(loaded);
        EXPECT_TRUE(loaded->Equals(buffer));
    }
    // From 4.2 to 5.2: no type.
    for (const zuStreamVersion version : {zuStreamVersion(4, 2), zuStreamVersion(5, 1)}) {
        zuBytes fields;
        fields.i32(3).i32(3).i32(70000).i32(1).i32(0);
        EXPECT_EQ(saveToBytes({buffer}, version), streamOf(fields, identity, version)) << version.GetMinor();
    }
    // Before 4.2: no trailing int either.
    zuBytes oldest;
    oldest.i32(3).i32(3).i32(70000).i32(1);
    EXPECT_EQ(saveToBytes({buffer}, zuStreamVersion(4, 1)), streamOf(oldest, identity, zuStreamVersion(4, 1)));
}

TEST_F(IndexBuffer, A51StreamLoadsThirtyTwoBitIndicesWithoutAType)
{
    const zuStreamVersion version(5, 1);
    zuBytes fields;
    fields.i32(2).i32(100000).i32(7).i32(12345);
    zuPointer<zuIndexBuffer> loaded = loadBuffer(streamOf(fields, 5, version), version);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->GetIndexType(), zuIndexBuffer::INDEX_32);
    EXPECT_EQ(valuesOf(*loaded), (std::vector<unsigned int>{100000, 7}));
}

TEST_F(IndexBuffer, SixteenBitIndicesGoToOldStreamsAsInts)
{
    // Streams before 5.2 know only 32-bit indices: the writer widens, the reader gets ints.
    const zuStreamVersion version(5, 1);
    zuPointer<zuIndexBuffer> buffer = new zuIndexBuffer(2, zuIndexBuffer::INDEX_16);
    buffer->SetIndex(0, 40000);
    buffer->SetIndex(1, 5);
    zuBytes fields;
    fields.i32(2).i32(40000).i32(5).i32(0);
    const std::vector<char> expected = streamOf(fields, id(buffer.get()), version);
    EXPECT_EQ(saveToBytes({buffer}, version), expected);
    zuPointer<zuIndexBuffer> loaded = loadBuffer(expected, version);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->GetIndexType(), zuIndexBuffer::INDEX_32);
    EXPECT_EQ(valuesOf(*loaded), (std::vector<unsigned int>{40000, 5}));
}

TEST_F(IndexBuffer, EmptyBuffersWriteNoIndexData)
{
    zuPointer<zuIndexBuffer> empty32 = new zuIndexBuffer;
    zuPointer<zuIndexBuffer> empty16 = new zuIndexBuffer(0, zuIndexBuffer::INDEX_16);
    zuBytes at52;
    at52.i32(0).i32(1).i32(0);
    EXPECT_EQ(saveToBytes({empty32}, zuStreamVersion(5, 2)), streamOf(at52, id(empty32.get()), zuStreamVersion(5, 2)));
    zuBytes at632;
    at632.i32(0).i32(1);
    const std::vector<char> saved = saveToBytes({empty32}, zuStreamVersion(6, 32));
    EXPECT_EQ(saved, streamOf(at632, id(empty32.get()), zuStreamVersion(6, 32)));
    zuBytes at632short;
    at632short.i32(0).i32(0);
    const std::vector<char> savedShort = saveToBytes({empty16}, zuStreamVersion(6, 32));
    EXPECT_EQ(savedShort, streamOf(at632short, id(empty16.get()), zuStreamVersion(6, 32)));

    // The reader reads a width byte and a first index even for an empty 32-bit buffer: the
    // record the writer made overruns its size and does not load. An empty 16-bit one does.
    testing::internal::CaptureStderr();
    EXPECT_FALSE(loadBuffer(saved, zuStreamVersion(6, 32)));
    testing::internal::GetCapturedStderr();
    zuPointer<zuIndexBuffer> loaded = loadBuffer(savedShort, zuStreamVersion(6, 32));
    ASSERT_TRUE(loaded);
    EXPECT_TRUE(loaded->Equals(empty16));
    // With the five bytes the reader expects, the empty buffer loads.
    zuBytes padded;
    padded.i32(0).i32(1).u8(1).i32(0);
    loaded = loadBuffer(streamOf(padded, 9, zuStreamVersion(6, 32)), zuStreamVersion(6, 32));
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->GetIndexQuantity(), 0);
}

TEST_F(IndexBuffer, LargeBuffersRoundTripThroughEveryWidthAndChunk)
{
    // More indices than one chunk of deltas, at each width.
    for (unsigned int step : {1u, 300u, 100000u}) {
        std::vector<unsigned int> values(10000);
        unsigned int value = 17;
        for (size_t k = 0; k < values.size(); ++k) {
            values[k] = value;
            value = (k % 3 == 0) ? value + step : value - step / 2;
        }
        zuPointer<zuIndexBuffer> buffer = indices32(values);
        const std::vector<char> saved = saveToBytes({buffer}, zuStreamVersion(6, 32));
        zuPointer<zuIndexBuffer> loaded = loadBuffer(saved, zuStreamVersion(6, 32));
        ASSERT_TRUE(loaded) << step;
        EXPECT_EQ(valuesOf(*loaded), values) << step;
    }
}

TEST_F(IndexBuffer, CloneCopiesCountAndTypeAndIndicesOnlyWhenAsked)
{
    zuPointer<zuIndexBuffer> buffer = indices32({4, 5, 6});
    zuRttiInterface* plain = nullptr;
    ASSERT_TRUE(buffer->Clone(plain));
    zuPointer<zuIndexBuffer> clone = static_cast<zuIndexBuffer*>(plain);
    EXPECT_EQ(clone->GetIndexQuantity(), 3);
    EXPECT_FALSE(clone->isCPUResident());
    EXPECT_FALSE(clone->Equals(buffer));
    zuRttiInterface* full = nullptr;
    ASSERT_TRUE(buffer->CloneIndexBuffer(full, true));
    zuPointer<zuIndexBuffer> fullClone = static_cast<zuIndexBuffer*>(full);
    EXPECT_TRUE(fullClone->Equals(buffer));
}

class IndexBufferHostile : public IndexBuffer {};

TEST_F(IndexBufferHostile, UnknownDeltaWidthIsAStreamError)
{
    const zuStreamVersion version(6, 32);
    for (int width : {0, 3, 8, 255}) {
        zuBytes fields;
        std::vector<char> delta(static_cast<size_t>(width), 0);
        fields.i32(2).i32(1).u8(static_cast<uint8_t>(width)).i32(0).raw(delta.data(), delta.size());
        testing::internal::CaptureStderr();
        EXPECT_FALSE(loadBuffer(streamOf(fields, 3, version), version)) << width;
        EXPECT_NE(testing::internal::GetCapturedStderr().find("corrupt"), std::string::npos);
    }
}

TEST_F(IndexBufferHostile, CountsBeyondTheDataFail)
{
    const zuStreamVersion version(6, 32);
    zuBytes packed;
    packed.i32(0x7FFFFFFF).i32(1).u8(1).i32(0).u8(1);
    EXPECT_FALSE(loadBuffer(streamOf(packed, 3, version), version));
    zuBytes negative;
    negative.i32(-5).i32(1).u8(1).i32(0);
    EXPECT_FALSE(loadBuffer(streamOf(negative, 3, version), version));
    zuBytes raw;
    raw.i32(0x40000000).i32(0).i32(0).i32(0);
    EXPECT_FALSE(loadBuffer(streamOf(raw, 3, version), version));
    zuBytes old;
    old.i32(1000).i32(1).i32(0);
    EXPECT_FALSE(loadBuffer(streamOf(old, 3, zuStreamVersion(5, 2)), zuStreamVersion(5, 2)));
}

TEST_F(IndexBufferHostile, EveryTruncationFailsCleanly)
{
    for (const zuStreamVersion version : {zuStreamVersion(6, 32), zuStreamVersion(5, 2)}) {
        zuPointer<zuIndexBuffer> buffer = indices32({1, 500, 2, 70000, 3});
        const std::vector<char> whole = saveToBytes({buffer}, version);
        ASSERT_TRUE(loadBuffer(whole, version));
        for (size_t size = 0; size < whole.size(); ++size)
            EXPECT_FALSE(loadBuffer(std::vector<char>(whole.begin(), whole.begin() + static_cast<long>(size)), version))
                << size;
    }
}

} // namespace
} // namespace zu::test
