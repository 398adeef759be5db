#pragma once

// Objects with every value away from its default, shared by the tests of their classes and
// the record pins.

#include <zuSceneGraph/states/zuCamera.h>
#include <zuSceneGraph/states/zuLight.h>
#include <zuSceneGraph/stream/zuCoreSettings.h>

namespace zu::test {

// A spot light "sun" at (4, 5, 6) shining down -z, with distinct, exactly representable
// values in every field.
inline zuLight* spotLight()
{
    using V3 = Wm4::Vector3<float>;
    zuLight* light = new zuLight(zuLight::LT_SPOT);
    light->SetName("sun");
    light->SetFrame(V3(4, 5, 6), V3(0, 0, -1), V3(0, 1, 0), V3(1, 0, 0));
    light->SetAmbient(Wm4::ColorRGB(0.125f, 0.25f, 0.375f));
    light->SetDiffuse(Wm4::ColorRGB(0.5f, 0.625f, 0.75f));
    light->SetSpecular(Wm4::ColorRGB(0.875f, 1.0f, 0.0625f));
    light->SetIntensity(2.5f);
    light->SetAttenuation(1.5f, 0.25f, 0.03125f);
    light->SetAttenuate(true);
    light->SetSpotCutoff(0.5f);
    light->SetSpotExponent(8.0f);
    light->SetOn(false);
    return light;
}

// A camera "cam" at (1, 2, 3) looking down +y with up +z (so right is +x), with an
// asymmetric, exactly representable frustum.
inline zuPointer<zuCamera> sampleCamera(bool perspective)
{
    using V3 = Wm4::Vector3<float>;
    zuPointer<zuCamera> camera = new zuCamera(perspective);
    camera->SetName("cam");
    camera->SetFrame(V3(1, 2, 3), V3(0, 1, 0), V3(0, 0, 1), V3(1, 0, 0));
    camera->SetFrustum(0.5f, 250.0f, -0.25f, 0.375f, -0.5f, 0.625f);
    return camera;
}

// Core settings with every value away from its default, K (never saved) included.
inline zuCoreSettings* filledSettings()
{
    zuCoreSettings* s = new zuCoreSettings;
    s->Entries = {{"alpha", 1.0f, 2.0f, 3.0f, true}, {"", -0.5f, 0.25f, 1e10f, false}};
    s->Strings = {"x", "", "yz"};
    s->S1 = -7;
    s->S2 = 0xFFFFFFF0u;
    s->S3 = 0.5f;
    s->S4 = 42;
    s->S5 = -3.0f;
    s->S6 = 9;
    s->S7 = true;
    s->Records.push_back({"first", "2nd", {1, 0x80000000u, 3}});
    s->H1 = s->H4 = false;
    s->H2 = s->H3 = true;
    s->J1 = 11, s->J2 = 12, s->J3 = 13, s->J4 = 14, s->J5 = 15, s->J6 = 16;
    s->K = 17;
    s->Width1 = 1920, s->Height1 = 1080, s->Width2 = 64, s->Height2 = 48;
    return s;
}

} // namespace zu::test
