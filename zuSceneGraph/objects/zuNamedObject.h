#pragma once

#include <zuSceneGraph/objects/zuLazyVector.h>
#include <zuSceneGraph/objects/zuObject.h>

#include <memory>
#include <string>

namespace zu {

// The base of objects that keep a name and a list of controllers (scene objects, ...).
// The list owns its controllers; a slot may be null.
class zuNamedObject : public zuObject {
public:
    ~zuNamedObject() override;

    int GetControllerQuantity() const override { return static_cast<int>(mControllers.size()); }
    zuController* GetController(int i) const override;
    void SetControllerQuantity(int quantity) override;
    void SetController(int i, zuController* controller) override;
    // Appends the controller unless it is null or attached already.
    bool AttachController(zuController* controller) override;
    void DetachController(zuController* controller) override;
    void DetachAllControllers() override;
    void SetName(const std::string& name) override;
    const std::string& GetName() const override { return mName ? *mName : zuEmptyName(); }

protected:
    zuNamedObject() = default;
    // Copies the name; controllers are not shared between copies.
    zuNamedObject(const zuNamedObject& other);
    zuNamedObject& operator=(const zuNamedObject& other);

private:
    // Made when a name is set: most objects of a large scene carry none, and a string
    // member would cost each of them 32 bytes.
    std::unique_ptr<std::string> mName;
    // Held as objects so that this layer needs only the controller's declaration. Created on
    // the first attachment: most scene objects never carry a controller.
    zuLazyVector<zuPointer<zuObject>> mControllers;
};

} // namespace zu
