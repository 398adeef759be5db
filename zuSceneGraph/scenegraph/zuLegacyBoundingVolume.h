#pragma once

#include <zuSceneGraph/objects/zuUnnamedObject.h>

#include <Wm4/Wm4Vector3.h>

namespace zu {

// The persisted bound objects of streams older than 6.6, where a spatial object referred
// to its world bound as a separate record (a sphere or an oriented box). They are only
// read and written with such streams: a loaded one is converted into the spatial's
// zuBoundingVolume (zuBoundingVolume::assign), and saving creates one from the bound
// (zuBoundingVolume::createLegacyVolume).
class zuLegacyBoundingVolume : public zuUnnamedObject {
public:
    static const zuRtti TYPE;

    const zuRtti& GetType() const override { return TYPE; }
    virtual const Wm4::Vector3<float>& GetCenter() const = 0;
    virtual void SetCenter(const Wm4::Vector3<float>& center) = 0;

    bool Equals(const zuRttiInterface* other) const override;

protected:
    zuLegacyBoundingVolume() = default;

    // Floats compare equal within 1e-6, taken in double.
    static bool nearlyEqual(float a, float b);
    static bool nearlyEqual(const Wm4::Vector3<float>& a, const Wm4::Vector3<float>& b);
};

} // namespace zu
