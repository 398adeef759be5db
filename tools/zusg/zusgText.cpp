#include "zusgText.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace zusg {

std::string grouped(uint64_t value)
{
    const std::string digits = std::to_string(value);
    std::string text;
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0)
            text += ',';
        text += digits[i];
    }
    return text;
}

std::string counted(uint64_t count, const std::string& singular, const std::string& plural)
{
    return grouped(count) + " " + (count == 1 ? singular : plural.empty() ? singular + "s" : plural);
}

std::string duration(double milliseconds)
{
    char text[32];
    if (milliseconds < 1000.0)
        std::snprintf(text, sizeof text, "%.1f ms", milliseconds);
    else
        std::snprintf(text, sizeof text, "%.2f s", milliseconds / 1000.0);
    return text;
}

std::optional<Wm4::Vector3<float>> parseVector(const std::string& text)
{
    Wm4::Vector3<float> v;
    const char* cursor = text.c_str();
    for (int i = 0; i < 3; ++i) {
        char* end = nullptr;
        const float value = std::strtof(cursor, &end);
        if (end == cursor || !std::isfinite(value) || *end != (i < 2 ? ',' : '\0'))
            return std::nullopt;
        v[i] = value;
        cursor = end + (i < 2 ? 1 : 0);
    }
    return v;
}

std::optional<long long> parseWhole(const std::string& text, long long min, long long max)
{
    char* end = nullptr;
    errno = 0;
    const long long value = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || *end || errno == ERANGE || value < min || value > max)
        return std::nullopt;
    return value;
}

std::optional<float> parseNumber(const std::string& text)
{
    char* end = nullptr;
    const float value = std::strtof(text.c_str(), &end);
    if (text.empty() || *end || !std::isfinite(value))
        return std::nullopt;
    return value;
}

} // namespace zusg
