// The built-in text driver: the input is the file it reads line by line.

#include "zuFuzzSupport.h"

#include <zuSceneGraph/io/zuCoreTextDriver.h>

using namespace zu;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const fuzz::Input input(size);
    const std::string path = fuzz::writeFile("input.txt", data, size);
    std::string text;
    if (zuCoreTextDriver().readTextFile(text, path) && text.size() > 2 * size + 1)
        fuzz::fail("the text read is larger than the file allows");
    return 0;
}
