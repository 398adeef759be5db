// The object stream's throughput: saving and loading many small records and a few very
// large ones, through zuBaseStream (one buffer in memory) and zuFileStream (to a file and
// back, and over a memory device), beside a plain memcpy, fread and fwrite of the same bytes.
//
// Small records. A large CAD assembly reaches the stream as a few grouping records that
// reference a great many small part records, so the workload is one top-level group that
// holds 1,000,000 parts; each part is a named record (a 12-character name, as "part-0000042",
// and one int) with no children. Loading thus pays, per record, what a real scene pays: a
// factory look-up by type name, one object, one link, one identifier in the reference map,
// and one resolved reference when the group links its parts. The group's record itself is
// 8 MB of references. Figures count the 1,000,001 records.
//
// Large records. Mesh data reaches the stream as a few very large arrays, so the workload is
// four records of a 64 MB float array each, written with the array primitive. Loading
// allocates each array, as any loader must; the peer copies are therefore given both into
// a warm buffer and into a freshly allocated one.
//
// Files live in the temporary directory and stay in the page cache: the file figures measure
// the stream and the system calls, not the disk.
//
// Colliding identifiers. The small workload again, with its parts' identifiers rewritten to
// values a crafted file would choose to make the loader's identifier map quadratic.
//
// Targets: loading at least 5 million small records per second, and the colliding ones
// within 3x of that; saving and loading large records within 2x of memcpy (in memory) and
// of fread/fwrite (files).

#include <zuSceneGraph/objects/zuNamedObject.h>
#include <zuSceneGraph/objects/zuUnnamedObject.h>
#include <zuSceneGraph/stream/zuBaseStream.h>
#include <zuSceneGraph/stream/zuFileStream.h>
#include <zuSceneGraph/zuSceneGraph.h>
#include <zuSystem/zuFileIoDevice.h>
#include <zuSystem/zuMemoryIoDevice.h>
#include <zuSystem/zuOutputStreamVersion.h>

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace zu;

constexpr int PART_COUNT = 1000000;
constexpr int LARGE_RECORD_COUNT = 4;
constexpr int LARGE_FLOAT_COUNT = 64 * 1024 * 1024 / 4;

// ---------------------------------------------------------------------------------------
// The persistable classes of the workloads

// A small part: a name and an int, no children.
class zuBenchPart : public zuNamedObject {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuBenchPart>(stream); }
    static void RegisterFactory() { RegisterFactoryFunction(TYPE.GetName(), Factory); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }

    zuBenchPart() = default;
    zuBenchPart(const std::string& name, int value) : mValue(value) { SetName(name); }

    const zuRtti& GetType() const override { return TYPE; }
    int GetDiskUsed(const zuBaseStream& stream) const override { return zuNamedObject::GetDiskUsed(stream) + 4; }
    void Save(zuBaseStream& stream) const override
    {
        zuNamedObject::Save(stream);
        stream.Write(mValue);
    }
    void Load(zuBaseStream& stream, zuLink* link) override
    {
        zuNamedObject::Load(stream, link);
        stream.Read(mValue);
    }

private:
    int mValue = 0;
};

// A group that references its parts (each part is a record of its own).
class zuBenchGroup : public zuNamedObject {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuBenchGroup>(stream); }
    static void RegisterFactory() { RegisterFactoryFunction(TYPE.GetName(), Factory); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }

    void AttachPart(zuBenchPart* part) { mParts.emplace_back(part); }
    int GetPartQuantity() const { return static_cast<int>(mParts.size()); }

    const zuRtti& GetType() const override { return TYPE; }
    bool Register(zuBaseStream& stream) const override
    {
        if (!zuNamedObject::Register(stream))
            return false;
        for (const auto& part : mParts)
            if (part)
                part->Register(stream);
        return true;
    }
    int GetDiskUsed(const zuBaseStream& stream) const override
    {
        return zuNamedObject::GetDiskUsed(stream) + 4 + 8 * GetPartQuantity();
    }
    void Save(zuBaseStream& stream) const override
    {
        zuNamedObject::Save(stream);
        stream.Write(GetPartQuantity());
        for (const auto& part : mParts)
            stream.Write(static_cast<const zuRttiInterface*>(part.get()));
    }
    void Load(zuBaseStream& stream, zuLink* link) override
    {
        zuNamedObject::Load(stream, link);
        int quantity = 0;
        stream.Read(quantity);
        if (!stream.CheckCount(quantity, 8))
            return;
        mParts.resize(static_cast<size_t>(quantity));
        for (int i = 0; i < quantity; ++i)
            stream.ReadLink(link);
    }
    void Link(zuBaseStream& stream, zuLink* link) override
    {
        zuNamedObject::Link(stream, link);
        for (auto& part : mParts) {
            zuRttiInterface* object = stream.getFromMapAndRemove(link->getLinkID());
            part = object && object->IsDerived(zuBenchPart::TYPE) ? static_cast<zuBenchPart*>(object) : nullptr;
        }
    }

private:
    std::vector<zuPointer<zuBenchPart>> mParts;
};

// A large float array: its count, then the floats through the array primitive.
class zuBenchArray : public zuUnnamedObject {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuBenchArray>(stream); }
    static void RegisterFactory() { RegisterFactoryFunction(TYPE.GetName(), Factory); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }

    zuBenchArray() = default;
    explicit zuBenchArray(int count) : mCount(count), mData(new float[static_cast<size_t>(count)])
    {
        for (int i = 0; i < count; ++i)
            mData[static_cast<size_t>(i)] = static_cast<float>(i) * 0.5f;
    }

    const zuRtti& GetType() const override { return TYPE; }
    int GetDiskUsed(const zuBaseStream& stream) const override
    {
        return zuUnnamedObject::GetDiskUsed(stream) + 4 + 4 * mCount;
    }
    void Save(zuBaseStream& stream) const override
    {
        zuUnnamedObject::Save(stream);
        stream.Write(mCount);
        stream.Write(mCount, mData.get());
    }
    void Load(zuBaseStream& stream, zuLink* link) override
    {
        zuUnnamedObject::Load(stream, link);
        stream.Read(mCount);
        if (!stream.CheckCount(mCount, 4)) {
            mCount = 0;
            return;
        }
        // Left uninitialised: the stream fills it.
        mData.reset(new float[static_cast<size_t>(mCount)]);
        stream.Read(mCount, mData.get());
    }

private:
    int mCount = 0;
    std::unique_ptr<float[]> mData;
};

const zuRtti zuBenchPart::TYPE("zuBench.zuBenchPart", &zuObject::TYPE);
const zuRtti zuBenchGroup::TYPE("zuBench.zuBenchGroup", &zuObject::TYPE);
const zuRtti zuBenchArray::TYPE("zuBench.zuBenchArray", &zuObject::TYPE);

// ---------------------------------------------------------------------------------------
// The workloads, built once and saved once (to a buffer and to a file) for the loads.

struct Workload {
    std::vector<zuPointer<zuObject>> topLevel;
    std::vector<char> bytes;  // the records as zuBaseStream saves them (no header)
    std::filesystem::path file;  // the same records behind a stream header
    int64_t records = 0;
};

zuStreamVersion outputVersion()
{
    return zuStreamVersion(zuMajorOutputStreamVersion, zuMinorOutputStreamVersion);
}

void saveWorkload(Workload& workload, const std::string& name)
{
    zuBaseStream stream;
    stream.SetVersion(outputVersion());
    for (const auto& object : workload.topLevel)
        stream.InsertTopLevel(object);
    char* buffer = nullptr;
    unsigned long size = 0;
    if (!stream.Save(buffer, size)) {
        std::fprintf(stderr, "bench_stream: cannot save the %s workload\n", name.c_str());
        std::exit(1);
    }
    workload.bytes.assign(buffer, buffer + size);
    workload.records = stream.GetOrderedObjectCount();
    delete[] buffer;

    workload.file = std::filesystem::temp_directory_path()
        / ("bench_stream-" + std::to_string(::getpid()) + "-" + name + ".mvk");
    zuFileIoDevice device(workload.file.string(), zuFileIoDevice::WriteOnly);
    zuFileStream fileStream;
    fileStream.SetVersion(outputVersion());
    for (const auto& object : workload.topLevel)
        fileStream.InsertTopLevel(object);
    if (!fileStream.Save(device, workload.file.string(), false)) {
        std::fprintf(stderr, "bench_stream: cannot write %s\n", workload.file.c_str());
        std::exit(1);
    }
}

class Workloads {
public:
    static Workloads& instance()
    {
        static Workloads workloads;
        return workloads;
    }

    Workload& small()
    {
        if (mSmall.topLevel.empty()) {
            zuPointer<zuBenchGroup> group = new zuBenchGroup;
            group->SetName("assembly");
            char name[16];
            for (int i = 0; i < PART_COUNT; ++i) {
                std::snprintf(name, sizeof name, "part-%07d", i);
                group->AttachPart(new zuBenchPart(name, i));
            }
            mSmall.topLevel.emplace_back(group.get());
            saveWorkload(mSmall, "small");
        }
        return mSmall;
    }

    // The small workload with every part saved under an identifier chosen to share one
    // slot of the loader's reference map (k << 28 | k << 4 fold onto each other), as a
    // crafted file would: the loader must stay close to its ordinary speed.
    Workload& colliding()
    {
        if (mColliding.bytes.empty()) {
            const Workload& small = this->small();
            mColliding.topLevel = small.topLevel;
            mColliding.records = small.records;
            mColliding.bytes = small.bytes;
            char* bytes = mColliding.bytes.data();
            const auto skipString = [bytes](size_t at) {
                int32_t length = 0;
                std::memcpy(&length, bytes + at, 4);
                return at + 4 + static_cast<size_t>(length);
            };
            // The group: marker, type, size, identity, name, controller count, part count.
            size_t at = skipString(skipString(0)) + 4 + 8;
            at = skipString(at) + 4;
            int32_t parts = 0;
            std::memcpy(&parts, bytes + at, 4);
            at += 4;
            for (int32_t k = 0; k < parts; ++k, at += 8) {
                const uint64_t identifier = (uint64_t(k + 1) << 28) | (uint64_t(k + 1) << 4);
                std::memcpy(bytes + at, &identifier, 8);
            }
            // The parts, in the group's order: type, size, identity, name, controllers, value.
            for (int32_t k = 0; k < parts; ++k) {
                const size_t identity = skipString(at) + 4;
                const uint64_t identifier = (uint64_t(k + 1) << 28) | (uint64_t(k + 1) << 4);
                std::memcpy(bytes + identity, &identifier, 8);
                at = skipString(identity + 8) + 4 + 4;
            }
        }
        return mColliding;
    }

    Workload& large()
    {
        if (mLarge.topLevel.empty()) {
            for (int i = 0; i < LARGE_RECORD_COUNT; ++i)
                mLarge.topLevel.emplace_back(new zuBenchArray(LARGE_FLOAT_COUNT));
            saveWorkload(mLarge, "large");
        }
        return mLarge;
    }

private:
    Workloads()
    {
        initializeZuSceneGraph();
        zuBenchPart::RegisterFactory();
        zuBenchGroup::RegisterFactory();
        zuBenchArray::RegisterFactory();
    }
    ~Workloads()
    {
        for (const Workload* workload : {&mSmall, &mLarge})
            if (!workload->file.empty())
                std::filesystem::remove(workload->file);
        mSmall.topLevel.clear();
        mColliding.topLevel.clear();
        mLarge.topLevel.clear();
        zuBenchArray::UnRegisterFactory();
        zuBenchGroup::UnRegisterFactory();
        zuBenchPart::UnRegisterFactory();
        terminateZuSceneGraph();
    }

    Workload mSmall;
    Workload mColliding;
    Workload mLarge;
};

enum class Size { Small, Colliding, Large };

Workload& workloadOf(Size size)
{
    switch (size) {
    case Size::Small: return Workloads::instance().small();
    case Size::Colliding: return Workloads::instance().colliding();
    default: return Workloads::instance().large();
    }
}

void countWork(benchmark::State& state, const Workload& workload, uint64_t bytes)
{
    state.SetItemsProcessed(state.iterations() * workload.records);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
}

void fail(benchmark::State& state, const char* what)
{
    state.SkipWithError(what);
}

// ---------------------------------------------------------------------------------------
// zuBaseStream: one buffer in memory

void BM_BaseStreamSave(benchmark::State& state, Size size)
{
    Workload& workload = workloadOf(size);
    zuBaseStream stream;
    stream.SetVersion(outputVersion());
    for (const auto& object : workload.topLevel)
        stream.InsertTopLevel(object);
    for (auto _ : state) {
        char* buffer = nullptr;
        unsigned long bytes = 0;
        if (!stream.Save(buffer, bytes))
            fail(state, "save failed");
        benchmark::DoNotOptimize(buffer);
        delete[] buffer;
    }
    countWork(state, workload, workload.bytes.size());
}

// Saving into the caller's buffer, reused from one save to the next: the stream's own cost,
// without the page faults of a freshly allocated buffer.
void BM_BaseStreamSaveClientBuffer(benchmark::State& state, Size size)
{
    Workload& workload = workloadOf(size);
    zuBaseStream stream;
    stream.SetVersion(outputVersion());
    for (const auto& object : workload.topLevel)
        stream.InsertTopLevel(object);
    std::vector<char> buffer(workload.bytes.size());
    for (auto _ : state) {
        const unsigned long bytes = stream.initializeClientBufferSave();
        if (bytes != buffer.size() || !stream.finalizeClientBufferSave(buffer.data(), static_cast<int>(bytes)))
            fail(state, "save failed");
        benchmark::DoNotOptimize(buffer.data());
    }
    countWork(state, workload, buffer.size());
}

void BM_BaseStreamLoad(benchmark::State& state, Size size)
{
    Workload& workload = workloadOf(size);
    std::vector<char> bytes = workload.bytes;
    for (auto _ : state) {
        zuBaseStream stream;
        stream.SetVersion(outputVersion());
        if (!stream.Load(bytes.data(), bytes.size()) || stream.GetObjectCount() != static_cast<int>(workload.topLevel.size()))
            fail(state, "load failed");
        state.PauseTiming();
        stream.RemoveAllToLevel();  // frees the loaded graph outside the measure
        state.ResumeTiming();
    }
    countWork(state, workload, bytes.size());
}

// ---------------------------------------------------------------------------------------
// zuFileStream: to a file and back

void BM_FileStreamSaveFile(benchmark::State& state, Size size)
{
    Workload& workload = workloadOf(size);
    const std::string path = workload.file.string() + ".out";
    zuFileStream stream;
    stream.SetVersion(outputVersion());
    for (const auto& object : workload.topLevel)
        stream.InsertTopLevel(object);
    for (auto _ : state) {
        zuFileIoDevice device(path, zuFileIoDevice::WriteOnly);
        if (!stream.Save(device, path, false))
            fail(state, "save failed");
        device.close();
    }
    const uint64_t bytes = std::filesystem::file_size(path);
    std::filesystem::remove(path);
    countWork(state, workload, bytes);
}

void BM_FileStreamLoadFile(benchmark::State& state, Size size)
{
    Workload& workload = workloadOf(size);
    const std::string path = workload.file.string();
    for (auto _ : state) {
        zuFileIoDevice device(path, zuFileIoDevice::ReadOnly);
        zuFileStream stream;
        if (!stream.Load(device, path) || stream.GetObjectCount() != static_cast<int>(workload.topLevel.size()))
            fail(state, "load failed");
        state.PauseTiming();
        stream.RemoveAllToLevel();
        state.ResumeTiming();
    }
    countWork(state, workload, std::filesystem::file_size(path));
}

// ---------------------------------------------------------------------------------------
// zuFileStream: over a memory device

void BM_FileStreamSaveMemory(benchmark::State& state, Size size)
{
    Workload& workload = workloadOf(size);
    zuFileStream stream;
    stream.SetVersion(outputVersion());
    for (const auto& object : workload.topLevel)
        stream.InsertTopLevel(object);
    uint64_t bytes = 0;
    for (auto _ : state) {
        zuMemoryIoDevice device;
        // Sized beforehand, so that the device's growth is not what is measured.
        device.data().reserve(workload.bytes.size() + 64);
        if (!stream.Save(device, "memory", false))
            fail(state, "save failed");
        bytes = device.data().size();
        benchmark::DoNotOptimize(device.data().data());
    }
    countWork(state, workload, bytes);
}

void BM_FileStreamLoadMemory(benchmark::State& state, Size size)
{
    Workload& workload = workloadOf(size);
    zuMemoryIoDevice device;
    {
        zuFileIoDevice file(workload.file.string(), zuFileIoDevice::ReadOnly);
        device.data().resize(static_cast<size_t>(file.size()));
        file.read(device.data().data(), file.size());
    }
    for (auto _ : state) {
        zuFileStream stream;
        if (!stream.Load(device, "memory") || stream.GetObjectCount() != static_cast<int>(workload.topLevel.size()))
            fail(state, "load failed");
        state.PauseTiming();
        stream.RemoveAllToLevel();
        state.ResumeTiming();
    }
    countWork(state, workload, device.data().size());
}

// ---------------------------------------------------------------------------------------
// Peers: the same bytes through plain memcpy, fread and fwrite

// memcpy of the saved bytes: into a warm buffer, or into one allocated for the copy (as a
// load allocates its arrays and a save its buffer).
void BM_Memcpy(benchmark::State& state, Size size, bool freshBuffer)
{
    Workload& workload = workloadOf(size);
    const std::vector<char>& source = workload.bytes;
    std::unique_ptr<char[]> warm(new char[source.size()]);
    std::memset(warm.get(), 0, source.size());
    for (auto _ : state) {
        if (freshBuffer) {
            std::unique_ptr<char[]> target(new char[source.size()]);
            std::memcpy(target.get(), source.data(), source.size());
            benchmark::DoNotOptimize(target.get());
        } else {
            std::memcpy(warm.get(), source.data(), source.size());
            benchmark::DoNotOptimize(warm.get());
        }
        benchmark::ClobberMemory();
    }
    countWork(state, workload, source.size());
}

void BM_Fread(benchmark::State& state, Size size, bool freshBuffer)
{
    Workload& workload = workloadOf(size);
    const uint64_t bytes = std::filesystem::file_size(workload.file);
    std::unique_ptr<char[]> warm(new char[bytes]);
    std::memset(warm.get(), 0, bytes);
    for (auto _ : state) {
        std::unique_ptr<char[]> fresh(freshBuffer ? new char[bytes] : nullptr);
        char* target = freshBuffer ? fresh.get() : warm.get();
        std::FILE* file = std::fopen(workload.file.c_str(), "rb");
        if (!file || std::fread(target, 1, bytes, file) != bytes)
            fail(state, "fread failed");
        if (file)
            std::fclose(file);
        benchmark::DoNotOptimize(target);
    }
    countWork(state, workload, bytes);
}

void BM_Fwrite(benchmark::State& state, Size size)
{
    Workload& workload = workloadOf(size);
    const std::string path = workload.file.string() + ".fwrite";
    const std::vector<char>& source = workload.bytes;
    for (auto _ : state) {
        std::FILE* file = std::fopen(path.c_str(), "wb");
        if (!file || std::fwrite(source.data(), 1, source.size(), file) != source.size())
            fail(state, "fwrite failed");
        if (file)
            std::fclose(file);
    }
    std::filesystem::remove(path);
    countWork(state, workload, source.size());
}

#define ZU_STREAM_BENCH(function, ...)                                                                                \
    BENCHMARK_CAPTURE(function, __VA_ARGS__)->Unit(benchmark::kMillisecond)->UseRealTime()->MeasureProcessCPUTime()

// Small records: 1,000,001 records of about 59 bytes.
ZU_STREAM_BENCH(BM_BaseStreamSave, small, Size::Small);
ZU_STREAM_BENCH(BM_BaseStreamSaveClientBuffer, small, Size::Small);
ZU_STREAM_BENCH(BM_BaseStreamLoad, small, Size::Small);
ZU_STREAM_BENCH(BM_BaseStreamLoad, colliding, Size::Colliding);
ZU_STREAM_BENCH(BM_FileStreamSaveFile, small, Size::Small);
ZU_STREAM_BENCH(BM_FileStreamLoadFile, small, Size::Small);
ZU_STREAM_BENCH(BM_FileStreamSaveMemory, small, Size::Small);
ZU_STREAM_BENCH(BM_FileStreamLoadMemory, small, Size::Small);
ZU_STREAM_BENCH(BM_Memcpy, small_warm, Size::Small, false);
ZU_STREAM_BENCH(BM_Memcpy, small_fresh, Size::Small, true);
ZU_STREAM_BENCH(BM_Fread, small_warm, Size::Small, false);
ZU_STREAM_BENCH(BM_Fwrite, small, Size::Small);

// Large records: 4 records of 64 MB.
ZU_STREAM_BENCH(BM_BaseStreamSave, large, Size::Large);
ZU_STREAM_BENCH(BM_BaseStreamSaveClientBuffer, large, Size::Large);
ZU_STREAM_BENCH(BM_BaseStreamLoad, large, Size::Large);
ZU_STREAM_BENCH(BM_FileStreamSaveFile, large, Size::Large);
ZU_STREAM_BENCH(BM_FileStreamLoadFile, large, Size::Large);
ZU_STREAM_BENCH(BM_FileStreamSaveMemory, large, Size::Large);
ZU_STREAM_BENCH(BM_FileStreamLoadMemory, large, Size::Large);
ZU_STREAM_BENCH(BM_Memcpy, large_warm, Size::Large, false);
ZU_STREAM_BENCH(BM_Memcpy, large_fresh, Size::Large, true);
ZU_STREAM_BENCH(BM_Fread, large_warm, Size::Large, false);
ZU_STREAM_BENCH(BM_Fread, large_fresh, Size::Large, true);
ZU_STREAM_BENCH(BM_Fwrite, large, Size::Large);

} // namespace
