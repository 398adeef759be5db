#pragma once

#include <string>

namespace zu {

class zuStringUtils {
public:
    enum Charset { UTF8, Latin1 };

    // Converts text between UTF-8 and Latin-1. A character that Latin-1 cannot hold becomes
    // '?'; an invalid UTF-8 byte is taken as the Latin-1 character of the same value.
    static std::string convertCharset(const std::string& text, Charset from, Charset to);
    // Whether the text is well-formed UTF-8 (no overlong forms, surrogates or values past
    // U+10FFFF).
    static bool isValidUtf8(const std::string& text);
};

} // namespace zu
