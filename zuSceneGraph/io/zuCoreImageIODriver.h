#pragma once

#include <zuSceneGraph/io/zuCoreDriver.h>
#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/objects/zuRtti.h>
#include <zuSceneGraph/resources/zuImage.h>

#include <string>
#include <utility>

namespace zu {

class zuIoDevice;

// The kind of driver that reads and writes image files; the application supplies them.
// Keys as for mesh drivers: (device, extension) to load, the extension to save.
class zuCoreImageIODriver : public zuCoreDriver<std::pair<zuIoDevice*, std::string>, std::string> {
public:
    static constexpr zuRtti TYPE{"zuCore.zuCoreImageIODriver", nullptr};

    // `second` is the manager's caller's second string, passed through untouched; `format`
    // the pixel format the caller asks for.
    virtual bool loadImage(zuPointer<zuImage>& out, const std::string& fileName, const std::string& second,
                           zuImage::FormatMode format) = 0;
    virtual bool saveImage(const zuImage& image, const std::string& fileName) = 0;
};

} // namespace zu
