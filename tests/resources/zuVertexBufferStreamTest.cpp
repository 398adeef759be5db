// The vertex buffer's record: what older versions leave out, loads of records written by
// hand, and hostile records that must fail cleanly.

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

// Up to 5.1 the user families are not written (the stored vertex size is kept, wider than
// the layout) and the sizes are in floats; up to 4.3 only normals, colours and texture
// coordinates follow the position.
TEST_F(VertexBufferStream, OlderRecordsLeaveOutTheGroupsTheyDoNotKnow)
{
    zuPointer<zuVertexBuffer> loaded = loadBuffer(saveToBytes({buffer}, {5, 1}), {5, 1});
    ASSERT_TRUE(loaded);
    EXPECT_TRUE(loaded->GetVertexSize() == 40 && loaded->GetDataSize() == 80);
    EXPECT_TRUE(loaded->GetAttributes().GetStride() == 36 && loaded->GetAttributes().GetUserUShortUnitCount() == 0);
    EXPECT_EQ(std::memcmp(loaded->GetData(), buffer->GetData(), 80), 0);

    zuAttributes old;
    old.SetPositionChannels(3);
    old.SetTCoordChannels(0, 2);
    old.SetFogChannels(1);
    zuPointer<zuVertexBuffer> buffer43 = new zuVertexBuffer(old, 1);
    loaded = loadBuffer(saveToBytes({buffer43}, {4, 3}), {4, 3});
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->GetAttributes().GetFogChannels(), 0);
    EXPECT_EQ(loaded->GetAttributes().GetTCoordOffsetByte(0), 12u);

    // A 5.1 vertex size of 3 floats loads as 12 bytes.
    zuBytes fields = ints({3, 2, 6});
    for (int k = 0; k < 6; ++k)
        fields.f32(static_cast<float>(k));
    fields.raw(ints({3, 0, 0, 0, 0, 0, 0, 0, 0, 0}).bytes().data(), 40);
    loaded = loadBuffer(streamOf(fields, 1234, zuStreamVersion(5, 1)), zuStreamVersion(5, 1));
    ASSERT_TRUE(loaded);
    EXPECT_TRUE(loaded->GetVertexSize() == 12 && loaded->GetDataSize() == 24);
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
