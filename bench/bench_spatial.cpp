// Spatial queries on the W1 workload at depth 6: 262,144 cube meshes of 12 triangles
// (3,145,728 triangles) under 37,449 grouping nodes, seen from the W1 camera.
//
//   BM_BuildTrees/box|sphere   the bounding-volume trees of every mesh, into a new cache;
//                              counters: the trees' bytes per triangle (nodes and triangle
//                              numbers), the cache's bytes per mesh (trees and table entry)
//                              and the trees' total MB;
//   BM_PickNearest/box|sphere  the nearest hit of rays through random pixels of a
//                              1000 × 1000 viewport of the W1 camera where a part is seen
//                              (10,000 rays, the same every run), the trees already built
//                              (those the rays reach; box_every_tree: every mesh's, as the
//                              peer benchmark builds them); items are picks (items_per_second:
//                              picks per second);
//   BM_PickNearestCold         the same rays with a new cache, so that every tree a ray
//                              reaches is built on the way (a viewer's first clicks).
//
// Each is the median of 5 repetitions (the rows "_median"). One process, one core.
// Pixels are drawn with splitmix64 seeded with 42, x then y, unit() × 1000 each; a pixel
// is kept when its ray hits.

#include "zusgW1Assembly.h"
#include "zusgW1Layout.h"

#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>
#include <zuSceneGraph/spatial/zuBVTreeCache.h>
#include <zuSceneGraph/spatial/zuPicker.h>
#include <zuSceneGraph/zuSceneGraph.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace {

using namespace zu;

constexpr int DEPTH = 6;
constexpr int VIEWPORT = 1000;
constexpr int RAYS = 10000;
constexpr int RUNS = 5;

struct PixelRay {
    Wm4::Vector3<float> origin, direction;
    float tmin, tmax;
};

class Scene {
public:
    static Scene& instance()
    {
        static Scene scene;
        return scene;
    }

    zuNode* root() const { return mRoot; }
    const std::vector<zuTriMesh*>& meshes() const { return mMeshes; }
    const std::vector<PixelRay>& rays() const { return mRays; }

private:
    Scene()
    {
        initializeZuSceneGraph();
        const zusg::W1Assembly workload(DEPTH);
        mRoot = workload.build();
        mRoot->UpdateGS();
        collect(mRoot);
        const zuPointer<zuCamera> camera = workload.camera();
        zusg::SplitMix64 random(42);
        zuPicker picker;
        while (mRays.size() < RAYS) {
            const float x = random.unit() * VIEWPORT, y = random.unit() * VIEWPORT;
            PixelRay ray;
            zuPicker::GetPixelRay(*camera, x, y, VIEWPORT, VIEWPORT, ray.origin, ray.direction, ray.tmin, ray.tmax);
            if (picker.PickRay(mRoot, ray.origin, ray.direction, ray.tmin, ray.tmax))
                mRays.push_back(ray);
        }
    }

    void collect(zuSpatial* object)
    {
        if (auto* node = dynamic_cast<zuNode*>(object)) {
            for (int i = 0; i < node->getNbChildren(); ++i)
                collect(node->getChild(i));
        } else if (auto* mesh = dynamic_cast<zuTriMesh*>(object)) {
            mMeshes.push_back(mesh);
        }
    }

    zuPointer<zuNode> mRoot;
    std::vector<zuTriMesh*> mMeshes;
    std::vector<PixelRay> mRays;
};

void BM_BuildTrees(benchmark::State& state, zuBVTree::Kind kind)
{
    const Scene& scene = Scene::instance();
    size_t treeBytes = 0, cacheBytes = 0;
    int64_t triangles = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto cache = std::make_unique<zuBVTreeCache>();
        state.ResumeTiming();
        treeBytes = 0;
        triangles = 0;
        for (zuTriMesh* mesh : scene.meshes()) {
            const zuBVTree* tree = cache->GetTree(mesh, kind);
            treeBytes += tree->GetMemoryUsed();
            triangles += tree->GetTriangleQuantity();
        }
        cacheBytes = cache->GetMemoryUsed();
        state.PauseTiming();
        cache.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(scene.meshes().size()));
    state.counters["tree_bytes_per_triangle"] = static_cast<double>(treeBytes) / static_cast<double>(triangles);
    state.counters["cache_bytes_per_mesh"] = static_cast<double>(cacheBytes) / static_cast<double>(scene.meshes().size());
    state.counters["trees_MB"] = static_cast<double>(treeBytes) / (1 << 20);
}
BENCHMARK_CAPTURE(BM_BuildTrees, box, zuBVTree::BOX)->Unit(benchmark::kMillisecond)->Repetitions(RUNS)
    ->ReportAggregatesOnly(true);
BENCHMARK_CAPTURE(BM_BuildTrees, sphere, zuBVTree::SPHERE)->Unit(benchmark::kMillisecond)->Repetitions(RUNS)
    ->ReportAggregatesOnly(true);

void pickAll(zuPicker& picker, const Scene& scene, int64_t& hits)
{
    for (const PixelRay& ray : scene.rays())
        hits += picker.PickRay(scene.root(), ray.origin, ray.direction, ray.tmin, ray.tmax) ? 1 : 0;
}

void BM_PickNearest(benchmark::State& state, zuBVTree::Kind kind, bool everyTree)
{
    const Scene& scene = Scene::instance();
    zuPicker picker;
    picker.SetTreeKind(kind);
    if (everyTree)
        for (zuTriMesh* mesh : scene.meshes())
            picker.GetCache().GetTree(mesh, kind);
    int64_t hits = 0;
    pickAll(picker, scene, hits);  // builds the trees the rays reach
    hits = 0;
    for (auto _ : state)
        pickAll(picker, scene, hits);
    state.SetItemsProcessed(state.iterations() * RAYS);
    state.counters["hit_ratio"] = static_cast<double>(hits) / static_cast<double>(state.iterations() * RAYS);
    state.counters["trees"] = picker.GetCache().GetTreeQuantity();
}
BENCHMARK_CAPTURE(BM_PickNearest, box, zuBVTree::BOX, false)->Unit(benchmark::kMillisecond)->Repetitions(RUNS)
    ->ReportAggregatesOnly(true);
BENCHMARK_CAPTURE(BM_PickNearest, sphere, zuBVTree::SPHERE, false)->Unit(benchmark::kMillisecond)->Repetitions(RUNS)
    ->ReportAggregatesOnly(true);
BENCHMARK_CAPTURE(BM_PickNearest, box_every_tree, zuBVTree::BOX, true)->Unit(benchmark::kMillisecond)
    ->Repetitions(RUNS)->ReportAggregatesOnly(true);

void BM_PickNearestCold(benchmark::State& state)
{
    const Scene& scene = Scene::instance();
    int64_t hits = 0;
    for (auto _ : state) {
        zuPicker picker;
        pickAll(picker, scene, hits);
    }
    state.SetItemsProcessed(state.iterations() * RAYS);
}
BENCHMARK(BM_PickNearestCold)->Unit(benchmark::kMillisecond)->Repetitions(RUNS)->ReportAggregatesOnly(true);

} // namespace
