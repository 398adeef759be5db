#include <zuSceneGraph/io/zuImageCompressorManager.h>

namespace zu {

bool zuImageCompressorManager::compressImage(zuImage& image, zuImage::FormatMode format) const
{
    zuCoreImageCompressorDriver* driver = chooseSaver(format, noOptions());
    return driver && driver->compressImage(image, format);
}

bool zuImageCompressorManager::decompressImage(zuImage& image) const
{
    zuCoreImageCompressorDriver* driver = chooseLoader(image.GetFormat(), noOptions());
    return driver && driver->decompressImage(image);
}

} // namespace zu
