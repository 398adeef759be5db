#pragma once

#include <Wm4/Wm4Vector3.h>

#include <vector>

namespace zu {

class zuRenderableSpatial;
class zuSpatial;

// One hit of a pick (zuPicker): which leaf, where on it, and how far along the ray.
//
// `triangle` is the triangle of a triangle mesh, numbered as the mesh numbers them (for a
// line the segment, for a point set the point). `barycentric` holds the weights of its
// corners at the hit (b0 + b1 + b2 = 1): three for a triangle, (1 - s, s, 0) for
// the point at s along a segment, (1, 0, 0) for a point. `point` is the hit in world space:
// on the triangle, or the point of the line or point set nearest to the ray. `normal` is the
// unit world normal of the triangle's front side (counter-clockwise corners), whichever side
// the ray came from; zero for lines, points and triangles of no area. `distance` is the
// world distance from the ray's origin to the hit, measured along the ray.
//
// The record does not own the leaf or the path: they stay valid while the scene does.
struct zuPickRecord {
    zuRenderableSpatial* leaf = nullptr;
    // From the root the pick started at down to the leaf, both included.
    std::vector<zuSpatial*> path;
    int triangle = -1;
    Wm4::Vector3<float> barycentric{0.0f, 0.0f, 0.0f};
    Wm4::Vector3<float> point{0.0f, 0.0f, 0.0f};
    Wm4::Vector3<float> normal{0.0f, 0.0f, 0.0f};
    float distance = 0.0f;
};

} // namespace zu
