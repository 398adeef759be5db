#pragma once

#include <zuSceneGraph/objects/zuNamedObject.h>

#include <Wm4/Wm4ColorRGB.h>
#include <Wm4/Wm4Vector3.h>

namespace zu {

// A light source for the renderer: its kind, a location with a frame of axes D (the
// direction it shines), U (up) and R (right, R = D x U), its colours and intensity, the
// distance attenuation, and the cone of a spot light. Which fields matter depends on the
// kind: an ambient light uses only its colours and intensity, a directional light adds D,
// a point light its location and attenuation, a spot light all of them.
class zuLight : public zuNamedObject {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream);
    static void RegisterFactory();
    static void UnRegisterFactory();
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // An int underlying type keeps any value read from a file a valid field value.
    enum LightType : int {
        LT_AMBIENT,
        LT_DIRECTIONAL,
        LT_POINT,
        LT_SPOT,
        LT_QUANTITY
    };

    // At the origin shining down -z with up +y; white diffuse and specular, black ambient,
    // intensity 1, no attenuation (1, 0, 0, off), cutoff pi (no cone), exponent 1, on.
    explicit zuLight(LightType type = LT_AMBIENT);

    LightType GetLightType() const { return mLightType; }
    void SetLightType(LightType type) { mLightType = type; }
    // The enumerator name; "UNKNOWN" for a value outside the enumeration.
    static const char* GetLightTypeName(int value);

    // The light at `location`, shining along `dVector`, with `uVector` up and `rVector`
    // right (as SetAxes).
    void SetFrame(const Wm4::Vector3<float>& location, const Wm4::Vector3<float>& dVector,
                  const Wm4::Vector3<float>& uVector, const Wm4::Vector3<float>& rVector);
    void SetLocation(const Wm4::Vector3<float>& location) { mLocation = location; }
    // Stored as given: callers pass a unit, right-handed frame.
    void SetAxes(const Wm4::Vector3<float>& dVector, const Wm4::Vector3<float>& uVector,
                 const Wm4::Vector3<float>& rVector);
    const Wm4::Vector3<float>& GetLocation() const { return mLocation; }
    const Wm4::Vector3<float>& GetDVector() const { return mDVector; }
    const Wm4::Vector3<float>& GetUVector() const { return mUVector; }
    const Wm4::Vector3<float>& GetRVector() const { return mRVector; }

    void SetAmbient(const Wm4::ColorRGB& color) { mAmbient = color; }
    void SetDiffuse(const Wm4::ColorRGB& color) { mDiffuse = color; }
    void SetSpecular(const Wm4::ColorRGB& color) { mSpecular = color; }
    const Wm4::ColorRGB& GetAmbient() const { return mAmbient; }
    const Wm4::ColorRGB& GetDiffuse() const { return mDiffuse; }
    const Wm4::ColorRGB& GetSpecular() const { return mSpecular; }
    void SetIntensity(float intensity) { mIntensity = intensity; }
    float GetIntensity() const { return mIntensity; }

    // The factor 1 / (constant + linear d + quadratic d^2) at distance d, applied only
    // while attenuation is on.
    void SetAttenuation(float constant, float linear, float quadratic);
    float GetConstant() const { return mConstant; }
    float GetLinear() const { return mLinear; }
    float GetQuadratic() const { return mQuadratic; }
    void SetAttenuate(bool attenuate) { mAttenuate = attenuate; }
    bool GetAttenuate() const { return mAttenuate; }

    // The half-angle of a spot light's cone in radians, clamped to [0, pi] (a value that is
    // not a number counts as 0); its sine and cosine are kept with it for the renderer.
    void SetSpotCutoff(float angle);
    float GetSpotCutoff() const { return mSpotCutoff; }
    float GetSpotCutoffSine() const { return mSpotSine; }
    float GetSpotCutoffCosine() const { return mSpotCosine; }
    // The spot's falloff from its axis, kept for the renderer (which usually takes the
    // cosine of the angle from the axis to this power).
    void SetSpotExponent(float exponent) { mSpotExponent = exponent; }
    float GetSpotExponent() const { return mSpotExponent; }

    void SetOn(bool on) { mOn = on; }
    bool IsOn() const { return mOn; }

    const zuRtti& GetType() const override { return TYPE; }
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    bool Equals(const zuRttiInterface* other) const override;
    bool Clone(zuRttiInterface*& target) const override;

    static const char* const ms_aacLightType[LT_QUANTITY];

private:
    LightType mLightType;
    Wm4::Vector3<float> mLocation;
    Wm4::Vector3<float> mDVector;
    Wm4::Vector3<float> mUVector;
    Wm4::Vector3<float> mRVector;
    Wm4::ColorRGB mAmbient;
    Wm4::ColorRGB mDiffuse;
    Wm4::ColorRGB mSpecular;
    float mIntensity;
    float mConstant;
    float mLinear;
    float mQuadratic;
    bool mAttenuate;
    float mSpotCutoff;
    float mSpotSine;    // derived from mSpotCutoff, never persisted
    float mSpotCosine;  // derived from mSpotCutoff, never persisted
    float mSpotExponent;
    bool mOn;
};

} // namespace zu
