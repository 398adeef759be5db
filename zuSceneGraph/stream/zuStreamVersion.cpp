#include <zuSceneGraph/stream/zuStreamVersion.h>

#include <zuSystem/zuLog.h>

#include <cstring>
#include <string>

namespace zu {

namespace {

// Reads a decimal number made only of digits; false when empty or 65536 or more.
bool parseNumber(const char* begin, const char* end, int& value)
{
    if (begin == end)
        return false;
    long result = 0;
    for (const char* c = begin; c != end; ++c) {
        if (*c < '0' || *c > '9')
            return false;
        result = result * 10 + (*c - '0');
        if (result >= 65536)
            return false;
    }
    value = static_cast<int>(result);
    return true;
}

} // namespace

zuStreamVersion::zuStreamVersion(const char* text, int length)
{
    if (!text) {
        zuLog::instance().write("zustream", "Fail to parse zuStreamVersion input is NULL");
        return;
    }
    // A header text arrives with its terminating NUL: the number stops there.
    const int usable = length > 0 ? static_cast<int>(strnlen(text, static_cast<size_t>(length))) : 0;
    const char* begin = text;
    const char* end = text + usable;
    bool parsed = false;
    int major = 0;
    int minor = 0;
    const bool hasPrefix = (length < 0 || length > 3) && usable >= 4 && std::strncmp(text, "MVK ", 4) == 0;
    if (hasPrefix) {
        begin += 4;
        parsed = length > 6;
    } else {
        parsed = length > 2;
    }
    if (parsed) {
        const char* dot = static_cast<const char*>(std::memchr(begin, '.', static_cast<size_t>(end - begin)));
        parsed = dot && parseNumber(begin, dot, major) && parseNumber(dot + 1, end, minor);
    }
    if (parsed)
        SetVersion(major, minor);
    else
        zuLog::instance().write("zustream", "Fail to parse zuStreamVersion string '"
                                                + std::string(text, static_cast<size_t>(usable)) + "'");
}

} // namespace zu
