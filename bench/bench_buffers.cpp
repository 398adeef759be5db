// Loading a stream file of many vertex buffers with their blocks read (resident) and with
// their blocks left on disk (the load policies of vertex and index buffers set to false).
//
// Workload: 100,000 vertex buffers, all top-level objects of one file (no root object), each
// holding 1 KB of positions (64 vertices of 4 position floats; the values differ from buffer
// to buffer). The file (about 104 MB) is written once to the temporary directory and stays
// in the page cache, so the figures measure the stream, the allocations and the copies, not
// the disk.
//
// Each load runs in a child process forked from this small one, so that the peak resident
// memory of one case does not mix with another's: the child loads the file, keeps the
// objects, reads its own VmHWM and VmRSS from /proc/self/status and reports them with the
// load time through a pipe. The peak reported is the child's VmHWM minus its VmRSS before
// the load (what the load itself added at its peak).
//
// Targets: the lazy load at least 5 times faster than the full load, and under a third of
// its peak memory; with 16 KB buffers (argument 1024: vertices a buffer, 6,250 buffers) at
// least 8 times faster. BM_LazyAgainstFullLoad reports both ratios from alternating runs.
//
// read_through reads the file block by block and builds nothing: with 1 KB blocks every
// block of the file holds record headers, so no load that reads the headers through the
// system's read calls can cost less than this copy of the whole file.

#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSceneGraph/stream/zuFileStream.h>
#include <zuSceneGraph/zuSceneGraph.h>
#include <zuSystem/zuFileIoDevice.h>

#include "benchChild.h"

#include <benchmark/benchmark.h>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

using namespace zu;
using bench::finishChild;
using bench::median;
using bench::runInChild;
using bench::statusKB;

constexpr int BUFFER_COUNT = 100000;
constexpr int VERTICES = 64;       // × 16 bytes = 1 KB per buffer
constexpr int LARGE_VERTICES = 1024;  // 16 KB per buffer, in a sixteenth as many buffers

// The buffers of a file whose buffers hold `vertices` each: about 100 MB of blocks in all.
constexpr int bufferCount(int vertices)
{
    return BUFFER_COUNT * VERTICES / vertices;
}
constexpr int RUNS = 5;

// What a child reports.
struct LoadResult {
    double seconds = 0.0;
    long rssBeforeKB = 0;
    long peakKB = 0;
    int objects = 0;
    int resident = 0;
    bool ok = false;
};


class Workload {
public:
    static Workload& instance(int vertices = VERTICES)
    {
        static Workload small(VERTICES);
        if (vertices == VERTICES)
            return small;
        static Workload large(LARGE_VERTICES);
        return large;
    }
    const std::string& file() const { return mFile; }

private:
    // The file is written by a child too, so that this process never holds the buffers
    // and every measuring child starts small.
    explicit Workload(int vertices) : mVertices(vertices)
    {
        mFile = (std::filesystem::temp_directory_path()
                 / ("bench_buffers-" + std::to_string(::getpid()) + "-" + std::to_string(vertices) + ".mvk"))
                    .string();
        const pid_t child = ::fork();
        if (child == 0)
            ::_exit(writeFile() ? 0 : 1);
        int status = 0;
        ::waitpid(child, &status, 0);
        if (child < 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
            std::fprintf(stderr, "bench_buffers: cannot write %s\n", mFile.c_str());
            std::exit(1);
        }
    }
    ~Workload() { std::filesystem::remove(mFile); }

    bool writeFile() const
    {
        initializeZuSceneGraph();
        zuAttributes layout;
        layout.SetPositionChannels(4);
        zuFileStream stream;
        stream.SetVersion(zuStreamVersion(6, 32));
        uint32_t state = 12345;
        for (int i = 0; i < bufferCount(mVertices); ++i) {
            zuPointer<zuVertexBuffer> buffer = new zuVertexBuffer(layout, mVertices);
            for (int k = 0; k < mVertices * 4; ++k) {
                state = state * 1664525u + 1013904223u;
                const float value = static_cast<float>(state >> 8) * (1.0f / 65536.0f);
                std::memcpy(buffer->GetData() + 4 * k, &value, 4);
            }
            stream.InsertTopLevel(buffer);
        }
        zuFileIoDevice device(mFile, zuFileIoDevice::WriteOnly);
        const bool saved = stream.Save(device, mFile, false);
        device.close();
        return saved && !device.isError();
    }

    int mVertices;
    std::string mFile;
};

// What a child does with the file: load it with every block read, load it with the blocks
// left on disk, or only read it through, block by block as the stream does, building
// nothing (the least any load that must find every record header can cost).
enum class Load { Full, Lazy, ReadThrough };

// Reads the file through the stream's block size; true when every byte came.
bool readThrough(const std::string& file)
{
    zuFileIoDevice device(file, zuFileIoDevice::ReadOnly);
    std::vector<char> block(zuFileStream::DEFAULT_BLOCK_SIZE);
    const int64_t size = device.size();
    int64_t total = 0;
    for (int64_t got = 1; got > 0; total += got)
        got = device.read(block.data(), static_cast<int64_t>(block.size()));
    return !device.isError() && total == size;
}

// Loads the file in a child process.
LoadResult loadInChild(Load load, int vertices = VERTICES)
{
    const bool lazy = load == Load::Lazy;
    const std::string& file = Workload::instance(vertices).file();
    return runInChild<LoadResult>([&file, load, lazy](int pipeEnd) {
        LoadResult result;
        if (lazy) {
            zuDynamicLoadingResource::SetLoadPolicy(zuVertexBuffer::TYPE, false);
            zuDynamicLoadingResource::SetLoadPolicy(zuIndexBuffer::TYPE, false);
        }
        result.rssBeforeKB = statusKB("VmRSS:");
        const auto start = std::chrono::steady_clock::now();
        std::vector<zuPointer<zuRttiInterface>> objects;
        if (load == Load::ReadThrough) {
            result.ok = readThrough(file);
        } else {
            zuFileStream stream;
            zuFileIoDevice device(file, zuFileIoDevice::ReadOnly);
            result.ok = stream.Load(device, file);
            objects.reserve(static_cast<size_t>(stream.GetObjectCount()));
            for (int i = 0; i < stream.GetObjectCount(); ++i)
                objects.emplace_back(stream.GetObjectAt(i));
        }
        result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        result.peakKB = statusKB("VmHWM:");
        result.objects = load == Load::ReadThrough ? BUFFER_COUNT : static_cast<int>(objects.size());
        for (const auto& object : objects)
            if (object && object->IsExactly(zuVertexBuffer::TYPE)
                && static_cast<const zuVertexBuffer*>(object.get())->isCPUResident())
                ++result.resident;
        finishChild(pipeEnd, result);
    });
}


void report(benchmark::State& state, const std::vector<LoadResult>& results)
{
    std::vector<double> peaks;
    for (const LoadResult& result : results)
        peaks.push_back(static_cast<double>(result.peakKB - result.rssBeforeKB) / 1024.0);
    state.counters["peak_MB"] = median(peaks);
    state.counters["objects"] = results.empty() ? 0 : results.back().objects;
    state.counters["resident"] = results.empty() ? 0 : results.back().resident;
}

void BM_LoadBuffers(benchmark::State& state, Load load)
{
    std::vector<LoadResult> results;
    for (auto _ : state) {
        const LoadResult result = loadInChild(load);
        if (!result.ok || result.objects != BUFFER_COUNT) {
            state.SkipWithError("the load failed");
            return;
        }
        state.SetIterationTime(result.seconds);
        results.push_back(result);
    }
    report(state, results);
    state.SetItemsProcessed(state.iterations() * BUFFER_COUNT);
}

// Alternating full and lazy loads; the ratios of the medians.
void BM_LazyAgainstFullLoad(benchmark::State& state)
{
    std::vector<double> fullTimes, lazyTimes, fullPeaks, lazyPeaks;
    for (auto _ : state) {
        const LoadResult full = loadInChild(Load::Full, static_cast<int>(state.range(0)));
        const LoadResult lazy = loadInChild(Load::Lazy, static_cast<int>(state.range(0)));
        if (!full.ok || !lazy.ok) {
            state.SkipWithError("a load failed");
            return;
        }
        fullTimes.push_back(full.seconds);
        lazyTimes.push_back(lazy.seconds);
        fullPeaks.push_back(static_cast<double>(full.peakKB - full.rssBeforeKB));
        lazyPeaks.push_back(static_cast<double>(lazy.peakKB - lazy.rssBeforeKB));
        state.SetIterationTime(full.seconds + lazy.seconds);
    }
    state.counters["full_ms"] = 1000.0 * median(fullTimes);
    state.counters["lazy_ms"] = 1000.0 * median(lazyTimes);
    state.counters["speedup"] = median(fullTimes) / median(lazyTimes);
    state.counters["full_peak_MB"] = median(fullPeaks) / 1024.0;
    state.counters["lazy_peak_MB"] = median(lazyPeaks) / 1024.0;
    state.counters["memory_ratio"] = median(lazyPeaks) / median(fullPeaks);
}

BENCHMARK_CAPTURE(BM_LoadBuffers, resident, Load::Full)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(RUNS);
BENCHMARK_CAPTURE(BM_LoadBuffers, on_disk, Load::Lazy)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(RUNS);
BENCHMARK_CAPTURE(BM_LoadBuffers, read_through, Load::ReadThrough)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(RUNS);
BENCHMARK(BM_LazyAgainstFullLoad)->Arg(VERTICES)->Arg(LARGE_VERTICES)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(RUNS);

} // namespace
