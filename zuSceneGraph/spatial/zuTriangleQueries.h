#pragma once

#include <Wm4/Wm4Vector3.h>

namespace zu {

// The exact tests the spatial queries end with, on single triangles.
//
// Rays are tested watertight: a ray through an edge or a vertex shared by two triangles
// hits at least one of them, whatever the rounding, and a triangle of no area is never hit.
// A ray is pre-processed once (Ray) and then tested against any number of triangles.
class zuTriangleQueries {
public:
    // A ray origin + t·direction, prepared for the triangle and box tests. The direction
    // need not be unit length: t is measured in multiples of it.
    struct Ray {
        Ray() = default;
        Ray(const Wm4::Vector3<float>& origin, const Wm4::Vector3<float>& direction);

        Wm4::Vector3<float> origin;
        Wm4::Vector3<float> direction;
        // Reciprocals of the direction (infinite for a zero component), for the slabs.
        Wm4::Vector3<float> inverse;
        // The axis where the direction is largest (kz) and the other two, in an order that
        // keeps the winding; the shear that maps the direction to the unit z axis.
        int kx = 0, ky = 1, kz = 2;
        float sx = 0.0f, sy = 0.0f, sz = 1.0f;
    };

    // A hit of a ray on a triangle: the ray parameter and the weights of the three corners.
    struct Hit {
        float t = 0.0f;
        float b0 = 0.0f, b1 = 0.0f, b2 = 0.0f;
    };

    // Whether the ray meets the triangle (either side) at a t in [tmin, tmax]; fills `hit`.
    static bool intersect(const Ray& ray, const Wm4::Vector3<float>& p0, const Wm4::Vector3<float>& p1,
                          const Wm4::Vector3<float>& p2, float tmin, float tmax, Hit& hit);

    // Whether the ray meets the box [low, high] at a t in [tmin, tmax], the box faces pushed
    // out by a few units of rounding so that a triangle lying in a face is never missed;
    // `entry` is where it enters (at least tmin). A zero direction component with the origin
    // on a face gives 0 · infinity, not a number: every comparison with it fails, so that
    // slab constrains nothing, which is right for a ray in the face's plane.
    static bool intersectBox(const Ray& ray, const float low[3], const float high[3], float tmin, float tmax,
                             float& entry)
    {
        float t0 = tmin, t1 = tmax;
        for (int a = 0; a < 3; ++a) {
            float tNear = (low[a] - ray.origin[a]) * ray.inverse[a];
            float tFar = (high[a] - ray.origin[a]) * ray.inverse[a];
            if (tNear > tFar) {
                const float swap = tNear;
                tNear = tFar;
                tFar = swap;
            }
            tFar *= SLAB_ROUNDING;
            t0 = tNear > t0 ? tNear : t0;
            t1 = tFar < t1 ? tFar : t1;
        }
        entry = t0;
        return t0 <= t1;
    }

    // Whether two triangles meet (touching counts): separating axes of the two normals, the
    // nine edge pairs and the six in-plane edge normals, so that coplanar and degenerate
    // triangles are decided too.
    static bool overlap(const Wm4::Vector3<float> a[3], const Wm4::Vector3<float> b[3]);

    // The closest points of the ray origin + t·direction (t in [tmin, tmax]) and the segment
    // p0 p1: the ray parameter `t` and the segment parameter `s` in [0, 1]. Returns the
    // squared distance.
    static float closestRaySegment(const Wm4::Vector3<float>& origin, const Wm4::Vector3<float>& direction,
                                   float tmin, float tmax, const Wm4::Vector3<float>& p0,
                                   const Wm4::Vector3<float>& p1, float& t, float& s);

    // A slab's far distance grows by this factor: 1 + 2·gamma(3), enough for the three
    // roundings of (bound - origin)·inverse.
    static constexpr float SLAB_ROUNDING = 1.0000004f;
};

} // namespace zu
