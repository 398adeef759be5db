// The object stream writes arrays of the value types as raw runs of Reals through the
// little-endian System helpers, so the in-memory layout and the byte order are a file
// format. These tests pin both byte by byte.

#include <Wm4/Wm4ColorRGB.h>
#include <Wm4/Wm4ColorRGBA.h>
#include <Wm4/Wm4Matrix2.h>
#include <Wm4/Wm4Matrix3.h>
#include <Wm4/Wm4Matrix4.h>
#include <Wm4/Wm4Plane3.h>
#include <Wm4/Wm4Quaternion.h>
#include <Wm4/Wm4System.h>
#include <Wm4/Wm4Vector2.h>
#include <Wm4/Wm4Vector3.h>
#include <Wm4/Wm4Vector4.h>

#include "Wm4TestHelpers.h"

#include <cstdint>
#include <cstring>
#include <vector>

using namespace Wm4;

namespace {

// The object's bytes, read back as Reals.
template <class Real, class Value, int N>
void ExpectStored(const Value& value, const Real (&expected)[N])
{
    static_assert(sizeof(Value) == N * sizeof(Real));
    Real stored[N];
    std::memcpy(stored, &value, sizeof(stored));
    for (int i = 0; i < N; ++i)
        EXPECT_EQ(expected[i], stored[i]) << "at Real " << i;
}

std::vector<unsigned char> Bytes(const char* buffer, std::size_t count)
{
    return std::vector<unsigned char>(buffer, buffer + count);
}

template <class Real>
class LayoutTest : public ::testing::Test {};
TYPED_TEST_SUITE(LayoutTest, Wm4Test::RealTypes);

} // namespace

TYPED_TEST(LayoutTest, ValuesAreTheirComponentsInOrderAndMatricesAreRowMajor)
{
    using R = TypeParam;
    ExpectStored(Vector2<R>(1, 2), {R(1), R(2)});
    ExpectStored(Vector3<R>(1, 2, 3), {R(1), R(2), R(3)});
    ExpectStored(Vector4<R>(1, 2, 3, 4), {R(1), R(2), R(3), R(4)});
    // Arrays are back-to-back runs with no gaps.
    Vector3<R> points[2] = {Vector3<R>(1, 2, 3), Vector3<R>(4, 5, 6)};
    const R* run = points[0];
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(R(i + 1), run[i]);

    Matrix2<R> m2(1, 2, 3, 4);
    ExpectStored(m2, {R(1), R(2), R(3), R(4)});
    EXPECT_EQ(R(2), m2(0, 1));
    EXPECT_EQ(R(3), m2[1][0]);
    Matrix3<R> m3(1, 2, 3, 4, 5, 6, 7, 8, 9);
    ExpectStored(m3, {R(1), R(2), R(3), R(4), R(5), R(6), R(7), R(8), R(9)});
    EXPECT_EQ(R(6), m3(1, 2));
    EXPECT_EQ(R(8), m3[2][1]);
    Matrix4<R> m4(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
    ExpectStored(m4, {R(1), R(2), R(3), R(4), R(5), R(6), R(7), R(8), R(9), R(10), R(11), R(12), R(13), R(14),
                      R(15), R(16)});
    EXPECT_EQ(R(8), m4(1, 3));
    EXPECT_EQ(R(14), m4[3][1]);

    // A quaternion is w then x, y, z; a plane its normal then its constant.
    Quaternion<R> q(1, 2, 3, 4);
    ExpectStored(q, {R(1), R(2), R(3), R(4)});
    EXPECT_EQ(R(1), q.W());
    EXPECT_EQ(R(1), q[0]);
    EXPECT_EQ(R(2), q.X());
    ExpectStored(Plane3<R>(Vector3<R>(1, 2, 3), R(4)), {R(1), R(2), R(3), R(4)});
}

TEST(LayoutTest, ColoursAreFloatChannelsInOrder)
{
    ExpectStored(ColorRGB(0.25f, 0.5f, 0.75f), {0.25f, 0.5f, 0.75f});
    ExpectStored(ColorRGBA(0.25f, 0.5f, 0.75f, 1.0f), {0.25f, 0.5f, 0.75f, 1.0f});
}

TEST(SystemTest, WritesAreLittleEndianAndReadsWorkFromUnalignedBuffers)
{
    char buffer[16] = {};
    std::uint16_t shorts[2] = {0x0102, 0xA0B0};
    EXPECT_EQ(4u, System::Write2le(buffer, 2, shorts));
    EXPECT_EQ((std::vector<unsigned char>{0x02, 0x01, 0xB0, 0xA0}), Bytes(buffer, 4));
    std::uint32_t word = 0x01020304;
    EXPECT_EQ(4u, System::Write4le(buffer, 1, &word));
    EXPECT_EQ((std::vector<unsigned char>{0x04, 0x03, 0x02, 0x01}), Bytes(buffer, 4));
    std::uint64_t big = 0x0102030405060708ull;
    EXPECT_EQ(8u, System::Write8le(buffer, 1, &big));
    EXPECT_EQ((std::vector<unsigned char>{0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01}), Bytes(buffer, 8));
    // IEEE-754 encodings of 1.0f and -2.0.
    float one = 1.0f;
    double minusTwo = -2.0;
    System::Write4le(buffer, 1, &one);
    System::Write8le(buffer + 4, 1, &minusTwo);
    EXPECT_EQ((std::vector<unsigned char>{0x00, 0x00, 0x80, 0x3F, 0, 0, 0, 0, 0, 0, 0x00, 0xC0}), Bytes(buffer, 12));

    const unsigned char raw[] = {0xEE, 0x04, 0x03, 0x02, 0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0x08, 0x07, 0x06, 0x05,
                                 0x04, 0x03, 0x02, 0x81, 0x34, 0x12};
    const char* input = reinterpret_cast<const char*>(raw);
    std::int32_t words[2];
    EXPECT_EQ(8u, System::Read4le(input + 1, 2, words));
    EXPECT_EQ(0x01020304, words[0]);
    EXPECT_EQ(-1, words[1]);
    EXPECT_EQ(8u, System::Read8le(input + 9, 1, &big));
    EXPECT_EQ(0x8102030405060708ull, big);
    std::uint16_t shortValue;
    EXPECT_EQ(2u, System::Read2le(input + 17, 1, &shortValue));
    EXPECT_EQ(0x1234, shortValue);
}

TEST(SystemTest, EmptyOrNegativeQuantitiesMoveNothingAndSwapsReverseEachValue)
{
    char buffer[4] = {1, 2, 3, 4};
    std::uint32_t word = 0xFFFFFFFF;
    EXPECT_EQ(0u, System::Write4le(buffer, 0, &word));
    EXPECT_EQ(0u, System::Write4le(buffer, -3, &word));
    EXPECT_EQ(0u, System::Read4le(buffer, -1, &word));
    EXPECT_EQ((std::vector<unsigned char>{1, 2, 3, 4}), Bytes(buffer, 4));
    EXPECT_EQ(0xFFFFFFFFu, word);

    std::uint32_t words[2] = {0x01020304, 0xAABBCCDD};
    System::SwapBytes(4, 2, words);
    EXPECT_EQ(0x04030201u, words[0]);
    EXPECT_EQ(0xDDCCBBAAu, words[1]);
    std::uint16_t shortValue = 0x1234;
    System::SwapBytes(2, 1, &shortValue);
    EXPECT_EQ(0x3412, shortValue);
}
