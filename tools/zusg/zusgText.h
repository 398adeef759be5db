#pragma once

// Texts the commands share: numbers as people read them, and the values their arguments
// carry.

#include <Wm4/Wm4Vector3.h>

#include <cstdint>
#include <optional>
#include <string>

namespace zusg {

// "4,469,305": the figures of large models run to millions.
std::string grouped(uint64_t value);
// "1 triangle", "2,048 triangles": the count, grouped, and the noun in the right number.
// `plural` defaults to the singular and an "s".
std::string counted(uint64_t count, const std::string& singular, const std::string& plural = "");
// "12.3 ms", "4.56 s".
std::string duration(double milliseconds);

// "x,y,z": three finite numbers.
std::optional<Wm4::Vector3<float>> parseVector(const std::string& text);
// A whole number from `min` to `max`, the whole text.
std::optional<long long> parseWhole(const std::string& text, long long min, long long max);
// A finite number, the whole text.
std::optional<float> parseNumber(const std::string& text);

} // namespace zusg
