#pragma once

#include <zuSceneGraph/io/zuCoreDriver.h>
#include <zuSceneGraph/objects/zuRtti.h>
#include <zuSceneGraph/resources/zuImage.h>

namespace zu {

// The kind of driver that converts images between pixel formats in memory; the
// application supplies them. Asked by format: canSave with the format to compress to,
// canLoad with the current format of an image to decompress.
class zuCoreImageCompressorDriver : public zuCoreDriver<zuImage::FormatMode, zuImage::FormatMode> {
public:
    static constexpr zuRtti TYPE{"zuCore.zuCoreImageCompressorDriver", nullptr};

    virtual bool compressImage(zuImage& image, zuImage::FormatMode format) = 0;
    virtual bool decompressImage(zuImage& image) = 0;
};

} // namespace zu
