#pragma once

#include <Wm4/Wm4Box3.h>
#include <Wm4/Wm4Math.h>
#include <Wm4/Wm4Vector3.h>

namespace Wm4 {

// Containment by oriented boxes.

// The box that fits the points best in the Gaussian sense: its axes are the
// eigenvectors of the points' covariance matrix (right-handed, in increasing
// order of the eigenvalues), its centre and extents those of the smallest box
// along these axes that holds every point. No points (quantity <= 0 or a null
// array) give an empty box: zero centre, the world axes and extents -1.
template <class Real>
Box3<Real> ContOrientedBox(int quantity, const Vector3<Real>* points);

// A box containing both boxes, with the centre at the mean of their centres
// and the axes between theirs (the normalised sum of the two orientations as
// quaternions, taken with the sign that makes their dot product
// non-negative), extended and re-centred along these axes to hold the
// corners of both. Left-handed axes are flipped into right-handed ones first,
// which describes the same box.
template <class Real>
Box3<Real> MergeBoxes(const Box3<Real>& box0, const Box3<Real>& box1);

// Whether the point lies in the box, the faces included and thickened by
// epsilon, so that a point rounded onto a face counts as inside.
template <class Real>
bool InBox(const Vector3<Real>& point, const Box3<Real>& box, Real epsilon = Math<Real>::ZERO_TOLERANCE);

extern template Box3<float> ContOrientedBox<float>(int, const Vector3<float>*);
extern template Box3<double> ContOrientedBox<double>(int, const Vector3<double>*);
extern template Box3<float> MergeBoxes<float>(const Box3<float>&, const Box3<float>&);
extern template Box3<double> MergeBoxes<double>(const Box3<double>&, const Box3<double>&);
extern template bool InBox<float>(const Vector3<float>&, const Box3<float>&, float);
extern template bool InBox<double>(const Vector3<double>&, const Box3<double>&, double);

} // namespace Wm4
