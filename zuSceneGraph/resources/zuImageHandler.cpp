#include <zuSceneGraph/resources/zuImageHandler.h>

#include <zuSceneGraph/resources/zuImage.h>

namespace zu {

void zuImageHandler::setImageHandler(const zuImage* image)
{
    setBlockHandler(image);
}

unsigned int zuImageHandler::getResourceHandlerType() const
{
    return zuImage::msImageHandlerID;
}

// The requests check the handler type before they call these, so the resource is an image.
char* zuImageHandler::getCPUBlock(zuDynamicLoadingResource* resource) const
{
    return static_cast<zuImage*>(resource)->mData;
}

void zuImageHandler::setCPUBlock(zuDynamicLoadingResource* resource, char* block) const
{
    static_cast<zuImage*>(resource)->mData = block;
}

} // namespace zu
