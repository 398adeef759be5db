#pragma once

#include <Wm4/Wm4ColorRGB.h>
#include <Wm4/Wm4Vector3.h>

#include <cstdint>
#include <string>
#include <vector>

namespace zu {

class zuBaseGeometry;
class zuBoundingVolume;
class zuCamera;
class zuLine;
class zuMeshTriangles;
class zuPoint;
class zuProgressNotifierInterface;
class zuRenderableSpatial;
class zuSpatial;

// Draws what a camera sees of a scene as an SVG picture: a quick look at a model without a
// renderer, for reports, tests and the command line.
//
// The leaves are projected through the camera onto the picture (the camera's frustum
// rectangle fills the viewport) and drawn with the painter's algorithm: every primitive is
// sorted by its mean depth and written from the farthest to the nearest. Triangles are
// flat-shaded polygons, lit by a fixed light from above, left and behind the eye (ambient
// plus diffuse), in the leaf's material colour or a default blue-grey, with the material's
// opacity; triangles facing away from the eye are culled (counter-clockwise triangles face
// outward; a mirroring world transformation turns that round). Lines are drawn as
// polylines of one segment each, points as circles of the leaf's point size. Primitives
// are clipped at the near plane; those wholly behind it or outside the picture are skipped.
//
// Past the triangle limit (the triangles of all given leaves together) the picture is
// simplified: each part is drawn as the rectangle that its projected world bound covers,
// shaded by its colour, and the picture carries a comment saying so (also given by
// getNote()). A leaf whose blocks are not in memory is drawn the same way.
//
// The output is a standalone SVG 1.1 document in UTF-8, coordinates in pixels from the top
// left with one decimal.
class zuSvgBuilder {
public:
    static constexpr uint64_t DEFAULT_TRIANGLE_LIMIT = 1000000;
    static constexpr int DEFAULT_WIDTH = 800;
    static constexpr int DEFAULT_HEIGHT = 600;

    // What the last build drew.
    struct Report {
        uint64_t parts = 0;            // leaves given (or found visible)
        uint64_t triangles = 0;        // triangles written as polygons
        uint64_t backFaces = 0;        // triangles skipped as facing away
        uint64_t hidden = 0;           // primitives skipped behind the near plane or outside the picture
        uint64_t segments = 0;         // line segments written
        uint64_t points = 0;           // points written
        uint64_t bounds = 0;           // parts written as their projected bound
        uint64_t partsNotResident = 0; // of those, parts whose blocks were not in memory
        bool simplified = false;       // the triangle limit was passed
    };

    zuSvgBuilder();

    // The camera's frame and frustum are copied; the picture maps the frustum's near
    // rectangle onto the viewport (a frustum of another aspect ratio is stretched).
    void setCamera(const zuCamera& camera);
    // At least one pixel each way; smaller values are raised to 1.
    void setViewport(int width, int height);
    int getWidth() const { return mWidth; }
    int getHeight() const { return mHeight; }
    void setTriangleLimit(uint64_t limit) { mTriangleLimit = limit; }
    uint64_t getTriangleLimit() const { return mTriangleLimit; }

    // Culls `scene` (updated by the caller) with a zuCuller from the camera and draws the
    // visible set.
    bool build(zuSpatial* scene, std::string& svg, zuProgressNotifierInterface* progress = nullptr);
    // Draws the given leaves, as a culler's visible set holds them. False, with `svg` left
    // as it was, only when the progress notifier asked to cancel.
    bool build(const std::vector<zuRenderableSpatial*>& leaves, std::string& svg,
               zuProgressNotifierInterface* progress = nullptr);

    const Report& getReport() const { return mReport; }
    // The sentence of the simplification comment of the last build; "" when it drew every
    // triangle.
    const std::string& getNote() const { return mNote; }

    // The triangles the leaves hold together (triangle leaves only), as compared with the
    // limit. Needs no block in memory.
    static uint64_t countTriangles(const std::vector<zuRenderableSpatial*>& leaves);

    // Where a world point lands in the picture, in pixels from the top left; false for a
    // point before the near plane (or for a camera whose frustum is empty).
    bool project(const Wm4::Vector3<float>& point, float& x, float& y) const;

private:
    struct CameraPoint {
        float r, u, d;  // along the camera's right, up and view axes, from the eye
    };
    struct Primitive {
        enum Kind : uint8_t { POLYGON, POLYLINE, CIRCLE, RECTANGLE };
        float depth;
        uint32_t colour;  // 0xRRGGBB
        float opacity;
        Kind kind;
        uint8_t count;    // points in xy
        float xy[8];      // polygon corners (up to 4 after clipping), line ends, circle centre and radius,
                          // rectangle corner and size
    };

    bool cameraIsUsable() const;
    CameraPoint toCamera(const Wm4::Vector3<float>& world) const;
    void toScreen(const CameraPoint& p, float& x, float& y) const;
    bool offScreen(const Primitive& primitive) const;

    void drawLeaf(const zuRenderableSpatial* leaf);
    // Each reads the leaf's vertices from mWorld and mCamera.
    void drawTriangles(const zuBaseGeometry& leaf, const zuMeshTriangles& view, const Wm4::ColorRGB& colour,
                       float opacity);
    void drawLines(const zuLine& leaf, uint32_t vertexCount, const Wm4::ColorRGB& colour, float opacity);
    void drawPoints(const zuPoint& leaf, uint32_t vertexCount, const Wm4::ColorRGB& colour, float opacity);
    void drawBound(const zuBoundingVolume& bound, const Wm4::ColorRGB& colour, float opacity);
    // Clips the polygon at the near plane and adds it; false when nothing remains.
    bool addPolygon(const CameraPoint* corners, int count, uint32_t colour, float opacity);
    void write(std::string& svg) const;

    // The camera.
    Wm4::Vector3<float> mEye;
    Wm4::Vector3<float> mD, mU, mR;
    float mFrustum[6];
    bool mPerspective = true;
    Wm4::Vector3<float> mLight;  // toward the light, in world space

    int mWidth = DEFAULT_WIDTH;
    int mHeight = DEFAULT_HEIGHT;
    uint64_t mTriangleLimit = DEFAULT_TRIANGLE_LIMIT;
    bool mSimplify = false;

    std::vector<Primitive> mPrimitives;
    // The vertices of the leaf being drawn in world space and in camera space (reused from
    // leaf to leaf, freed at the end of a build).
    std::vector<Wm4::Vector3<float>> mWorld;
    std::vector<CameraPoint> mCamera;

    Report mReport;
    std::string mNote;
};

} // namespace zu
