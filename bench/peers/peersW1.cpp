// W1 against OpenSceneGraph: each run of each side in a fresh forked child, the sides
// alternating (and which goes first alternating from run to run), so that the noise of a
// shared machine falls on both alike; the table holds the medians.
//
// One run is, per side: a scene child (build, update, cull, save), a full-load child; then
// our lazy open and a child that writes and reads the bytes of our file with plain stdio,
// the limit of any save and load of them. The load children read the files the scene
// children of the same run wrote, from the page cache, as do the limit's reads.

#include "peersTable.h"
#include "peersW1.h"

#include "../benchChild.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace peers {

namespace {

using bench::median;
using bench::runInChild;

// Plain stdio on the bytes of our file: written from memory already touched, read into
// memory not yet touched (as a load's own blocks are).
struct IoRun {
    double writeSeconds = 0.0;
    double readSeconds = 0.0;
    bool ok = false;
};

IoRun plainIo(const std::string& source, const std::string& scratch)
{
    IoRun run;
    std::error_code error;
    const size_t size = static_cast<size_t>(std::filesystem::file_size(source, error));
    if (error)
        return run;
    std::vector<char> bytes(size);
    FILE* in = std::fopen(source.c_str(), "rb");
    const bool got = in && std::fread(bytes.data(), 1, size, in) == size;
    if (in)
        std::fclose(in);
    if (!got)
        return run;

    bench::Stopwatch watch;
    FILE* out = std::fopen(scratch.c_str(), "wb");
    const bool written = out && std::fwrite(bytes.data(), 1, size, out) == size;
    const bool closed = out && std::fclose(out) == 0;
    run.writeSeconds = watch.seconds();
    std::filesystem::remove(scratch, error);

    const std::unique_ptr<char[]> target(new char[size]);
    watch = bench::Stopwatch();
    in = std::fopen(source.c_str(), "rb");
    const bool read = in && std::fread(target.get(), 1, size, in) == size;
    if (in)
        std::fclose(in);
    run.readSeconds = watch.seconds();
    run.ok = written && closed && read;
    return run;
}

// Runs body() in a forked child and brings its plain result back.
template <class Result, class Body>
Result inChild(Body body)
{
    return runInChild<Result>([&body](int pipeEnd) { bench::finishChild(pipeEnd, body()); });
}

template <class Run>
std::vector<double> collect(const std::vector<Run>& runs, double (*field)(const Run&))
{
    std::vector<double> values;
    for (const Run& run : runs)
        values.push_back(field(run));
    return values;
}

template <class Run>
double medianOf(const std::vector<Run>& runs, double (*field)(const Run&))
{
    return median(collect(runs, field));
}

double peakPerLeafBytes(const W1SceneRun& run)
{
    return 1024.0 * static_cast<double>(run.peakAfterBuildKB - run.rssBeforeKB) / static_cast<double>(run.leaves);
}

double loadPeakKB(const W1LoadRun& run)
{
    return static_cast<double>(run.peakKB - run.rssBeforeKB);
}

double lazyOpenSeconds(const W1LoadRun& run)
{
    return run.loadSeconds + run.updateSeconds + run.cullSeconds + run.readBackSeconds;
}

std::string temporaryPath(const std::string& name)
{
    return (std::filesystem::temp_directory_path() / ("peers-" + std::to_string(::getpid()) + "-" + name)).string();
}

} // namespace

Table runW1(const Options& options)
{
    const zusg::W1Layout layout(options.depth);
    const std::string oursPath = temporaryPath("w1.mvk");
    const std::string osgPath = temporaryPath("w1.osgb");
    const std::string scratchPath = temporaryPath("fwrite.bin");

    std::vector<W1SceneRun> oursScenes, osgScenes;
    std::vector<W1LoadRun> oursLoads, osgLoads, lazyOpens;
    std::vector<IoRun> io;
    Table table;
    table.peerName = std::string("OpenSceneGraph ") + osgVersion();

    auto fail = [&table](const std::string& what) {
        table.ok = false;
        table.notes.push_back("FAILED: " + what);
        return table;
    };
    for (int run = 0; run < options.runs; ++run) {
        std::fprintf(stderr, "W1 D=%d: run %d of %d\n", options.depth, run + 1, options.runs);
        const bool oursFirst = run % 2 == 0;
        // Each save writes a new file, as the fwrite reference does: replacing the file of
        // the run before would add the system's truncation of it to both saves.
        std::error_code removal;
        std::filesystem::remove(oursPath, removal);
        std::filesystem::remove(osgPath, removal);
        const std::function<void()> scenes[2] = {
            [&] { oursScenes.push_back(inChild<W1SceneRun>([&] { return oursScene(layout, oursPath); })); },
            [&] { osgScenes.push_back(inChild<W1SceneRun>([&] { return osgScene(layout, osgPath); })); }};
        const std::function<void()> loads[2] = {
            [&] { oursLoads.push_back(inChild<W1LoadRun>([&] { return oursLoad(layout, oursPath, false); })); },
            [&] { osgLoads.push_back(inChild<W1LoadRun>([&] { return osgLoad(layout, osgPath); })); }};
        scenes[oursFirst ? 0 : 1]();
        scenes[oursFirst ? 1 : 0]();
        if (!oursScenes.back().ok || !osgScenes.back().ok)
            return fail(std::string(oursScenes.back().ok ? "OpenSceneGraph's" : "our") + " build, update, cull or save");
        loads[oursFirst ? 0 : 1]();
        loads[oursFirst ? 1 : 0]();
        if (!oursLoads.back().ok || !osgLoads.back().ok)
            return fail(std::string(oursLoads.back().ok ? "OpenSceneGraph's" : "our") + " full load");
        lazyOpens.push_back(inChild<W1LoadRun>([&] { return oursLoad(layout, oursPath, true); }));
        if (!lazyOpens.back().ok)
            return fail("our lazy open");
        io.push_back(inChild<IoRun>([&] { return plainIo(oursPath, scratchPath); }));
        if (!io.back().ok)
            return fail("plain stdio on " + oursPath);
    }
    std::error_code error;
    std::filesystem::remove(oursPath, error);
    std::filesystem::remove(osgPath, error);
    if (options.runs < 1)
        return fail("no runs");

    // Both scenes must be the same: the same leaves, the same visible set from their culls.
    const W1SceneRun& ours = oursScenes.back();
    const W1SceneRun& osg = osgScenes.back();
    if (ours.leaves != layout.leafCount() || osg.leaves != layout.leafCount())
        return fail("the scenes have " + grouped(ours.leaves) + " and " + grouped(osg.leaves) + " leaves, not "
                    + grouped(layout.leafCount()));

    table.title = "W1 at D = " + std::to_string(options.depth) + ": " + grouped(layout.leafCount()) + " leaves, "
                  + std::to_string(options.runs) + " runs of each side, interleaved; medians";

    auto scene = [&](double (*field)(const W1SceneRun&)) {
        return std::pair(medianOf(oursScenes, field), medianOf(osgScenes, field));
    };
    const auto [oursBuild, osgBuild] = scene([](const W1SceneRun& r) { return r.buildSeconds; });
    const auto [oursUpdate, osgUpdate] = scene([](const W1SceneRun& r) { return r.updateSeconds; });
    const auto [oursCull, osgCull] = scene([](const W1SceneRun& r) { return r.cullSeconds; });
    const auto [oursSave, osgSave] = scene([](const W1SceneRun& r) { return r.saveSeconds; });
    const auto [oursLeafBytes, osgLeafBytes] = scene(peakPerLeafBytes);
    const double oursLoad = medianOf(oursLoads, +[](const W1LoadRun& r) { return r.loadSeconds; });
    const double osgLoad = medianOf(osgLoads, +[](const W1LoadRun& r) { return r.loadSeconds; });
    const double fwriteSeconds = medianOf(io, +[](const IoRun& r) { return r.writeSeconds; });
    const double freadSeconds = medianOf(io, +[](const IoRun& r) { return r.readSeconds; });
    const double lazyOpen = medianOf(lazyOpens, lazyOpenSeconds);
    const double readBack = medianOf(lazyOpens, +[](const W1LoadRun& r) { return r.readBackSeconds; });
    const double oursFullPeak = medianOf(oursLoads, loadPeakKB);
    const double osgFullPeak = medianOf(osgLoads, loadPeakKB);
    const double lazyPeak = medianOf(lazyOpens, loadPeakKB);

    table.rows.push_back(ratioRow("build", oursBuild, osgBuild, seconds, 3));
    table.rows.push_back(ratioRow("update (world matrices + bounds)", oursUpdate, osgUpdate, seconds, 15));
    table.rows.push_back(ratioRow("cull", oursCull, osgCull, seconds, 12));

    Row save = ratioRow("save (.mvk / .osgb)", oursSave, osgSave, seconds, 30);
    save.limit = "fwrite " + seconds(fwriteSeconds) + ": ours " + times(oursSave / fwriteSeconds);
    save.target += ", ≤ 2x fwrite";
    save.met = save.met && oursSave <= 2 * fwriteSeconds;
    table.rows.push_back(save);

    Row load = ratioRow("full load", oursLoad, osgLoad, seconds, 20);
    load.limit = "fread " + seconds(freadSeconds) + ": ours " + times(oursLoad / freadSeconds);
    table.rows.push_back(load);

    Row lazy = ratioRow("first frame of a lazy open (OSG: full load)", lazyOpen, osgLoad, seconds, 40);
    table.rows.push_back(lazy);

    Row restore;
    restore.measure = "read back the visible blocks (in the lazy open)";
    restore.ours = seconds(readBack) + " (processor " + seconds(medianOf(lazyOpens, +[](const W1LoadRun& r) {
                       return r.readBackProcessorSeconds;
                   })) + ")";
    restore.target = "< 50 ms";
    restore.met = readBack < 0.050;
    table.rows.push_back(restore);

    table.rows.push_back(ratioRow("memory per leaf after build", oursLeafBytes, osgLeafBytes, bytes, 3));
    Row fullPeak = ratioRow("peak memory of a full load", oursFullPeak, osgFullPeak, megabytes, 0);
    table.rows.push_back(fullPeak);

    Row lazyOverFull;
    lazyOverFull.measure = "peak memory: lazy open / full load (ours)";
    lazyOverFull.ours = megabytes(lazyPeak) + " / " + megabytes(oursFullPeak);
    char ratio[32];
    std::snprintf(ratio, sizeof ratio, "%.2f", lazyPeak / oursFullPeak);
    lazyOverFull.ratio = ratio;
    lazyOverFull.target = "≤ 0.35";
    lazyOverFull.met = lazyPeak <= 0.35 * oursFullPeak;
    table.rows.push_back(lazyOverFull);

    const W1LoadRun& lazyRun = lazyOpens.back();
    table.notes.push_back(
        "first frame of a lazy open, ours: load " + seconds(medianOf(lazyOpens, +[](const W1LoadRun& r) { return r.loadSeconds; }))
        + " + update " + seconds(medianOf(lazyOpens, +[](const W1LoadRun& r) { return r.updateSeconds; })) + " + cull "
        + seconds(medianOf(lazyOpens, +[](const W1LoadRun& r) { return r.cullSeconds; })) + " + read back " + seconds(readBack)
        + " (" + grouped(lazyRun.blocksRead) + " blocks)");
    table.notes.push_back("visible leaves: ours " + grouped(ours.visible) + ", " + table.peerName + " "
                          + grouped(osg.visible) + " (" + grouped(osg.visibleByWorldBoxes)
                          + " with its leaves tested by their world-axis boxes, as ours are); after the full loads " + grouped(oursLoads.back().visible) + " and "
                          + grouped(osgLoads.back().visible));
    table.notes.push_back("files: .mvk " + grouped(ours.fileBytes) + " bytes, .osgb " + grouped(osg.fileBytes) + " bytes");
    return table;
}

} // namespace peers
