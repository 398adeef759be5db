// The quaternion operations the keyframe controller uses; the rest of the class is not
// used by the library.

#include <Wm4/Wm4Quaternion.h>

#include "Wm4TestHelpers.h"

using namespace Wm4;
using Wm4Test::NearM;

namespace {

template <class Real>
class QuaternionTest : public ::testing::Test {};
TYPED_TEST_SUITE(QuaternionTest, Wm4Test::RealTypes);

} // namespace

TYPED_TEST(QuaternionTest, ToRotationMatrixAgreesWithTheAxisAngleMatrix)
{
    using R = TypeParam;
    Vector3<R> axis(1, -2, 0.5);
    axis.Normalize();
    const R half = R(0.45);
    const Quaternion<R> q(Math<R>::Cos(half), axis[0] * Math<R>::Sin(half), axis[1] * Math<R>::Sin(half),
                          axis[2] * Math<R>::Sin(half));
    Matrix3<R> fromQuaternion;
    q.ToRotationMatrix(fromQuaternion);
    EXPECT_TRUE(NearM(Matrix3<R>(axis, 2 * half), fromQuaternion));
}
