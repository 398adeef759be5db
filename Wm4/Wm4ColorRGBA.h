#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace Wm4 {

// An RGBA colour of four floats (r, g, b, a) and nothing else. The default
// constructor gives (0, 0, 0, 0), transparent black. Otherwise as ColorRGB:
// == and != on the stored bits, < lexicographic by value, Clamp to [0, 1].
class ColorRGBA {
public:
    constexpr ColorRGBA() : mTuple{} {}
    constexpr ColorRGBA(float r, float g, float b, float a) : mTuple{r, g, b, a} {}
    explicit ColorRGBA(const float* tuple) { std::memcpy(mTuple, tuple, sizeof(mTuple)); }

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
    float A() const { return mTuple[3]; }
    float& A() { return mTuple[3]; }

    bool operator==(const ColorRGBA& c) const { return std::memcmp(mTuple, c.mTuple, sizeof(mTuple)) == 0; }
    bool operator!=(const ColorRGBA& c) const { return !(*this == c); }
    bool operator<(const ColorRGBA& c) const;

    ColorRGBA operator+(const ColorRGBA& c) const;
    ColorRGBA operator-(const ColorRGBA& c) const;
    // Channel by channel (modulation).
    ColorRGBA operator*(const ColorRGBA& c) const;
    ColorRGBA operator*(float s) const { return ColorRGBA(s * mTuple[0], s * mTuple[1], s * mTuple[2], s * mTuple[3]); }
    ColorRGBA operator/(float s) const { return ColorRGBA(mTuple[0] / s, mTuple[1] / s, mTuple[2] / s, mTuple[3] / s); }
    ColorRGBA operator-() const { return ColorRGBA(-mTuple[0], -mTuple[1], -mTuple[2], -mTuple[3]); }
    ColorRGBA& operator+=(const ColorRGBA& c) { return *this = *this + c; }
    ColorRGBA& operator-=(const ColorRGBA& c) { return *this = *this - c; }
    ColorRGBA& operator*=(const ColorRGBA& c) { return *this = *this * c; }
    ColorRGBA& operator*=(float s) { return *this = *this * s; }
    ColorRGBA& operator/=(float s) { return *this = *this / s; }

    // Clamps every channel, alpha included, to [0, 1].
    void Clamp();

    static const ColorRGBA BLACK;   // (0, 0, 0, 1)
    static const ColorRGBA WHITE;   // (1, 1, 1, 1)
    static const ColorRGBA INVALID; // (-1, -1, -1, -1): "no colour set"

private:
    float mTuple[4];
};

inline ColorRGBA operator*(float s, const ColorRGBA& c)
{
    return c * s;
}

static_assert(sizeof(ColorRGBA) == 4 * sizeof(float));
static_assert(std::is_standard_layout_v<ColorRGBA> && std::is_trivially_copyable_v<ColorRGBA>);

} // namespace Wm4
