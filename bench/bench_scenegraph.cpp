// The W1 workload of the benchmarks, a large CAD-like assembly, through the whole life of a
// scene: build, update, cull, save, load with every buffer, and load with the buffers left
// in the file.
//
// The scene is W1Assembly (tools/zusg/zusgW1Assembly.h, the builder `zusg demo` and the
// tests use too) at depth 6 with 8 children per node: 37,449 grouping nodes and 262,144
// leaves, 299,593 spatial objects. Every leaf is its own cube mesh (24 vertices of position
// and normal, 36 32-bit indices), so the scene holds 524,288 buffers. The camera is the
// one of W1: about a sixth of the leaves are visible.
//
// What is measured, each the median of 5 repetitions (the rows "_median"):
//   BM_Build              building the tree with its meshes; the peak resident memory of
//                         the process after the build per leaf (VmHWM / leaves) and the
//                         growth of VmRSS during the build per leaf are counters;
//   BM_UpdateGS           one UpdateGS from the root (world transformations and bounds);
//   BM_ComputeVisibleSet  one visible-set computation from the W1 camera, with the number
//                         of visible leaves;
//   BM_Save               the tree to a file in the temporary directory through zuFileStream
//                         and zuFileIoDevice, at the current stream version;
//   BM_Load/resident      that file back into a tree, every buffer read with it;
//   BM_Load/lazy          the same file with the load policies of vertex and index buffers
//                         set to false (the buffers stay in the file), then UpdateGS and one
//                         visible-set computation; the time is the sum, the three parts are
//                         counters, and lazy_over_full is the lazy load (without the update
//                         and the cull) over the median of the resident loads (when those
//                         ran first), peak_over_full the same for the peak memory.
// Items are spatial objects; peak_MB of a load is the memory it added at its peak. The file
// stays in the page cache: save and load measure the stream, not the disk.
//
// Processes. The build and the loads each run in a child process, so that the peak resident
// memory of one case does not mix with another's: the child does the work, reads its VmHWM
// and VmRSS from /proc/self/status and reports them with its times through a pipe, then
// ends without freeing the tree. The builds come first, while this process is still small;
// the load peaks are the child's VmHWM less its VmRSS before the load (what the load added).
// This process builds the scene once for the update, the cull and the saves; the saves all
// write the same file, which the loads read (or which they write once when the saves were
// filtered out).
//
// Targets on one core: UpdateGS under 0.1 s, ComputeVisibleSet under 15 ms.

#include "zusgW1Assembly.h"

#include "benchChild.h"
#include "benchW1.h"

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using bench::countTree;
using bench::cull;
using bench::finishChild;
using bench::median;
using bench::runInChild;
using bench::statusKB;
using bench::TreeCount;

using namespace zu;

constexpr int DEPTH = 6;
constexpr int FAN_OUT = 8;
constexpr int RUNS = 5;

// 8^6 leaves with two buffers each, and 1 + 8 + ... + 8^6 spatial objects.
constexpr long power(long base, int exponent)
{
    return exponent == 0 ? 1 : base * power(base, exponent - 1);
}
constexpr long LEAVES = power(FAN_OUT, DEPTH);
constexpr long OBJECTS = (LEAVES * FAN_OUT - 1) / (FAN_OUT - 1);
static_assert(OBJECTS == 299593 && LEAVES == 262144);

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}


// ---------------------------------------------------------------------------------------
// Child processes

// What a child reports.
struct ChildResult {
    double seconds = 0.0;        // the work measured
    double loadSeconds = 0.0;    // lazy load: its three parts
    double updateSeconds = 0.0;
    double cullSeconds = 0.0;
    long rssBeforeKB = 0;
    long rssAfterKB = 0;
    long peakKB = 0;
    TreeCount tree;
    long visible = 0;
    bool ok = false;
};


// ---------------------------------------------------------------------------------------
// The scene of this process and its file

class Scene {
public:
    static Scene& instance()
    {
        static Scene scene;
        return scene;
    }

    zuNode* root() const { return mRoot; }
    const zuCamera* camera() const { return mCamera; }

private:
    // The passes start from a scene whose bounds are up to date.
    Scene()
    {
        initializeZuSceneGraph();
        const zusg::W1Assembly workload(DEPTH, FAN_OUT);
        mRoot = workload.build();
        mCamera = workload.camera();
        mRoot->UpdateGS();
    }

    zuPointer<zuNode> mRoot;
    zuPointer<zuCamera> mCamera;
};

class SceneFile {
public:
    static SceneFile& instance()
    {
        static SceneFile file;
        return file;
    }

    const std::string& path() const { return mPath; }

    bool save(zuNode* root)
    {
        mSaved = bench::save(root, mPath);
        return mSaved;
    }

    // The file for the loads: the last one saved, or a new one.
    bool ensureSaved() { return mSaved || save(Scene::instance().root()); }

    // Every save starts from no file, as the first one does.
    void remove()
    {
        std::error_code error;
        std::filesystem::remove(mPath, error);
        mSaved = false;
    }

    uintmax_t size() const
    {
        std::error_code error;
        const uintmax_t bytes = std::filesystem::file_size(mPath, error);
        return error ? 0 : bytes;
    }

private:
    SceneFile()
        : mPath((std::filesystem::temp_directory_path()
                 / ("bench_scenegraph-" + std::to_string(::getpid()) + ".mvk"))
                    .string())
    {
    }
    ~SceneFile() { remove(); }

    std::string mPath;
    bool mSaved = false;
};

// ---------------------------------------------------------------------------------------
// Benchmarks

void BM_Build(benchmark::State& state)
{
    ChildResult result;
    for (auto _ : state) {
        result = runInChild<ChildResult>([](int pipeEnd) {
            ChildResult built;
            built.rssBeforeKB = statusKB("VmRSS:");
            const Clock::time_point start = Clock::now();
            const zuPointer<zuNode> root = zusg::W1Assembly(DEPTH, FAN_OUT).build();
            built.seconds = secondsSince(start);
            built.peakKB = statusKB("VmHWM:");
            built.rssAfterKB = statusKB("VmRSS:");
            built.tree = countTree(root);
            built.ok = true;
            finishChild(pipeEnd, built);
        });
        if (!result.ok || result.tree.objects != OBJECTS || result.tree.resident != 2 * LEAVES) {
            state.SkipWithError("the build failed");
            return;
        }
        state.SetIterationTime(result.seconds);
    }
    state.SetItemsProcessed(state.iterations() * OBJECTS);
    state.counters["peak_per_leaf_B"] = 1024.0 * static_cast<double>(result.peakKB) / LEAVES;
    state.counters["growth_per_leaf_B"] = 1024.0 * static_cast<double>(result.rssAfterKB - result.rssBeforeKB) / LEAVES;
    state.counters["leaves"] = static_cast<double>(result.tree.leaves);
}
BENCHMARK(BM_Build)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(RUNS)->DisplayAggregatesOnly();

void BM_UpdateGS(benchmark::State& state)
{
    Scene& scene = Scene::instance();
    for (auto _ : state) {
        scene.root()->UpdateGS();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * OBJECTS);
}
BENCHMARK(BM_UpdateGS)->Unit(benchmark::kMillisecond)->Repetitions(RUNS)->DisplayAggregatesOnly();

void BM_ComputeVisibleSet(benchmark::State& state)
{
    Scene& scene = Scene::instance();
    zuCuller culler;
    culler.SetCamera(scene.camera());
    size_t visible = 0;
    for (auto _ : state) {
        visible = cull(culler, scene.root()).size();
        benchmark::DoNotOptimize(culler.GetVisibleSet().data());
    }
    state.SetItemsProcessed(state.iterations() * OBJECTS);
    state.counters["visible_leaves"] = static_cast<double>(visible);
}
BENCHMARK(BM_ComputeVisibleSet)->Unit(benchmark::kMillisecond)->Repetitions(RUNS)->DisplayAggregatesOnly();

void BM_Save(benchmark::State& state)
{
    Scene& scene = Scene::instance();
    SceneFile& file = SceneFile::instance();
    file.remove();
    for (auto _ : state)
        if (!file.save(scene.root())) {
            state.SkipWithError("the save failed");
            return;
        }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(file.size()));
    state.counters["file_MB"] = static_cast<double>(file.size()) / (1024.0 * 1024.0);
}
BENCHMARK(BM_Save)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1)->Repetitions(RUNS)->DisplayAggregatesOnly();

// The resident loads' times, for the lazy loads to compare with.
std::vector<double> fullLoadSeconds;
std::vector<double> fullLoadPeaksKB;

ChildResult loadInChild(const std::string& path, bool lazy)
{
    return runInChild<ChildResult>([&path, lazy](int pipeEnd) {
        ChildResult loaded;
        loaded.rssBeforeKB = statusKB("VmRSS:");
        Clock::time_point start = Clock::now();
        const zuPointer<zuNode> root = bench::load(path, lazy);
        loaded.loadSeconds = secondsSince(start);
        if (!root)
            finishChild(pipeEnd, loaded);
        if (lazy) {
            start = Clock::now();
            root->UpdateGS();
            loaded.updateSeconds = secondsSince(start);
            zuCuller culler;
            const zusg::W1Assembly workload(DEPTH, FAN_OUT);
            const zuPointer<zuCamera> camera = workload.camera();
            culler.SetCamera(camera);
            start = Clock::now();
            loaded.visible = static_cast<long>(cull(culler, root).size());
            loaded.cullSeconds = secondsSince(start);
        }
        loaded.seconds = loaded.loadSeconds + loaded.updateSeconds + loaded.cullSeconds;
        loaded.peakKB = statusKB("VmHWM:");
        loaded.tree = countTree(root);
        loaded.ok = true;
        finishChild(pipeEnd, loaded);
    });
}

void BM_Load(benchmark::State& state, bool lazy)
{
    SceneFile& file = SceneFile::instance();
    if (!file.ensureSaved()) {
        state.SkipWithError("cannot write the file");
        return;
    }
    ChildResult result;
    for (auto _ : state) {
        result = loadInChild(file.path(), lazy);
        const int resident = lazy ? 0 : static_cast<int>(2 * LEAVES);
        if (!result.ok || result.tree.objects != OBJECTS || result.tree.resident != resident) {
            state.SkipWithError("the load failed");
            return;
        }
        state.SetIterationTime(result.seconds);
    }
    state.SetItemsProcessed(state.iterations() * OBJECTS);
    const double peakKB = static_cast<double>(result.peakKB - result.rssBeforeKB);
    state.counters["peak_MB"] = peakKB / 1024.0;
    state.counters["resident_buffers"] = result.tree.resident;
    if (!lazy) {
        fullLoadSeconds.push_back(result.loadSeconds);
        fullLoadPeaksKB.push_back(peakKB);
        return;
    }
    state.counters["load_ms"] = 1000.0 * result.loadSeconds;
    state.counters["update_ms"] = 1000.0 * result.updateSeconds;
    state.counters["cull_ms"] = 1000.0 * result.cullSeconds;
    state.counters["visible_leaves"] = static_cast<double>(result.visible);
    if (!fullLoadSeconds.empty()) {
        state.counters["lazy_over_full"] = result.loadSeconds / median(fullLoadSeconds);
        state.counters["peak_over_full"] = peakKB / median(fullLoadPeaksKB);
    }
}
BENCHMARK_CAPTURE(BM_Load, resident, false)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->Repetitions(RUNS)
    ->DisplayAggregatesOnly();
BENCHMARK_CAPTURE(BM_Load, lazy, true)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->Repetitions(RUNS)
    ->DisplayAggregatesOnly();

} // namespace
