// The packed indices of 32-bit index buffers (6.32 on): the input is the packed data, a
// width byte, the first index and the deltas, cut to a whole number of deltas. It is read
// twice, by the stream as its record loads and by the load request from the file once the
// record was loaded with its indices left on disk: both readers must agree.

#include "zuFuzzSupport.h"

#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSystem/zuFileIoDevice.h>
#include <zuSystem/zuMemoryIoDevice.h>

#include <cstring>

using namespace zu;

namespace {

void put(std::vector<char>& out, const void* data, size_t size)
{
    out.insert(out.end(), static_cast<const char*>(data), static_cast<const char*>(data) + size);
}

void putInt(std::vector<char>& out, int32_t value)
{
    put(out, &value, 4);
}

// The index buffer of a file, loaded with its indices or with them left on disk and read
// back; null when it does not load.
zuPointer<zuIndexBuffer> load(zuIoDevice& device, const std::string& path, bool resident)
{
    zuDynamicLoadingResource::SetLoadPolicy(zuIndexBuffer::TYPE, resident);
    zuFileStream stream(1 << 16, nullptr, nullptr);
    if (!stream.Load(device, path) || stream.GetObjectCount() != 1)
        return nullptr;
    zuPointer<zuIndexBuffer> buffer = static_cast<zuIndexBuffer*>(stream.GetObjectAt(0));
    if (!resident)
        zuRendererInterface::LoadCPUData(buffer);
    return buffer;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const fuzz::Input input(size);
    if (size < 5)
        return 0;
    const int width = data[0] == 1 || data[0] == 2 ? data[0] : 4;
    const size_t deltas = std::min<size_t>((size - 5) / static_cast<size_t>(width), 1 << 20);
    const int count = static_cast<int>(deltas + 1);
    const size_t packed = 5 + deltas * static_cast<size_t>(width);
    const std::string type = "zuCore.zuIndexBuffer";
    std::vector<char> file(9 + 13);
    std::memcpy(file.data(), "MVK 6.32\0\x09\0\0\0Top Level", file.size());
    putInt(file, static_cast<int32_t>(type.size()));
    put(file, type.data(), type.size());
    putInt(file, static_cast<int32_t>(4 + type.size() + 4 + 8 + 8 + 8 + packed));
    const uint64_t identity = 1;
    put(file, &identity, 8);
    putInt(file, 0);  // no name
    putInt(file, 0);  // no controllers
    putInt(file, count);
    putInt(file, zuIndexBuffer::INDEX_32);
    put(file, data, packed);

    zuMemoryIoDevice memory(file);
    zuPointer<zuIndexBuffer> read = load(memory, "memory", true);
    const std::string path = fuzz::writeFile("input.mvk", reinterpret_cast<const uint8_t*>(file.data()), file.size());
    zuFileIoDevice disk(path, zuFileIoDevice::ReadOnly);
    zuPointer<zuIndexBuffer> readBack = load(disk, path, false);
    if (!read != !readBack)
        fuzz::fail("the stream and the load request disagree on whether the indices read");
    if (read && (!readBack->isCPUResident() || !read->Equals(readBack)))
        fuzz::fail("the stream and the load request read different indices");
    return 0;
}
