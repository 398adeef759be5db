// The vertex buffer's record: exact bytes at 6.32 and at each gate (4.3, 5.1, 5.2), loads of
// records written by hand, and hostile records that must fail cleanly.

#include "resources/zuResourceTestSupport.h"

#include <zuSceneGraph/resources/zuVertexBuffer.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace zu::test {
namespace {

const char TYPE_NAME[] = "zuCore.zuVertexBuffer";

std::vector<char> streamOf(const zuBytes& fields, uint64_t identity, zuStreamVersion version)
{
    return recordStream(TYPE_NAME, fields, identity, version);
}

zuPointer<zuVertexBuffer> loadBuffer(std::vector<char> bytes, zuStreamVersion version)
{
    return loadSingle<zuVertexBuffer>(std::move(bytes), version);
}

std::string text(zuStreamVersion version)
{
    return std::to_string(version.GetMajor()) + "." + std::to_string(version.GetMinor());
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

    zuAttributes layout;
    zuPointer<zuVertexBuffer> buffer;
};

// From 5.2 the sizes are in bytes and the six user families follow the groups; up to 5.1 the
// sizes are in floats and the user families are not written. GetDiskUsed must match too,
// where no size field checks it.
TEST_F(VertexBufferStream, RecordsAtEachGate)
{
    for (const zuStreamVersion version : {zuStreamVersion(6, 32), zuStreamVersion(6, 0), zuStreamVersion(5, 2),
                                          zuStreamVersion(5, 1), zuStreamVersion(4, 4)}) {
        SCOPED_TRACE(text(version));
        const bool inBytes = version >= zuStreamVersion(5, 2);
        zuBytes fields = ints({inBytes ? 40 : 10, 2, inBytes ? 80 : 20});
        fields.raw(buffer->GetData(), 80);
        // position, blend weight, normal, colour units (1: 4), fog, point size, blend indices,
        // texture-coordinate units (2: 0, 2), tangent, bitangent
        fields.raw(ints({3, 0, 0, 1, 4, 0, 0, 0, 2, 0, 2, 0, 0}).bytes().data(), 52);
        if (inBytes)  // UserByte, UserUByte, UserShort, UserUShort (1: 2), UserInt, UserUInt units
            fields.raw(ints({0, 0, 0, 1, 2, 0, 0}).bytes().data(), 28);
        const std::vector<char> expected = streamOf(fields, idOf(static_cast<zuRttiInterface*>(buffer.get())), version);
        EXPECT_EQ(saveToBytes({buffer}, version), expected);
        zuBaseStream stream;
        stream.SetVersion(version);
        EXPECT_EQ(expected.size(), 13u + static_cast<size_t>(buffer->GetDiskUsed(stream)));

        zuPointer<zuVertexBuffer> loaded = loadBuffer(expected, version);
        ASSERT_TRUE(loaded);
        // A plain stream has no file: the block was read whatever the policy.
        EXPECT_TRUE(loaded->isCPUResident());
        if (inBytes) {
            EXPECT_TRUE(loaded->Equals(buffer));
            EXPECT_TRUE(loaded->GetAttributes().Matches(layout, true, true, true, true, true, true, true, true, true,
                                                        true, true, true, true, true, true, true));
            EXPECT_EQ(loaded->GetAttributes().GetUserUShortOffsetByte(0), 36u);
        } else {
            // The sizes are in bytes again; the user channels are gone, so the layout is
            // narrower than the stored vertex size, which is kept.
            EXPECT_EQ(loaded->GetVertexSize(), 40);
            EXPECT_EQ(loaded->GetDataSize(), 80);
            EXPECT_EQ(loaded->GetAttributes().GetStride(), 36);
            EXPECT_EQ(loaded->GetAttributes().GetUserUShortUnitCount(), 0);
            EXPECT_EQ(std::memcmp(loaded->GetData(), buffer->GetData(), 80), 0);
        }
    }
}

TEST_F(VertexBufferStream, UpTo43OnlyNormalsColoursAndTextureCoordinatesAreWritten)
{
    zuAttributes old;
    old.SetPositionChannels(3);
    old.SetNormalChannels(3);
    old.SetColorChannels(0, 3);
    old.SetTCoordChannels(0, 2);
    old.SetFogChannels(1);  // not in these streams
    zuPointer<zuVertexBuffer> buffer43 = new zuVertexBuffer(old, 1);
    for (int k = 0; k < buffer43->GetDataSize(); ++k)
        buffer43->GetData()[k] = static_cast<char>(200 - k);

    for (const zuStreamVersion version : {zuStreamVersion(4, 3), zuStreamVersion(4, 2)}) {
        SCOPED_TRACE(text(version));
        zuBytes fields = ints({12, 1, 12});
        fields.raw(buffer43->GetData(), 48);
        fields.raw(ints({3, 3, 1, 3, 1, 2}).bytes().data(), 24);
        const std::vector<char> expected =
            streamOf(fields, idOf(static_cast<zuRttiInterface*>(buffer43.get())), version);
        EXPECT_EQ(saveToBytes({buffer43}, version), expected);
        zuBaseStream stream;
        stream.SetVersion(version);
        EXPECT_EQ(expected.size(), 13u + static_cast<size_t>(buffer43->GetDiskUsed(stream)));

        zuPointer<zuVertexBuffer> loaded = loadBuffer(expected, version);
        ASSERT_TRUE(loaded);
        EXPECT_EQ(loaded->GetVertexSize(), 48);
        EXPECT_EQ(loaded->GetAttributes().GetFogChannels(), 0);
        EXPECT_EQ(loaded->GetAttributes().GetTCoordOffsetByte(0), 36u);
    }

    // A 5.1 vertex size of 3 floats loads as 12 bytes.
    zuBytes fields = ints({3, 2, 6});
    for (int k = 0; k < 6; ++k)
        fields.f32(static_cast<float>(k));
    fields.raw(ints({3, 0, 0, 0, 0, 0, 0, 0, 0, 0}).bytes().data(), 40);
    zuPointer<zuVertexBuffer> loaded = loadBuffer(streamOf(fields, 1234, zuStreamVersion(5, 1)), zuStreamVersion(5, 1));
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->GetVertexSize(), 12);
    EXPECT_EQ(loaded->GetDataSize(), 24);
    EXPECT_EQ(loaded->Position3(1), Wm4::Vector3<float>(3.0f, 4.0f, 5.0f));
}

// Hostile records: each must fail the load without touching memory it does not own.
TEST_F(VertexBufferStream, HostileRecordsFailCleanly)
{
    struct Case {
        const char* what;
        int vertexSize, quantity, dataSize, blockBytes;
        int channel, value;  // one channel field changed (-1: none)
        bool loads;
    };
    const Case cases[] = {
        {"consistent", 12, 2, 24, 24, -1, 0, true},
        {"data size not 12 x 2", 12, 2, 20, 20, -1, 0, false},
        {"negative sizes", -12, -2, 24, 24, -1, 0, false},
        {"huge quantity", 12, 0x7FFFFFFF, 24, 24, -1, 0, false},
        {"huge vertex size", 0x40000000, 4, 0, 0, -1, 0, false},
        {"more data than remains", 12, 2, 0x7FFFFFF0, 24, -1, 0, false},
        {"negative position channels", 12, 2, 24, 24, 0, -3, false},
        {"layout wider than the vertex", 12, 2, 24, 24, 0, 4, false},
        {"stride that would overflow", 12, 2, 24, 24, 0, 0x7FFFFFFF, false},
        {"colour units beyond the data", 12, 2, 24, 24, 3, 0x3FFFFFFF, false},
        {"negative unit count", 12, 2, 24, 24, 3, -1, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        // Position 3 and every other count 0 (the 16 fields of the 6.32 layout).
        std::vector<int> channels = {3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
        if (c.channel >= 0)
            channels[static_cast<size_t>(c.channel)] = c.value;
        zuBytes fields = ints({c.vertexSize, c.quantity, c.dataSize});
        fields.raw(std::vector<char>(static_cast<size_t>(c.blockBytes), 1).data(), static_cast<size_t>(c.blockBytes));
        for (int value : channels)
            fields.i32(value);
        EXPECT_EQ(static_cast<bool>(loadBuffer(streamOf(fields, 99, zuStreamVersion(6, 32)), zuStreamVersion(6, 32))),
                  c.loads);
    }

    const std::vector<char> whole = saveToBytes({buffer}, zuStreamVersion(6, 32));
    ASSERT_TRUE(loadBuffer(whole, zuStreamVersion(6, 32)));
    for (size_t size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(loadBuffer(std::vector<char>(whole.begin(), whole.begin() + static_cast<long>(size)),
                                zuStreamVersion(6, 32)))
            << size;
}

} // namespace
} // namespace zu::test
