// Loads of valid files shaped to hurt the loader. A chain of plain nodes, each the only child
// of the one before, written exactly as Save writes nodes: the load keeps the top
// zuNode::MAX_LOADED_DEPTH levels and drops the rest, and its time must grow linearly with
// the depth, so items_per_second (nodes) must stay flat from 65,536 to 1,048,576 nodes (the
// loader once took 2.9 s for 16,384 nodes, and did not end for 300,000).
//
// The chain is loaded from memory through zuBaseStream; the time is the process's CPU time
// (these machines are shared), the median of 3 runs.

#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/stream/zuBaseStream.h>
#include <zuSceneGraph/zuSceneGraph.h>
#include <zuSystem/zuOutputStreamVersion.h>

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

namespace {

using namespace zu;

zuStreamVersion outputVersion()
{
    return zuStreamVersion(zuMajorOutputStreamVersion, zuMinorOutputStreamVersion);
}

// The records of a chain of `depth` nodes, the first top-level, made from the record of a
// node with one child as the library saves it.
std::vector<char> chainBytes(int64_t depth)
{
    zuPointer<zuNode> parent = new zuNode;
    parent->attachChild(new zuNode);
    zuBaseStream stream;
    stream.SetVersion(outputVersion());
    stream.InsertTopLevel(parent);
    char* saved = nullptr;
    unsigned long size = 0;
    stream.Save(saved, size);
    // The marker, then the parent's record up to the child's, which is a bare node.
    const size_t marker = 4 + 9;
    int32_t typeLength = 0;
    std::memcpy(&typeLength, saved + marker, 4);
    int32_t recordSize = 0;
    std::memcpy(&recordSize, saved + marker + 4 + typeLength, 4);
    const size_t identityAt = 4 + static_cast<size_t>(typeLength) + 4;
    std::vector<char> bytes(saved, saved + marker);
    bytes.reserve(marker + static_cast<size_t>(recordSize) * static_cast<size_t>(depth));
    for (int64_t k = 0; k < depth; ++k) {
        const size_t at = bytes.size();
        bytes.insert(bytes.end(), saved + marker, saved + marker + recordSize);
        const uint64_t self = 0x7f0000000000ull + 304 * static_cast<uint64_t>(k);
        const uint64_t child = k + 1 < depth ? self + 304 : 0;
        std::memcpy(bytes.data() + at + identityAt, &self, 8);
        std::memcpy(bytes.data() + bytes.size() - 8, &child, 8);
    }
    delete[] saved;
    return bytes;
}

void BM_DeepChainLoad(benchmark::State& state)
{
    initializeZuSceneGraph();
    const int64_t depth = state.range(0);
    std::vector<char> bytes = chainBytes(depth);
    for (auto _ : state) {
        zuBaseStream stream;
        stream.SetVersion(outputVersion());
        if (!stream.Load(bytes.data(), bytes.size()) || stream.GetObjectCount() != 1)
            state.SkipWithError("load failed");
        state.PauseTiming();
        stream.RemoveAllToLevel();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * depth);
    terminateZuSceneGraph();
}
BENCHMARK(BM_DeepChainLoad)
    ->Arg(1 << 16)
    ->Arg(1 << 18)
    ->Arg(1 << 20)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->Repetitions(3)
    ->DisplayAggregatesOnly();

} // namespace
