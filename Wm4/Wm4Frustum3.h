#pragma once

#include <Wm4/Wm4Vector3.h>

#include <cstring>
#include <type_traits>

namespace Wm4 {

// A symmetric view frustum: the eye point Origin, the orthonormal view
// direction DVector, up vector UVector and right vector RVector, the near and
// far distances 0 < DMin < DMax along DVector, and the half-height UBound and
// half-width RBound of the view window on the near plane. The frustum is the
// truncated pyramid between the near and far planes; the eye itself lies
// outside it. Either handedness of (RVector, UVector, DVector) works.
//
// Update() computes the quantities derived from the fields (the far-to-near
// ratio); call it after changing DMin or DMax. The default constructor zeroes
// everything, the derived quantities too; == and != compare the stored bits.
template <class Real>
class Frustum3 {
public:
    constexpr Frustum3()
        : Origin(), DVector(), UVector(), RVector(), DMin(Real(0)), DMax(Real(0)), UBound(Real(0)),
          RBound(Real(0)), mDRatio(Real(0))
    {
    }
    Frustum3(const Vector3<Real>& origin, const Vector3<Real>& dVector, const Vector3<Real>& uVector,
             const Vector3<Real>& rVector, Real dMin, Real dMax, Real uBound, Real rBound);

    void Update();
    // DMax / DMin: the far window is the near one scaled by it. 0 while
    // DMin is not positive.
    Real GetDRatio() const { return mDRatio; }

    // The eight corners. 0-3 lie on the near plane, 4-7 on the far plane in
    // the same order: (-U, -R), (-U, +R), (+U, +R), (+U, -R), where -U means
    // the bottom edge of the window and -R its left edge.
    void ComputeVertices(Vector3<Real> vertex[8]) const;

    bool operator==(const Frustum3& frustum) const { return std::memcmp(this, &frustum, sizeof(Frustum3)) == 0; }
    bool operator!=(const Frustum3& frustum) const { return !(*this == frustum); }

    Vector3<Real> Origin;
    Vector3<Real> DVector;
    Vector3<Real> UVector;
    Vector3<Real> RVector;
    Real DMin;
    Real DMax;
    Real UBound;
    Real RBound;

private:
    Real mDRatio;
};

static_assert(sizeof(Frustum3<float>) == 17 * sizeof(float));
static_assert(sizeof(Frustum3<double>) == 17 * sizeof(double));
static_assert(std::is_trivially_copyable_v<Frustum3<float>>);
static_assert(std::is_trivially_copyable_v<Frustum3<double>>);

extern template class Frustum3<float>;
extern template class Frustum3<double>;

typedef Frustum3<float> Frustum3f;
typedef Frustum3<double> Frustum3d;

} // namespace Wm4
