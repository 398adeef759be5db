#include <zuSystem/zuStringUtils.h>

#include <gtest/gtest.h>

using zu::zuStringUtils;

namespace {

std::string toLatin1(const std::string& utf8)
{
    return zuStringUtils::convertCharset(utf8, zuStringUtils::UTF8, zuStringUtils::Latin1);
}

} // namespace

TEST(zuStringUtilsTest, Latin1RoundTripsThroughUtf8)
{
    std::string every;
    for (int value = 1; value < 256; ++value)
        every += static_cast<char>(value);
    const std::string utf8 = zuStringUtils::convertCharset(every, zuStringUtils::Latin1, zuStringUtils::UTF8);
    EXPECT_EQ(utf8.size(), 127u + 2u * 128u);
    EXPECT_EQ(utf8.substr(utf8.size() - 2), "\xC3\xBF");
    EXPECT_EQ(toLatin1(utf8), every);
    EXPECT_EQ(zuStringUtils::convertCharset("\xFF\xC3", zuStringUtils::UTF8, zuStringUtils::UTF8), "\xFF\xC3");
}

TEST(zuStringUtilsTest, Utf8BeyondLatin1BecomesQuestionMark)
{
    EXPECT_EQ(toLatin1("\xE2\x82\xAC 5"), "? 5");        // 3-byte sequence
    EXPECT_EQ(toLatin1("a\xF0\x9F\x98\x80" "b"), "a?b"); // 4-byte sequence
}

TEST(zuStringUtilsTest, InvalidUtf8BytesAreKept)
{
    // Plain Latin-1 given as UTF-8, a broken sequence, a lone continuation byte, an overlong
    // '/', an encoded surrogate, a sequence cut by the end.
    for (const char* text : {"caf\xE9", "\xC3" "A", "\x80", "\xC0\xAF", "\xED\xA0\x80", "\xE2\x82"})
        EXPECT_EQ(toLatin1(text), text);
}
