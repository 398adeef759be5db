#pragma once

#include <zuSceneGraph/spatial/zuBVTree.h>
#include <zuSceneGraph/spatial/zuPickRecord.h>

#include <Wm4/Wm4Math.h>
#include <Wm4/Wm4Vector3.h>

#include <memory>
#include <vector>

namespace zu {

class zuBVTreeCache;
class zuBaseGeometry;
class zuCamera;
class zuLine;
class zuMeshTriangles;
class zuPoint;
class zuSpatial;
class zuTriangles;

// Picking: which leaves a ray or a segment meets, where, and how far along it, for a
// subtree whose world transformations and bounds are up to date (UpdateGS).
//
// The walk descends the hierarchy by world bounds, nearest bound first, maps the ray into
// the model space of each triangle mesh it reaches and descends the mesh's bounding-volume
// tree (built on first use and kept in a zuBVTreeCache, which several pickers and
// collision groups may share). Lines and points are picked when they pass within a world
// tolerance of the ray (SetTolerance; 0, the default, picks only triangles). Triangles are
// two-sided. A level-of-detail node is walked into its current level only, once it has one.
//
// Modes: NEAREST keeps the nearest hit, ALL every hit in order of distance (ties in walk
// order). Hidden objects, the ignored ones and those culled always, are skipped with their
// subtrees unless SetSkipHidden(false).
//
// Leaves whose blocks wait in their file (a lazy load) are read back through
// zuRendererInterface::LoadCPUData when the ray reaches their bound, and stay in memory as
// after a draw (READ_BACK, the default); with SKIP they are passed over and counted.
//
// A picker keeps its working memory between picks, so that a pick allocates nothing once
// the first ones ran. One thread at a time, like the scene.
class zuPicker {
public:
    enum Mode {
        NEAREST,
        ALL
    };
    enum LazyBuffers {
        READ_BACK,
        SKIP
    };

    // With a cache of its own, or the one given (shared with other pickers).
    explicit zuPicker(std::shared_ptr<zuBVTreeCache> cache = nullptr);
    ~zuPicker();

    void SetMode(Mode mode) { mMode = mode; }
    Mode GetMode() const { return mMode; }
    void SetTreeKind(zuBVTree::Kind kind) { mTreeKind = kind; }
    zuBVTree::Kind GetTreeKind() const { return mTreeKind; }
    void SetSkipHidden(bool skip) { mSkipHidden = skip; }
    bool GetSkipHidden() const { return mSkipHidden; }
    void SetLazyBuffers(LazyBuffers lazy) { mLazyBuffers = lazy; }
    LazyBuffers GetLazyBuffers() const { return mLazyBuffers; }
    // The world distance within which lines and points are picked; 0 picks triangles only.
    // Negative or non-finite values are taken as 0.
    void SetTolerance(float tolerance);
    float GetTolerance() const { return mTolerance; }
    zuBVTreeCache& GetCache() const { return *mCache; }

    // Picks along origin + t·direction for distances t in [tmin, tmax] (the direction is
    // made unit length). True when anything was hit; the records are then in GetRecords.
    // A null root, a zero or non-finite direction, or tmin > tmax picks nothing.
    bool PickRay(zuSpatial* root, const Wm4::Vector3<float>& origin, const Wm4::Vector3<float>& direction,
                 float tmin = 0.0f, float tmax = Wm4::Math<float>::MAX_REAL);
    // Picks in the tree under `root` along the segment from `from` to `to`, both ends
    // included.
    bool PickSegment(zuSpatial* root, const Wm4::Vector3<float>& from, const Wm4::Vector3<float>& to);
    // Picks in the tree under `root` along the ray of the camera through the point (x, y)
    // of a viewport of width × height pixels (GetPixelRay), between the near and the far
    // plane.
    bool PickPixel(zuSpatial* root, const zuCamera& camera, float x, float y, int width, int height);

    // The ray of `camera` through the point (x, y) of a viewport of width × height pixels,
    // (0, 0) its top-left corner and y growing downward (the centre of pixel (i, j) is
    // (i + 0.5, j + 0.5)), with the distances of the near and the far plane along it. A
    // perspective ray starts at the camera's location; an orthographic one at the point of
    // the camera's plane, along D. The ray goes to `origin` and `direction` (unit length),
    // the distances to `tmin` and `tmax`. False for an empty viewport.
    static bool GetPixelRay(const zuCamera& camera, float x, float y, int width, int height,
                            Wm4::Vector3<float>& origin, Wm4::Vector3<float>& direction, float& tmin, float& tmax);

    // The records of the last pick: one in NEAREST mode, all in order of distance in ALL.
    const std::vector<zuPickRecord>& GetRecords() const { return mRecords; }
    // Leaves passed over in the last pick because their blocks were not in memory (SKIP),
    // or could not be read back.
    int GetSkippedQuantity() const { return mSkipped; }
    // Leaves whose blocks the last pick read back.
    int GetReadBackQuantity() const { return mReadBack; }

private:
    struct Candidate {
        zuRenderableSpatial* leaf;
        int triangle;
        float distance;
        float b0, b1, b2;
        Wm4::Vector3<float> point;
        Wm4::Vector3<float> normal;
    };
    struct StackItem {
        zuSpatial* object;
        float entry;
    };

    bool pick(zuSpatial* root, const Wm4::Vector3<float>& origin, const Wm4::Vector3<float>& direction, float tmin,
              float tmax);
    // Whether the ray meets the object's world bound (grown by the tolerance) before the
    // nearest hit so far; its entry distance.
    bool meetsBound(const zuSpatial& object, float& entry) const;
    bool isWalked(const zuSpatial* object) const;
    // The view of a leaf's vertices, read back first when allowed; false to skip the leaf.
    bool residentView(zuBaseGeometry* leaf, zuMeshTriangles& view);
    void pickMesh(zuTriangles* mesh);
    void pickLine(zuLine* line);
    void pickPoints(zuPoint* points);
    void addCandidate(const Candidate& candidate);
    void makeRecords(zuSpatial* root);

    std::shared_ptr<zuBVTreeCache> mCache;
    Mode mMode = NEAREST;
    zuBVTree::Kind mTreeKind = zuBVTree::BOX;
    LazyBuffers mLazyBuffers = READ_BACK;
    bool mSkipHidden = true;
    float mTolerance = 0.0f;

    // The pick under way: the world ray, the range, the nearest hit so far.
    zuTriangleQueries::Ray mRay;
    float mTmin = 0.0f;
    float mTmax = 0.0f;
    std::vector<StackItem> mStack;
    std::vector<StackItem> mChildren;
    std::vector<Candidate> mCandidates;
    std::vector<zuBVTree::TriangleHit> mHits;
    std::vector<zuPickRecord> mRecords;
    int mSkipped = 0;
    int mReadBack = 0;
};

} // namespace zu
