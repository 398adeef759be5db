// The vertex buffer in memory: sizes, resizing, accessors, copyVertex with its UserInt rule,
// swapping, baking a transformation (with its exact messages), re-laying out, cloning,
// equality and the text dump.

#include "resources/zuResourceTestSupport.h"

#include <zuSceneGraph/objects/zuTSharedArray.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/resources/zuResourceIdentifier.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSceneGraph/scenegraph/zuGenericTransformation.h>

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

float floatAt(const zuVertexBuffer& buffer, int byteOffset)
{
    float value = 0.0f;
    std::memcpy(&value, buffer.GetData() + byteOffset, 4);
    return value;
}

int intAt(const zuVertexBuffer& buffer, int byteOffset)
{
    int value = 0;
    std::memcpy(&value, buffer.GetData() + byteOffset, 4);
    return value;
}

// Every 4 bytes of the block hold base + k (k counting 4-byte words).
void fillWords(zuVertexBuffer& buffer, float base)
{
    for (int k = 0; k < buffer.GetDataSize() / 4; ++k) {
        const float value = base + static_cast<float>(k);
        std::memcpy(buffer.GetData() + 4 * k, &value, 4);
    }
}

void expectNear(const V3& actual, const V3& expected, float tolerance = 1e-5f)
{
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(actual[c], expected[c], tolerance) << "component " << c;
}

class VertexBuffer : public ResourceLibrary {};

TEST_F(VertexBuffer, LayoutConstructorSizesAndZeroFills)
{
    zuVertexBuffer buffer(positionsNormals(), 5);
    EXPECT_EQ(buffer.GetVertexSize(), 24);
    EXPECT_EQ(buffer.GetVertexQuantity(), 5);
    EXPECT_EQ(buffer.GetDataSize(), 120);
    EXPECT_EQ(buffer.getCPUSize(), 120u);
    EXPECT_EQ(buffer.getGPUSize(), 120u);
    ASSERT_TRUE(buffer.isCPUResident());
    EXPECT_EQ(std::vector<char>(buffer.GetData(), buffer.GetData() + 120), std::vector<char>(120, 0));

    zuVertexBuffer none(positionsNormals(), -3);
    EXPECT_EQ(none.GetVertexQuantity(), 0);
    EXPECT_EQ(none.GetDataSize(), 0);
    EXPECT_FALSE(none.isCPUResident());

    zuVertexBuffer copy(&buffer);
    EXPECT_TRUE(copy.Equals(&buffer));
    EXPECT_NE(copy.GetData(), buffer.GetData());
}

TEST_F(VertexBuffer, GrowingKeepsTheBytesAndZeroFillsShrinkingTruncates)
{
    zuVertexBuffer buffer(positionsNormals(), 2);
    fillWords(buffer, 1.0f);
    const std::vector<char> before(buffer.GetData(), buffer.GetData() + 48);

    buffer.resizeVertexBuffer(4);
    EXPECT_EQ(buffer.GetVertexQuantity(), 4);
    EXPECT_EQ(buffer.GetDataSize(), 96);
    EXPECT_EQ(std::vector<char>(buffer.GetData(), buffer.GetData() + 48), before);
    EXPECT_EQ(std::vector<char>(buffer.GetData() + 48, buffer.GetData() + 96), std::vector<char>(48, 0));

    buffer.resizeVertexBuffer(1);
    EXPECT_EQ(buffer.GetDataSize(), 24);
    EXPECT_EQ(std::vector<char>(buffer.GetData(), buffer.GetData() + 24),
              std::vector<char>(before.begin(), before.begin() + 24));
}

TEST_F(VertexBuffer, FormatIsSetOnceAndCopiedWithoutData)
{
    zuVertexBuffer buffer;
    EXPECT_TRUE(buffer.setVertexFormat(positionsNormals(), 3));
    EXPECT_EQ(buffer.GetDataSize(), 72);
    zuAttributes other;
    other.SetPositionChannels(2);
    EXPECT_FALSE(buffer.setVertexFormat(other, 9));
    EXPECT_EQ(buffer.GetVertexQuantity(), 3);
    EXPECT_TRUE(buffer.GetAttributes() == positionsNormals());

    zuVertexBuffer target(other, 4);
    buffer.copyVertexFormat(&target);
    EXPECT_TRUE(target.GetAttributes() == positionsNormals());
    EXPECT_EQ(target.GetVertexSize(), 24);
    EXPECT_EQ(target.GetVertexQuantity(), 3);
    EXPECT_EQ(target.GetDataSize(), 72);
    EXPECT_FALSE(target.isCPUResident());
}

TEST_F(VertexBuffer, TupleAccessorsAddressTheGroupOrAnswerNull)
{
    zuAttributes layout = positionsNormals();
    layout.SetColorChannels(1, 4);
    layout.SetTCoordChannels(0, 2);
    zuVertexBuffer buffer(layout, 3);
    const int stride = buffer.GetVertexSize();
    ASSERT_EQ(stride, 48);
    EXPECT_EQ(reinterpret_cast<char*>(buffer.PositionTuple(2)), buffer.GetData() + 2 * stride);
    EXPECT_EQ(reinterpret_cast<char*>(buffer.NormalTuple(1)), buffer.GetData() + stride + 12);
    EXPECT_EQ(reinterpret_cast<char*>(buffer.ColorTuple(1, 1)), buffer.GetData() + stride + 24);
    EXPECT_EQ(reinterpret_cast<char*>(buffer.TCoordTuple(0, 2)), buffer.GetData() + 2 * stride + 40);

    EXPECT_EQ(buffer.PositionTuple(-1), nullptr);
    EXPECT_EQ(buffer.PositionTuple(3), nullptr);
    EXPECT_EQ(buffer.ColorTuple(0, 0), nullptr);   // a unit with no channels
    EXPECT_EQ(buffer.ColorTuple(2, 0), nullptr);   // no such unit
    EXPECT_EQ(buffer.ColorTuple(-1, 0), nullptr);
    EXPECT_EQ(buffer.BlendWeightTuple(0), nullptr);
    EXPECT_EQ(buffer.FogTuple(0), nullptr);
    EXPECT_EQ(buffer.PSizeTuple(0), nullptr);
    EXPECT_EQ(buffer.BlendIndicesTuple(0), nullptr);
    EXPECT_EQ(buffer.TangentTuple(0), nullptr);
    EXPECT_EQ(buffer.BitangentTuple(0), nullptr);
    const zuVertexBuffer& constant = buffer;
    EXPECT_EQ(constant.NormalTuple(1), buffer.NormalTuple(1));
}

TEST_F(VertexBuffer, TypedAccessorsReadAndWriteTheComponentsInPlace)
{
    zuAttributes layout;
    layout.SetPositionChannels(3);
    layout.SetColorChannels(0, 4);
    layout.SetFogChannels(1);
    layout.SetUserShortChannels(1, 2);
    layout.SetUserIntChannels(0, 1);
    zuVertexBuffer buffer(layout, 2);
    ASSERT_EQ(buffer.GetVertexSize(), 40);

    buffer.Position3(1) = V3(1.0f, 2.0f, 3.0f);
    buffer.Color4(0, 1) = Wm4::Vector4<float>(0.1f, 0.2f, 0.3f, 0.4f);
    buffer.Fog1(0) = 7.5f;
    buffer.UserShort2(1, 1) = {short(-2), short(300)};
    buffer.UserInt1(0, 1) = -9;
    buffer.Position1(0) = 4.0f;

    EXPECT_EQ(floatAt(buffer, 40 + 0), 1.0f);
    EXPECT_EQ(floatAt(buffer, 40 + 8), 3.0f);
    EXPECT_EQ(floatAt(buffer, 40 + 12 + 12), 0.4f);
    EXPECT_EQ(floatAt(buffer, 28), 7.5f);
    EXPECT_EQ(floatAt(buffer, 0), 4.0f);
    short shorts[2];
    std::memcpy(shorts, buffer.GetData() + 40 + 32, 4);
    EXPECT_EQ(shorts[0], -2);
    EXPECT_EQ(shorts[1], 300);
    EXPECT_EQ(intAt(buffer, 40 + 36), -9);

    const zuVertexBuffer& constant = buffer;
    EXPECT_EQ(constant.Position2(1), Wm4::Vector2<float>(1.0f, 2.0f));
    EXPECT_EQ(constant.Color3(0, 1), V3(0.1f, 0.2f, 0.3f));
    EXPECT_EQ(constant.UserShort1(1, 1), -2);
    EXPECT_EQ((constant.UserShort2(1, 1)), (std::array<short, 2>{-2, 300}));
    EXPECT_EQ(constant.UserInt1(0, 1), -9);
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
    zuAttributes to;
    to.SetPositionChannels(3);
    to.SetNormalChannels(3);
    to.SetColorChannels(0, 4);
    to.SetColorChannels(2, 1);
    to.SetUserByteChannels(0, 4);
    to.SetUserIntChannels(2, 1);
    to.SetUserUIntChannels(0, 2);

    zuVertexBuffer source(from, 2);
    fillWords(source, 100.0f);
    zuVertexBuffer target(to, 3);
    fillWords(target, -100.0f);
    const zuVertexBuffer untouched(&target);

    ASSERT_TRUE(target.copyVertex(&source, 1, 0));
    // Position: min(4, 3) floats.
    EXPECT_EQ(target.Position3(0), source.Position3(1));
    // Colour unit 0: min(3, 4) floats; the fourth stays.
    EXPECT_EQ(target.Color3(0, 0), source.Color3(0, 1));
    EXPECT_EQ(target.Color4(0, 0)[3], untouched.Color4(0, 0)[3]);
    // Colour unit 2 is never copied, nor UserByte; normals are not in the source.
    EXPECT_EQ(target.Color1(2, 0), untouched.Color1(2, 0));
    EXPECT_EQ(target.UserByte4(0, 0), untouched.UserByte4(0, 0));
    EXPECT_EQ(target.Normal3(0), untouched.Normal3(0));
    // UserInt unit 2 copies 3 ints though it has 1 channel: it runs on into UserUInt 0.
    const int sourceInt = source.GetVertexSize() + static_cast<int>(from.GetUserIntOffsetByte(2));
    const int targetInt = static_cast<int>(to.GetUserIntOffsetByte(2));
    for (int k = 0; k < 3; ++k)
        EXPECT_EQ(intAt(target, targetInt + 4 * k), intAt(source, sourceInt + 4 * k)) << k;
    // Vertex 1 of the target is untouched.
    EXPECT_EQ(std::vector<char>(target.GetData() + to.GetStride(), target.GetData() + target.GetDataSize()),
              std::vector<char>(untouched.GetData() + to.GetStride(),
                                untouched.GetData() + untouched.GetDataSize()));

    // At the last vertex the run is clipped at the end of the block (the sanitizers see any
    // byte beyond it).
    zuAttributes tail;
    tail.SetUserIntChannels(2, 1);
    zuVertexBuffer a(tail, 2);
    zuVertexBuffer b(tail, 2);
    fillWords(a, 1.0f);
    EXPECT_TRUE(b.copyVertex(&a, 1, 1));
    EXPECT_EQ(intAt(b, 4), intAt(a, 4));

    EXPECT_FALSE(target.copyVertex(nullptr, 0, 0));
    EXPECT_FALSE(target.copyVertex(&source, 2, 0));
    EXPECT_FALSE(target.copyVertex(&source, 0, 3));
    EXPECT_FALSE(target.copyVertex(&source, -1, 0));
}

TEST_F(VertexBuffer, UserIntUnitsFromFourOnCopyNothing)
{
    zuAttributes layout;
    layout.SetUserIntChannels(0, 1);
    layout.SetUserIntChannels(1, 1);
    layout.SetUserIntChannels(4, 2);
    zuVertexBuffer source(layout, 1);
    fillWords(source, 5.0f);
    zuVertexBuffer target(layout, 1);
    ASSERT_TRUE(target.copyVertex(&source, 0, 0));
    // Unit 0: 1 int; unit 1: 2 ints (its own and unit 4's first); unit 4: nothing.
    EXPECT_EQ(intAt(target, 0), intAt(source, 0));
    EXPECT_EQ(intAt(target, 4), intAt(source, 4));
    EXPECT_EQ(intAt(target, 8), intAt(source, 8));
    EXPECT_EQ(intAt(target, 12), 0);
}

TEST_F(VertexBuffer, SwapExchangesEverythingUnlessBound)
{
    zuTempDir dir;
    zuVertexBuffer a(positionsNormals(), 2);
    fillWords(a, 1.0f);
    zuAttributes small;
    small.SetPositionChannels(2);
    zuVertexBuffer b(small, 5);
    zuPositionedStream stream(dir.file("a.mvk"), 77, zuStreamVersion(6, 32));
    a.storeStreamInfo(&stream);
    const char* aData = a.GetData();

    zuResourceIdentifier binding;
    b.onLoad(nullptr, &binding);
    EXPECT_FALSE(a.swapVertexBuffer(b));
    EXPECT_EQ(a.GetData(), aData);
    b.onRelease(&binding);

    ASSERT_TRUE(a.swapVertexBuffer(b));
    EXPECT_EQ(b.GetData(), aData);
    EXPECT_EQ(b.GetVertexSize(), 24);
    EXPECT_EQ(b.GetVertexQuantity(), 2);
    EXPECT_EQ(a.GetVertexSize(), 8);
    EXPECT_EQ(a.GetDataSize(), 40);
    EXPECT_TRUE(a.GetAttributes() == small);
    EXPECT_EQ(b.getStreamOffset(), 77u);
    EXPECT_EQ(b.getResourceFilePath(), dir.file("a.mvk"));
    EXPECT_EQ(a.getResourceFilePath(), "");
}

// The linear part's inverse transpose, applied and normalised: an independent reference.
V3 inverseTransposeNormal(const Wm4::Matrix3<float>& inverse, const V3& n)
{
    V3 result(inverse(0, 0) * n[0] + inverse(1, 0) * n[1] + inverse(2, 0) * n[2],
              inverse(0, 1) * n[0] + inverse(1, 1) * n[1] + inverse(2, 1) * n[2],
              inverse(0, 2) * n[0] + inverse(1, 2) * n[1] + inverse(2, 2) * n[2]);
    const float length = std::sqrt(result[0] * result[0] + result[1] * result[1] + result[2] * result[2]);
    return result / length;
}

TEST_F(VertexBuffer, BakeMapsPositionsAsPointsAndDirectionsByTheInverseTranspose)
{
    zuAttributes layout = positionsNormals();
    layout.SetTangentChannels(3);
    zuVertexBuffer buffer(layout, 3);
    buffer.Position3(0) = V3(1.0f, 2.0f, 3.0f);
    buffer.Position3(1) = V3(-4.0f, 0.5f, 0.0f);
    buffer.Normal3(0) = V3(0.0f, 0.0f, 1.0f);
    buffer.Normal3(1) = V3(1.0f, 1.0f, 0.0f);
    buffer.Normal3(2) = V3(0.0f, 0.0f, 0.0f);
    buffer.Tangent3(0) = V3(1.0f, 0.0f, 0.0f);

    // A quarter turn about z, scale (2, 3, 4), translation (10, 20, 30).
    zuGenericTransformation<float> t;
    t.SetRotate(Wm4::Matrix3<float>(0.0f, -1.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f));
    t.SetScale(V3(2.0f, 3.0f, 4.0f));
    t.SetTranslate(V3(10.0f, 20.0f, 30.0f));
    testing::internal::CaptureStdout();
    buffer.BakeFromTransformation(t);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");

    // R·S·p + T by hand: S·(1,2,3) = (2,6,12), R(x,y,z) = (-y,x,z).
    expectNear(buffer.Position3(0), V3(-6.0f + 10.0f, 2.0f + 20.0f, 12.0f + 30.0f));
    expectNear(buffer.Position3(1), V3(-1.5f + 10.0f, -8.0f + 20.0f, 30.0f));
    expectNear(buffer.Position3(2), V3(10.0f, 20.0f, 30.0f));
    // (R·S)⁻ᵀ = R·S⁻¹: n = (1,1,0) -> R·(1/2, 1/3, 0) = (-1/3, 1/2, 0), normalised.
    const Wm4::Matrix3<float> rsInverse(0.0f, 0.5f, 0.0f, -1.0f / 3.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.25f);
    expectNear(buffer.Normal3(0), V3(0.0f, 0.0f, 1.0f));
    expectNear(buffer.Normal3(1), inverseTransposeNormal(rsInverse, V3(1.0f, 1.0f, 0.0f)));
    expectNear(buffer.Normal3(1), V3(-2.0f, 3.0f, 0.0f) / std::sqrt(13.0f));
    expectNear(buffer.Tangent3(0), V3(0.0f, 1.0f, 0.0f));
    // A zero normal cannot be normalised and stays zero.
    EXPECT_EQ(buffer.Normal3(2), V3(0.0f, 0.0f, 0.0f));
}

TEST_F(VertexBuffer, BakeWithAGeneralMatrix)
{
    zuVertexBuffer buffer(positionsNormals(), 1);
    buffer.Position3(0) = V3(1.0f, 1.0f, 1.0f);
    buffer.Normal3(0) = V3(1.0f, 0.0f, 0.0f);
    zuGenericTransformation<float> t;
    t.SetMatrix(Wm4::Matrix3<float>(2.0f, 1.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 1.0f));
    buffer.BakeFromTransformation(t);
    expectNear(buffer.Position3(0), V3(3.0f, 1.0f, 1.0f));
    // M⁻¹ = [[0.5, -0.5, 0], [0, 1, 0], [0, 0, 1]]; M⁻ᵀ·(1,0,0) = (0.5, -0.5, 0).
    expectNear(buffer.Normal3(0), V3(1.0f, -1.0f, 0.0f) / std::sqrt(2.0f));
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

    testing::internal::CaptureStdout();
    buffer.BakeFromTransformation(t);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "zuVertexBuffer::BakeFromTransformation is only supported for 3 position channels");
    EXPECT_EQ(buffer.Position2(0), Wm4::Vector2<float>(1.0f, 2.0f));
    // Rotation about x by a quarter turn: (0,0,1) -> (0,-1,0), and normalised.
    expectNear(buffer.Normal3(0), V3(0.0f, -1.0f, 0.0f));

    // Tangents and bitangents report with the normals' words.
    zuAttributes odd;
    odd.SetPositionChannels(3);
    odd.SetNormalChannels(4);
    odd.SetTangentChannels(2);
    odd.SetBitangentChannels(1);
    zuVertexBuffer other(odd, 1);
    testing::internal::CaptureStdout();
    other.BakeFromTransformation(t);
    const std::string normal = "zuVertexBuffer::BakeFromTransformation is only supported for 3 normal channels";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), normal + normal + normal);

    // The identity does nothing at all, not even the messages.
    testing::internal::CaptureStdout();
    other.BakeFromTransformation(zuGenericTransformation<float>());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
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
    EXPECT_EQ(target, mine.data());
    ASSERT_EQ(bytes, 2 * 13 * 4);
    float second[13];
    std::memcpy(second, mine.data() + 13 * 4, sizeof(second));
    EXPECT_EQ(std::vector<float>(second, second + 13),
              (std::vector<float>{11, 12, 13, 1, 0, 0, 0, 14, 15, 16, 1, 1, 17}));
    EXPECT_EQ(mine[2 * 13 * 4], 0x55);

    zuVertexBuffer empty(layout, 0);
    char* untouched = nullptr;
    empty.BuildCompatibleArray(wanted, true, bytes, untouched);
    EXPECT_EQ(bytes, 0);
    EXPECT_EQ(untouched, nullptr);
}

TEST_F(VertexBuffer, CloneCopiesTheFormatAndOnlyCopiesBytesWhenAsked)
{
    zuVertexBuffer buffer(positionsNormals(), 3);
    fillWords(buffer, 2.0f);

    zuRttiInterface* plain = nullptr;
    ASSERT_TRUE(buffer.Clone(plain));
    zuPointer<zuVertexBuffer> clone = static_cast<zuVertexBuffer*>(plain);
    EXPECT_TRUE(clone->GetAttributes() == buffer.GetAttributes());
    EXPECT_EQ(clone->GetDataSize(), 72);
    EXPECT_EQ(clone->GetVertexQuantity(), 3);
    EXPECT_FALSE(clone->isCPUResident());

    zuRttiInterface* full = nullptr;
    ASSERT_TRUE(buffer.CloneVertexBuffer(full, true));
    zuPointer<zuVertexBuffer> fullClone = static_cast<zuVertexBuffer*>(full);
    EXPECT_TRUE(fullClone->Equals(&buffer));

    // Into an existing buffer: its block is replaced.
    zuRttiInterface* existing = fullClone.get();
    zuVertexBuffer other(positionsNormals(), 3);
    ASSERT_TRUE(other.CloneVertexBuffer(existing, true));
    EXPECT_EQ(existing, fullClone.get());
    EXPECT_TRUE(fullClone->Equals(&other));

    zuPointer<zuIntArray> foreign = new zuIntArray;
    zuRttiInterface* wrong = foreign.get();
    EXPECT_FALSE(buffer.Clone(wrong));
}

TEST_F(VertexBuffer, EqualsComparesFloatsWithinTheTolerance)
{
    zuVertexBuffer a(positionsNormals(), 2);
    zuVertexBuffer b(positionsNormals(), 2);
    fillWords(a, 1.0f);
    fillWords(b, 1.0f);
    EXPECT_TRUE(a.Equals(&b));
    b.Position1(1) += 0.00005f;
    EXPECT_TRUE(a.Equals(&b));
    b.Position1(1) += 0.0002f;
    EXPECT_FALSE(a.Equals(&b));
    b.Position1(1) = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(a.Equals(&b));  // a NaN difference is no mismatch

    zuAttributes wide = positionsNormals();
    wide.SetFogChannels(1);
    zuVertexBuffer c(wide, 2);
    EXPECT_FALSE(a.Equals(&c));
    zuVertexBuffer d(positionsNormals(), 3);
    EXPECT_FALSE(a.Equals(&d));
    EXPECT_FALSE(a.Equals(nullptr));

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

TEST_F(VertexBuffer, ResourceAnswersFollowTheBlockAndTheBinding)
{
    zuPointer<zuVertexBuffer> buffer = new zuVertexBuffer(positionsNormals(), 2);
    EXPECT_EQ(buffer->getResourceID(), buffer->GetID());
    EXPECT_EQ(buffer->getResourceType(), zuVertexBuffer::GetResourceType());
    EXPECT_NE(buffer->getResourceType(), 0u);
    EXPECT_EQ(buffer->getResourceHandlerType(), zuVertexBuffer::msVertexBufferHandlerID);
    EXPECT_STREQ(buffer->getTypeName(), "zuCore.zuVertexBuffer");
    EXPECT_TRUE(buffer->isCPUFreeable());
    zuPointer<zuVertexBuffer> second = buffer;
    EXPECT_FALSE(buffer->isCPUFreeable());
    EXPECT_FALSE(buffer->isGPUFreeable());
    zuResourceIdentifier binding;
    EXPECT_FALSE(buffer->isGPUResident());
    buffer->onLoad(nullptr, &binding);
    EXPECT_TRUE(buffer->isGPUResident());
    buffer->onRelease(&binding);

    // Registered at library start; the builders are the generic block requests.
    const auto* record = zuDynamicLoadingResource::GetRequestBuilder(zuVertexBuffer::msVertexBufferHandlerID);
    ASSERT_NE(record, nullptr);
    EXPECT_TRUE(record->cpu.registered);
    EXPECT_FALSE(record->gpu.registered);

    // A buffer that never went to a file keeps its bytes when deleted without force.
    EXPECT_FALSE(zuRendererInterface::DeleteCPUData(buffer, false));
    EXPECT_TRUE(buffer->isCPUResident());
    EXPECT_TRUE(zuRendererInterface::DeleteCPUData(buffer, true));
    EXPECT_FALSE(buffer->isCPUResident());
}

} // namespace
} // namespace zu::test
