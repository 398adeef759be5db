#pragma once

// Helpers of the animation tests: shared arrays from lists, and a small quaternion
// arithmetic in double, written from the textbook formulas and independent of Wm4's
// quaternion, to check the controller's interpolation against.

#include "support/zuTestObjects.h"

#include <zuSceneGraph/objects/zuTSharedArray.h>

#include <Wm4/Wm4Quaternion.h>
#include <Wm4/Wm4Vector3.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <numbers>

namespace zu::test {

using Vec = Wm4::Vector3<float>;

inline zuBytes& f64(zuBytes& bytes, double value)
{
    return bytes.raw(&value, 8);
}

template <class Array, class T>
Array* makeArray(std::initializer_list<T> values)
{
    T* data = new T[values.size()];
    std::copy(values.begin(), values.end(), data);
    return new Array(static_cast<int>(values.size()), data);
}

inline zuFloatArray* floats(std::initializer_list<float> values)
{
    return makeArray<zuFloatArray>(values);
}

inline zuVector3fArray* vectors(std::initializer_list<Vec> values)
{
    return makeArray<zuVector3fArray>(values);
}

inline zuQuaternionfArray* quaternions(std::initializer_list<Wm4::Quaternion<float>> values)
{
    return makeArray<zuQuaternionfArray>(values);
}

// w + xi + yj + zk in double.
struct RefQuat {
    double w, x, y, z;
};

// The unit quaternion of the rotation by `degrees` about the axis (ax, ay, az), which is
// normalised here: (cos(a/2), sin(a/2) axis).
inline RefQuat refAxisAngle(double ax, double ay, double az, double degrees)
{
    const double length = std::sqrt(ax * ax + ay * ay + az * az);
    const double half = 0.5 * degrees * std::numbers::pi / 180.0;
    const double s = std::sin(half) / length;
    return {std::cos(half), s * ax, s * ay, s * az};
}

inline Wm4::Quaternion<float> toQuaternion(const RefQuat& q)
{
    return Wm4::Quaternion<float>(static_cast<float>(q.w), static_cast<float>(q.x), static_cast<float>(q.y),
                                  static_cast<float>(q.z));
}

// The rotation by `degrees` about (ax, ay, az) as a float quaternion.
inline Wm4::Quaternion<float> turn(double ax, double ay, double az, double degrees)
{
    return toQuaternion(refAxisAngle(ax, ay, az, degrees));
}

// Slerp as in the textbooks, with the quaternions as given:
// (sin((1 - t) theta) q0 + sin(t theta) q1) / sin(theta), cos(theta) = q0 . q1.
inline RefQuat refSlerp(const RefQuat& q0, const RefQuat& q1, double t)
{
    const double cosTheta = std::clamp(q0.w * q1.w + q0.x * q1.x + q0.y * q1.y + q0.z * q1.z, -1.0, 1.0);
    const double theta = std::acos(cosTheta);
    if (theta < 1e-9)
        return q0;
    const double a = std::sin((1.0 - t) * theta) / std::sin(theta);
    const double b = std::sin(t * theta) / std::sin(theta);
    return {a * q0.w + b * q1.w, a * q0.x + b * q1.x, a * q0.y + b * q1.y, a * q0.z + b * q1.z};
}

// q v q* for a unit quaternion, through the Hamilton products written out.
inline Wm4::Vector3<double> refRotate(const RefQuat& q, const Wm4::Vector3<double>& v)
{
    // p = q * (0, v)
    const double pw = -q.x * v[0] - q.y * v[1] - q.z * v[2];
    const double px = q.w * v[0] + q.y * v[2] - q.z * v[1];
    const double py = q.w * v[1] + q.z * v[0] - q.x * v[2];
    const double pz = q.w * v[2] + q.x * v[1] - q.y * v[0];
    // p * conj(q), vector part
    const double cx = -q.x, cy = -q.y, cz = -q.z;
    return Wm4::Vector3<double>(pw * cx + px * q.w + py * cz - pz * cy, pw * cy + py * q.w + pz * cx - px * cz,
                                pw * cz + pz * q.w + px * cy - py * cx);
}

} // namespace zu::test
