#include <zuSceneGraph/states/zuCamera.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <Wm4/Wm4Math.h>

#include <cmath>

namespace zu {

const zuRtti zuCamera::TYPE("zuCore.zuCamera", &zuNamedObject::TYPE);

namespace {

// Floats compare equal within this absolute difference, taken in double so that the
// comparison itself adds no rounding.
bool nearlyEqual(float a, float b)
{
    return std::fabs(static_cast<double>(a) - static_cast<double>(b)) < 1e-6;
}

bool nearlyEqual(const Wm4::Vector3<float>& a, const Wm4::Vector3<float>& b)
{
    return nearlyEqual(a[0], b[0]) && nearlyEqual(a[1], b[1]) && nearlyEqual(a[2], b[2]);
}

} // namespace

zuRttiInterface* zuCamera::Factory(zuBaseStream& stream)
{
    return zuBaseStream::LoadNew<zuCamera>(stream);
}

void zuCamera::RegisterFactory()
{
    RegisterClass<zuCamera>();
}

void zuCamera::UnRegisterFactory()
{
    UnregisterFactoryFunction(TYPE.GetName());
}

zuCamera::zuCamera() : zuCamera(true)
{
}

zuCamera::zuCamera(bool perspective)
    // R = D x U keeps the frame right-handed: +x cross +z is -y.
    : mLocation(Wm4::Vector3<float>::ZERO), mDVector(Wm4::Vector3<float>::UNIT_X),
      mUVector(Wm4::Vector3<float>::UNIT_Z), mRVector(0.0f, -1.0f, 0.0f), mFrustum{},
      mPerspective(perspective)
{
    SetFrustum(90.0f, 1.0f, 1.0f, 1000.0f);
}

void zuCamera::SetFrame(const Wm4::Vector3<float>& location, const Wm4::Vector3<float>& dVector,
                        const Wm4::Vector3<float>& uVector, const Wm4::Vector3<float>& rVector)
{
    mLocation = location;
    SetAxes(dVector, uVector, rVector);
}

void zuCamera::SetAxes(const Wm4::Vector3<float>& dVector, const Wm4::Vector3<float>& uVector,
                       const Wm4::Vector3<float>& rVector)
{
    // Stored as given: the frames come from world matrices whose columns are unit already,
    // and re-orthonormalising every frame would move a saved camera on each round trip.
    mDVector = dVector;
    mUVector = uVector;
    mRVector = rVector;
}

void zuCamera::SetFrustum(float dMin, float dMax, float uMin, float uMax, float rMin, float rMax)
{
    mFrustum[VF_DMIN] = dMin;
    mFrustum[VF_DMAX] = dMax;
    mFrustum[VF_UMIN] = uMin;
    mFrustum[VF_UMAX] = uMax;
    mFrustum[VF_RMIN] = rMin;
    mFrustum[VF_RMAX] = rMax;
}

void zuCamera::SetFrustum(float upFovDegrees, float aspectRatio, float dMin, float dMax)
{
    // In double so that 90 degrees gives a half-height of exactly dMin.
    const double halfAngle = 0.5 * static_cast<double>(upFovDegrees) * Wm4::Math<double>::DEG_TO_RAD;
    const float uMax = static_cast<float>(static_cast<double>(dMin) * std::tan(halfAngle));
    const float rMax = aspectRatio * uMax;
    SetFrustum(dMin, dMax, -uMax, uMax, -rMax, rMax);
}

bool zuCamera::GetFrustum(float& upFovDegrees, float& aspectRatio, float& dMin, float& dMax) const
{
    // Only a symmetric frustum in front of the eye has a field of view and an aspect ratio.
    const float uMax = mFrustum[VF_UMAX];
    const float rMax = mFrustum[VF_RMAX];
    if (mFrustum[VF_UMIN] != -uMax || mFrustum[VF_RMIN] != -rMax || !(uMax > 0.0f)
        || !(mFrustum[VF_DMIN] > 0.0f))
        return false;
    const double halfAngle = std::atan(static_cast<double>(uMax) / static_cast<double>(mFrustum[VF_DMIN]));
    upFovDegrees = static_cast<float>(2.0 * halfAngle * Wm4::Math<double>::RAD_TO_DEG);
    aspectRatio = rMax / uMax;
    dMin = mFrustum[VF_DMIN];
    dMax = mFrustum[VF_DMAX];
    return true;
}

// ---------------------------------------------------------------------------------------
// Persistence after the named object: location, D, U, R (3 floats each), the six frustum
// values in the order of FrustumValue, the perspective flag.

int zuCamera::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuNamedObject::GetDiskUsed(stream) + 4 * 12 + 4 * VF_QUANTITY + 1;
}

void zuCamera::Save(zuBaseStream& stream) const
{
    zuNamedObject::Save(stream);
    stream.Write(mLocation);
    stream.Write(mDVector);
    stream.Write(mUVector);
    stream.Write(mRVector);
    for (float value : mFrustum)
        stream.Write(value);
    stream.Write(mPerspective);
}

void zuCamera::Load(zuBaseStream& stream, zuLink* link)
{
    zuNamedObject::Load(stream, link);
    stream.Read(mLocation);
    stream.Read(mDVector);
    stream.Read(mUVector);
    stream.Read(mRVector);
    for (float& value : mFrustum)
        stream.Read(value);
    stream.Read(mPerspective);
}

bool zuCamera::Equals(const zuRttiInterface* other) const
{
    if (!zuNamedObject::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const zuCamera* camera = static_cast<const zuCamera*>(other);
    if (!nearlyEqual(mLocation, camera->mLocation) || !nearlyEqual(mDVector, camera->mDVector)
        || !nearlyEqual(mUVector, camera->mUVector) || !nearlyEqual(mRVector, camera->mRVector))
        return false;
    for (int i = 0; i < VF_QUANTITY; ++i)
        if (!nearlyEqual(mFrustum[i], camera->mFrustum[i]))
            return false;
    return mPerspective == camera->mPerspective;
}

bool zuCamera::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuCamera;
    if (!target->IsDerived(TYPE) || !zuNamedObject::Clone(target))
        return false;
    zuCamera* camera = static_cast<zuCamera*>(target);
    camera->mLocation = mLocation;
    camera->mDVector = mDVector;
    camera->mUVector = mUVector;
    camera->mRVector = mRVector;
    for (int i = 0; i < VF_QUANTITY; ++i)
        camera->mFrustum[i] = mFrustum[i];
    camera->mPerspective = mPerspective;
    return true;
}

void zuCamera::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuNamedObject::DescribeFields(object, visitor);
    const auto& camera = static_cast<const zuCamera&>(object);
    visitor.Frame("frame", camera.GetLocation(), camera.GetDVector(), camera.GetUVector(), camera.GetRVector());
    visitor.BeginGroup("frustum");
    visitor.Number("dmin", camera.GetDMin());
    visitor.Number("dmax", camera.GetDMax());
    visitor.Number("umin", camera.GetUMin());
    visitor.Number("umax", camera.GetUMax());
    visitor.Number("rmin", camera.GetRMin());
    visitor.Number("rmax", camera.GetRMax());
    visitor.Flag("perspective", camera.IsPerspective());
    visitor.EndGroup();
}

} // namespace zu
