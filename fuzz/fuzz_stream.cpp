// The object stream: the input is a whole file, its header included, read from memory. A
// load must never crash, leak or hang; its result must not depend on the block size; the
// scene it hands out must survive the update pass and the culler; and what loaded must
// save again at the file's version, load back, and save again to the same size.

#include "zuFuzzSupport.h"

#include <zuSceneGraph/objects/zuCatalog.h>
#include <zuSceneGraph/resources/zuImage.h>
#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSystem/zuMemoryIoDevice.h>

using namespace zu;

namespace {

bool load(const std::vector<char>& bytes, int blockSize, zuCatalog<zuImage>& images, fuzz::Objects& objects,
          zuStreamVersion* version = nullptr)
{
    zuMemoryIoDevice device(bytes);
    zuFileStream stream(blockSize, &images, nullptr);
    const bool loaded = stream.Load(device, "input.mvk");
    for (int i = 0; i < stream.GetObjectCount(); ++i)
        objects.emplace_back(dynamic_cast<zuObject*>(stream.GetObjectAt(i)));
    if (version)
        *version = stream.GetVersion();
    return loaded;
}

bool save(const fuzz::Objects& objects, zuStreamVersion version, zuMemoryIoDevice& device)
{
    zuFileStream writer(1 << 16, nullptr, nullptr);
    writer.SetVersion(version);
    for (const auto& object : objects)
        writer.InsertTopLevel(object);
    return writer.Save(device, "copy.mvk", false);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const fuzz::Input input(size);
    const std::vector<char> bytes(data, data + size);
    zuCatalog<zuImage> images, smallBlockImages;
    fuzz::Objects objects, smallBlockObjects;
    zuStreamVersion version;
    const bool loaded = load(bytes, 1 << 16, images, objects, &version);
    if (load(bytes, 24, smallBlockImages, smallBlockObjects) != loaded || smallBlockObjects.size() != objects.size())
        fuzz::fail("the result of a load depends on the block size");
    if (!loaded)
        return 0;
    fuzz::updateAndCull(objects);

    if (version < zuStreamVersion(6, 0))
        return 0;  // older versions are read, never written
    // Saved at its version, it loads back, and saves again to as many bytes: every record
    // reads what it wrote.
    zuMemoryIoDevice saved;
    if (!save(objects, version, saved))
        return 0;
    fuzz::Objects reloaded;
    zuCatalog<zuImage> reloadedImages;
    if (!load(saved.data(), 1 << 16, reloadedImages, reloaded))
        fuzz::fail("a loaded scene saved at its version does not load back");
    zuMemoryIoDevice savedAgain;
    if (!save(reloaded, version, savedAgain) || savedAgain.data().size() != saved.data().size())
        fuzz::fail("a scene saved, loaded and saved again changed size");
    return 0;
}
