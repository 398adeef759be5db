// The scene graph's two passes over a large CAD-like assembly: one update from the root
// (world transformations downward, world bounds upward) and one culling run that collects
// the visible leaves.
//
// The scene is the W1 assembly of the benchmark workloads at depth 6 with 8 children per
// node: 37,449 grouping nodes and 262,144 leaves, 299,593 spatial objects. Every child
// moves to the corner (±s, ±s, ±s) of its parent (s = 2^(6 - parent level)) and turns about
// z by a random angle in [-0.25, 0.25) radians; leaves also take a random uniform scale in
// [0.5, 0.75). Random numbers come from splitmix64 seeded with 42, drawn depth first,
// children in slot order, the angle before the scale. Until the geometry leaves exist, a
// leaf is a renderable spatial with a set model bound (the unit cube about its origin):
// the passes do the same work per leaf as for a mesh, which only adds its vertex data.
//
// The camera stands at the origin looking down +x (up +z, right -y), perspective, near 0.5,
// far 256, 90 degrees both ways: about a sixth of the leaves are visible (the pyramid
// x > |y|, x > |z|).
//
// Figures: items are spatial objects per second; the build time of the scene and the
// resident memory per leaf after the build (the peak of the process, VmHWM, and the growth
// of VmRSS during the build) are counters, as is the number of visible leaves. Run with
// --benchmark_repetitions=5 for medians.
//
// Targets on one core: UpdateGS under 0.1 s, ComputeVisibleSet under 15 ms.

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/scenegraph/zuBaseLODPolicy.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuRenderableSpatial.h>
#include <zuSceneGraph/states/zuCamera.h>
#include <zuSceneGraph/zuSceneGraph.h>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

using Vector3 = Wm4::Vector3f;
using Matrix3 = Wm4::Matrix3f;

constexpr int DEPTH = 6;
constexpr int FAN_OUT = 8;

// splitmix64 seeded with 42, as every workload draws its numbers.
class Random {
public:
    uint64_t next()
    {
        uint64_t z = (mState += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    float unit() { return static_cast<float>(next() >> 40) * 0x1.0p-24f; }

private:
    uint64_t mState = 42;
};

// A drawable leaf with a fixed model bound, standing in for a triangle mesh: it bounds and
// inserts itself as a geometry leaf does and marks as one.
class BoxLeaf : public zu::zuRenderableSpatial {
public:
    explicit BoxLeaf(const zu::zuBoundingVolume& modelBound) : mModelBound(modelBound) {}

    void GetVisibleSet(zu::zuCuller& culler, bool, bool) override { culler.Insert(this); }
    void UpdateWorldBound() override { mModelBound.transformBoxBy(GetWorldTransform(), GetWorldBound()); }
    uint32_t setDirtyDown(bool down) override
    {
        const uint32_t bits = down ? 0x2040u : 0x09u;
        SetDirtyMask(GetDirtyMask() | bits);
        SetUpdateMask(GetUpdateMask() | bits);
        return GetDirtyMask();
    }
    bool checkRenderable(bool) override { return true; }
    void getResources(std::vector<zu::zuDynamicLoadingResource*>& resources) const override { resources.clear(); }

private:
    zu::zuBoundingVolume mModelBound;
};

// Resident memory of the process in bytes: the current one (VmRSS) or the peak (VmHWM).
long residentBytes(const char* key)
{
    FILE* status = std::fopen("/proc/self/status", "r");
    if (!status)
        return 0;
    char line[256];
    long kilobytes = 0;
    const size_t length = std::strlen(key);
    while (std::fgets(line, sizeof line, status))
        if (std::strncmp(line, key, length) == 0 && line[length] == ':')
            kilobytes = std::atol(line + length + 1);
    std::fclose(status);
    return kilobytes * 1024;
}

struct Assembly {
    zu::zuPointer<zu::zuNode> root;
    zu::zuPointer<zu::zuCamera> camera;
    long objects = 0;
    long leaves = 0;
    double buildSeconds = 0;
    double peakBytesPerLeaf = 0;
    double grownBytesPerLeaf = 0;

    Assembly()
    {
        zu::initializeZuSceneGraph();
        const long before = residentBytes("VmRSS");
        const auto start = std::chrono::steady_clock::now();
        Random random;
        const zu::zuBoundingVolume cube(Vector3(0, 0, 0), Vector3(0.5f, 0.5f, 0.5f));
        root = new zu::zuNode;
        objects = 1;
        addChildren(root, 0, random, cube);
        buildSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        peakBytesPerLeaf = static_cast<double>(residentBytes("VmHWM")) / static_cast<double>(leaves);
        grownBytesPerLeaf = static_cast<double>(residentBytes("VmRSS") - before) / static_cast<double>(leaves);

        camera = new zu::zuCamera(true);
        camera->SetFrame(Vector3(0, 0, 0), Vector3(1, 0, 0), Vector3(0, 0, 1), Vector3(0, -1, 0));
        camera->SetFrustum(0.5f, 4.0f * std::ldexp(1.0f, DEPTH), -0.5f, 0.5f, -0.5f, 0.5f);
        // The passes below start from a scene whose bounds are up to date.
        root->UpdateGS();
    }

    // The children of a node at `level`, each attached before its own children are made,
    // so that the random numbers follow the depth-first order.
    void addChildren(zu::zuNode* node, int level, Random& random, const zu::zuBoundingVolume& cube)
    {
        const float s = std::ldexp(1.0f, DEPTH - level);
        const bool leafLevel = level + 1 == DEPTH;
        for (int k = 0; k < FAN_OUT; ++k) {
            const int corner = k % 8;
            zu::zuGenericTransformation<float> local;
            local.SetRotate(Matrix3(Vector3::UNIT_Z, (random.unit() - 0.5f) * 0.5f));
            local.SetTranslate(Vector3(corner & 1 ? s : -s, corner & 2 ? s : -s, corner & 4 ? s : -s));
            ++objects;
            if (leafLevel) {
                local.SetUniformScale(0.5f + 0.25f * random.unit());
                zu::zuPointer<BoxLeaf> leaf = new BoxLeaf(cube);
                leaf->SetLocalTransform(local);
                node->attachChild(leaf);
                ++leaves;
            } else {
                zu::zuPointer<zu::zuNode> child = new zu::zuNode;
                child->SetLocalTransform(local);
                node->attachChild(child);
                addChildren(child, level + 1, random, cube);
            }
        }
    }
};

Assembly& assembly()
{
    static Assembly scene;
    return scene;
}

void addBuildCounters(benchmark::State& state, const Assembly& scene)
{
    state.counters["build_s"] = scene.buildSeconds;
    state.counters["peak_rss_per_leaf_B"] = scene.peakBytesPerLeaf;
    state.counters["rss_growth_per_leaf_B"] = scene.grownBytesPerLeaf;
    state.counters["objects"] = static_cast<double>(scene.objects);
}

void BM_UpdateGS(benchmark::State& state)
{
    Assembly& scene = assembly();
    for (auto _ : state) {
        scene.root->UpdateGS();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * scene.objects);
    addBuildCounters(state, scene);
}
BENCHMARK(BM_UpdateGS)->Unit(benchmark::kMillisecond);

void BM_ComputeVisibleSet(benchmark::State& state)
{
    Assembly& scene = assembly();
    zu::zuCuller culler;
    culler.SetCamera(scene.camera);
    // No level-of-detail node in this scene; the policy is the one producers hand over.
    zu::zuLODPolicy* policy = zu::zuLODNode::GetBasePolicy();
    for (auto _ : state) {
        culler.ComputeVisibleSet(scene.root, policy, false);
        benchmark::DoNotOptimize(culler.GetVisibleSet().data());
    }
    state.SetItemsProcessed(state.iterations() * scene.objects);
    state.counters["visible_leaves"] = static_cast<double>(culler.GetVisibleSet().size());
    addBuildCounters(state, scene);
}
BENCHMARK(BM_ComputeVisibleSet)->Unit(benchmark::kMillisecond);

} // namespace
