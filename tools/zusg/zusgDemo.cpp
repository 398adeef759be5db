// zusg demo [--depth N] [--keep FILE] [--svg FILE]: the library end to end, in a second or two.
//
// Builds the W1 assembly of the benchmarks (zusgW1Assembly.h), each leaf a cube mesh with
// its own vertex and index buffers; updates it and culls it from the W1 camera; saves it to
// an object-stream file; loads the file back twice, with every buffer and with the vertex
// and index buffers left in the file; reads back only the buffers of the leaves the second
// tree sees; and checks that both loaded trees see the original's leaves, with the same
// bounds and buffers. With --svg, it then draws what the camera sees of the second tree with
// zuSvgBuilder into that file. One line per step with its time, then "demo: OK"; at the
// first difference, a message on standard error and status 1.

#include "zusgCommand.h"
#include "zusgLibraryScope.h"
#include "zusgModel.h"
#include "zusgText.h"
#include "zusgW1Assembly.h"

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/io/zuSvgBuilder.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSceneGraph/scenegraph/zuBaseGeometry.h>
#include <zuSystem/zuOutputStreamVersion.h>

#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace zusg {

namespace {

constexpr int DEFAULT_DEPTH = 4;
// Depth 6 has 262,144 leaves and takes a few seconds; each level more is eight times that.
constexpr int MIN_DEPTH = 1;
constexpr int MAX_DEPTH = 6;

using Leaves = std::vector<zu::zuRenderableSpatial*>;

struct Options {
    int depth = DEFAULT_DEPTH;
    std::string keep;  // empty: save to a temporary file, removed at the end
    std::string svg;   // empty: no picture
};

// Every option takes a value.
bool parseOptions(const std::vector<std::string>& arguments, Options& options)
{
    for (size_t i = 0; i < arguments.size(); i += 2) {
        if (i + 1 == arguments.size())
            return false;
        const std::string& value = arguments[i + 1];
        if (arguments[i] == "--depth") {
            const auto depth = parseWhole(value, MIN_DEPTH, MAX_DEPTH);
            if (!depth) {
                std::cerr << "zusg demo: --depth takes a whole number from " << MIN_DEPTH << " to " << MAX_DEPTH
                          << ", not '" << value << "'\n";
                return false;
            }
            options.depth = static_cast<int>(*depth);
        } else if (arguments[i] == "--keep" && !value.empty()) {
            options.keep = value;
        } else if (arguments[i] == "--svg" && !value.empty()) {
            options.svg = value;
        } else {
            return false;
        }
    }
    return true;
}

class Stopwatch {
public:
    double milliseconds() const
    {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - mStart).count();
    }

private:
    std::chrono::steady_clock::time_point mStart = std::chrono::steady_clock::now();
};

void printStep(const char* step, const std::string& what, double milliseconds)
{
    std::printf("%-8s %-56s %8.2f ms\n", step, what.c_str(), milliseconds);
}

int fail(const std::string& why)
{
    std::fflush(stdout);
    std::cerr << "zusg demo: FAILED: " << why << "\n";
    return Failure;
}

// The child slots from the root down to the object, as "/k1/k2/...": the same leaf in a
// loaded copy of the tree has the same path.
std::string treePath(const zu::zuSpatial* object)
{
    std::vector<int> slots;
    for (; object->GetParent(); object = object->GetParent())
        slots.push_back(static_cast<const zu::zuNode*>(object->GetParent())->getChildIndex(object));
    std::string path;
    for (auto slot = slots.rbegin(); slot != slots.rend(); ++slot)
        path.append("/").append(std::to_string(*slot));
    return path;
}

Leaves cull(zu::zuNode* root, const zu::zuCamera* camera)
{
    zu::zuCuller culler;
    culler.SetCamera(camera);
    culler.ComputeVisibleSet(root, nullptr, false);
    return culler.GetVisibleSet();
}

// Empty when `loaded` holds the original's visible leaves, in the same order and at the
// same places in the tree, each equal to the original with the same world bound and equal
// resident buffers; otherwise what differs first.
std::string compareVisible(const Leaves& loaded, const Leaves& original)
{
    if (loaded.size() != original.size())
        return std::to_string(loaded.size()) + " leaves visible, the original " + std::to_string(original.size());
    for (size_t i = 0; i < loaded.size(); ++i) {
        const std::string path = treePath(loaded[i]);
        if (path != treePath(original[i]))
            return "visible leaf " + std::to_string(i) + " is " + path + ", the original's " + treePath(original[i]);
        if (!loaded[i]->IsDerived(zu::zuBaseGeometry::TYPE) || !original[i]->IsDerived(zu::zuBaseGeometry::TYPE))
            return "leaf " + path + " is not a geometry leaf";
        const auto* leaf = static_cast<const zu::zuBaseGeometry*>(loaded[i]);
        const auto* source = static_cast<const zu::zuBaseGeometry*>(original[i]);
        if (!leaf->Equals(source) || !(leaf->GetWorldBound() == source->GetWorldBound()))
            return "leaf " + path + " differs from the original";
        const zu::zuVertexBuffer* vertices = leaf->GetVertices();
        const zu::zuIndexBuffer* indices = leaf->GetIndices();
        if (!vertices || !indices || !vertices->isCPUResident() || !indices->isCPUResident())
            return "the buffers of leaf " + path + " are not in memory";
        if (!vertices->Equals(source->GetVertices()) || !indices->Equals(source->GetIndices()))
            return "the buffers of leaf " + path + " differ from the original's";
    }
    return {};
}

std::string residentText(const TreeCount& count)
{
    return grouped(count.resident) + " of " + grouped(count.buffers) + " buffers in memory";
}

// The scene the loads must give back: the tree, its camera, its counts and what it sees.
struct Original {
    zu::zuPointer<zu::zuNode> root;
    zu::zuPointer<zu::zuCamera> camera;
    TreeCount count;
    Leaves seen;
};

int buildStep(const W1Assembly& workload, Original& original)
{
    Stopwatch watch;
    original.root = workload.build();
    const double buildTime = watch.milliseconds();
    original.camera = workload.camera();
    const TreeCount& built = original.count = countTree(original.root);
    printStep("build",
              grouped(built.objects) + " objects, " + grouped(built.leaves) + " meshes, " + grouped(built.buffers)
                  + " buffers",
              buildTime);

    watch = Stopwatch();
    original.root->UpdateGS();
    printStep("update", "UpdateGS: world transformations and bounds", watch.milliseconds());

    watch = Stopwatch();
    original.seen = cull(original.root, original.camera);
    printStep("cull", grouped(original.seen.size()) + " of " + grouped(built.leaves) + " leaves visible",
              watch.milliseconds());
    if (original.seen.empty())
        return fail("the camera sees no leaf of the original");
    return Success;
}

int saveStep(const Original& original, const std::string& path)
{
    Stopwatch watch;
    if (!saveTree(original.root, path))
        return fail("could not save " + path);
    const double saveTime = watch.milliseconds();
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (error)
        return fail("could not read the size of " + path + ": " + error.message());
    char version[32];
    std::snprintf(version, sizeof version, "MVK %d.%02d, ", zu::zuMajorOutputStreamVersion,
                  zu::zuMinorOutputStreamVersion);
    printStep("save", version + grouped(size) + " bytes", saveTime);
    return Success;
}

// Every buffer read with the tree.
int fullLoadStep(const Original& original, const std::string& path)
{
    const TreeCount& built = original.count;
    Stopwatch watch;
    zu::zuPointer<zu::zuNode> full = loadTree(path);
    const double fullTime = watch.milliseconds();
    if (!full)
        return fail("could not load " + path);
    const TreeCount fullCount = countTree(full);
    printStep("load", "full: " + residentText(fullCount), fullTime);
    if (fullCount.objects != built.objects || fullCount.resident != built.buffers)
        return fail("the loaded tree has " + std::to_string(fullCount.objects) + " objects and "
                    + residentText(fullCount) + ", the original " + std::to_string(built.objects) + " and "
                    + std::to_string(built.buffers));
    watch = Stopwatch();
    full->UpdateGS();
    const std::string fullDiffers = compareVisible(cull(full, original.camera), original.seen);
    if (!fullDiffers.empty())
        return fail("full load: " + fullDiffers);
    printStep("check", "full: update, cull, the same " + grouped(original.seen.size()) + " leaves and buffers",
              watch.milliseconds());
    return Success;
}

// The picture of what the camera sees: square, as the W1 camera's field of view is.
int drawStep(const Leaves& seen, const zu::zuCamera& camera, const std::string& path)
{
    constexpr int SIZE = 800;
    Stopwatch watch;
    zu::zuSvgBuilder builder;
    builder.setCamera(camera);
    builder.setViewport(SIZE, SIZE);
    std::string svg;
    if (!builder.build(seen, svg) || !writeFileSafely(path, svg))
        return fail("could not draw the view into " + path);
    printStep("view", counted(builder.getReport().triangles, "triangle") + " drawn as SVG, " + grouped(svg.size()) + " bytes",
              watch.milliseconds());
    std::error_code error;
    const std::filesystem::path shown = std::filesystem::absolute(path, error);
    std::printf("%-8s %s\n", "picture", (error ? path : shown.string()).c_str());
    return Success;
}

// The vertex and index buffers stay in the file until the visible leaves ask for them; with
// `svgPath`, the camera's view of them is drawn there.
int lazyLoadStep(const Original& original, const std::string& path, const std::string& svgPath)
{
    const TreeCount& built = original.count;
    zu::zuDynamicLoadingResource::SetLoadPolicy(zu::zuVertexBuffer::TYPE, false);
    zu::zuDynamicLoadingResource::SetLoadPolicy(zu::zuIndexBuffer::TYPE, false);
    Stopwatch watch;
    zu::zuPointer<zu::zuNode> lazy = loadTree(path);
    const double lazyTime = watch.milliseconds();
    zu::zuDynamicLoadingResource::ClearLoadingPolicies();
    if (!lazy)
        return fail("could not load " + path + " with the buffers left in the file");
    const TreeCount lazyCount = countTree(lazy);
    printStep("load", "lazy: " + residentText(lazyCount), lazyTime);
    if (lazyCount.objects != built.objects || lazyCount.buffers != built.buffers || lazyCount.resident != 0)
        return fail("the lazily loaded tree has " + std::to_string(lazyCount.objects) + " objects and "
                    + residentText(lazyCount) + ", expected " + std::to_string(built.objects) + " and none");

    // Bounds come from the file: the tree is culled before any buffer is read.
    watch = Stopwatch();
    lazy->UpdateGS();
    const Leaves lazySeen = cull(lazy, original.camera);
    printStep("cull", "lazy: update, " + grouped(lazySeen.size()) + " leaves visible", watch.milliseconds());

    watch = Stopwatch();
    const int read = readBack(lazySeen);
    const double readTime = watch.milliseconds();
    if (read < 0)
        return fail("could not read a buffer of a visible leaf back from " + path);
    const TreeCount restored = countTree(lazy);
    printStep("restore",
              "lazy: " + grouped(static_cast<uintmax_t>(read)) + " read back, now " + grouped(restored.resident) + " of "
                  + grouped(restored.buffers) + " in memory",
              readTime);
    if (restored.resident != read)
        return fail(std::to_string(read) + " buffers read back but " + residentText(restored));

    watch = Stopwatch();
    const std::string lazyDiffers = compareVisible(lazySeen, original.seen);
    if (!lazyDiffers.empty())
        return fail("lazy load: " + lazyDiffers);
    printStep("check", "lazy: the same " + grouped(original.seen.size()) + " leaves and buffers",
              watch.milliseconds());
    return svgPath.empty() ? Success : drawStep(lazySeen, *original.camera, svgPath);
}

// The steps, from the build to the last check and the picture; the caller removes the file.
int runSteps(int depth, const std::string& path, const std::string& svgPath)
{
    const W1Assembly workload(depth);
    std::printf("zusg demo: the W1 assembly, depth %d, %d children per node\n", depth, workload.fanOut());
    Original original;
    int status = buildStep(workload, original);
    if (status == Success)
        status = saveStep(original, path);
    if (status == Success)
        status = fullLoadStep(original, path);
    if (status == Success)
        status = lazyLoadStep(original, path, svgPath);
    return status;
}

} // namespace

int runDemo(const std::vector<std::string>& arguments)
{
    Options options;
    if (!parseOptions(arguments, options))
        return Usage;
    std::string path = options.keep;
    if (path.empty()) {
        std::error_code error;
        const std::filesystem::path directory = std::filesystem::temp_directory_path(error);
        if (error)
            return fail("no temporary directory: " + error.message());
        path = (directory / ("zusg-demo-" + std::to_string(::getpid()) + ".mvk")).string();
    }

    int status = Success;
    {
        LibraryScope library;
        status = runSteps(options.depth, path, options.svg);
    }
    if (!options.keep.empty()) {
        if (status == Success)
            std::printf("%-8s %s\n", "file", ("kept " + path).c_str());
    } else {
        std::error_code error;
        const bool removed = std::filesystem::remove(path, error);
        if (status == Success && !removed)
            return fail("could not remove " + path + (error ? ": " + error.message() : ""));
        if (status == Success)
            std::printf("%-8s %s\n", "file", ("removed " + path).c_str());
    }
    if (status == Success)
        std::printf("demo: OK\n");
    return status;
}

} // namespace zusg
