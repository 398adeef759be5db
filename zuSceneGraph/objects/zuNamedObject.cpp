#include <zuSceneGraph/objects/zuNamedObject.h>

#include <zuSceneGraph/objects/zuController.h>

#include <algorithm>
#include <cstddef>

namespace zu {

const std::vector<zuPointer<zuObject>> zuNamedObject::msNoObjects;

zuNamedObject::~zuNamedObject()
{
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

zuNamedObject::Rare& zuNamedObject::rare()
{
    if (!mRare)
        mRare = std::make_unique<Rare>();
    return *mRare;
}

void zuNamedObject::dropRareWhenEmpty()
{
    if (mRare && mRare->name.empty() && mRare->controllers.empty() && mRare->attached.empty())
        mRare.reset();
}

void zuNamedObject::SetName(const std::string& name)
{
    if (name.empty() && !mRare)
        return;
    rare().name = name;
    dropRareWhenEmpty();
}

void zuNamedObject::clearAttachedObjects()
{
    if (!mRare)
        return;
    // Moved out first: releasing an object may reach back into this one.
    const std::vector<zuPointer<zuObject>> dropped = std::move(mRare->attached);
    mRare->attached.clear();
    dropRareWhenEmpty();
}

void zuNamedObject::setAttachedObjects(const std::vector<zuPointer<zuObject>>& objects)
{
    if (objects.empty())
        clearAttachedObjects();
    else
        rare().attached = objects;
}

void zuNamedObject::eraseAttachedObject(size_t i)
{
    // Moved out first, as above.
    const zuPointer<zuObject> dropped = std::move(mRare->attached[i]);
    mRare->attached.erase(mRare->attached.begin() + static_cast<std::ptrdiff_t>(i));
    dropRareWhenEmpty();
}

zuController* zuNamedObject::GetController(int i) const
{
    if (i < 0 || i >= GetControllerQuantity())
        return nullptr;
    return static_cast<zuController*>(mRare->controllers[static_cast<size_t>(i)].get());
}

void zuNamedObject::SetControllerQuantity(int quantity)
{
    const size_t size = static_cast<size_t>(std::max(quantity, 0));
    if (size == 0 && !mRare)
        return;
    std::vector<zuPointer<zuObject>>& controllers = rare().controllers;
    for (size_t i = size; i < controllers.size(); ++i)
        if (controllers[i])
            static_cast<zuController*>(controllers[i].get())->SetObject(nullptr);
    controllers.resize(size);
    dropRareWhenEmpty();
}

void zuNamedObject::SetController(int i, zuController* controller)
{
    if (i < 0 || i >= GetControllerQuantity())
        return;
    zuPointer<zuObject>& slot = mRare->controllers[static_cast<size_t>(i)];
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
    if (mRare)
        for (const auto& attached : mRare->controllers)
            if (attached.get() == controller)
                return false;
    controller->SetObject(this);
    rare().controllers.emplace_back(controller);
    return true;
}

void zuNamedObject::DetachController(zuController* controller)
{
    if (!mRare)
        return;
    std::vector<zuPointer<zuObject>>& controllers = mRare->controllers;
    const auto found = std::find_if(controllers.begin(), controllers.end(),
                                    [controller](const auto& attached) { return attached.get() == controller; });
    if (found == controllers.end())
        return;
    controller->SetObject(nullptr);
    controllers.erase(found);
    dropRareWhenEmpty();
}

void zuNamedObject::DetachAllControllers()
{
    if (!mRare)
        return;
    for (const auto& controller : mRare->controllers)
        if (controller)
            static_cast<zuController*>(controller.get())->SetObject(nullptr);
    mRare->controllers.clear();
    dropRareWhenEmpty();
}

} // namespace zu
