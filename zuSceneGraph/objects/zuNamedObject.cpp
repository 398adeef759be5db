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

zuNamedObject::ControllerList& zuNamedObject::controllers()
{
    if (!mControllers)
        mControllers = std::make_unique<ControllerList>();
    return *mControllers;
}

zuController* zuNamedObject::GetController(int i) const
{
    if (i < 0 || i >= GetControllerQuantity())
        return nullptr;
    return static_cast<zuController*>((*mControllers)[static_cast<size_t>(i)].get());
}

void zuNamedObject::SetControllerQuantity(int quantity)
{
    const size_t size = static_cast<size_t>(std::max(quantity, 0));
    if (size == 0 && !mControllers)
        return;
    ControllerList& list = controllers();
    // Controllers dropped from the list may live on elsewhere: they no longer control this.
    for (size_t i = size; i < list.size(); ++i)
        if (list[i])
            static_cast<zuController*>(list[i].get())->SetObject(nullptr);
    list.resize(size);
}

void zuNamedObject::SetController(int i, zuController* controller)
{
    if (i < 0 || i >= GetControllerQuantity())
        return;
    zuPointer<zuObject>& slot = (*mControllers)[static_cast<size_t>(i)];
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
    for (const auto& attached : controllers())
        if (attached.get() == controller)
            return false;
    controller->SetObject(this);
    mControllers->emplace_back(controller);
    return true;
}

void zuNamedObject::DetachController(zuController* controller)
{
    if (!mControllers)
        return;
    auto found = std::find_if(mControllers->begin(), mControllers->end(),
                              [controller](const auto& attached) { return attached.get() == controller; });
    if (found == mControllers->end())
        return;
    controller->SetObject(nullptr);
    mControllers->erase(found);
}

void zuNamedObject::DetachAllControllers()
{
    if (!mControllers)
        return;
    for (const auto& controller : *mControllers)
        if (controller)
            static_cast<zuController*>(controller.get())->SetObject(nullptr);
    mControllers.reset();
}

} // namespace zu
