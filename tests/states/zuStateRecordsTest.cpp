// Pins the saved records of the six render states and reads them back through the
// buffer stream and the file container.

#include "support/zuTestObjects.h"

#include <zuSceneGraph/states/zuAlphaState.h>
#include <zuSceneGraph/states/zuCullState.h>
#include <zuSceneGraph/states/zuPolygonOffsetState.h>
#include <zuSceneGraph/states/zuStencilState.h>
#include <zuSceneGraph/states/zuWireframeState.h>
#include <zuSceneGraph/states/zuZBufferState.h>
#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSystem/zuMemoryIoDevice.h>

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>

namespace zu::test {
namespace {

const zuStreamVersion V6_32(6, 32);

class StateRecords : public ::testing::Test {
protected:
    zuTestFactories factories;
};

uint64_t id(const void* object)
{
    return reinterpret_cast<uintptr_t>(object);
}

using Fields = std::function<void(zuBytes&)>;

// A whole 6.32 stream of one top-level state: marker, record header with its size
// (counted from the type name's length field), the empty name, no controllers, and the
// `fieldBytes` bytes that `fields` appends.
std::vector<char> recordOf(const zuRttiInterface* state, int fieldBytes, const Fields& fields)
{
    const std::string type = state->GetType().GetName();
    zuBytes bytes;
    bytes.str("Top Level").str(type);
    const int header = static_cast<int>(4 + type.size() + 4 + 8 + 4 + 4);
    bytes.i32(header + fieldBytes).u64(id(state));
    bytes.str("").i32(0);
    fields(bytes);
    EXPECT_EQ(bytes.size(), static_cast<size_t>(13 + header + fieldBytes)) << "fields of " << type;
    return bytes.bytes();
}

void u32(zuBytes& bytes, uint32_t value)
{
    bytes.raw(&value, 4);
}

struct RecordCase {
    const char* label;
    std::function<zuGlobalState*()> make;
    int fieldBytes;
    Fields fields;
};

zuAlphaState* customAlpha()
{
    auto* alpha = new zuAlphaState;
    alpha->BlendEnabled = true;
    alpha->SrcBlend = zuAlphaState::SBF_ONE_MINUS_CONSTANT_ALPHA;
    alpha->DstBlend = zuAlphaState::DBF_ZERO;
    alpha->TestEnabled = true;
    alpha->Test = zuAlphaState::TF_GREATER;
    alpha->Reference = 0.5f;
    alpha->ConstantColor = Wm4::ColorRGBA(0.1f, 0.2f, 0.3f, 0.4f);
    return alpha;
}

zuStencilState* customStencil()
{
    auto* stencil = new zuStencilState;
    stencil->Enabled = true;
    stencil->Compare = zuStencilState::CF_ALWAYS;
    stencil->Reference = 0x80;
    stencil->Mask = 0x0F;
    stencil->WriteMask = 0xF0000001u;
    stencil->OnFail = zuStencilState::OT_INVERT;
    stencil->OnZFail = zuStencilState::OT_DECREMENT;
    stencil->OnZPass = zuStencilState::OT_REPLACE;
    return stencil;
}

std::vector<RecordCase> recordCases()
{
    return {
        {"default alpha", [] { return new zuAlphaState; }, 18,
         [](zuBytes& b) { b.u8(0).i32(4).i32(5).u8(0).i32(7).f32(0.0f); }},
        {"custom alpha", [] { return customAlpha(); }, 18,
         [](zuBytes& b) { b.u8(1).i32(12).i32(0).u8(1).i32(4).f32(0.5f); }},
        {"default cull", [] { return new zuCullState; }, 9, [](zuBytes& b) { b.u8(1).i32(0).i32(1); }},
        {"default polygon offset", [] { return new zuPolygonOffsetState; }, 11,
         [](zuBytes& b) { b.u8(0).u8(0).u8(0).f32(0.0f).f32(0.0f); }},
        {"default stencil", [] { return new zuStencilState; }, 29,
         [](zuBytes& b) {
             b.u8(0).i32(0).i32(0);
             u32(b, 0xFFFFFFFFu);
             u32(b, 0xFFFFFFFFu);
             b.i32(0).i32(0).i32(0);
         }},
        {"custom stencil", [] { return customStencil(); }, 29,
         [](zuBytes& b) {
             b.u8(1).i32(7);
             u32(b, 0x80);
             u32(b, 0x0F);
             u32(b, 0xF0000001u);
             b.i32(5).i32(4).i32(2);
         }},
        {"default wireframe", [] { return new zuWireframeState; }, 1, [](zuBytes& b) { b.u8(0); }},
        {"default z-buffer", [] { return new zuZBufferState; }, 6, [](zuBytes& b) { b.u8(1).u8(1).i32(3); }},
    };
}

std::vector<char> saveToDevice(zuRttiInterface* object, int blockSize)
{
    zuMemoryIoDevice device;
    zuFileStream stream(blockSize);
    stream.SetVersion(V6_32);
    stream.InsertTopLevel(object);
    EXPECT_TRUE(stream.Save(device, "states.mvk", false));
    return device.data();
}

// Loads the one top-level object of a file image; null when the load fails.
zuPointer<zuObject> loadFromDevice(const std::vector<char>& bytes, int blockSize)
{
    zuMemoryIoDevice device(bytes);
    zuFileStream stream(blockSize);
    if (!stream.Load(device, "states.mvk") || stream.GetObjectCount() != 1)
        return nullptr;
    return static_cast<zuObject*>(stream.GetObjectAt(0));
}

TEST_F(StateRecords, EachStateWritesExactlyItsFieldsAfterTheObjectPart)
{
    for (const RecordCase& c : recordCases()) {
        SCOPED_TRACE(c.label);
        zuPointer<zuGlobalState> state = c.make();
        EXPECT_EQ(saveToBytes({state}, V6_32), recordOf(state, c.fieldBytes, c.fields));
    }
}

TEST_F(StateRecords, GetDiskUsedIsTheRecordWrittenWithAndWithoutTheSizeField)
{
    for (const RecordCase& c : recordCases()) {
        SCOPED_TRACE(c.label);
        zuPointer<zuGlobalState> state = c.make();
        const int typeLength = static_cast<int>(std::strlen(state->GetType().GetName()));
        for (zuStreamVersion version : {V6_32, zuStreamVersion(5, 20)}) {
            zuBaseStream stream;
            stream.SetVersion(version);
            const int sizeField = version >= zuStreamVersion(6, 0) ? 4 : 0;
            const int used = state->GetDiskUsed(stream);
            EXPECT_EQ(used, 4 + typeLength + sizeField + 8 + 4 + 4 + c.fieldBytes);
            // The whole buffer less the top-level marker "Top Level" (4 + 9 bytes).
            EXPECT_EQ(static_cast<int>(saveToBytes({state}, version).size()) - 13, used);
        }
    }
}

TEST_F(StateRecords, FileStreamRoundTripGivesEqualStatesAndTheSameBytes)
{
    // A block smaller than one record makes every record cross block boundaries.
    for (int blockSize : {16, zuFileStream::DEFAULT_BLOCK_SIZE}) {
        for (const RecordCase& c : recordCases()) {
            SCOPED_TRACE(std::string(c.label) + ", block " + std::to_string(blockSize));
            zuPointer<zuGlobalState> state = c.make();
            const std::vector<char> file = saveToDevice(state, blockSize);
            std::vector<char> expected(std::begin("MVK 6.32"), std::end("MVK 6.32"));
            const std::vector<char> record = recordOf(state, c.fieldBytes, c.fields);
            expected.insert(expected.end(), record.begin(), record.end());
            EXPECT_EQ(file, expected);

            zuPointer<zuObject> loaded = loadFromDevice(file, blockSize);
            ASSERT_TRUE(loaded);
            ASSERT_TRUE(loaded->IsExactly(state->GetType()));
            // The alpha state's constant colour is not saved: compare with it cleared.
            if (state->IsExactly(zuAlphaState::TYPE))
                static_cast<zuAlphaState*>(state.get())->ConstantColor = Wm4::ColorRGBA();
            EXPECT_TRUE(loaded->Equals(state));
            // Saving the loaded state again writes the same fields.
            EXPECT_EQ(saveToBytes({loaded}, V6_32), recordOf(loaded, c.fieldBytes, c.fields));
        }
    }
}

TEST_F(StateRecords, LoadedStatesKeepEveryFieldIncludingTheUncomparedDestinationFactor)
{
    zuPointer<zuAlphaState> alpha = customAlpha();
    zuPointer<zuObject> loaded = loadFromDevice(saveToDevice(alpha, 16), 16);
    ASSERT_TRUE(loaded && loaded->IsExactly(zuAlphaState::TYPE));
    const auto* a = static_cast<const zuAlphaState*>(loaded.get());
    EXPECT_TRUE(a->BlendEnabled);
    EXPECT_EQ(a->SrcBlend, zuAlphaState::SBF_ONE_MINUS_CONSTANT_ALPHA);
    EXPECT_EQ(a->DstBlend, zuAlphaState::DBF_ZERO);
    EXPECT_TRUE(a->TestEnabled);
    EXPECT_EQ(a->Test, zuAlphaState::TF_GREATER);
    EXPECT_EQ(a->Reference, 0.5f);
    EXPECT_EQ(a->ConstantColor, Wm4::ColorRGBA(0, 0, 0, 0));

    zuPointer<zuStencilState> stencil = customStencil();
    loaded = loadFromDevice(saveToDevice(stencil, 16), 16);
    ASSERT_TRUE(loaded && loaded->IsExactly(zuStencilState::TYPE));
    const auto* s = static_cast<const zuStencilState*>(loaded.get());
    EXPECT_TRUE(s->Enabled);
    EXPECT_EQ(s->Compare, zuStencilState::CF_ALWAYS);
    EXPECT_EQ(s->Reference, 0x80u);
    EXPECT_EQ(s->Mask, 0x0Fu);
    EXPECT_EQ(s->WriteMask, 0xF0000001u);
    EXPECT_EQ(s->OnFail, zuStencilState::OT_INVERT);
    EXPECT_EQ(s->OnZFail, zuStencilState::OT_DECREMENT);
    EXPECT_EQ(s->OnZPass, zuStencilState::OT_REPLACE);
}

TEST_F(StateRecords, OutOfRangeEnumerationsAreKeptAsReadAndNameAsUnknown)
{
    zuPointer<zuAlphaState> alpha = new zuAlphaState;
    // Source 99, destination -1, test 8 (one past TF_ALWAYS).
    const Fields fields = [](zuBytes& b) { b.u8(1).i32(99).i32(-1).u8(0).i32(8).f32(1.0f); };
    std::vector<char> copy = recordOf(alpha, 18, fields);
    zuBaseStream stream;
    stream.SetVersion(V6_32);
    ASSERT_TRUE(stream.Load(copy.data(), copy.size()));
    ASSERT_EQ(stream.GetObjectCount(), 1);
    ASSERT_TRUE(stream.GetObjectAt(0)->IsExactly(zuAlphaState::TYPE));
    auto* loaded = static_cast<zuAlphaState*>(stream.GetObjectAt(0));
    EXPECT_EQ(static_cast<int>(loaded->SrcBlend), 99);
    EXPECT_EQ(static_cast<int>(loaded->DstBlend), -1);
    EXPECT_EQ(static_cast<int>(loaded->Test), 8);
    EXPECT_STREQ(zuAlphaState::GetSrcBlendName(loaded->SrcBlend), "UNKNOWN");
    EXPECT_STREQ(zuAlphaState::GetDstBlendName(loaded->DstBlend), "UNKNOWN");
    EXPECT_STREQ(zuAlphaState::GetTestModeName(loaded->Test), "UNKNOWN");
    EXPECT_EQ(saveToBytes({loaded}, V6_32), recordOf(loaded, 18, fields));

    zuPointer<zuZBufferState> zbuffer = new zuZBufferState;
    copy = recordOf(zbuffer, 6, [](zuBytes& b) { b.u8(1).u8(0).i32(-2147483647 - 1); });
    zuBaseStream zstream;
    zstream.SetVersion(V6_32);
    ASSERT_TRUE(zstream.Load(copy.data(), copy.size()));
    ASSERT_TRUE(zstream.GetObjectAt(0)->IsExactly(zuZBufferState::TYPE));
    auto* z = static_cast<zuZBufferState*>(zstream.GetObjectAt(0));
    EXPECT_FALSE(z->Writable);
    EXPECT_STREQ(zuZBufferState::GetCompareModeName(z->Compare), "UNKNOWN");
}

TEST_F(StateRecords, TruncatedOrPaddedRecordsFailTheLoadAndHandOutNothing)
{
    for (const RecordCase& c : recordCases()) {
        SCOPED_TRACE(c.label);
        zuPointer<zuGlobalState> state = c.make();
        const std::vector<char> whole = recordOf(state, c.fieldBytes, c.fields);
        ASSERT_FALSE(whole.empty());
        // Cut inside the fields: the reads run past the end of the data.
        std::vector<char> cut(whole.begin(), whole.end() - 1);
        zuBaseStream stream;
        stream.SetVersion(V6_32);
        EXPECT_FALSE(stream.Load(cut.data(), cut.size()));
        EXPECT_EQ(stream.GetObjectCount(), 0);

        // One byte more than the fields: the size field no longer matches what was read.
        std::vector<char> longer = recordOf(state, c.fieldBytes + 1, [&c](zuBytes& b) {
            c.fields(b);
            b.u8(0);
        });
        zuBaseStream stream2;
        stream2.SetVersion(V6_32);
        EXPECT_FALSE(stream2.Load(longer.data(), longer.size()));
        EXPECT_EQ(stream2.GetObjectCount(), 0);
    }
}

} // namespace
} // namespace zu::test
