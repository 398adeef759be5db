// A lazy load: the input is a stream file on disk, loaded with the blocks of buffers and
// images left in it, then every block the scene holds is read back from the same damaged
// bytes through the synchronous renderer interface, and the scene is updated and culled.

#include "zuFuzzSupport.h"

#include <zuSceneGraph/objects/zuCatalog.h>
#include <zuSceneGraph/resources/zuImage.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSystem/zuFileIoDevice.h>

using namespace zu;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const fuzz::Input input(size);
    for (const zuRtti* type : {&zuVertexBuffer::TYPE, &zuIndexBuffer::TYPE, &zuImage::TYPE})
        zuDynamicLoadingResource::SetLoadPolicy(*type, false);
    const std::string path = fuzz::writeFile("input.mvk", data, size);
    zuCatalog<zuImage> images;
    fuzz::Objects objects;
    {
        zuFileIoDevice device(path, zuFileIoDevice::ReadOnly);
        zuFileStream stream(1 << 16, &images, nullptr);
        if (!stream.Load(device, path))
            return 0;
        for (int i = 0; i < stream.GetObjectCount(); ++i)
            objects.emplace_back(dynamic_cast<zuObject*>(stream.GetObjectAt(i)));
    }
    fuzz::readBlocksBack(objects);
    fuzz::updateAndCull(objects);
    return 0;
}
