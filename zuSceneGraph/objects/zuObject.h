#pragma once

#include <zuSceneGraph/objects/zuObjectPool.h>
#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/objects/zuRttiInterface.h>

#include <cstdint>
#include <string>
#include <vector>

namespace zu {

class zuController;
class zuMutex;

// The base of every shared or persistable object: identity, reference count, and the
// name and controllers that concrete classes keep.
class zuObject : public zuRttiInterface {
public:
    static const zuRtti TYPE;
    // The name and the controllers.
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    using LockFunction = bool (*)();
    using UnlockFunction = void (*)();

    ~zuObject() override = default;

    // Objects come from the object pool: the objects of a scene lie compactly in memory, and
    // the many small ones (spatial objects, buffers) cost no allocation header.
    static void* operator new(size_t size) { return zuObjectPool::allocate(size); }
    static void operator delete(void* object, size_t size) { zuObjectPool::release(object, size); }

    const zuRtti& GetType() const override { return TYPE; }
    void IncrementReferences() const override { ++mReferences; }
    void DecrementReferences() const override;
    int GetReferences() const override { return static_cast<int>(mReferences); }
    void Load(zuBaseStream& stream, zuLink* link) override;
    void Link(zuBaseStream& stream, zuLink* link) override;
    bool Register(zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    int GetDiskUsed(const zuBaseStream& stream) const override;
    bool Equals(const zuRttiInterface* other) const override;
    bool Clone(zuRttiInterface*& target) const override;

    // Look-ups through this object and what it holds (its controllers; a node its subtree,
    // a leaf its buffers), this object first: the first object named `name`, every such
    // object appended to `objects`, the object whose GetID() is `id`. Null when none.
    virtual zuObject* GetObjectByName(const std::string& name);
    virtual void GetAllObjectsByName(const std::string& name, std::vector<zuObject*>& objects);
    virtual zuObject* GetObjectByID(unsigned int id);
    // The controllers this object owns, in slots 0 to quantity - 1 (a slot may be null).
    // GetController(i) is null outside them; SetControllerQuantity(quantity) grows the list
    // with empty slots or drops the last ones; SetController(i, controller) fills a slot;
    // AttachController appends (false when null or attached already) and DetachController
    // removes. A controller that joins is given this object (zuController::SetObject), one
    // that leaves is given null. Classes without controllers do nothing here.
    virtual int GetControllerQuantity() const = 0;
    virtual zuController* GetController(int i) const = 0;
    virtual void SetControllerQuantity(int quantity) = 0;
    virtual void SetController(int i, zuController* controller) = 0;
    virtual bool AttachController(zuController* controller) = 0;
    virtual void DetachController(zuController* controller) = 0;
    virtual void DetachAllControllers() = 0;
    virtual void SetName(const std::string& name) = 0;
    virtual const std::string& GetName() const = 0;
    // A developer's trace: appends "debug type N address" to D:/log.txt, N being `type`.
    virtual void debugObject(int type) const;

    unsigned int GetID() const { return mID; }
    void ClearReferences() { mReferences = 0; }
    // Copying is not supported at this level: the result is empty, whatever `unique` asks.
    zuPointer<zuObject> Copy(bool unique) const;
    // Updates every attached controller for `time`; true when any of them changed something.
    bool UpdateControllers(double time);

    static unsigned int GetNextID() { return ms_uiNextID; }
    // Identifier assignment policies: no-op lock (the default), the library mutex, none.
    static void setDefaultLockFunctions();
    static void setMutexLockFunctions();
    static void setNoLockFunctions();
    // The library mutex, created by the library start and deleted by its end.
    static void createLibraryMutex();
    static void destroyLibraryMutex();
    static zuMutex* libraryMutex();

protected:
    zuObject();
    // A copy is a new object: it takes a new identifier and starts unreferenced.
    zuObject(const zuObject& other);
    zuObject& operator=(const zuObject&) { return *this; }

private:
    unsigned int mID;
    mutable uint32_t mReferences;

    static unsigned int ms_uiNextID;
    static LockFunction mLockFunction;
    static UnlockFunction mUnlockFunction;
};

// A shared, empty name for classes that carry none.
const std::string& zuEmptyName();

} // namespace zu
