#include <zuSceneGraph/objects/zuNamedObject.h>

#include <zuSceneGraph/animation/zuController.h>

#include <algorithm>

namespace zu {

zuNamedObject::~zuNamedObject()
{
    // Controllers point back to this object: tell them it is gone.
    DetachAllControllers();
}

zuNamedObject::zuNamedObject(const zuNamedObject& other) : zuObject(other), mName(other.mName)
{
}

zuNamedObject& zuNamedObject::operator=(const zuNamedObject& other)
{
    mName = other.mName;
    return *this;
}

zuController* zuNamedObject::GetController(int i) const
{
    if (i < 0 || i >= GetControllerQuantity())
        return nullptr;
    return static_cast<zuController*>(mControllers[static_cast<size_t>(i)].get());
}

void zuNamedObject::SetControllerQuantity(int quantity)
{
    mControllers.resize(static_cast<size_t>(std::max(quantity, 0)));
}

void zuNamedObject::SetController(int i, zuController* controller)
{
    if (i < 0 || i >= GetControllerQuantity())
        return;
    if (controller)
        controller->SetObject(this);
    mControllers[static_cast<size_t>(i)] = controller;
}

bool zuNamedObject::AttachController(zuController* controller)
{
    if (!controller)
        return false;
    for (const auto& attached : mControllers)
        if (attached.get() == controller)
            return false;
    controller->SetObject(this);
    mControllers.emplace_back(controller);
    return true;
}

void zuNamedObject::DetachController(zuController* controller)
{
    auto found = std::find_if(mControllers.begin(), mControllers.end(),
                              [controller](const auto& attached) { return attached.get() == controller; });
    if (found == mControllers.end())
        return;
    controller->SetObject(nullptr);
    mControllers.erase(found);
}

void zuNamedObject::DetachAllControllers()
{
    for (const auto& controller : mControllers)
        if (controller)
            static_cast<zuController*>(controller.get())->SetObject(nullptr);
    mControllers.clear();
}

} // namespace zu
