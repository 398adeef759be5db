#include <zuSceneGraph/io/zuSvgBuilder.h>

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/math/zuGenericTransformation.h>
#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/scenegraph/zuBaseGeometry.h>
#include <zuSceneGraph/scenegraph/zuLine.h>
#include <zuSceneGraph/scenegraph/zuPoint.h>
#include <zuSceneGraph/scenegraph/zuTriangles.h>
#include <zuSceneGraph/spatial/zuMeshTriangles.h>
#include <zuSceneGraph/states/zuCamera.h>
#include <zuSceneGraph/states/zuMaterialState.h>
#include <zuSystem/zuProgressNotifierGroupCloser.h>
#include <zuSystem/zuProgressNotifierInterface.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

namespace zu {

namespace {

// A leaf without a material.
const Wm4::ColorRGB DEFAULT_COLOUR(0.55f, 0.65f, 0.8f);
const char* const BACKGROUND = "#ffffff";
const char* const BOUND_OUTLINE = "#404040";
constexpr float AMBIENT = 0.35f;
constexpr float DIFFUSE = 0.65f;
// Projected coordinates are kept within this many pixels, so that a primitive far to the side
// of a wide frustum still prints in a few digits.
constexpr float COORDINATE_LIMIT = 1.0e6f;

uint32_t packColour(const Wm4::ColorRGB& colour, float intensity)
{
    uint32_t packed = 0;
    for (int i = 0; i < 3; ++i) {
        const float value = std::clamp(colour[i] * intensity, 0.0f, 1.0f);
        packed = (packed << 8) | static_cast<uint32_t>(std::lround(value * 255.0f));
    }
    return packed;
}

class SvgWriter {
public:
    explicit SvgWriter(std::string& out) : mOut(out) {}

    SvgWriter& operator<<(const char* text)
    {
        mOut += text;
        return *this;
    }
    SvgWriter& operator<<(const std::string& text)
    {
        mOut += text;
        return *this;
    }
    SvgWriter& operator<<(int value)
    {
        mOut += std::to_string(value);
        return *this;
    }
    // One decimal; "-0.0" is written as "0".
    SvgWriter& operator<<(float value)
    {
        char buffer[32];
        const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 1);
        size_t length = static_cast<size_t>(result.ptr - buffer);
        if (length >= 2 && buffer[length - 1] == '0' && buffer[length - 2] == '.')
            length -= 2;
        if (length == 2 && buffer[0] == '-' && buffer[1] == '0')
            mOut += '0';
        else
            mOut.append(buffer, length);
        return *this;
    }
    void colour(uint32_t rgb)
    {
        static const char hex[] = "0123456789abcdef";
        mOut += '#';
        for (int shift = 20; shift >= 0; shift -= 4)
            mOut += hex[(rgb >> shift) & 0xF];
    }
    void points(const float* xy, int count)
    {
        for (int i = 0; i < count; ++i) {
            if (i > 0)
                mOut += ' ';
            *this << xy[2 * i];
            mOut += ',';
            *this << xy[2 * i + 1];
        }
    }

private:
    std::string& mOut;
};

} // namespace

zuSvgBuilder::zuSvgBuilder()
{
    const zuPointer<zuCamera> camera = new zuCamera();
    setCamera(*camera);
}

void zuSvgBuilder::setCamera(const zuCamera& camera)
{
    mEye = camera.GetLocation();
    mD = camera.GetDVector();
    mU = camera.GetUVector();
    mR = camera.GetRVector();
    std::copy(camera.GetFrustum(), camera.GetFrustum() + 6, mFrustum);
    mPerspective = camera.IsPerspective();
    // From behind the eye, a little above and to the left, whichever way the camera looks:
    // the three faces of a box seen from a diagonal get three shades.
    mLight = mU * 0.35f - mR * 0.25f - mD;
    mLight.Normalize();
}

void zuSvgBuilder::setViewport(int width, int height)
{
    mWidth = std::max(width, 1);
    mHeight = std::max(height, 1);
}

bool zuSvgBuilder::cameraIsUsable() const
{
    const float dMin = mFrustum[zuCamera::VF_DMIN];
    const float width = mFrustum[zuCamera::VF_RMAX] - mFrustum[zuCamera::VF_RMIN];
    const float height = mFrustum[zuCamera::VF_UMAX] - mFrustum[zuCamera::VF_UMIN];
    return std::isfinite(width) && std::isfinite(height) && width > 0.0f && height > 0.0f && std::isfinite(dMin)
        && (dMin > 0.0f || (!mPerspective && dMin >= 0.0f));
}

zuSvgBuilder::CameraPoint zuSvgBuilder::toCamera(const Wm4::Vector3<float>& world) const
{
    const Wm4::Vector3<float> v = world - mEye;
    return {v.Dot(mR), v.Dot(mU), v.Dot(mD)};
}

void zuSvgBuilder::toScreen(const CameraPoint& p, float& x, float& y) const
{
    const float scale = mPerspective ? mFrustum[zuCamera::VF_DMIN] / p.d : 1.0f;
    const float rMin = mFrustum[zuCamera::VF_RMIN], rMax = mFrustum[zuCamera::VF_RMAX];
    const float uMin = mFrustum[zuCamera::VF_UMIN], uMax = mFrustum[zuCamera::VF_UMAX];
    x = std::clamp((p.r * scale - rMin) / (rMax - rMin) * static_cast<float>(mWidth), -COORDINATE_LIMIT,
                   COORDINATE_LIMIT);
    y = std::clamp((uMax - p.u * scale) / (uMax - uMin) * static_cast<float>(mHeight), -COORDINATE_LIMIT,
                   COORDINATE_LIMIT);
}

bool zuSvgBuilder::project(const Wm4::Vector3<float>& point, float& x, float& y) const
{
    const CameraPoint p = toCamera(point);
    if (!cameraIsUsable() || !(p.d >= mFrustum[zuCamera::VF_DMIN]))
        return false;
    toScreen(p, x, y);
    return true;
}

bool zuSvgBuilder::offScreen(const Primitive& primitive) const
{
    float minX, maxX, minY, maxY;
    if (primitive.kind == Primitive::CIRCLE) {
        minX = primitive.xy[0] - primitive.xy[2];
        maxX = primitive.xy[0] + primitive.xy[2];
        minY = primitive.xy[1] - primitive.xy[2];
        maxY = primitive.xy[1] + primitive.xy[2];
    } else if (primitive.kind == Primitive::RECTANGLE) {
        minX = primitive.xy[0];
        maxX = primitive.xy[0] + primitive.xy[2];
        minY = primitive.xy[1];
        maxY = primitive.xy[1] + primitive.xy[3];
    } else {
        minX = maxX = primitive.xy[0];
        minY = maxY = primitive.xy[1];
        for (int i = 1; i < primitive.count; ++i) {
            minX = std::min(minX, primitive.xy[2 * i]);
            maxX = std::max(maxX, primitive.xy[2 * i]);
            minY = std::min(minY, primitive.xy[2 * i + 1]);
            maxY = std::max(maxY, primitive.xy[2 * i + 1]);
        }
    }
    // Written so that a coordinate that is not a number counts as off the picture.
    return !(maxX >= 0.0f && minX <= static_cast<float>(mWidth) && maxY >= 0.0f
             && minY <= static_cast<float>(mHeight));
}

uint64_t zuSvgBuilder::countTriangles(const std::vector<zuRenderableSpatial*>& leaves)
{
    uint64_t triangles = 0;
    for (const zuRenderableSpatial* leaf : leaves)
        if (leaf && leaf->IsDerived(zuTriangles::TYPE))
            triangles += static_cast<uint64_t>(std::max(static_cast<const zuTriangles*>(leaf)->GetTriangleQuantity(), 0));
    return triangles;
}

bool zuSvgBuilder::build(zuSpatial* scene, std::string& svg, zuProgressNotifierInterface* progress)
{
    zuPointer<zuCamera> camera = new zuCamera(mPerspective);
    camera->SetFrame(mEye, mD, mU, mR);
    camera->SetFrustum(mFrustum[0], mFrustum[1], mFrustum[2], mFrustum[3], mFrustum[4], mFrustum[5]);
    zuCuller culler;
    culler.SetCamera(camera);
    culler.ComputeVisibleSet(scene, nullptr, false);
    return build(culler.GetVisibleSet(), svg, progress);
}

bool zuSvgBuilder::build(const std::vector<zuRenderableSpatial*>& leaves, std::string& svg,
                         zuProgressNotifierInterface* progress)
{
    mReport = Report();
    mReport.parts = leaves.size();
    mPrimitives.clear();
    const uint64_t triangles = countTriangles(leaves);
    mSimplify = triangles > mTriangleLimit;
    mNote.clear();
    if (mSimplify)
        mNote = std::to_string(triangles) + " triangles exceed the limit of " + std::to_string(mTriangleLimit)
              + ": each of the " + std::to_string(leaves.size()) + " parts is drawn as the rectangle its bound covers";

    if (progress)
        progress->openGroup("Drawing", static_cast<int64_t>(leaves.size()));
    {
        zuProgressNotifierGroupCloser closer(progress);
        for (const zuRenderableSpatial* leaf : leaves) {
            if (leaf && cameraIsUsable())
                drawLeaf(leaf);
            if (progress) {
                progress->step(1);
                if (progress->isCancelRequested())
                    return false;
            }
        }
    }
    if (!mSimplify && mReport.partsNotResident > 0)
        mNote = std::to_string(mReport.partsNotResident)
              + " of the parts have no blocks in memory and are drawn as the rectangles their bounds cover";
    mWorld = {};
    mCamera = {};
    write(svg);
    mPrimitives = {};
    return true;
}

void zuSvgBuilder::drawLeaf(const zuRenderableSpatial* leaf)
{
    if (!leaf->IsDerived(zuBaseGeometry::TYPE))
        return;
    const auto& geometry = static_cast<const zuBaseGeometry&>(*leaf);
    Wm4::ColorRGB colour = DEFAULT_COLOUR;
    float opacity = 1.0f;
    if (const zuMaterialState* material = geometry.GetMaterialState()) {
        colour = material->Diffuse;
        opacity = std::clamp(material->Opacity, 0.0f, 1.0f);
    }
    const zuMeshTriangles view(&geometry);
    if (mSimplify || !view.isResident()) {
        mReport.partsNotResident += view.isResident() ? 0 : 1;
        drawBound(geometry.GetWorldBound(), colour, opacity);
        return;
    }
    const uint32_t count = view.GetVertexQuantity();
    mWorld.resize(count);
    for (uint32_t v = 0; v < count; ++v)
        mWorld[v] = view.GetPosition(v);
    geometry.GetWorldTransform().ApplyForward(static_cast<int>(count), mWorld.data(), mWorld.data());
    mCamera.resize(count);
    for (uint32_t v = 0; v < count; ++v)
        mCamera[v] = toCamera(mWorld[v]);

    if (geometry.IsDerived(zuTriangles::TYPE))
        drawTriangles(geometry, view, colour, opacity);
    else if (geometry.IsDerived(zuLine::TYPE))
        drawLines(static_cast<const zuLine&>(geometry), count, colour, opacity);
    else if (geometry.IsDerived(zuPoint::TYPE))
        drawPoints(static_cast<const zuPoint&>(geometry), count, colour, opacity);
}

void zuSvgBuilder::drawTriangles(const zuBaseGeometry& leaf, const zuMeshTriangles& view, const Wm4::ColorRGB& colour,
                                 float opacity)
{
    // A mirroring world transformation turns counter-clockwise triangles clockwise.
    const Wm4::Matrix4<float>& world = leaf.GetWorldMatrix();
    const float determinant = world(0, 0) * (world(1, 1) * world(2, 2) - world(1, 2) * world(2, 1))
                            - world(0, 1) * (world(1, 0) * world(2, 2) - world(1, 2) * world(2, 0))
                            + world(0, 2) * (world(1, 0) * world(2, 1) - world(1, 1) * world(2, 0));
    const float outward = determinant < 0.0f ? -1.0f : 1.0f;
    const int quantity = view.GetTriangleQuantity();
    for (int i = 0; i < quantity; ++i) {
        uint32_t i0, i1, i2;
        if (!view.GetTriangleIndices(i, i0, i1, i2))
            continue;
        const Wm4::Vector3<float>& p0 = mWorld[i0];
        Wm4::Vector3<float> normal = (mWorld[i1] - p0).Cross(mWorld[i2] - p0) * outward;
        const float facing = normal.Dot(mPerspective ? p0 - mEye : mD);
        if (!std::isfinite(facing)) {
            ++mReport.hidden;
            continue;
        }
        if (!(facing < 0.0f)) {
            ++mReport.backFaces;
            continue;
        }
        normal.Normalize();
        const float intensity = AMBIENT + DIFFUSE * std::max(normal.Dot(mLight), 0.0f);
        const CameraPoint corners[3] = {mCamera[i0], mCamera[i1], mCamera[i2]};
        if (addPolygon(corners, 3, packColour(colour, intensity), opacity))
            ++mReport.triangles;
        else
            ++mReport.hidden;
    }
}

void zuSvgBuilder::drawLines(const zuLine& leaf, uint32_t vertexCount, const Wm4::ColorRGB& colour, float opacity)
{
    const float dMin = mFrustum[zuCamera::VF_DMIN];
    const uint32_t rgb = packColour(colour, 1.0f);
    const int quantity = leaf.GetSegmentQuantity();
    for (int i = 0; i < quantity; ++i) {
        int v0 = -1, v1 = -1;
        if (!leaf.GetSegment(i, v0, v1) || v0 < 0 || v1 < 0 || static_cast<uint32_t>(v0) >= vertexCount
            || static_cast<uint32_t>(v1) >= vertexCount)
            continue;
        CameraPoint a = mCamera[static_cast<uint32_t>(v0)], b = mCamera[static_cast<uint32_t>(v1)];
        if (!(a.d >= dMin) && !(b.d >= dMin)) {
            ++mReport.hidden;
            continue;
        }
        // The end behind the near plane moves onto it.
        if (!(a.d >= dMin) || !(b.d >= dMin)) {
            CameraPoint& behind = a.d >= dMin ? b : a;
            const CameraPoint& front = a.d >= dMin ? a : b;
            const float t = (dMin - front.d) / (behind.d - front.d);
            behind = {front.r + t * (behind.r - front.r), front.u + t * (behind.u - front.u), dMin};
        }
        Primitive line{0.5f * (a.d + b.d), rgb, opacity, Primitive::POLYLINE, 2, {}};
        toScreen(a, line.xy[0], line.xy[1]);
        toScreen(b, line.xy[2], line.xy[3]);
        if (offScreen(line)) {
            ++mReport.hidden;
            continue;
        }
        mPrimitives.push_back(line);
        ++mReport.segments;
    }
}

void zuSvgBuilder::drawPoints(const zuPoint& leaf, uint32_t vertexCount, const Wm4::ColorRGB& colour, float opacity)
{
    const float radius = std::max(0.5f, 0.5f * leaf.GetPointSize());
    const uint32_t rgb = packColour(colour, 1.0f);
    const int quantity = leaf.GetPointQuantity();
    for (int i = 0; i < quantity; ++i) {
        const int v = leaf.GetPoint(i);
        if (v < 0 || static_cast<uint32_t>(v) >= vertexCount)
            continue;
        const CameraPoint& p = mCamera[static_cast<uint32_t>(v)];
        Primitive point{p.d, rgb, opacity, Primitive::CIRCLE, 1, {}};
        point.xy[2] = radius;
        if (p.d >= mFrustum[zuCamera::VF_DMIN]) {
            toScreen(p, point.xy[0], point.xy[1]);
            if (!offScreen(point)) {
                mPrimitives.push_back(point);
                ++mReport.points;
                continue;
            }
        }
        ++mReport.hidden;
    }
}

void zuSvgBuilder::drawBound(const zuBoundingVolume& bound, const Wm4::ColorRGB& colour, float opacity)
{
    const float dMin = mFrustum[zuCamera::VF_DMIN];
    const Wm4::Vector3<float>& centre = bound.GetCenter();
    const Wm4::Vector3<float>& extents = bound.GetExtents();
    Primitive rectangle{toCamera(centre).d, packColour(colour, 0.9f), opacity, Primitive::RECTANGLE, 2, {}};
    float minX = COORDINATE_LIMIT, maxX = -COORDINATE_LIMIT, minY = COORDINATE_LIMIT, maxY = -COORDINATE_LIMIT;
    bool inFront = false;
    for (int corner = 0; bound.isValid() && corner < 8; ++corner) {
        const Wm4::Vector3<float> offset(corner & 1 ? extents[0] : -extents[0], corner & 2 ? extents[1] : -extents[1],
                                         corner & 4 ? extents[2] : -extents[2]);
        CameraPoint p = toCamera(centre + offset);
        inFront = inFront || p.d >= dMin;
        // A corner behind the near plane is taken at it: the rectangle still covers the part.
        p.d = std::max(p.d, dMin);
        float x, y;
        toScreen(p, x, y);
        minX = std::min(minX, x);
        maxX = std::max(maxX, x);
        minY = std::min(minY, y);
        maxY = std::max(maxY, y);
    }
    rectangle.xy[0] = minX;
    rectangle.xy[1] = minY;
    rectangle.xy[2] = maxX - minX;
    rectangle.xy[3] = maxY - minY;
    if (!inFront || offScreen(rectangle)) {
        ++mReport.hidden;
        return;
    }
    mPrimitives.push_back(rectangle);
    ++mReport.bounds;
}

bool zuSvgBuilder::addPolygon(const CameraPoint* corners, int count, uint32_t colour, float opacity)
{
    // Sutherland-Hodgman against the near plane: a triangle keeps at most four corners.
    const float dMin = mFrustum[zuCamera::VF_DMIN];
    CameraPoint clipped[4];
    int kept = 0;
    for (int i = 0; i < count; ++i) {
        const CameraPoint& a = corners[i];
        const CameraPoint& b = corners[(i + 1) % count];
        const bool aIn = a.d >= dMin, bIn = b.d >= dMin;
        if (aIn)
            clipped[kept++] = a;
        if (aIn != bIn) {
            const float t = (dMin - a.d) / (b.d - a.d);
            clipped[kept++] = {a.r + t * (b.r - a.r), a.u + t * (b.u - a.u), dMin};
        }
    }
    if (kept < 3)
        return false;
    Primitive polygon{0.0f, colour, opacity, Primitive::POLYGON, static_cast<uint8_t>(kept), {}};
    for (int i = 0; i < kept; ++i) {
        polygon.depth += clipped[i].d / static_cast<float>(kept);
        toScreen(clipped[i], polygon.xy[2 * i], polygon.xy[2 * i + 1]);
    }
    if (offScreen(polygon))
        return false;
    mPrimitives.push_back(polygon);
    return true;
}

void zuSvgBuilder::write(std::string& svg) const
{
    // Back to front; primitives at the same depth keep the order they were drawn in.
    std::vector<std::pair<float, uint32_t>> order(mPrimitives.size());
    for (size_t i = 0; i < mPrimitives.size(); ++i)
        order[i] = {-mPrimitives[i].depth, static_cast<uint32_t>(i)};
    std::sort(order.begin(), order.end());

    std::string out;
    out.reserve(256 + mPrimitives.size() * 72);
    SvgWriter w(out);
    w << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      << "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\" width=\"" << mWidth << "\" height=\"" << mHeight
      << "\" viewBox=\"0 0 " << mWidth << " " << mHeight << "\">\n";
    if (!mNote.empty())
        w << "<!-- " << mNote << " -->\n";
    w << "<rect width=\"100%\" height=\"100%\" fill=\"" << BACKGROUND << "\"/>\n"
      << "<g stroke-width=\"0.5\" stroke-linejoin=\"round\">\n";
    for (const auto& entry : order) {
        const Primitive& p = mPrimitives[entry.second];
        switch (p.kind) {
        case Primitive::POLYGON:
            w << "<polygon points=\"";
            w.points(p.xy, p.count);
            w << "\" fill=\"";
            w.colour(p.colour);
            // The outline in the fill's colour closes the hairline gaps that anti-aliasing
            // leaves between neighbouring triangles.
            w << "\" stroke=\"";
            w.colour(p.colour);
            break;
        case Primitive::POLYLINE:
            w << "<polyline points=\"";
            w.points(p.xy, p.count);
            w << "\" fill=\"none\" stroke-width=\"1\" stroke=\"";
            w.colour(p.colour);
            break;
        case Primitive::CIRCLE:
            w << "<circle cx=\"" << p.xy[0] << "\" cy=\"" << p.xy[1] << "\" r=\"" << p.xy[2] << "\" stroke=\"none\" fill=\"";
            w.colour(p.colour);
            break;
        case Primitive::RECTANGLE:
            w << "<rect x=\"" << p.xy[0] << "\" y=\"" << p.xy[1] << "\" width=\"" << p.xy[2] << "\" height=\""
              << p.xy[3] << "\" stroke=\"" << BOUND_OUTLINE << "\" fill=\"";
            w.colour(p.colour);
            break;
        }
        w << "\"";
        if (p.opacity < 1.0f)
            w << " opacity=\"" << p.opacity << "\"";
        w << "/>\n";
    }
    w << "</g>\n</svg>\n";
    svg.swap(out);
}

} // namespace zu
