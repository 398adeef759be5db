// Our side of W1: the library as an application uses it (benchW1.h), timed step by step.

#include "peersW1.h"

#include "../benchChild.h"
#include "../benchW1.h"
#include "zusgW1Assembly.h"

#include <zuSceneGraph/spatial/zuBVTreeCache.h>
#include <zuSceneGraph/spatial/zuPicker.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

namespace peers {

using namespace zu;
using bench::medianOf;
using bench::Stopwatch;

W1SceneRun oursScene(const zusg::W1Layout& layout, const std::string& path)
{
    W1SceneRun run;
    run.rssBeforeKB = bench::statusKB("VmRSS:");
    const zusg::W1Assembly workload(layout.depth(), layout.fanOut());
    Stopwatch watch;
    const zuPointer<zuNode> root = workload.build();
    run.buildSeconds = watch.seconds();
    run.peakAfterBuildKB = bench::statusKB("VmHWM:");

    root->UpdateGS();
    run.updateSeconds = medianOf(PASSES, [&root] { root->UpdateGS(); });

    zuCuller culler;
    const zuPointer<zuCamera> camera = workload.camera();
    culler.SetCamera(camera);
    bench::cull(culler, root);
    run.cullSeconds = medianOf(PASSES, [&root] { root->UpdateGS(); }, [&culler, &root] { bench::cull(culler, root); });
    run.visible = static_cast<long>(culler.GetVisibleSet().size());

    watch = Stopwatch();
    if (!bench::save(root, path))
        return run;
    run.saveSeconds = watch.seconds();
    std::error_code error;
    run.fileBytes = static_cast<long long>(std::filesystem::file_size(path, error));
    run.leaves = bench::countTree(root).leaves;
    run.ok = !error;
    return run;
}

W1LoadRun oursLoad(const zusg::W1Layout& layout, const std::string& path, bool lazy)
{
    W1LoadRun run;
    run.rssBeforeKB = bench::statusKB("VmRSS:");
    Stopwatch watch;
    const zuPointer<zuNode> root = bench::load(path, lazy);
    run.loadSeconds = watch.seconds();
    if (!root)
        return run;

    zuCuller culler;
    const zuPointer<zuCamera> camera = zusg::W1Assembly(layout.depth(), layout.fanOut()).camera();
    culler.SetCamera(camera);
    if (lazy) {
        watch = Stopwatch();
        root->UpdateGS();
        run.updateSeconds = watch.seconds();
        watch = Stopwatch();
        bench::cull(culler, root);
        run.cullSeconds = watch.seconds();
        const double processor = bench::processorSeconds();
        watch = Stopwatch();
        run.blocksRead = bench::readBack(culler.GetVisibleSet());
        run.readBackSeconds = watch.seconds();
        run.readBackProcessorSeconds = bench::processorSeconds() - processor;
        run.peakKB = bench::statusKB("VmHWM:");
    } else {
        run.peakKB = bench::statusKB("VmHWM:");
        root->UpdateGS();
        bench::cull(culler, root);
    }
    run.visible = static_cast<long>(culler.GetVisibleSet().size());
    const bench::TreeCount count = bench::countTree(root);
    run.leaves = count.leaves;
    // A lazy open holds the visible leaves' blocks and no other; a full load holds them all.
    const int expected = lazy ? static_cast<int>(run.blocksRead) : count.buffers;
    run.ok = count.resident == expected && run.blocksRead >= 0;
    return run;
}

} // namespace peers

namespace peers {

bool pickPixels(const zusg::W1Layout& layout, const std::string& path)
{
    const zusg::W1Assembly workload(layout.depth(), layout.fanOut());
    const zuPointer<zuNode> root = workload.build();
    root->UpdateGS();
    const zuPointer<zuCamera> camera = workload.camera();
    zuPicker picker;
    zusg::SplitMix64 random(42);
    std::vector<float> pixels;
    for (int tries = 0; pixels.size() < 2 * PICK_RAYS && tries < 100 * PICK_RAYS; ++tries) {
        const float x = random.unit() * PICK_VIEWPORT, y = random.unit() * PICK_VIEWPORT;
        if (picker.PickPixel(root, *camera, x, y, PICK_VIEWPORT, PICK_VIEWPORT)) {
            pixels.push_back(x);
            pixels.push_back(y);
        }
    }
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(pixels.data()), static_cast<std::streamsize>(pixels.size() * sizeof(float)));
    return pixels.size() == 2 * PICK_RAYS && out.good();
}

static std::vector<float> readPixels(const std::string& path)
{
    std::vector<float> pixels(2 * PICK_RAYS);
    std::ifstream in(path, std::ios::binary);
    in.read(reinterpret_cast<char*>(pixels.data()), static_cast<std::streamsize>(pixels.size() * sizeof(float)));
    return in.good() ? pixels : std::vector<float>();
}

W1PickRun oursPick(const zusg::W1Layout& layout, const std::string& pixelsPath)
{
    W1PickRun run;
    const std::vector<float> pixels = readPixels(pixelsPath);
    const zusg::W1Assembly workload(layout.depth(), layout.fanOut());
    const zuPointer<zuNode> root = workload.build();
    root->UpdateGS();
    const zuPointer<zuCamera> camera = workload.camera();
    std::vector<zuTriMesh*> meshes;
    for (std::vector<zuSpatial*> stack{root}; !stack.empty();) {
        zuSpatial* object = stack.back();
        stack.pop_back();
        if (object->IsDerived(zuTriMesh::TYPE))
            meshes.push_back(static_cast<zuTriMesh*>(object));
        else if (object->IsDerived(zuNode::TYPE))
            for (int i = 0; i < static_cast<zuNode*>(object)->getNbChildren(); ++i)
                stack.push_back(static_cast<zuNode*>(object)->getChild(i));
    }

    auto cache = std::make_shared<zuBVTreeCache>();
    const long before = bench::statusKB("VmRSS:");
    Stopwatch watch;
    for (zuTriMesh* mesh : meshes)
        cache->GetTree(mesh, zuBVTree::BOX);
    run.treeSeconds = watch.seconds();
    run.treeKB = bench::statusKB("VmRSS:") - before;

    zuPicker picker(cache);
    const auto pass = [&] {
        run.hits = 0;
        for (size_t i = 0; i + 1 < pixels.size(); i += 2)
            run.hits += picker.PickPixel(root, *camera, pixels[i], pixels[i + 1], PICK_VIEWPORT, PICK_VIEWPORT) ? 1 : 0;
    };
    pass();
    run.pickSeconds = pickPasses(pass) / PICK_RAYS;
    run.ok = !pixels.empty() && cache->GetTreeQuantity() == static_cast<int>(meshes.size());
    return run;
}

} // namespace peers
