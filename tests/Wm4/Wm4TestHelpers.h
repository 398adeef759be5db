#pragma once

#include <Wm4/Wm4ColorRGB.h>
#include <Wm4/Wm4ColorRGBA.h>
#include <Wm4/Wm4Matrix2.h>
#include <Wm4/Wm4Matrix3.h>
#include <Wm4/Wm4Matrix4.h>
#include <Wm4/Wm4Quaternion.h>
#include <Wm4/Wm4Vector2.h>
#include <Wm4/Wm4Vector3.h>
#include <Wm4/Wm4Vector4.h>

#include <gtest/gtest.h>

#include <ostream>

// Failure messages show the components instead of the address that the
// pointer conversion would give; found by argument-dependent lookup.
namespace Wm4 {

template <class Real>
void PrintComponents(const Real* tuple, int count, std::ostream* os)
{
    *os << "(";
    for (int i = 0; i < count; ++i)
        *os << (i ? ", " : "") << tuple[i];
    *os << ")";
}

template <class Real> void PrintTo(const Vector2<Real>& v, std::ostream* os) { PrintComponents<Real>(v, 2, os); }
template <class Real> void PrintTo(const Vector3<Real>& v, std::ostream* os) { PrintComponents<Real>(v, 3, os); }
template <class Real> void PrintTo(const Vector4<Real>& v, std::ostream* os) { PrintComponents<Real>(v, 4, os); }
template <class Real> void PrintTo(const Quaternion<Real>& q, std::ostream* os) { PrintComponents<Real>(q, 4, os); }
template <class Real> void PrintTo(const Matrix2<Real>& m, std::ostream* os) { PrintComponents<Real>(m, 4, os); }
template <class Real> void PrintTo(const Matrix3<Real>& m, std::ostream* os) { PrintComponents<Real>(m, 9, os); }
template <class Real> void PrintTo(const Matrix4<Real>& m, std::ostream* os) { PrintComponents<Real>(m, 16, os); }
inline void PrintTo(const ColorRGB& c, std::ostream* os) { PrintComponents<float>(c, 3, os); }
inline void PrintTo(const ColorRGBA& c, std::ostream* os) { PrintComponents<float>(c, 4, os); }

} // namespace Wm4

namespace Wm4Test {

using RealTypes = ::testing::Types<float, double>;

// Room for a few dozen rounding errors of the type.
template <class Real>
constexpr Real Tolerance()
{
    return sizeof(Real) == sizeof(float) ? Real(2e-5) : Real(1e-12);
}

template <class Real, class Value>
::testing::AssertionResult Near(const Value& expected, const Value& actual, int count)
{
    for (int i = 0; i < count; ++i) {
        Real diff = static_cast<const Real*>(expected)[i] - static_cast<const Real*>(actual)[i];
        if (!(diff <= Tolerance<Real>() && -diff <= Tolerance<Real>())) {
            return ::testing::AssertionFailure() << "component " << i << ": expected "
                                                 << static_cast<const Real*>(expected)[i] << ", got "
                                                 << static_cast<const Real*>(actual)[i];
        }
    }
    return ::testing::AssertionSuccess();
}

template <class Real>
::testing::AssertionResult NearV(const Wm4::Vector3<Real>& expected, const Wm4::Vector3<Real>& actual)
{
    return Near<Real>(expected, actual, 3);
}

template <class Real>
::testing::AssertionResult NearM(const Wm4::Matrix3<Real>& expected, const Wm4::Matrix3<Real>& actual)
{
    return Near<Real>(expected, actual, 9);
}

} // namespace Wm4Test
