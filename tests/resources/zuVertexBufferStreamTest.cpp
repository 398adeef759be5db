// The vertex buffer's record: exact bytes at 6.32 and at each gate (4.3, 5.1, 5.2), loads of
// records written by hand, and hostile records that must fail cleanly.

#include "resources/zuResourceTestSupport.h"

#include <zuSceneGraph/resources/zuVertexBuffer.h>

#include "support/zuTestObjects.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace zu::test {
namespace {

const char TYPE_NAME[] = "zuCore.zuVertexBuffer";

// The identity the stream writes: the address of the object's zuRttiInterface part (which
// does not start the buffer: zuBindable and zuDynamicLoadingResource come first).
uint64_t id(const zuRttiInterface* object)
{
    return reinterpret_cast<uintptr_t>(object);
}

// The bytes of a whole stream holding one record: the top-level marker, the type name, the
// size field from 6.0 (the record counted from the type name's length on), the identity,
// the object part (empty name, no controllers) and `fields`.
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

// Loads a stream of bytes at `version`; null when the load fails or holds no buffer.
zuPointer<zuVertexBuffer> loadBuffer(std::vector<char> bytes, zuStreamVersion version)
{
    zuBaseStream stream;
    stream.SetVersion(version);
    if (!stream.Load(bytes.data(), bytes.size()) || stream.GetObjectCount() != 1)
        return nullptr;
    zuRttiInterface* object = stream.GetObjectAt(0);
    if (!object || !object->IsExactly(zuVertexBuffer::TYPE))
        return nullptr;
    return static_cast<zuVertexBuffer*>(object);
}

class VertexBufferStream : public ResourceLibrary {
protected:
    // Position 3, colour unit 0 with 4 channels, texture-coordinate units 0 (empty) and 1
    // (2 channels), UserUShort unit 0 with 2 channels: stride 40; 2 vertices of 80 bytes.
    VertexBufferStream()
    {
        layout.SetPositionChannels(3);
        layout.SetColorChannels(0, 4);
        layout.SetTCoordChannels(1, 2);
        layout.SetUserUShortChannels(0, 2);
        buffer = new zuVertexBuffer(layout, 2);
        for (int k = 0; k < buffer->GetDataSize(); ++k)
            buffer->GetData()[k] = static_cast<char>(k * 3 + 1);
    }

    zuBytes block() const
    {
        zuBytes bytes;
        bytes.raw(buffer->GetData(), static_cast<size_t>(buffer->GetDataSize()));
        return bytes;
    }

    zuAttributes layout;
    zuPointer<zuVertexBuffer> buffer;
};

TEST_F(VertexBufferStream, RecordAtTheCurrentVersion)
{
    const zuStreamVersion version(6, 32);
    zuBytes fields;
    fields.i32(40).i32(2).i32(80).raw(block().bytes().data(), 80);
    fields.i32(3);                    // position
    fields.i32(0).i32(0);             // blend weight, normal
    fields.i32(1).i32(4);             // colour units
    fields.i32(0).i32(0).i32(0);      // fog, point size, blend indices
    fields.i32(2).i32(0).i32(2);      // texture-coordinate units
    fields.i32(0).i32(0);             // tangent, bitangent
    fields.i32(0).i32(0).i32(0);      // UserByte, UserUByte, UserShort units
    fields.i32(1).i32(2);             // UserUShort units
    fields.i32(0).i32(0);             // UserInt, UserUInt units
    const std::vector<char> expected = streamOf(fields, id(buffer.get()), version);
    EXPECT_EQ(saveToBytes({buffer}, version), expected);

    zuPointer<zuVertexBuffer> loaded = loadBuffer(expected, version);
    ASSERT_TRUE(loaded);
    EXPECT_TRUE(loaded->Equals(buffer));
    EXPECT_TRUE(loaded->GetAttributes().Matches(layout, true, true, true, true, true, true, true, true, true, true,
                                                true, true, true, true, true, true));
    EXPECT_EQ(loaded->GetAttributes().GetUserUShortOffsetByte(0), 36u);
    // A plain stream has no file: the block was read whatever the policy.
    EXPECT_TRUE(loaded->isCPUResident());
}

TEST_F(VertexBufferStream, From52TheUserFamiliesAreWritten)
{
    const zuStreamVersion version(5, 2);
    zuBytes fields;
    fields.i32(40).i32(2).i32(80).raw(block().bytes().data(), 80);
    fields.i32(3).i32(0).i32(0).i32(1).i32(4).i32(0).i32(0).i32(0).i32(2).i32(0).i32(2).i32(0).i32(0);
    fields.i32(0).i32(0).i32(0).i32(1).i32(2).i32(0).i32(0);
    const std::vector<char> expected = streamOf(fields, id(buffer.get()), version);
    EXPECT_EQ(saveToBytes({buffer}, version), expected);
    zuPointer<zuVertexBuffer> loaded = loadBuffer(expected, version);
    ASSERT_TRUE(loaded);
    EXPECT_TRUE(loaded->Equals(buffer));
}

TEST_F(VertexBufferStream, UpTo51SizesAreInFloatsAndTheUserFamiliesAreNotWritten)
{
    for (const zuStreamVersion version : {zuStreamVersion(5, 1), zuStreamVersion(4, 4)}) {
        zuBytes fields;
        fields.i32(10).i32(2).i32(20).raw(block().bytes().data(), 80);
        fields.i32(3).i32(0).i32(0).i32(1).i32(4).i32(0).i32(0).i32(0).i32(2).i32(0).i32(2).i32(0).i32(0);
        const std::vector<char> expected = streamOf(fields, id(buffer.get()), version);
        EXPECT_EQ(saveToBytes({buffer}, version), expected) << version.GetMajor() << "." << version.GetMinor();

        // Loaded back, the sizes are in bytes again; the user channels are gone, so the
        // layout is narrower than the stored vertex size, which is kept.
        zuPointer<zuVertexBuffer> loaded = loadBuffer(expected, version);
        ASSERT_TRUE(loaded);
        EXPECT_EQ(loaded->GetVertexSize(), 40);
        EXPECT_EQ(loaded->GetDataSize(), 80);
        EXPECT_EQ(loaded->GetAttributes().GetStride(), 36);
        EXPECT_EQ(loaded->GetAttributes().GetUserUShortUnitCount(), 0);
        EXPECT_EQ(std::memcmp(loaded->GetData(), buffer->GetData(), 80), 0);
    }
}

TEST_F(VertexBufferStream, UpTo43OnlyNormalsColoursAndTextureCoordinatesAreWritten)
{
    const zuStreamVersion version(4, 3);
    zuAttributes old;
    old.SetPositionChannels(3);
    old.SetNormalChannels(3);
    old.SetColorChannels(0, 3);
    old.SetTCoordChannels(0, 2);
    old.SetFogChannels(1);  // not in these streams
    zuPointer<zuVertexBuffer> buffer43 = new zuVertexBuffer(old, 1);
    for (int k = 0; k < buffer43->GetDataSize(); ++k)
        buffer43->GetData()[k] = static_cast<char>(200 - k);

    zuBytes fields;
    fields.i32(12).i32(1).i32(12).raw(buffer43->GetData(), 48);
    fields.i32(3).i32(3).i32(1).i32(3).i32(1).i32(2);
    const std::vector<char> expected = streamOf(fields, id(buffer43.get()), version);
    EXPECT_EQ(saveToBytes({buffer43}, version), expected);
    EXPECT_EQ(buffer43->GetDiskUsed(zuBaseStream()), 0 + 4 + 21 + 8 + 8 + 48 + 28 + 4 * 2);

    zuPointer<zuVertexBuffer> loaded = loadBuffer(expected, version);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->GetVertexSize(), 48);
    EXPECT_EQ(loaded->GetAttributes().GetFogChannels(), 0);
    EXPECT_EQ(loaded->GetAttributes().GetTCoordOffsetByte(0), 36u);
}

TEST_F(VertexBufferStream, A51VertexSizeOfThreeLoadsAsTwelve)
{
    const zuStreamVersion version(5, 1);
    zuBytes fields;
    fields.i32(3).i32(2).i32(6);
    for (int k = 0; k < 6; ++k)
        fields.f32(static_cast<float>(k));
    fields.i32(3).i32(0).i32(0).i32(0).i32(0).i32(0).i32(0).i32(0).i32(0).i32(0);
    zuPointer<zuVertexBuffer> loaded = loadBuffer(streamOf(fields, 1234, version), version);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->GetVertexSize(), 12);
    EXPECT_EQ(loaded->GetDataSize(), 24);
    EXPECT_EQ(loaded->Position3(1), Wm4::Vector3<float>(3.0f, 4.0f, 5.0f));
}

TEST_F(VertexBufferStream, DiskUsedMatchesTheBytesAtEveryVersion)
{
    for (const zuStreamVersion version : {zuStreamVersion(4, 2), zuStreamVersion(4, 3), zuStreamVersion(4, 4),
                                          zuStreamVersion(5, 1), zuStreamVersion(5, 2), zuStreamVersion(6, 0),
                                          zuStreamVersion(6, 32)}) {
        zuBaseStream stream;
        stream.SetVersion(version);
        const std::vector<char> bytes = saveToBytes({buffer}, version);
        ASSERT_FALSE(bytes.empty());
        EXPECT_EQ(bytes.size(), 13u + static_cast<size_t>(buffer->GetDiskUsed(stream)))
            << version.GetMajor() << "." << version.GetMinor();
    }
}

// Hostile records: each must fail the load without touching memory it does not own.
class VertexBufferHostile : public VertexBufferStream {
protected:
    // A 6.32 record whose sizes and channel fields are given.
    std::vector<char> record(int vertexSize, int quantity, int dataSize, int blockBytes,
                             const std::vector<int>& channels) const
    {
        zuBytes fields;
        fields.i32(vertexSize).i32(quantity).i32(dataSize);
        fields.raw(std::vector<char>(static_cast<size_t>(blockBytes), 1).data(), static_cast<size_t>(blockBytes));
        for (int value : channels)
            fields.i32(value);
        return streamOf(fields, 99, zuStreamVersion(6, 32));
    }
    // Position 3 and every other count 0: blend weight, normal, colour units, fog, point
    // size, blend indices, texture-coordinate units, tangent, bitangent, six user families.
    static std::vector<int> plainChannels()
    {
        return {3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    }
};

TEST_F(VertexBufferHostile, ConsistentRecordLoads)
{
    EXPECT_TRUE(loadBuffer(record(12, 2, 24, 24, plainChannels()), zuStreamVersion(6, 32)));
}

TEST_F(VertexBufferHostile, InconsistentSizesFail)
{
    const zuStreamVersion version(6, 32);
    EXPECT_FALSE(loadBuffer(record(12, 2, 20, 20, plainChannels()), version));      // not 12 × 2
    EXPECT_FALSE(loadBuffer(record(-12, -2, 24, 24, plainChannels()), version));    // negative
    EXPECT_FALSE(loadBuffer(record(12, 0x7FFFFFFF, 24, 24, plainChannels()), version));
    EXPECT_FALSE(loadBuffer(record(0x40000000, 4, 0, 0, plainChannels()), version));
    EXPECT_FALSE(loadBuffer(record(12, 2, 0x7FFFFFF0, 24, plainChannels()), version));  // more than remains
}

TEST_F(VertexBufferHostile, BadChannelFieldsFail)
{
    const zuStreamVersion version(6, 32);
    std::vector<int> channels = plainChannels();
    channels[0] = -3;  // negative position channels
    EXPECT_FALSE(loadBuffer(record(12, 2, 24, 24, channels), version));
    channels = plainChannels();
    channels[0] = 4;   // a layout wider than the vertex
    EXPECT_FALSE(loadBuffer(record(12, 2, 24, 24, channels), version));
    channels = plainChannels();
    channels[0] = 0x7FFFFFFF;  // a stride that would overflow
    EXPECT_FALSE(loadBuffer(record(12, 2, 24, 24, channels), version));
    channels = plainChannels();
    channels[3] = 0x3FFFFFFF;  // colour units beyond the data
    EXPECT_FALSE(loadBuffer(record(12, 2, 24, 24, channels), version));
    channels = plainChannels();
    channels[3] = -1;  // negative unit count
    EXPECT_FALSE(loadBuffer(record(12, 2, 24, 24, channels), version));
}

TEST_F(VertexBufferHostile, EveryTruncationFailsCleanly)
{
    const zuStreamVersion version(6, 32);
    const std::vector<char> whole = saveToBytes({buffer}, version);
    ASSERT_TRUE(loadBuffer(whole, version));
    for (size_t size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(loadBuffer(std::vector<char>(whole.begin(), whole.begin() + static_cast<long>(size)), version))
            << size;
}

} // namespace
} // namespace zu::test
