#pragma once

#include <zuSceneGraph/objects/zuObject.h>

#include <memory>
#include <string>
#include <vector>

namespace zu {

// The base of objects that keep a name and a list of controllers (scene objects, ...).
// The list owns its controllers; a slot may be null.
class zuNamedObject : public zuObject {
public:
    ~zuNamedObject() override;

    int GetControllerQuantity() const override { return mRare ? static_cast<int>(mRare->controllers.size()) : 0; }
    zuController* GetController(int i) const override;
    void SetControllerQuantity(int quantity) override;
    void SetController(int i, zuController* controller) override;
    // Appends the controller unless it is null or attached already.
    bool AttachController(zuController* controller) override;
    void DetachController(zuController* controller) override;
    void DetachAllControllers() override;
    void SetName(const std::string& name) override;
    const std::string& GetName() const override { return mRare ? mRare->name : zuEmptyName(); }

protected:
    zuNamedObject() = default;
    // Copies the name; controllers are not shared between copies.
    zuNamedObject(const zuNamedObject& other);
    zuNamedObject& operator=(const zuNamedObject& other);

    // Objects a derived class attaches beside the name and the controllers (a spatial
    // object's metadata), in its order. The writable form makes the record.
    std::vector<zuPointer<zuObject>>& attachedObjects() { return rare().attached; }
    const std::vector<zuPointer<zuObject>>& attachedObjects() const { return mRare ? mRare->attached : msNoObjects; }
    // Drops every attached object.
    void clearAttachedObjects();
    // Replaces the attached objects; an empty list drops them all.
    void setAttachedObjects(const std::vector<zuPointer<zuObject>>& objects);
    // Removes the attached object at `i` (an index into attachedObjects()).
    void eraseAttachedObject(size_t i);

private:
    // What most objects of a large scene never carry, made on first use and dropped when
    // empty again: each object then holds one pointer instead of a string and two lists.
    // Controllers are held as objects so that this layer needs only their declaration.
    struct Rare {
        std::string name;
        std::vector<zuPointer<zuObject>> controllers;
        std::vector<zuPointer<zuObject>> attached;
    };
    Rare& rare();
    void dropRareWhenEmpty();

    std::unique_ptr<Rare> mRare;
    static const std::vector<zuPointer<zuObject>> msNoObjects;
};

} // namespace zu
