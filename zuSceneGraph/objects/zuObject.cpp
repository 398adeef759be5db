#include <zuSceneGraph/objects/zuObject.h>

#include <zuSceneGraph/objects/zuController.h>
#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <zuSystem/zuMutex.h>

#include <cstdio>
#include <mutex>

namespace zu {

const zuRtti zuObject::TYPE("zuCore.zuObject", &zuRttiInterface::TYPE);

unsigned int zuObject::ms_uiNextID = 0;

namespace {

zuMutex* libraryMutexHandle = nullptr;

bool noOpLock() { return true; }
void noOpUnlock() {}
bool mutexLock()
{
    if (libraryMutexHandle)
        libraryMutexHandle->lock();
    return true;
}
void mutexUnlock()
{
    if (libraryMutexHandle)
        libraryMutexHandle->unlock();
}
bool refusingLock() { return false; }

} // namespace

zuObject::LockFunction zuObject::mLockFunction = noOpLock;
zuObject::UnlockFunction zuObject::mUnlockFunction = noOpUnlock;

const std::string& zuEmptyName()
{
    static const std::string empty;
    return empty;
}

zuObject::zuObject() : mReferences(0)
{
    const bool locked = mLockFunction();
    mID = ms_uiNextID++;
    if (locked)
        mUnlockFunction();
}

zuObject::zuObject(const zuObject&) : zuObject()
{
}

void zuObject::DecrementReferences() const
{
    if (mReferences-- == 1)
        delete this;
}

void zuObject::setDefaultLockFunctions()
{
    mLockFunction = noOpLock;
    mUnlockFunction = noOpUnlock;
}

void zuObject::setMutexLockFunctions()
{
    mLockFunction = mutexLock;
    mUnlockFunction = mutexUnlock;
}

void zuObject::setNoLockFunctions()
{
    mLockFunction = refusingLock;
    mUnlockFunction = noOpUnlock;
}

void zuObject::createLibraryMutex()
{
    if (!libraryMutexHandle)
        libraryMutexHandle = new zuMutex;
}

void zuObject::destroyLibraryMutex()
{
    delete libraryMutexHandle;
    libraryMutexHandle = nullptr;
}

zuMutex* zuObject::libraryMutex()
{
    return libraryMutexHandle;
}

zuPointer<zuObject> zuObject::Copy(bool) const
{
    return zuPointer<zuObject>();
}

bool zuObject::UpdateControllers(double time)
{
    bool changed = false;
    const int quantity = GetControllerQuantity();
    for (int i = 0; i < quantity; ++i)
        if (zuController* controller = GetController(i))
            changed = controller->Update(time) || changed;
    return changed;
}

// ---------------------------------------------------------------------------------------
// Look-ups: this object first, then its controllers in slot order.

zuObject* zuObject::GetObjectByName(const std::string& name)
{
    if (GetName() == name)
        return this;
    const int quantity = GetControllerQuantity();
    for (int i = 0; i < quantity; ++i)
        if (zuController* controller = GetController(i))
            if (zuObject* found = controller->GetObjectByName(name))
                return found;
    return nullptr;
}

void zuObject::GetAllObjectsByName(const std::string& name, std::vector<zuObject*>& objects)
{
    if (GetName() == name)
        objects.push_back(this);
    const int quantity = GetControllerQuantity();
    for (int i = 0; i < quantity; ++i)
        if (zuController* controller = GetController(i))
            controller->GetAllObjectsByName(name, objects);
}

zuObject* zuObject::GetObjectByID(unsigned int id)
{
    if (mID == id)
        return this;
    const int quantity = GetControllerQuantity();
    for (int i = 0; i < quantity; ++i)
        if (zuController* controller = GetController(i))
            if (zuObject* found = controller->GetObjectByID(id))
                return found;
    return nullptr;
}

void zuObject::debugObject(int type) const
{
    static std::mutex traceMutex;
    std::lock_guard<std::mutex> lock(traceMutex);
    if (std::FILE* file = std::fopen("D:/log.txt", "a")) {
        std::fprintf(file, "debug type %d %p\n", type, static_cast<const void*>(this));
        std::fclose(file);
    }
}

// ---------------------------------------------------------------------------------------
// Persistence: the name, the controller count, then one reference per controller slot.

bool zuObject::Register(zuBaseStream& stream) const
{
    // By identifier: the stream finds an object by it faster than by address.
    if (!stream.registerObject(this, mID))
        return false;
    const int quantity = GetControllerQuantity();
    for (int i = 0; i < quantity; ++i)
        if (const zuController* controller = GetController(i))
            controller->Register(stream);
    return true;
}

int zuObject::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuRttiInterface::GetDiskUsed(stream) + 4 + static_cast<int>(GetName().size()) + 4
        + 8 * GetControllerQuantity();
}

void zuObject::Save(zuBaseStream& stream) const
{
    zuRttiInterface::Save(stream);
    stream.Write(GetName());
    const int quantity = GetControllerQuantity();
    stream.Write(quantity);
    for (int i = 0; i < quantity; ++i)
        stream.Write(static_cast<const zuRttiInterface*>(GetController(i)));
}

void zuObject::Load(zuBaseStream& stream, zuLink* link)
{
    zuRttiInterface::Load(stream, link);
    std::string name;
    stream.Read(name);
    if (!name.empty())
        SetName(name);
    int quantity = 0;
    stream.Read(quantity);
    if (!stream.CheckCount(quantity, 8))
        return;
    SetControllerQuantity(quantity);
    if (GetControllerQuantity() != quantity) {
        // Objects that carry no controllers always save a count of 0.
        stream.setCorrupt("controllers on an object that carries none");
        return;
    }
    for (int i = 0; i < quantity; ++i)
        stream.ReadLink(link);
}

void zuObject::Link(zuBaseStream& stream, zuLink* link)
{
    zuRttiInterface::Link(stream, link);
    const int quantity = GetControllerQuantity();
    for (int i = 0; i < quantity; ++i) {
        zuRttiInterface* object = stream.getFromMapAndRemove(link->getLinkID());
        // A reference to an object of another kind is dropped, never cast.
        SetController(i, object && object->IsDerived(zuController::TYPE) ? static_cast<zuController*>(object) : nullptr);
    }
}

bool zuObject::Equals(const zuRttiInterface* other) const
{
    if (!other || !other->IsDerived(zuObject::TYPE) || !zuRttiInterface::Equals(other))
        return false;
    const zuObject* object = static_cast<const zuObject*>(other);
    return GetName() == object->GetName() && GetControllerQuantity() == object->GetControllerQuantity();
}

bool zuObject::Clone(zuRttiInterface*& target) const
{
    if (!target || !target->IsDerived(zuObject::TYPE) || !zuRttiInterface::Clone(target))
        return false;
    static_cast<zuObject*>(target)->SetName(GetName());
    return true;
}

void zuObject::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    const auto& self = static_cast<const zuObject&>(object);
    visitor.BeginGroup(nullptr);
    visitor.Text("name", self.GetName());
    visitor.References("controllers", self.GetControllerQuantity(),
                       [&](int64_t i) { return self.GetController(static_cast<int>(i)); });
    visitor.EndGroup();
}

} // namespace zu
