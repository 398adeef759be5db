#pragma once

#include <zuSceneGraph/resources/zuBlockResourceHandlerOf.h>
#include <zuSceneGraph/resources/zuImage.h>

namespace zu {

// What a load request needs to read an image's pixel block back without touching the
// image: its CPU and GPU sizes, the offset of the block, the stream version and the file
// path. The block lies in the file exactly as in memory.
class zuImageHandler : public zuBlockResourceHandlerOf<zuImage, zuImageHandler> {
public:
    zuImageHandler() = default;
    zuImageHandler(const zuImageHandler&) = default;
    zuImageHandler& operator=(const zuImageHandler&) = default;

    // Takes the snapshot of `image` (nothing for null).
    void setImageHandler(const zuImage* image);
};

} // namespace zu
