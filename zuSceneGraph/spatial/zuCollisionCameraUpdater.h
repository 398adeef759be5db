#pragma once

#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/spatial/zuPicker.h>
#include <zuSceneGraph/states/zuCamera.h>
#include <zuSceneGraph/scenegraph/zuSpatial.h>

#include <Wm4/Wm4Vector3.h>

namespace zu {

// Moves a camera through a scene without letting it come closer than a given distance to
// the scene's triangles: walking through a plant, flying along a pipe.
//
// Move(displacement) probes the way with the picker (nearest hit along the displacement,
// as far as the displacement plus the distance) and moves the camera's location as far as
// it can while staying `distance` away from the plane of the triangle it would meet. With
// STOP the camera stops there; with SLIDE what is left of the displacement is turned along
// the surface (its part across the triangle's plane removed) and tried again, a few times,
// so that the camera glides along walls and round corners. Only the camera's location
// changes; its axes and frustum stay. A camera already closer than the distance may move
// away or along the surface, never closer.
//
// The probe is one ray from the camera's location: geometry that passes beside the ray,
// nearer than the distance, is not seen. The scene must be updated (UpdateGS).
class zuCollisionCameraUpdater {
public:
    enum Response {
        STOP,
        SLIDE
    };
    // The number of probes of one SLIDE move.
    static constexpr int MAX_SLIDES = 4;

    zuCollisionCameraUpdater(zuSpatial* scene, zuCamera* camera, float distance = 0.0f);
    ~zuCollisionCameraUpdater();

    void SetScene(zuSpatial* scene) { mScene = scene; }
    zuSpatial* GetScene() const { return mScene; }
    void SetCamera(zuCamera* camera) { mCamera = camera; }
    zuCamera* GetCamera() const { return mCamera; }
    // Negative and non-finite distances are taken as 0.
    void SetDistance(float distance);
    float GetDistance() const { return mDistance; }
    void SetResponse(Response response) { mResponse = response; }
    Response GetResponse() const { return mResponse; }
    // The picker that probes (its tolerance, tree kind, lazy-buffer and hidden options).
    zuPicker& GetPicker() { return mPicker; }

    // Moves the camera by `displacement` (world), or as far as the scene lets it; returns
    // the displacement made. Without a scene or a camera nothing moves.
    Wm4::Vector3<float> Move(const Wm4::Vector3<float>& displacement);
    // Whether the last move met the scene.
    bool HasCollided() const { return mCollided; }

private:
    zuPointer<zuSpatial> mScene;
    zuPointer<zuCamera> mCamera;
    zuPicker mPicker;
    float mDistance = 0.0f;
    Response mResponse = STOP;
    bool mCollided = false;
};

} // namespace zu
