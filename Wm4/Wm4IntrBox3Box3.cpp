#include <Wm4/Wm4IntrBox3Box3.h>

namespace Wm4 {

template <class Real>
bool IntrBox3Box3<Real>::Test() const
{
    const Vector3<Real>* a = mBox0.Axis;
    const Vector3<Real>* b = mBox1.Axis;
    const Real* ea = mBox0.Extent;
    const Real* eb = mBox1.Extent;
    Vector3<Real> diff = mBox1.Center - mBox0.Center;

    // c[i][j] = A[i] . B[j]: the second box's axes in the first box's frame.
    // Touching counts as intersecting: an axis separates only when the
    // distance of the projected centres exceeds the sum of the radii.
    Real c[3][3], absC[3][3], diffDotA[3];
    bool parallelPair = false;
    const Real cutoff = Real(1) - Math<Real>::ZERO_TOLERANCE;

    // Axes A[i].
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            c[i][j] = a[i].Dot(b[j]);
            absC[i][j] = Math<Real>::FAbs(c[i][j]);
            if (absC[i][j] > cutoff) {
                parallelPair = true;
            }
        }
        diffDotA[i] = diff.Dot(a[i]);
        Real radius1 = eb[0] * absC[i][0] + eb[1] * absC[i][1] + eb[2] * absC[i][2];
        if (Math<Real>::FAbs(diffDotA[i]) > ea[i] + radius1) {
            return false;
        }
    }

    // Axes B[j].
    for (int j = 0; j < 3; ++j) {
        Real radius0 = ea[0] * absC[0][j] + ea[1] * absC[1][j] + ea[2] * absC[2][j];
        if (Math<Real>::FAbs(diff.Dot(b[j])) > radius0 + eb[j]) {
            return false;
        }
    }

    if (parallelPair) {
        return true;
    }

    // Axes A[i] x B[j] = c[i+1][j] A[i+2] - c[i+2][j] A[i+1] for a
    // right-handed first box (a left-handed one only negates the axis, which
    // the absolute values ignore), so every projection reads off c.
    for (int i = 0; i < 3; ++i) {
        int i1 = (i + 1) % 3, i2 = (i + 2) % 3;
        for (int j = 0; j < 3; ++j) {
            int j1 = (j + 1) % 3, j2 = (j + 2) % 3;
            Real distance = Math<Real>::FAbs(diffDotA[i2] * c[i1][j] - diffDotA[i1] * c[i2][j]);
            Real radius0 = ea[i1] * absC[i2][j] + ea[i2] * absC[i1][j];
            Real radius1 = eb[j1] * absC[i][j2] + eb[j2] * absC[i][j1];
            if (distance > radius0 + radius1) {
                return false;
            }
        }
    }
    return true;
}

template class IntrBox3Box3<float>;
template class IntrBox3Box3<double>;

} // namespace Wm4
