#include <zuSceneGraph/scenegraph/zuDescriptionInterface.h>

namespace zu {

zuDescriptionInterface::~zuDescriptionInterface() = default;

void zuDescriptionInterface::updateObjectDescription()
{
}

} // namespace zu
