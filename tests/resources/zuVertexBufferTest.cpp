// The vertex buffer in memory: sizes, resizing, accessors, copyVertex with its UserInt rule,
// swapping, baking a transformation (with its exact messages), re-laying out, cloning,
// equality and the text dump.

#include "resources/zuResourceTestSupport.h"
#include "support/zuOutputCapture.h"

#include <zuSceneGraph/math/zuGenericTransformation.h>
#include <zuSceneGraph/objects/zuTSharedArray.h>
#include <zuSceneGraph/resources/zuResourceIdentifier.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <sstream>
#include <vector>

namespace zu::test {
namespace {

using V3 = Wm4::Vector3<float>;

zuAttributes positionsNormals()
{
    zuAttributes layout;
    layout.SetPositionChannels(3);
    layout.SetNormalChannels(3);
    return layout;
}

template <class T = float>
T valueAt(const zuVertexBuffer& buffer, int byteOffset)
{
    T value{};
    std::memcpy(&value, buffer.GetData() + byteOffset, sizeof(T));
    return value;
}

int intAt(const zuVertexBuffer& buffer, int byteOffset)
{
    return valueAt<int>(buffer, byteOffset);
}

// Every 4 bytes of the block hold base + k (k counting 4-byte words).
void fillWords(zuVertexBuffer& buffer, float base)
{
    for (int k = 0; k < buffer.GetDataSize() / 4; ++k) {
        const float value = base + static_cast<float>(k);
        std::memcpy(buffer.GetData() + 4 * k, &value, 4);
    }
}

std::vector<char> bytesOf(const zuVertexBuffer& buffer, int from, int to)
{
    return std::vector<char>(buffer.GetData() + from, buffer.GetData() + to);
}

void expectNear(const V3& actual, const V3& expected, float tolerance = 1e-5f)
{
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(actual[c], expected[c], tolerance) << "component " << c;
}

class VertexBuffer : public ResourceLibrary {};

TEST_F(VertexBuffer, SizesResizingAndFormat)
{
    zuVertexBuffer buffer(positionsNormals(), 2);
    ASSERT_TRUE(buffer.getCPUSize() == 48u && buffer.isCPUResident());
    EXPECT_EQ(bytesOf(buffer, 0, 48), std::vector<char>(48, 0));
    zuVertexBuffer none(positionsNormals(), -3);
    EXPECT_TRUE(none.GetVertexQuantity() == 0 && none.GetDataSize() == 0 && !none.isCPUResident());

    // Growing keeps the bytes and zero-fills, shrinking truncates.
    fillWords(buffer, 1.0f);
    const std::vector<char> before = bytesOf(buffer, 0, 48);
    zuVertexBuffer copy(&buffer);
    EXPECT_TRUE(copy.Equals(&buffer) && copy.GetData() != buffer.GetData());
    buffer.resizeVertexBuffer(4);
    ASSERT_EQ(buffer.GetDataSize(), 96);
    EXPECT_TRUE(bytesOf(buffer, 0, 48) == before && bytesOf(buffer, 48, 96) == std::vector<char>(48, 0));
    buffer.resizeVertexBuffer(1);
    EXPECT_EQ(bytesOf(buffer, 0, 24), std::vector<char>(before.begin(), before.begin() + 24));

    // The format is set once, and copied without the data.
    zuVertexBuffer empty;
    EXPECT_TRUE(empty.setVertexFormat(positionsNormals(), 3) && empty.GetDataSize() == 72);
    zuAttributes other;
    other.SetPositionChannels(2);
    EXPECT_TRUE(!empty.setVertexFormat(other, 9) && empty.GetVertexQuantity() == 3);
    zuVertexBuffer target(other, 4);
    empty.copyVertexFormat(&target);
    EXPECT_TRUE(target.GetAttributes() == positionsNormals() && target.GetDataSize() == 72 && !target.isCPUResident());
}

TEST_F(VertexBuffer, AccessorsAddressTheirGroupInPlaceOrAnswerNull)
{
    zuAttributes layout = positionsNormals();
    layout.SetColorChannels(1, 4);
    layout.SetTCoordChannels(0, 2);
    zuVertexBuffer buffer(layout, 3);
    const int stride = buffer.GetVertexSize();
    ASSERT_EQ(stride, 48);
    const char* data = buffer.GetData();
    EXPECT_EQ((std::vector<const void*>{buffer.PositionTuple(2), buffer.NormalTuple(1), buffer.ColorTuple(1, 1),
                                        buffer.TCoordTuple(0, 2)}),
              (std::vector<const void*>{data + 2 * stride, data + stride + 12, data + stride + 24,
                                        data + 2 * stride + 40}));
    EXPECT_EQ(static_cast<const zuVertexBuffer&>(buffer).NormalTuple(1), buffer.NormalTuple(1));
    // Out of range, a unit with no channels, no such unit, groups the layout lacks.
    for (const float* none : {buffer.PositionTuple(-1), buffer.PositionTuple(3), buffer.ColorTuple(0, 0),
                              buffer.ColorTuple(2, 0), buffer.ColorTuple(-1, 0), buffer.FogTuple(0), buffer.TangentTuple(0)})
        EXPECT_EQ(none, nullptr);

    // Typed accessors read and write the components where the layout puts them.
    zuAttributes typed;
    typed.SetPositionChannels(3);
    typed.SetColorChannels(0, 4);
    typed.SetFogChannels(1);
    typed.SetUserShortChannels(1, 2);
    typed.SetUserIntChannels(0, 1);
    zuVertexBuffer values(typed, 2);
    ASSERT_EQ(values.GetVertexSize(), 40);
    values.Position3(1) = V3(1.0f, 2.0f, 3.0f);
    values.Color4(0, 1) = Wm4::Vector4<float>(0.1f, 0.2f, 0.3f, 0.4f);
    values.Fog1(0) = 7.5f;
    values.UserShort2(1, 1) = {short(-2), short(300)};
    values.UserInt1(0, 1) = -9;
    values.Position1(0) = 4.0f;
    EXPECT_EQ((std::vector<float>{valueAt(values, 40), valueAt(values, 48), valueAt(values, 64), valueAt(values, 28),
                                  valueAt(values, 0)}),
              (std::vector<float>{1.0f, 3.0f, 0.4f, 7.5f, 4.0f}));
    EXPECT_TRUE(valueAt<short>(values, 72) == -2 && valueAt<short>(values, 74) == 300 && intAt(values, 76) == -9);
    const zuVertexBuffer& read = values;
    EXPECT_TRUE(read.Position2(1) == Wm4::Vector2<float>(1.0f, 2.0f) && read.Color3(0, 1) == V3(0.1f, 0.2f, 0.3f)
                && read.UserShort2(1, 1) == (std::array<short, 2>{-2, 300}));
}

TEST_F(VertexBuffer, CopyVertexCopiesSharedGroupsAndUserIntByUnitNumber)
{
    // Source: 4 position channels, colour units 0 to 2, UserByte, and UserInt units 0 to 2
    // (unit 2 with 1 channel) followed by a UserUInt unit that the unit-2 copy runs into.
    zuAttributes from;
    from.SetPositionChannels(4);
    from.SetColorChannels(0, 3);
    from.SetColorChannels(2, 1);
    from.SetUserByteChannels(0, 4);
    from.SetUserIntChannels(2, 1);
    from.SetUserUIntChannels(0, 2);
    zuAttributes to = from;
    to.SetPositionChannels(3);
    to.SetNormalChannels(3);
    to.SetColorChannels(0, 4);

    zuVertexBuffer source(from, 2);
    fillWords(source, 100.0f);
    zuVertexBuffer target(to, 3);
    fillWords(target, -100.0f);
    const zuVertexBuffer untouched(&target);

    ASSERT_TRUE(target.copyVertex(&source, 1, 0));
    EXPECT_EQ(target.Position3(0), source.Position3(1));  // min(4, 3) floats
    EXPECT_EQ(target.Color3(0, 0), source.Color3(0, 1));  // min(3, 4) floats; the fourth stays
    EXPECT_EQ(target.Color4(0, 0)[3], untouched.Color4(0, 0)[3]);
    // Colour unit 2 is never copied, nor UserByte; normals are not in the source.
    EXPECT_TRUE(target.Color1(2, 0) == untouched.Color1(2, 0) && target.UserByte4(0, 0) == untouched.UserByte4(0, 0)
                && target.Normal3(0) == untouched.Normal3(0));
    // UserInt unit 2 copies 3 ints though it has 1 channel: it runs on into UserUInt 0.
    const int sourceInt = source.GetVertexSize() + static_cast<int>(from.GetUserIntOffsetByte(2));
    const int targetInt = static_cast<int>(to.GetUserIntOffsetByte(2));
    EXPECT_EQ(bytesOf(target, targetInt, targetInt + 12), bytesOf(source, sourceInt, sourceInt + 12));
    const int stride = to.GetStride();
    EXPECT_EQ(bytesOf(target, stride, target.GetDataSize()), bytesOf(untouched, stride, untouched.GetDataSize()));

    // At the last vertex the run is clipped at the end of the block (the sanitizers see any
    // byte beyond it).
    zuAttributes tail;
    tail.SetUserIntChannels(2, 1);
    zuVertexBuffer a(tail, 2);
    zuVertexBuffer b(tail, 2);
    fillWords(a, 1.0f);
    EXPECT_TRUE(b.copyVertex(&a, 1, 1) && intAt(b, 4) == intAt(a, 4));

    // Unit 0 copies 1 int, unit 1 copies 2 (its own and unit 4's first), units from 4 none.
    zuAttributes units;
    units.SetUserIntChannels(0, 1);
    units.SetUserIntChannels(1, 1);
    units.SetUserIntChannels(4, 2);
    zuVertexBuffer unitSource(units, 1);
    fillWords(unitSource, 5.0f);
    zuVertexBuffer unitTarget(units, 1);
    ASSERT_TRUE(unitTarget.copyVertex(&unitSource, 0, 0));
    EXPECT_TRUE(bytesOf(unitTarget, 0, 12) == bytesOf(unitSource, 0, 12) && intAt(unitTarget, 12) == 0);

    EXPECT_FALSE(target.copyVertex(nullptr, 0, 0) || target.copyVertex(&source, 2, 0)
                 || target.copyVertex(&source, 0, 3) || target.copyVertex(&source, -1, 0));
}

TEST_F(VertexBuffer, SwapExchangesEverythingUnlessBound)
{
    zuVertexBuffer a(positionsNormals(), 2);
    zuAttributes small;
    small.SetPositionChannels(2);
    zuVertexBuffer b(small, 5);
    zuPositionedStream stream("a.mvk", 77, zuStreamVersion(6, 32));
    a.storeStreamInfo(&stream);
    const char* aData = a.GetData();

    zuResourceIdentifier binding;
    b.onLoad(nullptr, &binding);
    EXPECT_TRUE(!a.swapVertexBuffer(b) && a.GetData() == aData);
    b.onRelease(&binding);

    ASSERT_TRUE(a.swapVertexBuffer(b));
    EXPECT_TRUE(b.GetData() == aData && b.GetVertexSize() == 24 && b.GetVertexQuantity() == 2);
    EXPECT_TRUE(a.GetDataSize() == 40 && a.GetAttributes() == small);
    EXPECT_TRUE(b.getStreamOffset() == 77u && b.getResourceFilePath() == "a.mvk" && a.getResourceFilePath().empty());
}

// Positions map as points (R S p + T), directions by the inverse transpose of the linear part
// and are normalised; the expectations are worked out by hand.
TEST_F(VertexBuffer, BakeMapsPositionsAsPointsAndDirectionsByTheInverseTranspose)
{
    zuAttributes layout = positionsNormals();
    layout.SetTangentChannels(3);
    zuVertexBuffer buffer(layout, 3);
    buffer.Position3(0) = V3(1.0f, 2.0f, 3.0f);
    buffer.Position3(1) = V3(-4.0f, 0.5f, 0.0f);
    buffer.Normal3(0) = V3(0.0f, 0.0f, 1.0f);
    buffer.Normal3(1) = V3(1.0f, 1.0f, 0.0f);
    buffer.Tangent3(0) = V3(1.0f, 0.0f, 0.0f);

    // A quarter turn about z, scale (2, 3, 4), translation (10, 20, 30).
    zuGenericTransformation<float> t;
    t.SetRotate(Wm4::Matrix3<float>(0.0f, -1.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f));
    t.SetScale(V3(2.0f, 3.0f, 4.0f));
    t.SetTranslate(V3(10.0f, 20.0f, 30.0f));
    zuOutputCapture capturedOut(zuOutputCapture::STDOUT);
    buffer.BakeFromTransformation(t);
    EXPECT_EQ(capturedOut.take(), "");
    // S (1,2,3) = (2,6,12), R (x,y,z) = (-y,x,z).
    expectNear(buffer.Position3(0), V3(-6.0f + 10.0f, 2.0f + 20.0f, 12.0f + 30.0f));
    expectNear(buffer.Position3(1), V3(-1.5f + 10.0f, -8.0f + 20.0f, 30.0f));
    expectNear(buffer.Position3(2), V3(10.0f, 20.0f, 30.0f));
    // (R S)^-T = R S^-1: n = (1,1,0) -> R (1/2, 1/3, 0) = (-1/3, 1/2, 0), normalised.
    expectNear(buffer.Normal3(0), V3(0.0f, 0.0f, 1.0f));
    expectNear(buffer.Normal3(1), V3(-2.0f, 3.0f, 0.0f) / std::sqrt(13.0f));
    expectNear(buffer.Tangent3(0), V3(0.0f, 1.0f, 0.0f));
    EXPECT_EQ(buffer.Normal3(2), V3(0.0f, 0.0f, 0.0f)) << "a zero normal cannot be normalised";

    // A general matrix M = [[2, 1, 0], [0, 1, 0], [0, 0, 1]]: M^-T (1,0,0) = (0.5, -0.5, 0).
    zuVertexBuffer general(positionsNormals(), 1);
    general.Position3(0) = V3(1.0f, 1.0f, 1.0f);
    general.Normal3(0) = V3(1.0f, 0.0f, 0.0f);
    zuGenericTransformation<float> m;
    m.SetMatrix(Wm4::Matrix3<float>(2.0f, 1.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 1.0f));
    general.BakeFromTransformation(m);
    expectNear(general.Position3(0), V3(3.0f, 1.0f, 1.0f));
    expectNear(general.Normal3(0), V3(1.0f, -1.0f, 0.0f) / std::sqrt(2.0f));
}

TEST_F(VertexBuffer, BakeReportsGroupsItCannotMapAndStillMapsTheOthers)
{
    zuAttributes layout;
    layout.SetPositionChannels(2);
    layout.SetNormalChannels(3);
    zuVertexBuffer buffer(layout, 1);
    buffer.Position2(0) = Wm4::Vector2<float>(1.0f, 2.0f);
    buffer.Normal3(0) = V3(0.0f, 0.0f, 2.0f);
    zuGenericTransformation<float> t;
    t.SetTranslate(V3(5.0f, 5.0f, 5.0f));
    t.SetRotate(Wm4::Matrix3<float>(1.0f, 0.0f, 0.0f, 0.0f, 0.0f, -1.0f, 0.0f, 1.0f, 0.0f));

    zuOutputCapture capturedOut(zuOutputCapture::STDOUT);
    buffer.BakeFromTransformation(t);
    EXPECT_EQ(capturedOut.take(),
              "zuVertexBuffer::BakeFromTransformation is only supported for 3 position channels");
    EXPECT_EQ(buffer.Position2(0), Wm4::Vector2<float>(1.0f, 2.0f));
    // A quarter turn about x: (0,0,1) -> (0,-1,0), normalised.
    expectNear(buffer.Normal3(0), V3(0.0f, -1.0f, 0.0f));

    // Tangents and bitangents report with the normals' words.
    zuAttributes odd;
    odd.SetPositionChannels(3);
    odd.SetNormalChannels(4);
    odd.SetTangentChannels(2);
    odd.SetBitangentChannels(1);
    zuVertexBuffer other(odd, 1);
    capturedOut.start();
    other.BakeFromTransformation(t);
    const std::string normal = "zuVertexBuffer::BakeFromTransformation is only supported for 3 normal channels";
    EXPECT_EQ(capturedOut.take(), normal + normal + normal);

    // The identity does nothing at all, not even the messages.
    capturedOut.start();
    other.BakeFromTransformation(zuGenericTransformation<float>());
    EXPECT_EQ(capturedOut.take(), "");
}

TEST_F(VertexBuffer, BuildCompatibleArrayReLaysOutAndFills)
{
    zuAttributes layout;
    layout.SetPositionChannels(3);
    layout.SetColorChannels(0, 3);
    layout.SetTCoordChannels(0, 2);
    layout.SetUserIntChannels(0, 1);
    zuVertexBuffer buffer(layout, 2);
    for (int i = 0; i < 2; ++i) {
        const float b = 10.0f * static_cast<float>(i);
        buffer.Position3(i) = V3(b + 1, b + 2, b + 3);
        buffer.Color3(0, i) = V3(b + 4, b + 5, b + 6);
        buffer.TCoord2(0, i) = Wm4::Vector2<float>(b + 7, b + 8);
    }
    zuAttributes wanted;
    wanted.SetPositionChannels(4);
    wanted.SetNormalChannels(3);
    wanted.SetColorChannels(0, 3);
    wanted.SetColorChannels(1, 2);
    wanted.SetTCoordChannels(0, 1);
    wanted.SetUserByteChannels(0, 4);  // not a float group: ignored

    int bytes = -1;
    char* array = nullptr;
    buffer.BuildCompatibleArray(wanted, true, bytes, array);
    std::unique_ptr<char[]> owned(array);
    // Per vertex: position 3 + 1.0; normal 0 0 0; colour 0: 3 + alpha 1.0; colour 1: two
    // missing colour components (1.0) + 2 more to make it RGBA; texture coordinate u.
    const std::vector<float> expected = {1, 2, 3, 1, 0, 0, 0, 4, 5, 6, 1, 1, 1, 1, 1, 7,
                                         11, 12, 13, 1, 0, 0, 0, 14, 15, 16, 1, 1, 1, 1, 1, 17};
    ASSERT_EQ(bytes, static_cast<int>(expected.size() * 4));
    std::vector<float> actual(expected.size());
    std::memcpy(actual.data(), array, static_cast<size_t>(bytes));
    EXPECT_EQ(actual, expected);

    // Without the flag, into the caller's array.
    std::vector<char> mine(1024, 0x55);
    char* target = mine.data();
    buffer.BuildCompatibleArray(wanted, false, bytes, target);
    ASSERT_TRUE(target == mine.data() && bytes == 2 * 13 * 4);
    std::vector<float> second(13);
    std::memcpy(second.data(), mine.data() + 13 * 4, 13 * 4);
    EXPECT_EQ(second, (std::vector<float>{11, 12, 13, 1, 0, 0, 0, 14, 15, 16, 1, 1, 17}));
    EXPECT_EQ(mine[2 * 13 * 4], 0x55);

    zuVertexBuffer empty(layout, 0);
    char* untouched = nullptr;
    empty.BuildCompatibleArray(wanted, true, bytes, untouched);
    EXPECT_TRUE(bytes == 0 && untouched == nullptr);
}

TEST_F(VertexBuffer, CloneAndEquals)
{
    zuVertexBuffer buffer(positionsNormals(), 3);
    fillWords(buffer, 2.0f);
    // Clone copies the format; the bytes only when asked.
    zuRttiInterface* plain = nullptr;
    ASSERT_TRUE(buffer.Clone(plain));
    zuPointer<zuVertexBuffer> clone = static_cast<zuVertexBuffer*>(plain);
    EXPECT_TRUE(clone->GetAttributes() == buffer.GetAttributes() && clone->GetDataSize() == 72
                && !clone->isCPUResident());
    zuRttiInterface* full = nullptr;
    ASSERT_TRUE(buffer.CloneVertexBuffer(full, true));
    zuPointer<zuVertexBuffer> fullClone = static_cast<zuVertexBuffer*>(full);
    EXPECT_TRUE(fullClone->Equals(&buffer));
    // Into an existing buffer its block is replaced; not into another class.
    zuRttiInterface* existing = fullClone.get();
    zuVertexBuffer other(positionsNormals(), 3);
    ASSERT_TRUE(other.CloneVertexBuffer(existing, true));
    EXPECT_TRUE(existing == fullClone.get() && fullClone->Equals(&other));

    // Floats are equal within 1e-4; a NaN difference is no mismatch.
    zuVertexBuffer a(positionsNormals(), 2);
    zuVertexBuffer b(positionsNormals(), 2);
    fillWords(a, 1.0f);
    fillWords(b, 1.0f);
    for (auto [value, equal] : {std::pair{7.0f, true}, {7.00005f, true}, {7.00025f, false},
                                {std::numeric_limits<float>::quiet_NaN(), true}}) {
        b.Position1(1) = value;
        EXPECT_EQ(a.Equals(&b), equal) << value;
    }
    zuAttributes wide = positionsNormals();
    wide.SetFogChannels(1);
    zuVertexBuffer c(wide, 2);
    zuVertexBuffer d(positionsNormals(), 3);
    EXPECT_FALSE(a.Equals(&c) || a.Equals(&d));
    // Fewer than 4 bytes compare as equal whatever they hold.
    zuAttributes bytes;
    bytes.SetUserUByteChannels(0, 3);
    zuVertexBuffer e(bytes, 1);
    zuVertexBuffer f(bytes, 1);
    f.UserUByte1(0, 0) = 200;
    EXPECT_TRUE(e.Equals(&f));
}

TEST_F(VertexBuffer, TextDumpListsPositionsNormalsAndTextureCoordinates)
{
    zuAttributes layout = positionsNormals();
    layout.SetTCoordChannels(1, 3);
    layout.SetTCoordChannels(7, 2);  // beyond unit 6: not dumped
    zuVertexBuffer buffer(layout, 2);
    buffer.Position3(0) = V3(1.0f, 2.5f, -3.0f);
    buffer.Position3(1) = V3(4.0f, 5.0f, 6.0f);
    buffer.Normal3(1) = V3(0.0f, 1.0f, 0.0f);
    buffer.TCoord3(1, 0) = V3(0.25f, 0.75f, 9.0f);
    std::ostringstream text;
    text << buffer;
    EXPECT_EQ(text.str(), "positions\n1 2.5 -3\n4 5 6\nnormals\n0 0 0\n0 1 0\nTCoord 1\n0.25 0.75\n0 0\n");
}

} // namespace
} // namespace zu::test
