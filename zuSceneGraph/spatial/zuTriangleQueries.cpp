#include <zuSceneGraph/spatial/zuTriangleQueries.h>

#include <algorithm>
#include <cmath>

namespace zu {

namespace {

using Vector3 = Wm4::Vector3<float>;

// Projection interval of a triangle on an axis.
void project(const Vector3 t[3], const Vector3& axis, float& low, float& high)
{
    const float d0 = axis.Dot(t[0]), d1 = axis.Dot(t[1]), d2 = axis.Dot(t[2]);
    low = std::min(d0, std::min(d1, d2));
    high = std::max(d0, std::max(d1, d2));
}

// Whether `axis` separates the triangles. An axis of (nearly) no length separates nothing:
// its projections would be rounding noise.
bool separates(const Vector3 a[3], const Vector3 b[3], const Vector3& axis, float scale)
{
    if (axis.Dot(axis) <= 1e-12f * scale)
        return false;
    float lowA, highA, lowB, highB;
    project(a, axis, lowA, highA);
    project(b, axis, lowB, highB);
    return highA < lowB || highB < lowA;
}

} // namespace

zuTriangleQueries::Ray::Ray(const Vector3& rayOrigin, const Vector3& rayDirection)
    : origin(rayOrigin), direction(rayDirection)
{
    for (int a = 0; a < 3; ++a)
        inverse[a] = 1.0f / direction[a];
    const float ax = std::fabs(direction[0]), ay = std::fabs(direction[1]), az = std::fabs(direction[2]);
    kz = ax > ay ? (ax > az ? 0 : 2) : (ay > az ? 1 : 2);
    kx = (kz + 1) % 3;
    ky = (kx + 1) % 3;
    if (direction[kz] < 0.0f)
        std::swap(kx, ky);
    if (direction[kz] != 0.0f) {
        sx = direction[kx] / direction[kz];
        sy = direction[ky] / direction[kz];
        sz = 1.0f / direction[kz];
    }
}

bool zuTriangleQueries::intersect(const Ray& ray, const Vector3& p0, const Vector3& p1, const Vector3& p2, float tmin,
                                  float tmax, Hit& hit)
{
    if (ray.direction[ray.kz] == 0.0f)
        return false;  // a ray of no direction
    const Vector3 a = p0 - ray.origin, b = p1 - ray.origin, c = p2 - ray.origin;
    const int kx = ray.kx, ky = ray.ky, kz = ray.kz;
    // The corners sheared into the ray's frame, where the ray is the z axis through 0.
    const float ax = a[kx] - ray.sx * a[kz], ay = a[ky] - ray.sy * a[kz];
    const float bx = b[kx] - ray.sx * b[kz], by = b[ky] - ray.sy * b[kz];
    const float cx = c[kx] - ray.sx * c[kz], cy = c[ky] - ray.sy * c[kz];
    float u = cx * by - cy * bx;
    float v = ax * cy - ay * cx;
    float w = bx * ay - by * ax;
    // An edge function of exactly 0 is decided again in double, so that the two triangles
    // of an edge agree on which side the ray passes.
    if (u == 0.0f || v == 0.0f || w == 0.0f) {
        u = static_cast<float>(static_cast<double>(cx) * by - static_cast<double>(cy) * bx);
        v = static_cast<float>(static_cast<double>(ax) * cy - static_cast<double>(ay) * cx);
        w = static_cast<float>(static_cast<double>(bx) * ay - static_cast<double>(by) * ax);
    }
    if ((u < 0.0f || v < 0.0f || w < 0.0f) && (u > 0.0f || v > 0.0f || w > 0.0f))
        return false;
    const float det = u + v + w;
    if (det == 0.0f)
        return false;
    const float az = ray.sz * a[kz], bz = ray.sz * b[kz], cz = ray.sz * c[kz];
    const float scaledT = u * az + v * bz + w * cz;
    const float reciprocal = 1.0f / det;
    const float t = scaledT * reciprocal;
    if (!(t >= tmin && t <= tmax))
        return false;
    hit.t = t;
    hit.b0 = u * reciprocal;
    hit.b1 = v * reciprocal;
    hit.b2 = w * reciprocal;
    return true;
}

bool zuTriangleQueries::overlap(const Vector3 a[3], const Vector3 b[3])
{
    const Vector3 ea[3] = {a[1] - a[0], a[2] - a[1], a[0] - a[2]};
    const Vector3 eb[3] = {b[1] - b[0], b[2] - b[1], b[0] - b[2]};
    float scaleA = 0.0f, scaleB = 0.0f;
    for (int i = 0; i < 3; ++i) {
        scaleA = std::max(scaleA, ea[i].Dot(ea[i]));
        scaleB = std::max(scaleB, eb[i].Dot(eb[i]));
    }
    // Every axis below is a product of two edges (or of an edge and a normal, itself a
    // product of two edges): its squared length scales with these.
    const Vector3 na = ea[0].Cross(ea[1]), nb = eb[0].Cross(eb[1]);
    if (separates(a, b, na, scaleA * scaleA) || separates(a, b, nb, scaleB * scaleB))
        return false;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            if (separates(a, b, ea[i].Cross(eb[j]), scaleA * scaleB))
                return false;
    // In-plane edge normals decide triangles in one plane, and those of no area.
    for (int i = 0; i < 3; ++i) {
        if (separates(a, b, na.Cross(ea[i]), scaleA * scaleA * scaleA))
            return false;
        if (separates(a, b, nb.Cross(eb[i]), scaleB * scaleB * scaleB))
            return false;
    }
    return true;
}

float zuTriangleQueries::closestRaySegment(const Vector3& origin, const Vector3& direction, float tmin, float tmax,
                                           const Vector3& p0, const Vector3& p1, float& t, float& s)
{
    const Vector3 d2 = p1 - p0;
    const Vector3 r = origin - p0;
    const float a = direction.Dot(direction), e = d2.Dot(d2), f = d2.Dot(r);
    const auto clampT = [tmin, tmax](float value) { return std::min(std::max(value, tmin), tmax); };
    if (a <= 0.0f) {
        t = tmin;
        s = e > 0.0f ? std::clamp(f / e, 0.0f, 1.0f) : 0.0f;
    } else {
        const float c = direction.Dot(r);
        if (e <= 0.0f) {
            s = 0.0f;
            t = clampT(-c / a);
        } else {
            const float b = direction.Dot(d2);
            const float denominator = a * e - b * b;
            t = denominator > 0.0f ? clampT((b * f - c * e) / denominator) : tmin;
            s = (b * t + f) / e;
            if (s < 0.0f) {
                s = 0.0f;
                t = clampT(-c / a);
            } else if (s > 1.0f) {
                s = 1.0f;
                t = clampT((b - c) / a);
            }
        }
    }
    const Vector3 gap = origin + direction * t - (p0 + d2 * s);
    return gap.Dot(gap);
}

} // namespace zu
