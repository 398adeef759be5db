#pragma once

#include <zuSceneGraph/io/zuCoreImageCompressorDriver.h>
#include <zuSceneGraph/io/zuDriverList.h>

namespace zu {

// Converts images between pixel formats through the compressor drivers the application
// registers: compressImage asks canSave with the target format, decompressImage canLoad
// with the image's current one. False when no driver accepts.
class zuImageCompressorManager : public zuDriverList<zuCoreImageCompressorDriver> {
public:
    bool compressImage(zuImage& image, zuImage::FormatMode format) const;
    bool decompressImage(zuImage& image) const;
};

} // namespace zu
