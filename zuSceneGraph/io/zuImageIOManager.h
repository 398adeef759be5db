#pragma once

#include <zuSceneGraph/io/zuCoreImageIODriver.h>
#include <zuSceneGraph/io/zuDriverList.h>

#include <string>

namespace zu {

// Reads and writes image files through the image drivers the application registers, chosen
// by the file's extension with no options. False when no driver accepts the file.
class zuImageIOManager : public zuDriverList<zuCoreImageIODriver> {
public:
    bool loadImage(zuPointer<zuImage>& out, const std::string& fileName, const std::string& second,
                   zuImage::FormatMode format) const;
    bool saveImage(const zuImage& image, const std::string& fileName) const;
};

} // namespace zu
