#include <zuSystem/zuStringUtils.h>

namespace zu {

namespace {

// Decodes one well-formed UTF-8 sequence at text[index]; returns its length and sets
// codePoint, or 0 when the bytes there are not one (overlong forms, surrogates and values
// past U+10FFFF included).
size_t decodeUtf8(const std::string& text, size_t index, unsigned& codePoint)
{
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(index);
    size_t length = 0;
    unsigned minimum = 0;
    if (lead < 0x80) {
        codePoint = lead;
        return 1;
    } else if ((lead & 0xE0) == 0xC0) {
        length = 2;
        minimum = 0x80;
        codePoint = lead & 0x1F;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3;
        minimum = 0x800;
        codePoint = lead & 0x0F;
    } else if ((lead & 0xF8) == 0xF0) {
        length = 4;
        minimum = 0x10000;
        codePoint = lead & 0x07;
    } else {
        return 0;
    }
    if (index + length > text.size())
        return 0;
    for (size_t i = 1; i < length; ++i) {
        const unsigned next = byte(index + i);
        if ((next & 0xC0) != 0x80)
            return 0;
        codePoint = (codePoint << 6) | (next & 0x3F);
    }
    if (codePoint < minimum || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
        return 0;
    return length;
}

std::string utf8ToLatin1(const std::string& text)
{
    std::string result;
    result.reserve(text.size());
    size_t index = 0;
    while (index < text.size()) {
        unsigned codePoint = 0;
        const size_t length = decodeUtf8(text, index, codePoint);
        if (length == 0) {
            // Most likely Latin-1 text that was never UTF-8: keep the byte as it is.
            result += text[index];
            ++index;
            continue;
        }
        result += codePoint <= 0xFF ? static_cast<char>(codePoint) : '?';
        index += length;
    }
    return result;
}

std::string latin1ToUtf8(const std::string& text)
{
    std::string result;
    result.reserve(text.size() + text.size() / 4);
    for (const char c : text) {
        const auto value = static_cast<unsigned char>(c);
        if (value < 0x80) {
            result += c;
        } else {
            result += static_cast<char>(0xC0 | (value >> 6));
            result += static_cast<char>(0x80 | (value & 0x3F));
        }
    }
    return result;
}

} // namespace

std::string zuStringUtils::convertCharset(const std::string& text, Charset from, Charset to)
{
    if (from == to)
        return text;
    return from == UTF8 ? utf8ToLatin1(text) : latin1ToUtf8(text);
}

bool zuStringUtils::isValidUtf8(const std::string& text)
{
    size_t index = 0;
    unsigned codePoint = 0;
    while (index < text.size()) {
        const size_t length = decodeUtf8(text, index, codePoint);
        if (length == 0)
            return false;
        index += length;
    }
    return true;
}

} // namespace zu
