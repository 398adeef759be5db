// The stream mesh driver: the first byte chooses the load options (five flags), the
// extension and whether the driver reads the file by name or through a device; the rest is
// the file. What loads is updated and culled, and the blocks left on disk are read back.

#include "zuFuzzSupport.h"

#include <zuSceneGraph/io/zuFileStreamMeshDriver.h>
#include <zuSceneGraph/io/zuMeshManager.h>
#include <zuSceneGraph/objects/zuCatalog.h>
#include <zuSceneGraph/resources/zuImage.h>

#include <zuSystem/zuFileIoDevice.h>

using namespace zu;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const fuzz::Input input(size);
    if (size == 0)
        return 0;
    const uint8_t choice = data[0];
    zuFileStreamMeshDriver::Options options;
    const char* const flags[] = {zuMeshManager::sOptionLoadGeometry, zuMeshManager::sOptionLoadMetadata,
                                 zuMeshManager::sOptionLoadHiddenObjects, zuMeshManager::sOptionLoadXRef,
                                 zuMeshManager::sOptionAddOriginalFileNameInMetadata};
    for (int bit = 0; bit < 5; ++bit)
        options[flags[bit]] = zuVariant((choice >> bit & 1) != 0);
    const char* const extensions[] = {"mvk", "tqb", "zus", "kv"};
    const std::string path = fuzz::writeFile(std::string("input.") + extensions[choice >> 5 & 3], data + 1, size - 1);
    zuFileStreamMeshDriver driver;
    zuFileStreamMeshDriver::ObjectList objects;
    zuCatalog<zuImage> images;
    if (choice & 0x80) {
        zuFileIoDevice device(path, zuFileIoDevice::ReadOnly);
        driver.loadMeshes(objects, device, nullptr, options, images);
    } else {
        driver.loadMeshes(objects, path, nullptr, options, images);
    }
    fuzz::readBlocksBack(objects);
    fuzz::updateAndCull(objects);
    return 0;
}
