#include <zuSceneGraph/resources/zuImageHandler.h>

#include <zuSceneGraph/resources/zuImage.h>

namespace zu {

void zuImageHandler::setImageHandler(const zuImage* image)
{
    setBlockHandler(image);
}

} // namespace zu
