#include "zuFuzzSupport.h"

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/scenegraph/zuBaseLODPolicy.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuRenderableSpatial.h>
#include <zuSceneGraph/states/zuCamera.h>
#include <zuSceneGraph/zuSceneGraph.h>

#include <zuSystem/zuLog.h>

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <streambuf>

namespace zu::fuzz {

namespace {

// Made once, never destroyed: the exit handler that removes it runs after the destructors
// of static objects. In memory when the system has such a folder: a disk file rewritten in
// place is flushed on every close, which would be most of a run.
const std::filesystem::path& folder()
{
    static const std::filesystem::path* path = [] {
        std::error_code error;
        const std::filesystem::path base = std::filesystem::is_directory("/dev/shm", error)
            ? std::filesystem::path("/dev/shm") : std::filesystem::temp_directory_path();
        auto* made = new std::filesystem::path(base / ("zufuzz-" + std::to_string(::getpid())));
        std::filesystem::create_directories(*made);
        std::atexit([] {
            std::error_code ignored;
            std::filesystem::remove_all(folder(), ignored);
        });
        return made;
    }();
    return *path;
}

// The spatial objects of the trees below `objects`, parents before children.
std::vector<zuSpatial*> spatialsBelow(const Objects& objects)
{
    std::vector<zuSpatial*> found;
    for (const auto& object : objects)
        if (object && object->IsDerived(zuSpatial::TYPE))
            found.push_back(static_cast<zuSpatial*>(object.get()));
    for (size_t i = 0; i < found.size(); ++i)
        if (found[i]->IsDerived(zuNode::TYPE)) {
            const auto* node = static_cast<const zuNode*>(found[i]);
            for (int k = 0; k < node->getNbChildren(); ++k)
                if (zuSpatial* child = node->getChild(k))
                    found.push_back(child);
        }
    return found;
}

// The heap's bytes and their peak, kept by the sanitizers' allocation hooks (absent from
// a build without sanitizers, where nothing is counted).
// Signed: blocks made before the hooks were installed are freed under them too.
std::atomic<int64_t> heapBytes{0};
std::atomic<int64_t> heapPeak{0};

void onMalloc(const volatile void*, size_t size)
{
    const int64_t now = heapBytes.fetch_add(static_cast<int64_t>(size), std::memory_order_relaxed)
        + static_cast<int64_t>(size);
    int64_t peak = heapPeak.load(std::memory_order_relaxed);
    while (now > peak && !heapPeak.compare_exchange_weak(peak, now, std::memory_order_relaxed)) {
    }
}

} // namespace

extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*, size_t),
                                                         void (*)(const volatile void*)) __attribute__((weak));
extern "C" size_t __sanitizer_get_allocated_size(const volatile void*) __attribute__((weak));

namespace {

void onFree(const volatile void* pointer)
{
    heapBytes.fetch_sub(static_cast<int64_t>(__sanitizer_get_allocated_size(pointer)), std::memory_order_relaxed);
}

} // namespace

Input::Input(size_t size) : mSize(size)
{
    static const bool started = [] {
        // Discards what it is given (a string stream would keep every message of the run).
        static struct : std::streambuf {
            int overflow(int c) override { return c == EOF ? 0 : c; }
        } nowhere;
        std::cout.rdbuf(&nowhere);
        std::cerr.rdbuf(&nowhere);
        zuLog::instance().setSink([](const std::string&, const std::string&) {});
        initializeZuSceneGraph();
        if (__sanitizer_install_malloc_and_free_hooks && __sanitizer_get_allocated_size)
            __sanitizer_install_malloc_and_free_hooks(onMalloc, onFree);
        return true;
    }();
    (void)started;
    mHeld = heapBytes.load();
    heapPeak.store(mHeld);
}

Input::~Input()
{
    const int64_t growth = heapPeak.load() - mHeld;
    if (growth > static_cast<int64_t>(MEMORY_ALLOWED + MEMORY_PER_BYTE * mSize)) {
        std::fprintf(stderr, "fuzz finding: an input of %zu bytes made the heap grow by %lld bytes\n", mSize,
                     static_cast<long long>(growth));
        std::abort();
    }
}

std::string writeFile(const std::string& name, const uint8_t* data, size_t size)
{
    const std::string path = (folder() / name).string();
    std::ofstream(path, std::ios::binary | std::ios::trunc).write(reinterpret_cast<const char*>(data),
                                                                  static_cast<std::streamsize>(size));
    return path;
}

void updateAndCull(const Objects& objects)
{
    zuPointer<zuCamera> camera = new zuCamera;
    zuCuller culler;
    culler.SetCamera(camera);
    for (const auto& object : objects) {
        if (!object || !object->IsDerived(zuSpatial::TYPE))
            continue;
        auto* spatial = static_cast<zuSpatial*>(object.get());
        if (spatial->GetParent())
            continue;
        spatial->UpdateGS();
        spatial->UpdateGS_Flags();
        culler.ComputeVisibleSet(spatial, nullptr, false);
        culler.ComputeVisibleSet(spatial, zuLODNode::GetBasePolicy(), true);
    }
    // Copying and comparing walk whole trees too (no check of the result: a NaN read from
    // the file makes a copy unequal).
    for (const auto& object : objects) {
        zuRttiInterface* copy = nullptr;
        if (object && object->Clone(copy)) {
            const zuPointer<zuRttiInterface> held(copy);
            (void)object->Equals(copy);
        }
    }
}

void readBlocksBack(const Objects& objects)
{
    std::vector<zuDynamicLoadingResource*> resources;
    for (const auto& object : objects)
        if (auto* resource = dynamic_cast<zuDynamicLoadingResource*>(object.get()))
            resources.push_back(resource);
    std::vector<zuDynamicLoadingResource*> held;
    for (zuSpatial* spatial : spatialsBelow(objects))
        if (spatial->IsDerived(zuRenderableSpatial::TYPE)) {
            static_cast<const zuRenderableSpatial*>(spatial)->getResources(held);
            resources.insert(resources.end(), held.begin(), held.end());
        }
    // In bulk (neighbouring blocks read together), then one by one: both must agree.
    std::erase(resources, nullptr);
    const size_t loaded = zuRendererInterface::LoadCPUData(resources);
    for (zuDynamicLoadingResource* resource : resources)
        zuRendererInterface::DeleteCPUData(resource, false);
    size_t loadedAlone = 0;
    for (zuDynamicLoadingResource* resource : resources) {
        loadedAlone += zuRendererInterface::LoadCPUData(resource);
        zuRendererInterface::DeleteCPUData(resource, false);
    }
    if (loaded != loadedAlone)
        fail("blocks read in bulk and one by one disagree");
}

void fail(const char* what)
{
    std::fprintf(stderr, "fuzz finding: %s\n", what);
    std::abort();
}

} // namespace zu::fuzz
