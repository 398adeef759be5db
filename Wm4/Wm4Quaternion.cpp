#include <Wm4/Wm4Quaternion.h>

#include <Wm4/Wm4Tuple.h>

namespace Wm4 {

template <class Real>
bool Quaternion<Real>::operator<(const Quaternion& q) const
{
    return Tuple::Less<4>(mTuple, q.mTuple);
}

template <class Real>
Quaternion<Real> Quaternion<Real>::operator+(const Quaternion& q) const
{
    return Quaternion(mTuple[0] + q.mTuple[0], mTuple[1] + q.mTuple[1], mTuple[2] + q.mTuple[2], mTuple[3] + q.mTuple[3]);
}

template <class Real>
Quaternion<Real> Quaternion<Real>::operator-(const Quaternion& q) const
{
    return Quaternion(mTuple[0] - q.mTuple[0], mTuple[1] - q.mTuple[1], mTuple[2] - q.mTuple[2], mTuple[3] - q.mTuple[3]);
}

template <class Real>
Quaternion<Real> Quaternion<Real>::operator*(const Quaternion& q) const
{
    Real w0 = mTuple[0], x0 = mTuple[1], y0 = mTuple[2], z0 = mTuple[3];
    Real w1 = q.mTuple[0], x1 = q.mTuple[1], y1 = q.mTuple[2], z1 = q.mTuple[3];
    return Quaternion(w0 * w1 - x0 * x1 - y0 * y1 - z0 * z1,
                      w0 * x1 + x0 * w1 + y0 * z1 - z0 * y1,
                      w0 * y1 + y0 * w1 + z0 * x1 - x0 * z1,
                      w0 * z1 + z0 * w1 + x0 * y1 - y0 * x1);
}

template <class Real>
Quaternion<Real> Quaternion<Real>::operator*(Real s) const
{
    return Quaternion(s * mTuple[0], s * mTuple[1], s * mTuple[2], s * mTuple[3]);
}

template <class Real>
Quaternion<Real> Quaternion<Real>::operator/(Real s) const
{
    return Quaternion(mTuple[0] / s, mTuple[1] / s, mTuple[2] / s, mTuple[3] / s);
}

template <class Real>
Quaternion<Real> Quaternion<Real>::operator-() const
{
    return Quaternion(-mTuple[0], -mTuple[1], -mTuple[2], -mTuple[3]);
}

template <class Real>
Quaternion<Real>& Quaternion<Real>::FromRotationMatrix(const Matrix3<Real>& rot)
{
    // Work from the largest of w, x, y, z, read off the trace or the diagonal,
    // so that the square root and the division stay well away from zero.
    Real trace = rot(0, 0) + rot(1, 1) + rot(2, 2);
    if (trace > Real(0)) {
        Real root = Math<Real>::Sqrt(trace + Real(1)); // 2w
        mTuple[0] = Real(0.5) * root;
        root = Real(0.5) / root; // 1/(4w)
        mTuple[1] = (rot(2, 1) - rot(1, 2)) * root;
        mTuple[2] = (rot(0, 2) - rot(2, 0)) * root;
        mTuple[3] = (rot(1, 0) - rot(0, 1)) * root;
        return *this;
    }

    int i = 0;
    if (rot(1, 1) > rot(0, 0)) {
        i = 1;
    }
    if (rot(2, 2) > rot(i, i)) {
        i = 2;
    }
    int j = (i + 1) % 3;
    int k = (j + 1) % 3;
    Real root = Math<Real>::Sqrt(rot(i, i) - rot(j, j) - rot(k, k) + Real(1)); // 2 q_i
    Real* xyz = &mTuple[1];
    xyz[i] = Real(0.5) * root;
    root = Real(0.5) / root; // 1/(4 q_i)
    mTuple[0] = (rot(k, j) - rot(j, k)) * root;
    xyz[j] = (rot(j, i) + rot(i, j)) * root;
    xyz[k] = (rot(k, i) + rot(i, k)) * root;
    return *this;
}

template <class Real>
void Quaternion<Real>::ToRotationMatrix(Matrix3<Real>& rot) const
{
    Real w = mTuple[0], x = mTuple[1], y = mTuple[2], z = mTuple[3];
    Real tx = Real(2) * x, ty = Real(2) * y, tz = Real(2) * z;
    Real twx = tx * w, twy = ty * w, twz = tz * w;
    Real txx = tx * x, txy = ty * x, txz = tz * x;
    Real tyy = ty * y, tyz = tz * y, tzz = tz * z;
    rot = Matrix3<Real>(Real(1) - (tyy + tzz), txy - twz, txz + twy,
                        txy + twz, Real(1) - (txx + tzz), tyz - twx,
                        txz - twy, tyz + twx, Real(1) - (txx + tyy));
}

template <class Real>
Quaternion<Real>& Quaternion<Real>::FromAxisAngle(const Vector3<Real>& axis, Real angle)
{
    Real halfAngle = Real(0.5) * angle;
    Real sn = Math<Real>::Sin(halfAngle);
    mTuple[0] = Math<Real>::Cos(halfAngle);
    mTuple[1] = sn * axis[0];
    mTuple[2] = sn * axis[1];
    mTuple[3] = sn * axis[2];
    return *this;
}

template <class Real>
void Quaternion<Real>::ToAxisAngle(Vector3<Real>& axis, Real& angle) const
{
    Real sqrLength = mTuple[1] * mTuple[1] + mTuple[2] * mTuple[2] + mTuple[3] * mTuple[3];
    if (sqrLength > Real(0)) {
        angle = Real(2) * Math<Real>::ACos(mTuple[0]);
        Real invLength = Math<Real>::InvSqrt(sqrLength);
        axis = Vector3<Real>(mTuple[1] * invLength, mTuple[2] * invLength, mTuple[3] * invLength);
    } else {
        angle = Real(0);
        axis = Vector3<Real>::UNIT_X;
    }
}

template <class Real>
Real Quaternion<Real>::Dot(const Quaternion& q) const
{
    return mTuple[0] * q.mTuple[0] + mTuple[1] * q.mTuple[1] + mTuple[2] * q.mTuple[2] + mTuple[3] * q.mTuple[3];
}

template <class Real>
Real Quaternion<Real>::Normalize()
{
    Real length = Length();
    if (length < Math<Real>::ZERO_TOLERANCE) {
        *this = ZERO;
        return Real(0);
    }
    *this /= length;
    return length;
}

template <class Real>
Quaternion<Real> Quaternion<Real>::Inverse() const
{
    Real norm = SquaredLength();
    if (norm > Real(0)) {
        return Conjugate() / norm;
    }
    return ZERO;
}

template <class Real>
Vector3<Real> Quaternion<Real>::Rotate(const Vector3<Real>& v) const
{
    // q v q* = v + 2w (u x v) + 2 u x (u x v) for the vector part u of a unit q.
    Vector3<Real> u(mTuple[1], mTuple[2], mTuple[3]);
    Vector3<Real> uv = u.Cross(v);
    Vector3<Real> uuv = u.Cross(uv);
    return v + (uv * mTuple[0] + uuv) * Real(2);
}

template <class Real>
Quaternion<Real>& Quaternion<Real>::Slerp(Real t, const Quaternion& p, const Quaternion& q)
{
    Real angle = Math<Real>::ACos(p.Dot(q));
    if (Math<Real>::FAbs(angle) < Math<Real>::ZERO_TOLERANCE) {
        return *this = p;
    }
    Real invSin = Real(1) / Math<Real>::Sin(angle);
    Real coeffP = Math<Real>::Sin((Real(1) - t) * angle) * invSin;
    Real coeffQ = Math<Real>::Sin(t * angle) * invSin;
    return *this = p * coeffP + q * coeffQ;
}

template <class Real> const Quaternion<Real> Quaternion<Real>::ZERO(Real(0), Real(0), Real(0), Real(0));
template <class Real> const Quaternion<Real> Quaternion<Real>::IDENTITY(Real(1), Real(0), Real(0), Real(0));

template class Quaternion<float>;
template class Quaternion<double>;

} // namespace Wm4
