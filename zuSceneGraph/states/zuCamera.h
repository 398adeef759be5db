#pragma once

#include <zuSceneGraph/objects/zuNamedObject.h>

#include <Wm4/Wm4Vector3.h>

namespace zu {

// A viewpoint: a location with a right-handed frame of unit axes D (view direction), U (up)
// and R (right, R = D x U), and a view volume given by the six frustum values
// dmin (near), dmax (far), umin/umax (bottom/top at the near plane) and rmin/rmax
// (left/right at the near plane). A perspective camera's volume widens with distance; an
// orthographic one keeps the near rectangle.
class zuCamera : public zuNamedObject {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream);
    static void RegisterFactory();
    static void UnRegisterFactory();
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    enum FrustumValue { VF_DMIN, VF_DMAX, VF_UMIN, VF_UMAX, VF_RMIN, VF_RMAX, VF_QUANTITY };

    // At the origin looking down +x with up +z; perspective, 90 degrees, near 1, far 1000.
    zuCamera();
    // The same frame and frustum, perspective or (`perspective` false) orthographic.
    explicit zuCamera(bool perspective);

    // The eye at `location`, looking along `dVector` with `uVector` up and `rVector` right
    // (D x U). The axes are stored as given: pass unit vectors at right angles.
    void SetFrame(const Wm4::Vector3<float>& location, const Wm4::Vector3<float>& dVector,
                  const Wm4::Vector3<float>& uVector, const Wm4::Vector3<float>& rVector);
    void SetLocation(const Wm4::Vector3<float>& location) { mLocation = location; }
    // The axes of SetFrame alone.
    void SetAxes(const Wm4::Vector3<float>& dVector, const Wm4::Vector3<float>& uVector,
                 const Wm4::Vector3<float>& rVector);
    const Wm4::Vector3<float>& GetLocation() const { return mLocation; }
    const Wm4::Vector3<float>& GetDVector() const { return mDVector; }
    const Wm4::Vector3<float>& GetUVector() const { return mUVector; }
    const Wm4::Vector3<float>& GetRVector() const { return mRVector; }

    // The view volume: near and far distances along D (`dMin` > 0 for a perspective
    // camera), and the bottom, top, left and right edges of the near rectangle along U and
    // R, measured from the view axis (`uMin` and `rMin` usually negative).
    void SetFrustum(float dMin, float dMax, float uMin, float uMax, float rMin, float rMax);
    // Symmetric frustum from the vertical field of view in degrees and the aspect ratio
    // (width / height), with the near and far distances `dMin` and `dMax`.
    void SetFrustum(float upFovDegrees, float aspectRatio, float dMin, float dMax);
    // The six values in the order of FrustumValue.
    const float* GetFrustum() const { return mFrustum; }
    float GetDMin() const { return mFrustum[VF_DMIN]; }
    float GetDMax() const { return mFrustum[VF_DMAX]; }
    float GetUMin() const { return mFrustum[VF_UMIN]; }
    float GetUMax() const { return mFrustum[VF_UMAX]; }
    float GetRMin() const { return mFrustum[VF_RMIN]; }
    float GetRMax() const { return mFrustum[VF_RMAX]; }
    // The vertical field of view in degrees, the aspect ratio and the near and far
    // distances of a symmetric frustum; false, leaving the outputs alone, for a frustum that
    // is not symmetric about the view axis or lacks a positive near distance or height.
    bool GetFrustum(float& upFovDegrees, float& aspectRatio, float& dMin, float& dMax) const;

    bool IsPerspective() const { return mPerspective; }
    void SetPerspective(bool perspective) { mPerspective = perspective; }

    const zuRtti& GetType() const override { return TYPE; }
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    bool Equals(const zuRttiInterface* other) const override;
    bool Clone(zuRttiInterface*& target) const override;

private:
    Wm4::Vector3<float> mLocation;
    Wm4::Vector3<float> mDVector;
    Wm4::Vector3<float> mUVector;
    Wm4::Vector3<float> mRVector;
    float mFrustum[VF_QUANTITY];
    bool mPerspective;
};

} // namespace zu
