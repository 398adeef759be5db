#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace Wm4 {

// An RGB colour of three floats (r, g, b) and nothing else. Channels are
// nominally in [0, 1] but nothing enforces it until Clamp. The default
// constructor gives black. == and != compare the stored bits; < orders
// lexicographically by value.
class ColorRGB {
public:
    constexpr ColorRGB() : mTuple{} {}
    constexpr ColorRGB(float r, float g, float b) : mTuple{r, g, b} {}
    explicit ColorRGB(const float* tuple) { std::memcpy(mTuple, tuple, sizeof(mTuple)); }

    operator const float*() const { return mTuple; }
    operator float*() { return mTuple; }
    float operator[](std::ptrdiff_t i) const { return mTuple[i]; }
    float& operator[](std::ptrdiff_t i) { return mTuple[i]; }
    float R() const { return mTuple[0]; }
    float& R() { return mTuple[0]; }
    float G() const { return mTuple[1]; }
    float& G() { return mTuple[1]; }
    float B() const { return mTuple[2]; }
    float& B() { return mTuple[2]; }

    bool operator==(const ColorRGB& c) const { return std::memcmp(mTuple, c.mTuple, sizeof(mTuple)) == 0; }
    bool operator!=(const ColorRGB& c) const { return !(*this == c); }
    bool operator<(const ColorRGB& c) const;

    ColorRGB operator+(const ColorRGB& c) const { return ColorRGB(mTuple[0] + c.mTuple[0], mTuple[1] + c.mTuple[1], mTuple[2] + c.mTuple[2]); }
    ColorRGB operator-(const ColorRGB& c) const { return ColorRGB(mTuple[0] - c.mTuple[0], mTuple[1] - c.mTuple[1], mTuple[2] - c.mTuple[2]); }
    // Channel by channel (modulation).
    ColorRGB operator*(const ColorRGB& c) const { return ColorRGB(mTuple[0] * c.mTuple[0], mTuple[1] * c.mTuple[1], mTuple[2] * c.mTuple[2]); }
    ColorRGB operator*(float s) const { return ColorRGB(s * mTuple[0], s * mTuple[1], s * mTuple[2]); }
    ColorRGB operator/(float s) const { return ColorRGB(mTuple[0] / s, mTuple[1] / s, mTuple[2] / s); }
    ColorRGB operator-() const { return ColorRGB(-mTuple[0], -mTuple[1], -mTuple[2]); }
    ColorRGB& operator+=(const ColorRGB& c) { return *this = *this + c; }
    ColorRGB& operator-=(const ColorRGB& c) { return *this = *this - c; }
    ColorRGB& operator*=(const ColorRGB& c) { return *this = *this * c; }
    ColorRGB& operator*=(float s) { return *this = *this * s; }
    ColorRGB& operator/=(float s) { return *this = *this / s; }

    // Clamps every channel to [0, 1].
    void Clamp();

    static const ColorRGB BLACK;   // (0, 0, 0)
    static const ColorRGB WHITE;   // (1, 1, 1)
    static const ColorRGB INVALID; // (-1, -1, -1): "no colour set"

private:
    float mTuple[3];
};

inline ColorRGB operator*(float s, const ColorRGB& c)
{
    return c * s;
}

static_assert(sizeof(ColorRGB) == 3 * sizeof(float));
static_assert(std::is_standard_layout_v<ColorRGB> && std::is_trivially_copyable_v<ColorRGB>);

} // namespace Wm4
