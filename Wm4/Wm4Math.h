#pragma once

#include <cmath>
#include <limits>
#include <numbers>
#include <type_traits>

namespace Wm4 {

// Constants and thin wrappers over the standard math functions, so that the
// value types below read the same for float and double.
template <class Real>
class Math {
    static_assert(std::is_floating_point_v<Real>, "Math<Real> needs a floating-point type");

public:
    static constexpr Real MAX_REAL = std::numeric_limits<Real>::max();
    static constexpr Real EPSILON = std::numeric_limits<Real>::epsilon();
    // The threshold under which lengths and determinants count as zero.
    static constexpr Real ZERO_TOLERANCE = std::is_same_v<Real, float> ? Real(1e-06) : Real(1e-08);
    static constexpr Real PI = std::numbers::pi_v<Real>;
    static constexpr Real TWO_PI = Real(2) * PI;
    static constexpr Real HALF_PI = Real(0.5) * PI;
    static constexpr Real DEG_TO_RAD = PI / Real(180);
    static constexpr Real RAD_TO_DEG = Real(180) / PI;

    static Real Sqrt(Real value) { return std::sqrt(value); }
    static Real InvSqrt(Real value) { return Real(1) / std::sqrt(value); }
    static Real FAbs(Real value) { return std::fabs(value); }
    static Real Sin(Real value) { return std::sin(value); }
    static Real Cos(Real value) { return std::cos(value); }
    static Real Tan(Real value) { return std::tan(value); }
    static Real ATan(Real value) { return std::atan(value); }
    static Real ATan2(Real y, Real x) { return std::atan2(y, x); }
    static Real Floor(Real value) { return std::floor(value); }
    static Real Ceil(Real value) { return std::ceil(value); }
    static Real FMod(Real x, Real y) { return std::fmod(x, y); }
    static Real Exp(Real value) { return std::exp(value); }
    static Real Log(Real value) { return std::log(value); }
    static Real Pow(Real base, Real exponent) { return std::pow(base, exponent); }
    static Real Sqr(Real value) { return value * value; }

    // The inverse trigonometric functions clamp their argument to [-1, 1]:
    // a cosine computed from a dot product of unit vectors may overshoot by a
    // rounding error, and that must not turn into NaN.
    static Real ACos(Real value)
    {
        if (value <= Real(-1)) {
            return PI;
        }
        if (value >= Real(1)) {
            return Real(0);
        }
        return std::acos(value);
    }

    static Real ASin(Real value)
    {
        if (value <= Real(-1)) {
            return -HALF_PI;
        }
        if (value >= Real(1)) {
            return HALF_PI;
        }
        return std::asin(value);
    }

    // -1, 0 or +1.
    static Real Sign(Real value)
    {
        if (value > Real(0)) {
            return Real(1);
        }
        if (value < Real(0)) {
            return Real(-1);
        }
        return Real(0);
    }
};

extern template class Math<float>;
extern template class Math<double>;

typedef Math<float> Mathf;
typedef Math<double> Mathd;

} // namespace Wm4
