#include <zuSceneGraph/io/zuImageIOManager.h>

#include <zuSystem/zuDirUtils.h>

namespace zu {

bool zuImageIOManager::loadImage(zuPointer<zuImage>& out, const std::string& fileName, const std::string& second,
                                 zuImage::FormatMode format) const
{
    zuCoreImageIODriver* driver = chooseLoader({nullptr, zuDirUtils::ExtractFileExtension(fileName)}, noOptions());
    return driver && driver->loadImage(out, fileName, second, format);
}

bool zuImageIOManager::saveImage(const zuImage& image, const std::string& fileName) const
{
    zuCoreImageIODriver* driver = chooseSaver(zuDirUtils::ExtractFileExtension(fileName), noOptions());
    return driver && driver->saveImage(image, fileName);
}

} // namespace zu
