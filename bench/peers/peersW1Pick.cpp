// W1 picking against OpenSceneGraph: our side chooses the pixels where a part is seen, then
// each run picks through them on each side in a fresh forked child, the sides alternating
// (and which goes first alternating from run to run); the table holds the medians.

#include "peersTable.h"
#include "peersW1.h"

#include "../benchChild.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <vector>

namespace peers {

void pixelSegment(const zusg::W1Layout& layout, float x, float y, float start[3], float end[3])
{
    // The camera at the origin looks down +x with up +z and right -y; the pixel's point at
    // the near plane, then as far as the far plane along the same ray.
    const float near = zusg::W1Layout::NEAR;
    const float r = -near + (x / PICK_VIEWPORT) * 2 * near;
    const float u = near - (y / PICK_VIEWPORT) * 2 * near;
    const float point[3] = {near, -r, u};
    for (int a = 0; a < 3; ++a) {
        start[a] = point[a];
        end[a] = point[a] * (layout.farDistance() / near);
    }
}

double pickPasses(const std::function<void()>& pass)
{
    std::vector<double> seconds;
    for (int i = 0; i < PASSES; ++i) {
        const std::clock_t start = std::clock();
        pass();
        seconds.push_back(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
    return bench::median(seconds);
}

Table runW1Pick(const Options& options)
{
    const zusg::W1Layout layout(options.depth);
    const std::string pixels =
        (std::filesystem::temp_directory_path() / ("peers-" + std::to_string(::getpid()) + "-pixels.bin")).string();
    Table table;
    table.peerName = std::string("OpenSceneGraph ") + osgVersion();
    table.title = "W1 picking at D = " + std::to_string(options.depth) + ": the nearest hit through "
                  + grouped(PICK_RAYS) + " pixels of a " + std::to_string(PICK_VIEWPORT) + " × "
                  + std::to_string(PICK_VIEWPORT) + " viewport where a part is seen, " + std::to_string(options.runs)
                  + " runs of each side, interleaved; medians; picks in processor time";
    struct Chosen {
        bool ok = false;
    };
    const bool chosen = bench::runInChild<Chosen>([&](int pipeEnd) {
        bench::finishChild(pipeEnd, Chosen{pickPixels(layout, pixels)});
    }).ok;
    std::vector<W1PickRun> ours, osg;
    for (int run = 0; chosen && run < options.runs; ++run) {
        std::fprintf(stderr, "W1 picking D=%d: run %d of %d\n", options.depth, run + 1, options.runs);
        const std::function<void()> sides[2] = {
            [&] { ours.push_back(bench::runInChild<W1PickRun>([&](int end) { bench::finishChild(end, oursPick(layout, pixels)); })); },
            [&] { osg.push_back(bench::runInChild<W1PickRun>([&](int end) { bench::finishChild(end, osgPick(layout, pixels)); })); }};
        sides[run % 2]();
        sides[1 - run % 2]();
        if (!ours.back().ok || !osg.back().ok)
            break;
    }
    std::error_code error;
    std::filesystem::remove(pixels, error);
    if (!chosen || ours.empty() || !ours.back().ok || !osg.back().ok) {
        table.ok = false;
        table.notes.push_back(std::string("FAILED: ") + (!chosen ? "choosing the pixels" : "a picking run"));
        return table;
    }

    const auto medianOf = [](const std::vector<W1PickRun>& runs, double (*field)(const W1PickRun&)) {
        std::vector<double> values;
        for (const W1PickRun& run : runs)
            values.push_back(field(run));
        return bench::median(values);
    };
    const auto both = [&](double (*field)(const W1PickRun&)) { return std::pair(medianOf(ours, field), medianOf(osg, field)); };
    const auto [oursTree, osgTree] = both([](const W1PickRun& r) { return r.treeSeconds; });
    const auto [oursTreeKB, osgTreeKB] = both([](const W1PickRun& r) { return static_cast<double>(r.treeKB); });
    const auto [oursPickTime, osgPickTime] = both([](const W1PickRun& r) { return r.pickSeconds; });
    table.rows.push_back(ratioRow("picking trees of every mesh, build (OSG: k-d trees)", oursTree, osgTree, seconds, 0));
    table.rows.push_back(ratioRow("picking trees of every mesh, memory", oursTreeKB, osgTreeKB, megabytes, 0));
    table.rows.push_back(ratioRow("nearest pick through a pixel", oursPickTime, osgPickTime, seconds, 5));
    char perSecond[96];
    std::snprintf(perSecond, sizeof perSecond, "picks per second: ours %.0f, %s %.0f", 1.0 / oursPickTime,
                  table.peerName.c_str(), 1.0 / osgPickTime);
    table.notes.push_back(perSecond);
    table.notes.push_back("hits of " + grouped(PICK_RAYS) + " rays: ours " + grouped(ours.back().hits) + ", "
                          + table.peerName + " " + grouped(osg.back().hits)
                          + "; its osgUtil::LineSegmentIntersector through an IntersectionVisitor, the k-d trees built,"
                          + " in the faster of its modes (" + (osg.back().peerMode ? "nearest only" : "all hits") + ")");
    return table;
}

} // namespace peers
