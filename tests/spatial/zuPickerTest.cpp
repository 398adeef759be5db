// The picker against testing every triangle, on random meshes and rays, and on the cases
// where rounding decides: edges, vertices, faces along the ray, rays from inside.

#include "scenegraph/zuGeometryTestHelpers.h"
#include "zusgW1Assembly.h"

#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/scenegraph/zuLine.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuPoint.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>
#include <zuSceneGraph/spatial/zuBVTreeCache.h>
#include <zuSceneGraph/spatial/zuPicker.h>
#include <zuSceneGraph/stream/zuFileStream.h>
#include <zuSceneGraph/zuSceneGraph.h>
#include <zuSystem/zuFileIoDevice.h>
#include <zuSystem/zuOutputStreamVersion.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <random>

namespace zu::test {
namespace {

using V = Wm4::Vector3<float>;
using V3d = Wm4::Vector3<double>;
constexpr float INF = std::numeric_limits<float>::infinity();

zuPointer<zuTriMesh> makeMesh(const std::vector<V>& positions, std::initializer_list<unsigned int> indices)
{
    return new zuTriMesh(makeVertices(positions, false), makeIndices(indices));
}

// A node holding `leaf` under a local transformation, updated.
zuPointer<zuNode> place(zuSpatial* leaf, const zuGenericTransformation<float>& local)
{
    zuPointer<zuNode> node = new zuNode;
    node->attachChild(leaf);
    node->SetLocalTransform(local);
    node->UpdateGS();
    return node;
}

// A hit of the brute force: ray parameter and the smallest barycentric weight (negative
// just outside the triangle).
struct BruteHit {
    const zuSpatial* leaf;
    int triangle;
    double t, margin;
};

// Every triangle of every mesh, in world space and in double.
std::vector<BruteHit> bruteForce(const std::vector<zuTriMesh*>& meshes, const V& o, const V& d, float tmin, float tmax)
{
    const auto widen = [](const V& v) { return V3d(v[0], v[1], v[2]); };
    std::vector<BruteHit> hits;
    for (zuTriMesh* mesh : meshes)
        for (int i = 0; i < mesh->GetTriangleQuantity(); ++i) {
            int v[3];
            mesh->GetTriangle(i, v[0], v[1], v[2]);
            V3d p[3];
            for (int k = 0; k < 3; ++k)
                p[k] = widen(mesh->GetWorldTransform().ApplyForward(mesh->GetVertices()->Position3(v[k])));
            const V3d e1 = p[1] - p[0], e2 = p[2] - p[0], dd = widen(d), s = widen(o) - p[0], h = dd.Cross(e2);
            const double det = e1.Dot(h);
            if (std::fabs(det) < 1e-12)
                continue;
            const double u = s.Dot(h) / det, w = dd.Dot(s.Cross(e1)) / det, t = e2.Dot(s.Cross(e1)) / det;
            if (t >= tmin - 1e-4 && t <= double(tmax) + 1e-4)
                hits.push_back({mesh, i, t, std::min(std::min(u, w), 1.0 - u - w)});
        }
    return hits;
}

struct RandomScene {
    zuPointer<zuNode> root = new zuNode;
    std::vector<zuTriMesh*> meshes;

    explicit RandomScene(std::mt19937& random)
    {
        std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
        for (int m = 0; m < 4; ++m) {
            // Triangles between shared vertices, some of them of no area.
            std::vector<V> positions;
            for (int i = 0; i < 60; ++i)
                positions.emplace_back(4 * unit(random), 4 * unit(random), 4 * unit(random));
            positions.push_back(positions[0] * 0.5f + positions[1] * 0.5f);
            zuPointer<zuIndexBuffer> indices = new zuIndexBuffer(3 * 200, zuIndexBuffer::INDEX_32);
            // The first triangle has no area: its third corner lies between the other two.
            for (int k = 0; k < 3 * 200; ++k)
                indices->SetIndex(k, k < 3 ? (k == 2 ? 60 : k) : random() % 61);
            zuPointer<zuTriMesh> mesh = new zuTriMesh(makeVertices(positions, false), indices);
            // Moved; turned and scaled; stretched; sheared.
            zuGenericTransformation<float> local;
            local.SetTranslate(V(3 * unit(random), 3 * unit(random), 3 * unit(random)));
            if (m == 1)
                local.SetRotate(Wm4::Matrix3<float>(V(0.6f, 0.8f, 0.0f), V(-0.8f, 0.6f, 0.0f), V(0, 0, 1), true));
            local.SetScale(m == 1 ? V(2.5f, 2.5f, 2.5f) : m == 2 ? V(0.5f, 3.0f, 1.5f) : V(1, 1, 1));
            if (m == 3)
                local.SetMatrix(Wm4::Matrix3<float>(1.0f, 0.7f, 0.0f, 0.0f, 1.2f, 0.3f, -0.4f, 0.0f, 0.9f));
            meshes.push_back(mesh);
            root->attachChild(place(mesh, local));
        }
        root->UpdateGS();
    }
};

TEST(zuPicker, AgreesWithEveryTriangleTestedOnRandomMeshesTransformsAndRays)
{
    const struct { zuBVTree::Kind kind; zuPicker::Mode mode; bool segment; } cases[] = {
        {zuBVTree::BOX, zuPicker::NEAREST, false},    {zuBVTree::BOX, zuPicker::ALL, false},
        {zuBVTree::BOX, zuPicker::NEAREST, true},     {zuBVTree::SPHERE, zuPicker::NEAREST, false},
        {zuBVTree::SPHERE, zuPicker::ALL, true},      {zuBVTree::SPHERE, zuPicker::NEAREST, true}};
    std::mt19937 random(7);
    const RandomScene scene(random);
    std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
    int hitRays = 0;
    for (const auto& c : cases) {
        zuPicker picker;
        picker.SetTreeKind(c.kind);
        picker.SetMode(c.mode);
        for (int r = 0; r < 300; ++r) {
            const V origin(12 * unit(random), 12 * unit(random), 12 * unit(random));
            const V target(6 * unit(random), 6 * unit(random), 6 * unit(random));
            const V d = target - origin;
            const float length = d.Length();
            const bool hit = c.segment ? picker.PickSegment(scene.root, origin, target) : picker.PickRay(scene.root, origin, d);
            const std::vector<BruteHit> expected =
                bruteForce(scene.meshes, origin, d / length, 0.0f, c.segment ? length : INF);
            // Sure hits lie clearly inside their triangle and range; the others may go either way.
            const auto sure = [&](const BruteHit& e) {
                return e.margin > 1e-4 && e.t > 1e-3 && (!c.segment || e.t < length - 1e-3);
            };
            double sureNearest = INF, anyNearest = INF;
            for (const BruteHit& e : expected) {
                anyNearest = std::min(anyNearest, e.t);
                sureNearest = sure(e) ? std::min(sureNearest, e.t) : sureNearest;
            }
            const std::vector<zuPickRecord>& records = picker.GetRecords();
            SCOPED_TRACE("case " + std::to_string(&c - cases) + " ray " + std::to_string(r));
            ASSERT_EQ(hit, !records.empty());
            if (sureNearest < INF) {
                ASSERT_TRUE(hit);
            }
            if (!hit)
                continue;
            ++hitRays;
            EXPECT_GE(records[0].distance, anyNearest - 1e-3);
            EXPECT_LE(records[0].distance, sureNearest + 1e-3);
            if (c.mode == zuPicker::NEAREST) {
                ASSERT_EQ(records.size(), 1u);
            }
            for (size_t i = 0; i < records.size(); ++i) {
                const zuPickRecord& record = records[i];
                const auto match = std::find_if(expected.begin(), expected.end(), [&](const BruteHit& e) {
                    return e.leaf == record.leaf && e.triangle == record.triangle && std::fabs(e.t - record.distance) < 1e-3;
                });
                ASSERT_NE(match, expected.end()) << record.triangle << " at " << record.distance;
                EXPECT_TRUE(i == 0 || records[i - 1].distance <= record.distance);
                EXPECT_LT((record.point - (origin + d / length * record.distance)).Length(), 1e-3f);
                EXPECT_NEAR(record.barycentric[0] + record.barycentric[1] + record.barycentric[2], 1.0f, 1e-5f);
                ASSERT_EQ(record.path.size(), 3u);
                EXPECT_EQ(record.path.front(), scene.root.get());
                EXPECT_EQ(record.path.back(), record.leaf);
            }
            for (const BruteHit& e : expected) {
                if (c.mode == zuPicker::ALL && sure(e)) {
                    EXPECT_TRUE(std::any_of(records.begin(), records.end(), [&](const zuPickRecord& record) {
                        return record.leaf == e.leaf && record.triangle == e.triangle;
                    })) << e.triangle << " at " << e.t;
                }
            }
        }
    }
    EXPECT_GT(hitRays, 600);
}

// The corners of the unit square in z = 0, split along its diagonal, and fanned about its centre.
const std::vector<V> square = {V(0, 0, 0), V(1, 0, 0), V(1, 1, 0), V(0, 1, 0), V(0.5f, 0.5f, 0)};

struct EdgeCase {
    const char* name;
    zuPointer<zuTriMesh> mesh;
    zuGenericTransformation<float> local;
    V origin, direction;
    float tmin, tmax;
    float distance;  // INF: no hit
    V normal;
};

zuGenericTransformation<float> turnedScaledMoved()
{
    zuGenericTransformation<float> local;
    local.SetRotate(Wm4::Matrix3<float>(V(0, 1, 0), V(-1, 0, 0), V(0, 0, 1), true));
    local.SetUniformScale(2.0f);
    local.SetTranslate(V(10, 0, 0));
    return local;
}

TEST(zuPicker, EdgesVerticesFacesAlongTheRayAndRaysFromInsideAreDecidedOnce)
{
    const zuGenericTransformation<float> identity;
    const zuPointer<zuTriMesh> cube = zusg::W1Assembly::makeCube();
    const V up(0, 0, 1), down(0, 0, -1), x(1, 0, 0);
    const EdgeCase cases[] = {
        {"shared edge", makeMesh(square, {0, 1, 2, 0, 2, 3}), identity, V(0.25f, 0.25f, 2), down, 0, INF, 2, up},
        {"shared vertex", makeMesh(square, {0, 1, 4, 1, 2, 4, 2, 3, 4, 3, 0, 4}), identity, V(0.5f, 0.5f, 3), down, 0, INF, 3, up},
        {"square corner", makeMesh(square, {0, 1, 2, 0, 2, 3}), identity, V(1, 1, 1), down, 0, INF, 1, up},
        {"no area", makeMesh(square, {0, 1, 1, 0, 4, 2, 3, 3, 3}), identity, V(0.5f, 0.5f, 1), down, 0, INF, INF, up},
        {"index outside", makeMesh(square, {0, 1, 9, 7, 2, 3}), identity, V(0.5f, 0.4f, 1), down, 0, INF, INF, up},
        {"from inside", cube, identity, V(0, 0, 0), x, 0, INF, 0.5f, x},
        {"turned scaled moved", cube, turnedScaledMoved(), V(0, 0, 0), x, 0, INF, 9, -x},
        {"along a face", cube, identity, V(-5, 0.5f, 0), x, 0, INF, 4.5f, -x},
        {"near beyond the entry", cube, identity, V(-5, 0.1f, 0.2f), x, 5, INF, 5.5f, x},
        {"far before the entry", cube, identity, V(-5, 0.1f, 0.2f), x, 0, 4.4f, INF, x},
        {"backwards", cube, identity, V(-5, 0, 0), -x, 0, INF, INF, x}};
    for (zuBVTree::Kind kind : {zuBVTree::BOX, zuBVTree::SPHERE})
        for (const EdgeCase& c : cases) {
            SCOPED_TRACE(std::string(c.name) + (kind == zuBVTree::BOX ? " box" : " sphere"));
            const zuPointer<zuNode> root = place(c.mesh, c.local);
            zuPicker picker;
            picker.SetTreeKind(kind);
            ASSERT_EQ(picker.PickRay(root, c.origin, c.direction, c.tmin, c.tmax), c.distance != INF);
            if (c.distance != INF) {
                EXPECT_NEAR(picker.GetRecords()[0].distance, c.distance, 1e-5f);
                EXPECT_LT((picker.GetRecords()[0].normal - c.normal).Length(), 1e-5f);
            }
            root->removeAllChildren();
        }
}

TEST(zuPicker, LazyLeavesAreReadBackOrSkippedAndTreesFollowTheirBuffers)
{
    initializeZuSceneGraph();
    const std::string path = std::filesystem::temp_directory_path() / ("zuPickerTest-" + std::to_string(getpid()) + ".mvk");
    {
        zuPointer<zuNode> root = zusg::W1Assembly(1).build();
        zuFileStream stream;
        zuFileIoDevice device(path, zuFileIoDevice::WriteOnly);
        stream.SetVersion(zuStreamVersion(zuMajorOutputStreamVersion, zuMinorOutputStreamVersion));
        stream.InsertTopLevel(root);
        ASSERT_TRUE(stream.Save(device, path, false));
    }
    zuDynamicLoadingResource::SetLoadPolicy(zuVertexBuffer::TYPE, false);
    zuDynamicLoadingResource::SetLoadPolicy(zuIndexBuffer::TYPE, false);
    zuFileStream stream;
    zuFileIoDevice device(path, zuFileIoDevice::ReadOnly);
    ASSERT_TRUE(stream.Load(device, path));
    zuDynamicLoadingResource::ClearLoadingPolicies();
    zuPointer<zuNode> root = static_cast<zuNode*>(stream.GetObjectAt(0));
    root->UpdateGS();

    // The leaf at (2, 2, 2) of W1 at depth 1, seen from its side.
    const V origin(2, 2, -10), up(0, 0, 1);
    zuPicker picker;
    picker.SetLazyBuffers(zuPicker::SKIP);
    EXPECT_FALSE(picker.PickRay(root, origin, up));
    EXPECT_EQ(picker.GetSkippedQuantity(), 2);  // the leaves at z = -2 and z = 2
    picker.SetLazyBuffers(zuPicker::READ_BACK);
    ASSERT_TRUE(picker.PickRay(root, origin, up));
    EXPECT_EQ(picker.GetReadBackQuantity(), 1);  // the nearer one hides the other
    auto* leaf = static_cast<zuTriMesh*>(picker.GetRecords()[0].leaf);
    EXPECT_TRUE(leaf->GetVertices()->isCPUResident() && leaf->GetIndices()->isCPUResident());
    const float before = picker.GetRecords()[0].distance;

    // The vertices move in place: the new bound rebuilds the tree.
    for (int i = 0; i < leaf->GetVertices()->GetVertexQuantity(); ++i)
        leaf->GetVertices()->Position3(i) *= 0.5f;
    leaf->UpdateModelBound();
    leaf->UpdateGS();
    ASSERT_TRUE(picker.PickRay(root, origin, up));
    EXPECT_GT(picker.GetRecords()[0].distance, before);
    // A new vertex buffer leaves the tree stale.
    leaf->SetVertices(zusg::W1Assembly::makeCube()->GetVertices());
    EXPECT_EQ(picker.GetCache().Purge(), 1);
    EXPECT_EQ(picker.GetCache().GetMeshQuantity(), 0);
    std::filesystem::remove(path);
    terminateZuSceneGraph();
}

TEST(zuPicker, LinesPointsHiddenObjectsLevelsAndPixels)
{
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuLine> line = new zuLine(makeVertices({V(5, -1, 0.1f), V(5, 1, 0.1f)}, false), nullptr);
    zuPointer<zuPoint> points = new zuPoint(makeVertices({V(3, 0.05f, 0), V(3, 5, 0)}, false), nullptr);
    zuPointer<zuTriMesh> wall = makeMesh({V(8, -9, -9), V(8, 9, -9), V(8, 0, 9)}, {0, 1, 2});
    for (zuSpatial* leaf : std::initializer_list<zuSpatial*>{line, points, wall})
        root->attachChild(leaf);
    root->UpdateGS();
    zuPicker picker;
    picker.SetMode(zuPicker::ALL);
    // The distances of the hits along +x from the origin.
    const auto distances = [&] {
        std::vector<float> out;
        EXPECT_TRUE(picker.PickRay(root, V(0, 0, 0), V(1, 0, 0)));
        for (const zuPickRecord& r : picker.GetRecords())
            out.push_back(std::round(r.distance * 10) / 10);
        return out;
    };
    EXPECT_EQ(distances(), std::vector<float>{8});
    picker.SetTolerance(0.2f);
    EXPECT_EQ(distances(), (std::vector<float>{3, 5, 8}));
    EXPECT_LT((picker.GetRecords()[1].point - V(5, 0, 0.1f)).Length(), 1e-6f);
    EXPECT_LT((picker.GetRecords()[1].barycentric - V(0.5f, 0.5f, 0)).Length(), 1e-6f);
    points->forceIgnore(true, false, false);
    line->SetCullingMode(zuSpatial::CULL_ALWAYS);
    EXPECT_EQ(distances(), std::vector<float>{8});
    picker.SetSkipHidden(false);
    EXPECT_EQ(distances(), (std::vector<float>{3, 5, 8}));

    // The W1 camera looks down +x: the centre of the viewport is its axis, the top-left
    // corner 45 degrees up and left; distances run from the near to the far plane.
    const zuPointer<zuCamera> camera = zusg::W1Assembly(1).camera();
    V origin, direction;
    float tmin, tmax;
    ASSERT_TRUE(zuPicker::GetPixelRay(*camera, 320, 240, 640, 480, origin, direction, tmin, tmax));
    EXPECT_LT((direction - V(1, 0, 0)).Length(), 1e-6f);
    EXPECT_FLOAT_EQ(tmin, 0.5f);
    EXPECT_FLOAT_EQ(tmax, 8.0f);
    ASSERT_TRUE(zuPicker::GetPixelRay(*camera, 0, 0, 640, 480, origin, direction, tmin, tmax));
    EXPECT_LT((direction - V(1, 1, 1) / std::sqrt(3.0f)).Length(), 1e-6f);
    EXPECT_FALSE(zuPicker::GetPixelRay(*camera, 0, 0, 0, 480, origin, direction, tmin, tmax));
    picker.SetMode(zuPicker::NEAREST);
    ASSERT_TRUE(picker.PickPixel(root, *camera, 320, 240, 640, 480));
    EXPECT_EQ(picker.GetRecords()[0].leaf, points.get());

    // The cache holds the wall alone once the scene is gone.
    root = nullptr;
    wall = nullptr;
    EXPECT_EQ(picker.GetCache().Purge(), 1);
}

} // namespace
} // namespace zu::test
