#include <zuSceneGraph/states/zuLight.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <Wm4/Wm4Math.h>

#include <cmath>

namespace zu {

const zuRtti zuLight::TYPE("zuCore.zuLight", &zuNamedObject::TYPE);

const char* const zuLight::ms_aacLightType[LT_QUANTITY] = {
    "LT_AMBIENT",
    "LT_DIRECTIONAL",
    "LT_POINT",
    "LT_SPOT",
};

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

bool nearlyEqual(const Wm4::ColorRGB& a, const Wm4::ColorRGB& b)
{
    return nearlyEqual(a[0], b[0]) && nearlyEqual(a[1], b[1]) && nearlyEqual(a[2], b[2]);
}

} // namespace

zuRttiInterface* zuLight::Factory(zuBaseStream& stream)
{
    return zuBaseStream::LoadNew<zuLight>(stream);
}

void zuLight::RegisterFactory()
{
    RegisterClass<zuLight>();
}

void zuLight::UnRegisterFactory()
{
    UnregisterFactoryFunction(TYPE.GetName());
}

zuLight::zuLight(LightType type)
    // R = D x U keeps the frame right-handed: -z cross +y is +x.
    : mLightType(type), mLocation(Wm4::Vector3<float>::ZERO), mDVector(0.0f, 0.0f, -1.0f),
      mUVector(Wm4::Vector3<float>::UNIT_Y), mRVector(Wm4::Vector3<float>::UNIT_X),
      mAmbient(Wm4::ColorRGB::BLACK), mDiffuse(Wm4::ColorRGB::WHITE), mSpecular(Wm4::ColorRGB::WHITE),
      mIntensity(1.0f), mConstant(1.0f), mLinear(0.0f), mQuadratic(0.0f), mAttenuate(false),
      mSpotCutoff(0.0f), mSpotSine(0.0f), mSpotCosine(1.0f), mSpotExponent(1.0f), mOn(true)
{
    SetSpotCutoff(Wm4::Math<float>::PI);
}

const char* zuLight::GetLightTypeName(int value)
{
    // The type is kept as read from a file, so it may lie outside the table.
    return value >= 0 && value < LT_QUANTITY ? ms_aacLightType[value] : "UNKNOWN";
}

void zuLight::SetFrame(const Wm4::Vector3<float>& location, const Wm4::Vector3<float>& dVector,
                       const Wm4::Vector3<float>& uVector, const Wm4::Vector3<float>& rVector)
{
    mLocation = location;
    SetAxes(dVector, uVector, rVector);
}

void zuLight::SetAxes(const Wm4::Vector3<float>& dVector, const Wm4::Vector3<float>& uVector,
                      const Wm4::Vector3<float>& rVector)
{
    mDVector = dVector;
    mUVector = uVector;
    mRVector = rVector;
}

void zuLight::SetAttenuation(float constant, float linear, float quadratic)
{
    mConstant = constant;
    mLinear = linear;
    mQuadratic = quadratic;
}

void zuLight::SetSpotCutoff(float angle)
{
    // A cone wider than pi means nothing, and a cached sine or cosine of a value that is
    // not a number would poison every lighting sum that uses it.
    if (!(angle > 0.0f))
        angle = 0.0f;
    else if (angle > Wm4::Math<float>::PI)
        angle = Wm4::Math<float>::PI;
    mSpotCutoff = angle;
    mSpotSine = static_cast<float>(std::sin(static_cast<double>(angle)));
    mSpotCosine = static_cast<float>(std::cos(static_cast<double>(angle)));
}

// ---------------------------------------------------------------------------------------
// Persistence after the named object: the type (int); location, D, U, R (3 floats each);
// ambient, diffuse, specular (3 floats each); intensity; constant, linear and quadratic
// attenuation (floats); the attenuate flag; the spot cutoff angle and exponent (floats);
// the on flag. The cutoff's sine and cosine are derived again on load.

int zuLight::GetDiskUsed(const zuBaseStream& stream) const
{
    // 114 bytes: type, frame, colours, intensity, attenuation, flag, cutoff, exponent, flag.
    return zuNamedObject::GetDiskUsed(stream) + 4 + 4 * 12 + 4 * 9 + 4 + 4 * 3 + 1 + 4 + 4 + 1;
}

void zuLight::Save(zuBaseStream& stream) const
{
    zuNamedObject::Save(stream);
    stream.Write(static_cast<int>(mLightType));
    stream.Write(mLocation);
    stream.Write(mDVector);
    stream.Write(mUVector);
    stream.Write(mRVector);
    stream.Write(mAmbient);
    stream.Write(mDiffuse);
    stream.Write(mSpecular);
    stream.Write(mIntensity);
    stream.Write(mConstant);
    stream.Write(mLinear);
    stream.Write(mQuadratic);
    stream.Write(mAttenuate);
    stream.Write(mSpotCutoff);
    stream.Write(mSpotExponent);
    stream.Write(mOn);
}

void zuLight::Load(zuBaseStream& stream, zuLink* link)
{
    zuNamedObject::Load(stream, link);
    int type = 0;
    stream.Read(type);
    // Kept as read, even outside the enumeration: see GetLightTypeName.
    mLightType = static_cast<LightType>(type);
    stream.Read(mLocation);
    stream.Read(mDVector);
    stream.Read(mUVector);
    stream.Read(mRVector);
    stream.Read(mAmbient);
    stream.Read(mDiffuse);
    stream.Read(mSpecular);
    stream.Read(mIntensity);
    stream.Read(mConstant);
    stream.Read(mLinear);
    stream.Read(mQuadratic);
    stream.Read(mAttenuate);
    float cutoff = 0.0f;
    stream.Read(cutoff);
    SetSpotCutoff(cutoff);
    stream.Read(mSpotExponent);
    stream.Read(mOn);
}

bool zuLight::Equals(const zuRttiInterface* other) const
{
    if (!zuNamedObject::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const zuLight* light = static_cast<const zuLight*>(other);
    // The cutoff's sine and cosine follow from the cutoff and are not compared.
    return mLightType == light->mLightType && nearlyEqual(mLocation, light->mLocation)
        && nearlyEqual(mDVector, light->mDVector) && nearlyEqual(mUVector, light->mUVector)
        && nearlyEqual(mRVector, light->mRVector) && nearlyEqual(mAmbient, light->mAmbient)
        && nearlyEqual(mDiffuse, light->mDiffuse) && nearlyEqual(mSpecular, light->mSpecular)
        && nearlyEqual(mIntensity, light->mIntensity) && nearlyEqual(mConstant, light->mConstant)
        && nearlyEqual(mLinear, light->mLinear) && nearlyEqual(mQuadratic, light->mQuadratic)
        && mAttenuate == light->mAttenuate && nearlyEqual(mSpotCutoff, light->mSpotCutoff)
        && nearlyEqual(mSpotExponent, light->mSpotExponent) && mOn == light->mOn;
}

bool zuLight::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuLight;
    if (!target->IsDerived(TYPE) || !zuNamedObject::Clone(target))
        return false;
    zuLight* light = static_cast<zuLight*>(target);
    light->mLightType = mLightType;
    light->mLocation = mLocation;
    light->mDVector = mDVector;
    light->mUVector = mUVector;
    light->mRVector = mRVector;
    light->mAmbient = mAmbient;
    light->mDiffuse = mDiffuse;
    light->mSpecular = mSpecular;
    light->mIntensity = mIntensity;
    light->mConstant = mConstant;
    light->mLinear = mLinear;
    light->mQuadratic = mQuadratic;
    light->mAttenuate = mAttenuate;
    light->mSpotCutoff = mSpotCutoff;
    light->mSpotSine = mSpotSine;
    light->mSpotCosine = mSpotCosine;
    light->mSpotExponent = mSpotExponent;
    light->mOn = mOn;
    return true;
}

void zuLight::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuNamedObject::DescribeFields(object, visitor);
    const auto& light = static_cast<const zuLight&>(object);
    visitor.BeginGroup(nullptr);
    visitor.Enumerator("type", light.GetLightType(), GetLightTypeName(light.GetLightType()));
    visitor.Flag("on", light.IsOn());
    visitor.EndGroup();
    visitor.Frame("frame", light.GetLocation(), light.GetDVector(), light.GetUVector(), light.GetRVector());
    visitor.BeginGroup("colours");
    visitor.Numbers("ambient", light.GetAmbient(), 3, 3);
    visitor.Numbers("diffuse", light.GetDiffuse(), 3, 3);
    visitor.Numbers("specular", light.GetSpecular(), 3, 3);
    visitor.Number("intensity", light.GetIntensity());
    visitor.EndGroup();
    visitor.BeginGroup("attenuation");
    visitor.Number("constant", light.GetConstant());
    visitor.Number("linear", light.GetLinear());
    visitor.Number("quadratic", light.GetQuadratic());
    visitor.Flag("attenuate", light.GetAttenuate());
    visitor.EndGroup();
    visitor.BeginGroup("spot");
    visitor.Number("cutoff", light.GetSpotCutoff());
    visitor.Number("exponent", light.GetSpotExponent());
    visitor.EndGroup();
}

} // namespace zu
