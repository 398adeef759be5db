#include <zuSceneGraph/objects/zuNamedObject.h>

#include <zuSceneGraph/objects/zuController.h>

#include <algorithm>

namespace zu {

zuNamedObject::~zuNamedObject()
{
    // Controllers point back to this object: tell them it is gone.
    DetachAllControllers();
}

zuNamedObject::zuNamedObject(const zuNamedObject& other) : zuObject(other)
{
    SetName(other.GetName());
}

zuNamedObject& zuNamedObject::operator=(const zuNamedObject& other)
{
    SetName(other.GetName());
    return *this;
}

void zuNamedObject::SetName(const std::string& name)
{
    if (name.empty())
        mName.reset();
    else if (mName)
        *mName = name;
    else
        mName = std::make_unique<std::string>(name);
}

zuController* zuNamedObject::GetController(int i) const
{
    if (i < 0 || i >= GetControllerQuantity())
        return nullptr;
    return static_cast<zuController*>(mControllers[static_cast<size_t>(i)].get());
}

void zuNamedObject::SetControllerQuantity(int quantity)
{
    const size_t size = static_cast<size_t>(std::max(quantity, 0));
    // Controllers dropped from the list may live on elsewhere: they no longer control this.
    for (size_t i = size; i < mControllers.size(); ++i)
        if (mControllers[i])
            static_cast<zuController*>(mControllers[i].get())->SetObject(nullptr);
    mControllers.resize(size);
}

void zuNamedObject::SetController(int i, zuController* controller)
{
    if (i < 0 || i >= GetControllerQuantity())
        return;
    zuPointer<zuObject>& slot = mControllers[static_cast<size_t>(i)];
    // The replaced controller may outlive this object: it must not keep pointing at it.
    if (slot && slot.get() != controller)
        static_cast<zuController*>(slot.get())->SetObject(nullptr);
    if (controller)
        controller->SetObject(this);
    slot = controller;
}

bool zuNamedObject::AttachController(zuController* controller)
{
    if (!controller)
        return false;
    for (const auto& attached : mControllers)
        if (attached.get() == controller)
            return false;
    controller->SetObject(this);
    mControllers.insert(mControllers.end(), controller);
    return true;
}

void zuNamedObject::DetachController(zuController* controller)
{
    const auto* found = std::find_if(mControllers.begin(), mControllers.end(),
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
