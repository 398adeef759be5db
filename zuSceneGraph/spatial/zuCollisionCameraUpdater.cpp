#include <zuSceneGraph/spatial/zuCollisionCameraUpdater.h>

#include <algorithm>
#include <cmath>

namespace zu {

using Vector3 = Wm4::Vector3<float>;

namespace {

// Below this cosine a surface is taken as parallel to the move: the camera stops at once
// rather than dividing by almost nothing.
constexpr float GRAZING_COSINE = 1e-3f;

} // namespace

zuCollisionCameraUpdater::zuCollisionCameraUpdater(zuSpatial* scene, zuCamera* camera, float distance)
    : mScene(scene), mCamera(camera)
{
    SetDistance(distance);
}

zuCollisionCameraUpdater::~zuCollisionCameraUpdater() = default;

void zuCollisionCameraUpdater::SetDistance(float distance)
{
    mDistance = std::isfinite(distance) && distance > 0.0f ? distance : 0.0f;
}

Vector3 zuCollisionCameraUpdater::Move(const Vector3& displacement)
{
    mCollided = false;
    const Vector3 zero(0.0f, 0.0f, 0.0f);
    if (!mScene || !mCamera)
        return zero;
    mPicker.SetMode(zuPicker::NEAREST);
    const Vector3 start = mCamera->GetLocation();
    Vector3 location = start;
    Vector3 remaining = displacement;
    const int probes = mResponse == SLIDE ? MAX_SLIDES : 1;
    for (int probe = 0; probe < probes; ++probe) {
        const float length = remaining.Length();
        if (!(length > 0.0f) || !std::isfinite(length))
            break;
        const Vector3 direction = remaining / length;
        if (!mPicker.PickRay(mScene, location, direction, 0.0f, length + mDistance)) {
            location += remaining;
            break;
        }
        mCollided = true;
        const zuPickRecord& hit = mPicker.GetRecords()[0];
        // The triangle's normal turned to face the camera.
        Vector3 normal = hit.normal;
        if (normal.Dot(direction) > 0.0f)
            normal = -normal;
        const float cosine = -normal.Dot(direction);
        // Travel that keeps the camera `distance` off the triangle's plane.
        float travel = 0.0f;
        if (cosine > GRAZING_COSINE)
            travel = std::clamp(hit.distance - mDistance / cosine, 0.0f, length);
        else if (normal.SquaredLength() == 0.0f)
            travel = std::clamp(hit.distance - mDistance, 0.0f, length);
        location += direction * travel;
        if (mResponse == STOP || cosine <= 0.0f)
            break;
        // What is left slides along the plane: its part across it is dropped.
        remaining = direction * (length - travel);
        remaining -= normal * remaining.Dot(normal);
    }
    mCamera->SetLocation(location);
    return location - start;
}

} // namespace zu
