#include <Wm4/Wm4System.h>
#include <Wm4/Wm4Vector3.h>

#include "Wm4TestHelpers.h"

#include <cstdint>
#include <cstring>
#include <vector>

using Wm4::System;

namespace {

std::vector<unsigned char> Bytes(const char* buffer, std::size_t count)
{
    return std::vector<unsigned char>(buffer, buffer + count);
}

} // namespace

TEST(SystemTest, WritesAreLittleEndian)
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
}

TEST(SystemTest, ReadsFromUnalignedBuffers)
{
    const unsigned char raw[] = {0xEE, 0x04, 0x03, 0x02, 0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0x08, 0x07, 0x06, 0x05,
                                 0x04, 0x03, 0x02, 0x81, 0x34, 0x12};
    const char* buffer = reinterpret_cast<const char*>(raw);

    std::int32_t words[2];
    EXPECT_EQ(8u, System::Read4le(buffer + 1, 2, words));
    EXPECT_EQ(0x01020304, words[0]);
    EXPECT_EQ(-1, words[1]);

    std::uint64_t big;
    EXPECT_EQ(8u, System::Read8le(buffer + 9, 1, &big));
    EXPECT_EQ(0x8102030405060708ull, big);

    std::uint16_t shortValue;
    EXPECT_EQ(2u, System::Read2le(buffer + 17, 1, &shortValue));
    EXPECT_EQ(0x1234, shortValue);
}

TEST(SystemTest, ArraysOfVectorsRoundTripAsRunsOfReals)
{
    Wm4::Vector3<double> points[2] = {{1.5, -2.0, 3.25}, {0.0, 1e300, -0.0}};
    char buffer[48];
    EXPECT_EQ(sizeof(buffer), System::Write8le(buffer, 6, points));
    double second;
    System::Read8le(buffer + 8, 1, &second);
    EXPECT_EQ(-2.0, second);

    Wm4::Vector3<double> loaded[2];
    EXPECT_EQ(sizeof(buffer), System::Read8le(buffer, 6, loaded));
    EXPECT_EQ(points[0], loaded[0]);
    EXPECT_EQ(points[1], loaded[1]);
}

TEST(SystemTest, NothingMovesForAnEmptyOrNegativeQuantity)
{
    char buffer[4] = {1, 2, 3, 4};
    std::uint32_t word = 0xFFFFFFFF;
    EXPECT_EQ(0u, System::Write4le(buffer, 0, &word));
    EXPECT_EQ(0u, System::Write4le(buffer, -3, &word));
    EXPECT_EQ(0u, System::Read4le(buffer, -1, &word));
    EXPECT_EQ((std::vector<unsigned char>{1, 2, 3, 4}), Bytes(buffer, 4));
    EXPECT_EQ(0xFFFFFFFFu, word);
}

TEST(SystemTest, SwapBytesReversesEachElement)
{
    std::uint32_t words[2] = {0x01020304, 0xAABBCCDD};
    System::SwapBytes(4, 2, words);
    EXPECT_EQ(0x04030201u, words[0]);
    EXPECT_EQ(0xDDCCBBAAu, words[1]);
    std::uint16_t shortValue = 0x1234;
    System::SwapBytes(2, 1, &shortValue);
    EXPECT_EQ(0x3412, shortValue);
}

TEST(SystemTest, MemcpyCopiesTheSmallerSize)
{
    char src[6] = {'a', 'b', 'c', 'd', 'e', 'f'};
    char dst[4] = {'-', '-', '-', '-'};
    EXPECT_EQ(dst, System::Memcpy(dst, 3, src, sizeof(src)));
    EXPECT_EQ(std::string("abc-"), std::string(dst, 4));
    EXPECT_EQ(dst, System::Memcpy(dst, sizeof(dst), src + 4, 2));
    EXPECT_EQ(std::string("efc-"), std::string(dst, 4));
    EXPECT_EQ(dst, System::Memcpy(dst, sizeof(dst), nullptr, 2));
    EXPECT_EQ(nullptr, System::Memcpy(nullptr, 4, src, 2));
    EXPECT_EQ(std::string("efc-"), std::string(dst, 4));
}
