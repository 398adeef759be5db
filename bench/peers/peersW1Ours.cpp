// Our side of W1: the library as an application uses it (benchW1.h), timed step by step.

#include "peersW1.h"

#include "../benchChild.h"
#include "../benchW1.h"
#include "zusgW1Assembly.h"

#include <filesystem>

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
        watch = Stopwatch();
        run.blocksRead = bench::readBack(culler.GetVisibleSet());
        run.readBackSeconds = watch.seconds();
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
