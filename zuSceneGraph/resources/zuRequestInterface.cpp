#include <zuSceneGraph/resources/zuRequestInterface.h>

namespace zu {

int zuRequestInterface::compare(zuRequestInterface* other) const
{
    if (!other)
        return 0;
    return static_cast<int>(mSchedulingPolicy) - static_cast<int>(other->mSchedulingPolicy);
}

void zuRequestInterface::onFinished(bool)
{
}

} // namespace zu
