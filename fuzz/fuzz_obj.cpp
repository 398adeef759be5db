// The OBJ reader with a material library beside the file: the input up to its first NUL is
// "input.obj", the rest "input.mtl" (which the OBJ names with "mtllib input.mtl"). The file
// is read in small chunks by two threads, so that chunk boundaries and the merge are
// exercised too; what loads is updated and culled.

#include "zuFuzzSupport.h"

#include <zuSceneGraph/io/zuObjReader.h>
#include <zuSceneGraph/resources/zuImage.h>
#include <zuSceneGraph/scenegraph/zuNode.h>

#include <algorithm>

using namespace zu;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const fuzz::Input input(size);
    const uint8_t* nul = std::find(data, data + size, 0);
    fuzz::writeFile("input.mtl", nul + (nul != data + size), static_cast<size_t>(data + size - nul) - (nul != data + size));
    const std::string path = fuzz::writeFile("input.obj", data, static_cast<size_t>(nul - data));
    zuCatalog<zuImage> images;
    zuObjReader reader(images);
    reader.SetThreadCount(2);
    reader.SetChunkSize(4096);
    zuPointer<zuNode> root = reader.ReadFile(path, nullptr);
    fuzz::updateAndCull({root.get()});
    return 0;
}
