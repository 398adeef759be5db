// Field printers of cameras and lights: the object part (name and controllers), the frame,
// and the camera's frustum or the light's kind, colours, attenuation and cone.

#include "zusgFields.h"

#include <zuSceneGraph/states/zuCamera.h>
#include <zuSceneGraph/states/zuLight.h>

namespace zusg {

namespace {

template <class Framed>
void printFrame(const Framed& object, std::ostream& out)
{
    out << "frame: location " << vector3(object.GetLocation()) << ", D " << vector3(object.GetDVector()) << ", U "
        << vector3(object.GetUVector()) << ", R " << vector3(object.GetRVector()) << "\n";
}

void printCamera(const zu::zuRttiInterface& object, std::ostream& out)
{
    const auto& camera = static_cast<const zu::zuCamera&>(object);
    printNamedObjectPart(camera, out);
    printFrame(camera, out);
    out << "frustum: dmin " << number(camera.GetDMin()) << ", dmax " << number(camera.GetDMax()) << ", umin "
        << number(camera.GetUMin()) << ", umax " << number(camera.GetUMax()) << ", rmin " << number(camera.GetRMin())
        << ", rmax " << number(camera.GetRMax()) << ", perspective " << flag(camera.IsPerspective()) << "\n";
}

void printLight(const zu::zuRttiInterface& object, std::ostream& out)
{
    using zu::zuLight;
    const auto& light = static_cast<const zuLight&>(object);
    printNamedObjectPart(light, out);
    out << "type " << enumerator(zuLight::GetLightTypeName(light.GetLightType()), light.GetLightType()) << ", on "
        << flag(light.IsOn()) << "\n";
    printFrame(light, out);
    out << "colours: ambient " << colour(light.GetAmbient()) << ", diffuse " << colour(light.GetDiffuse())
        << ", specular " << colour(light.GetSpecular()) << ", intensity " << number(light.GetIntensity()) << "\n";
    out << "attenuation: constant " << number(light.GetConstant()) << ", linear " << number(light.GetLinear())
        << ", quadratic " << number(light.GetQuadratic()) << ", attenuate " << flag(light.GetAttenuate()) << "\n";
    out << "spot: cutoff " << number(light.GetSpotCutoff()) << ", exponent " << number(light.GetSpotExponent())
        << "\n";
}

} // namespace

void addCameraLightFields(FieldRegistry& registry)
{
    registry.add(zu::zuCamera::TYPE, printCamera);
    registry.add(zu::zuLight::TYPE, printLight);
}

} // namespace zusg
