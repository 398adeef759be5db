#pragma once

#include <zuSceneGraph/resources/zuBlockResourceHandler.h>

namespace zu {

class zuImage;

// What a load request needs to read an image's pixel block back without touching the
// image: its CPU and GPU sizes, the offset of the block, the stream version and the file
// path. The block lies in the file exactly as in memory.
class zuImageHandler : public zuBlockResourceHandler {
public:
    zuImageHandler() = default;
    zuImageHandler(const zuImageHandler&) = default;
    zuImageHandler& operator=(const zuImageHandler&) = default;

    // Takes the snapshot of `image` (nothing for null).
    void setImageHandler(const zuImage* image);

    zuDynamicLoadingResourceHandler* clone() const override { return new zuImageHandler(*this); }
    // zuImage::msImageHandlerID.
    unsigned int getResourceHandlerType() const override;
    char* getCPUBlock(zuDynamicLoadingResource* resource) const override;
    void setCPUBlock(zuDynamicLoadingResource* resource, char* block) const override;
};

} // namespace zu
