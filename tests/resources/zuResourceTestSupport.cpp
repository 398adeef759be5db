#include "resources/zuResourceTestSupport.h"

#include <zuSceneGraph/zuSceneGraph.h>


#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace zu::test {

zuTempDir::zuTempDir()
{
    static std::atomic<int> counter{0};
    const std::filesystem::path path = std::filesystem::temp_directory_path()
        / ("zuResourceTest_" + std::to_string(getpid()) + "_" + std::to_string(counter++));
    std::filesystem::create_directories(path);
    mPath = path.string();
}

zuTempDir::~zuTempDir()
{
    std::error_code error;
    std::filesystem::remove_all(mPath, error);
}

bool saveResources(const std::string& path, const std::vector<zuRttiInterface*>& objects, int blockSize)
{
    zuFileStream stream(blockSize);
    stream.SetVersion(zuStreamVersion(6, 32));
    for (zuRttiInterface* object : objects)
        stream.InsertTopLevel(object);
    zuFileIoDevice device(path, zuFileIoDevice::WriteOnly);
    const bool saved = stream.Save(device, path, false);
    device.close();
    return saved && !device.isError();
}

std::vector<char> readFileBytes(const std::string& path, uint64_t offset, uint64_t size)
{
    std::ifstream file(path, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(offset));
    std::vector<char> bytes(static_cast<size_t>(size));
    file.read(bytes.data(), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<size_t>(file.gcount()));
    return bytes;
}

void writeFileBytes(const std::string& path, const std::vector<char>& bytes)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

zuBytes ints(std::initializer_list<int32_t> values)
{
    zuBytes bytes;
    for (int32_t value : values)
        bytes.i32(value);
    return bytes;
}

std::vector<char> recordStream(const std::string& type, const zuBytes& fields, uint64_t identity,
                               zuStreamVersion version, const std::string& name)
{
    zuBytes bytes;
    bytes.str("Top Level").str(type);
    if (version >= zuStreamVersion(6, 0))
        bytes.i32(static_cast<int>(4 + type.size() + 4 + 8 + 4 + name.size() + 4 + fields.size()));
    bytes.u64(identity).str(name).i32(0);
    bytes.raw(fields.bytes().data(), fields.size());
    return bytes.bytes();
}

bool finalizeUntilIdle(zuResourceController& controller, zuEngineInterface* engine, int maxRequests,
                       double maxMilliseconds)
{
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!controller.isIdle()) {
        if (std::chrono::steady_clock::now() > limit)
            return false;
        controller.waitForFinishedRequests(100);
        controller.finalizeRequests(engine, maxRequests, maxMilliseconds);
    }
    return true;
}

void ResourceLibrary::SetUp()
{
    initializeZuSceneGraph();
    zuTestBlockResource::RegisterFactory();
    zuTestBlockResource::RegisterRequests();
    zuDynamicLoadingResource::ClearLoadingPolicies();
}

void ResourceLibrary::TearDown()
{
    zuDynamicLoadingResource::ClearLoadingPolicies();
    zuTestBlockResource::UnRegisterFactory();
    terminateZuSceneGraph();
}

} // namespace zu::test
