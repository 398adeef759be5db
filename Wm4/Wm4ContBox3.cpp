#include <Wm4/Wm4ContBox3.h>

#include <Wm4/Wm4EigenDecomposition.h>
#include <Wm4/Wm4Matrix3.h>
#include <Wm4/Wm4Quaternion.h>

namespace Wm4 {

namespace {

// Sets the box's centre and extents to the smallest box along its (already
// set) axes holding the points, measured from the given origin.
template <class Real>
void FitAlongAxes(Box3<Real>& box, const Vector3<Real>& origin, int quantity, const Vector3<Real>* points)
{
    Vector3<Real> low, high;
    for (int i = 0; i < quantity; ++i) {
        Vector3<Real> diff = points[i] - origin;
        for (int j = 0; j < 3; ++j) {
            Real projection = diff.Dot(box.Axis[j]);
            if (i == 0 || projection < low[j]) {
                low[j] = projection;
            }
            if (i == 0 || projection > high[j]) {
                high[j] = projection;
            }
        }
    }
    box.Center = origin;
    for (int j = 0; j < 3; ++j) {
        box.Center += box.Axis[j] * (Real(0.5) * (low[j] + high[j]));
        box.Extent[j] = Real(0.5) * (high[j] - low[j]);
    }
}

// The axes as the columns of a rotation; a left-handed triple gets its third
// axis reversed, since the quaternion form only knows rotations.
template <class Real>
Quaternion<Real> Orientation(const Box3<Real>& box)
{
    Matrix3<Real> rotation(box.Axis[0], box.Axis[1], box.Axis[2], true);
    if (rotation.Determinant() < Real(0)) {
        rotation.SetColumn(2, -box.Axis[2]);
    }
    return Quaternion<Real>(rotation);
}

} // namespace

template <class Real>
Box3<Real> ContOrientedBox(int quantity, const Vector3<Real>* points)
{
    Box3<Real> box(Vector3<Real>::ZERO, Vector3<Real>::UNIT_X, Vector3<Real>::UNIT_Y, Vector3<Real>::UNIT_Z, Real(-1),
                   Real(-1), Real(-1));
    if (quantity <= 0 || !points) {
        return box;
    }

    Vector3<Real> mean;
    for (int i = 0; i < quantity; ++i) {
        mean += points[i];
    }
    mean /= Real(quantity);

    Real c00 = 0, c01 = 0, c02 = 0, c11 = 0, c12 = 0, c22 = 0;
    for (int i = 0; i < quantity; ++i) {
        Vector3<Real> d = points[i] - mean;
        c00 += d[0] * d[0];
        c01 += d[0] * d[1];
        c02 += d[0] * d[2];
        c11 += d[1] * d[1];
        c12 += d[1] * d[2];
        c22 += d[2] * d[2];
    }
    Matrix3<Real> covariance(c00, c01, c02, c01, c11, c12, c02, c12, c22);
    covariance /= Real(quantity);

    EigenDecomposition<Real> eigen(covariance);
    for (int j = 0; j < 3; ++j) {
        box.Axis[j] = eigen.GetEigenvector(j);
    }
    FitAlongAxes(box, mean, quantity, points);
    return box;
}

template <class Real>
Box3<Real> MergeBoxes(const Box3<Real>& box0, const Box3<Real>& box1)
{
    Box3<Real> box;
    box.Center = (box0.Center + box1.Center) * Real(0.5);

    Quaternion<Real> q0 = Orientation(box0);
    Quaternion<Real> q1 = Orientation(box1);
    if (q0.Dot(q1) < Real(0)) {
        q1 = -q1;
    }
    // Two unit quaternions with a non-negative dot product sum to at least
    // sqrt(2) in length, so the normalisation is safe.
    Quaternion<Real> q = q0 + q1;
    q.Normalize();
    Matrix3<Real> rotation;
    q.ToRotationMatrix(rotation);
    for (int j = 0; j < 3; ++j) {
        box.Axis[j] = rotation.GetColumn(j);
    }

    Vector3<Real> corners[16];
    box0.ComputeVertices(corners);
    box1.ComputeVertices(corners + 8);
    FitAlongAxes(box, box.Center, 16, corners);
    return box;
}

template <class Real>
bool InBox(const Vector3<Real>& point, const Box3<Real>& box, Real epsilon)
{
    Vector3<Real> diff = point - box.Center;
    for (int i = 0; i < 3; ++i) {
        if (Math<Real>::FAbs(diff.Dot(box.Axis[i])) > box.Extent[i] + epsilon) {
            return false;
        }
    }
    return true;
}

template Box3<float> ContOrientedBox<float>(int, const Vector3<float>*);
template Box3<double> ContOrientedBox<double>(int, const Vector3<double>*);
template Box3<float> MergeBoxes<float>(const Box3<float>&, const Box3<float>&);
template Box3<double> MergeBoxes<double>(const Box3<double>&, const Box3<double>&);
template bool InBox<float>(const Vector3<float>&, const Box3<float>&, float);
template bool InBox<double>(const Vector3<double>&, const Box3<double>&, double);

} // namespace Wm4
