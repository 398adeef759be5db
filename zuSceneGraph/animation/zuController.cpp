#include <zuSceneGraph/animation/zuController.h>

namespace zu {

const zuRtti zuController::TYPE("zuCore.zuController", &zuObject::TYPE);

bool zuController::Update(double)
{
    return false;
}

} // namespace zu
