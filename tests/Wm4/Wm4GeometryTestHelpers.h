#pragma once

// Independent references for the geometry queries: boxes as lists of
// half-spaces, and a clip of a parametric segment against them, so
// that the separating-axis answers can be checked against plain clipping.

#include <Wm4/Wm4Box3.h>
#include <Wm4/Wm4Matrix3.h>
#include <Wm4/Wm4Plane3.h>
#include <Wm4/Wm4Quaternion.h>
#include <Wm4/Wm4Vector3.h>

#include <array>
#include <limits>
#include <random>

namespace Wm4Test {

template <class Real>
Real Uniform(std::mt19937& rng, double low, double high)
{
    return Real(std::uniform_real_distribution<double>(low, high)(rng));
}

template <class Real>
Wm4::Vector3<Real> RandomVector(std::mt19937& rng, double low, double high)
{
    Real x = Uniform<Real>(rng, low, high);
    Real y = Uniform<Real>(rng, low, high);
    Real z = Uniform<Real>(rng, low, high);
    return Wm4::Vector3<Real>(x, y, z);
}

// A uniformly distributed rotation, from a normalised Gaussian quaternion.
template <class Real>
Wm4::Matrix3<Real> RandomRotation(std::mt19937& rng)
{
    std::normal_distribution<double> normal;
    double w = normal(rng), x = normal(rng), y = normal(rng), z = normal(rng);
    Wm4::Quaternion<Real> q{Real(w), Real(x), Real(y), Real(z)};
    q.Normalize();
    Wm4::Matrix3<Real> rotation;
    q.ToRotationMatrix(rotation);
    return rotation;
}

template <class Real>
Wm4::Box3<Real> RandomBox(std::mt19937& rng, double centreRange, double minExtent, double maxExtent)
{
    Wm4::Box3<Real> box;
    box.Center = RandomVector<Real>(rng, -centreRange, centreRange);
    Wm4::Matrix3<Real> rotation = RandomRotation<Real>(rng);
    for (int i = 0; i < 3; ++i) {
        box.Axis[i] = rotation.GetColumn(i);
        box.Extent[i] = Uniform<Real>(rng, minExtent, maxExtent);
    }
    return box;
}

// Half-spaces DistanceTo(x) >= 0 whose intersection is the solid.
template <class Real>
std::array<Wm4::Plane3<Real>, 6> BoxHalfspaces(const Wm4::Box3<Real>& box)
{
    std::array<Wm4::Plane3<Real>, 6> planes;
    for (int i = 0; i < 3; ++i) {
        Real c = box.Axis[i].Dot(box.Center);
        planes[2 * i] = Wm4::Plane3<Real>(box.Axis[i], c - box.Extent[i]);
        planes[2 * i + 1] = Wm4::Plane3<Real>(-box.Axis[i], -(c + box.Extent[i]));
    }
    return planes;
}

// Whether origin + t direction, t in [t0, t1], has a point in every
// half-space (Cyrus-Beck clipping). Touching counts.
template <class Real, std::size_t N>
bool ClipMeets(const Wm4::Vector3<Real>& origin, const Wm4::Vector3<Real>& direction, Real t0, Real t1,
               const std::array<Wm4::Plane3<Real>, N>& planes)
{
    for (const Wm4::Plane3<Real>& plane : planes) {
        Real a = plane.DistanceTo(origin);
        Real b = plane.Normal.Dot(direction);
        if (b == Real(0)) {
            if (a < Real(0))
                return false;
            continue;
        }
        Real t = -a / b;
        if (b > Real(0)) {
            t0 = t > t0 ? t : t0;
        } else {
            t1 = t < t1 ? t : t1;
        }
        if (t0 > t1)
            return false;
    }
    return true;
}

// The twelve edges of a hexahedron whose corners are numbered like those of
// Box3::ComputeVertices.
inline constexpr int kHexEdges[12][2] = {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6},
                                        {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}};

// Two convex solids meet exactly when an edge of one meets the other: the
// corners of their common part are corners of either solid lying in the other
// or crossings of an edge of one with a face of the other.
template <class Real>
bool HexahedraMeet(const Wm4::Vector3<Real> cornersA[8], const std::array<Wm4::Plane3<Real>, 6>& planesA,
                   const Wm4::Vector3<Real> cornersB[8], const std::array<Wm4::Plane3<Real>, 6>& planesB)
{
    for (const auto& edge : kHexEdges) {
        if (ClipMeets(cornersA[edge[0]], cornersA[edge[1]] - cornersA[edge[0]], Real(0), Real(1), planesB) ||
            ClipMeets(cornersB[edge[0]], cornersB[edge[1]] - cornersB[edge[0]], Real(0), Real(1), planesA)) {
            return true;
        }
    }
    return false;
}

} // namespace Wm4Test
