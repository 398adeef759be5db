#pragma once

#include <zuSceneGraph/resources/zuBlockResourceRequests.h>

#include <cstdint>
#include <string>
#include <vector>

namespace zu {

template <class Resource, class Handler> class zuBlockResourceHandlerOf;

} // namespace zu

// The virtual operations of a block resource kind (vertex buffer, index buffer, image): a
// class derived from zuBindable, zuDynamicLoadingResource and, through `Base`, zuObject,
// whose one block is its member `char* mData`.
//
// They are declared in the kind itself, in one order, so that its primary table holds them
// all after the destructor and the four zuBindable operations: first the zuObject
// operations, then those of zuDynamicLoadingResource (a class between
// zuDynamicLoadingResource and the kind would keep the resource operations in a table of
// its own). The zuObject operations that the kind does not change forward to `Base`.
//
// The kind defines Load, Save, GetDiskUsed, Equals, Clone and createHandler itself, and
// gives its two type numbers and its CPU size in bytes (an expression of its members).
// Its handler reaches `mData` through zuBlockResourceHandlerOf. It also defines checkSave,
// which the register pass of a save calls: it refuses the save (zuBaseStream::refuseSave)
// when the record cannot be written as it must, at least through zuBlockResourceSave::Check.
#define ZU_BLOCK_RESOURCE_OPERATIONS(Base, resourceType, handlerType, cpuSize)                        \
    const zuRtti& GetType() const override { return TYPE; }                                         \
    zuObject* GetObjectByName(const std::string& name) override { return Base::GetObjectByName(name); } \
    void GetAllObjectsByName(const std::string& name, std::vector<zuObject*>& objects) override      \
    {                                                                                               \
        Base::GetAllObjectsByName(name, objects);                                                   \
    }                                                                                               \
    zuObject* GetObjectByID(unsigned int id) override { return Base::GetObjectByID(id); }           \
    void Load(zuBaseStream& stream, zuLink* link) override;                                         \
    void Link(zuBaseStream& stream, zuLink* link) override { Base::Link(stream, link); }            \
    bool PostLink() override { return Base::PostLink(); }                                           \
    bool Register(zuBaseStream& stream) const override                                              \
    {                                                                                               \
        const bool first = Base::Register(stream);                                                  \
        if (first && stream.IsRegisteringForSave() && !stream.isStreamError())                      \
            checkSave(stream);                                                                      \
        return first;                                                                               \
    }                                                                                               \
    void checkSave(zuBaseStream& stream) const;                                                     \
    void Save(zuBaseStream& stream) const override;                                                 \
    int GetDiskUsed(const zuBaseStream& stream) const override;                                     \
    bool Equals(const zuRttiInterface* other) const override;                                       \
    bool Clone(zuRttiInterface*& target) const override;                                            \
    void SetName(const std::string& name) override { Base::SetName(name); }                         \
    const std::string& GetName() const override { return Base::GetName(); }                         \
    int GetControllerQuantity() const override { return Base::GetControllerQuantity(); }            \
    zuController* GetController(int i) const override { return Base::GetController(i); }            \
    void SetControllerQuantity(int quantity) override { Base::SetControllerQuantity(quantity); }    \
    void SetController(int i, zuController* controller) override { Base::SetController(i, controller); } \
    bool AttachController(zuController* controller) override { return Base::AttachController(controller); } \
    void DetachController(zuController* controller) override { Base::DetachController(controller); } \
    void DetachAllControllers() override { Base::DetachAllControllers(); }                          \
                                                                                                    \
    unsigned long getResourceID() const override { return GetID(); }                                \
    zuDynamicLoadingResourceHandler* createHandler() const override;                                \
    unsigned int getResourceType() const override { return resourceType; }                          \
    unsigned int getResourceHandlerType() const override { return handlerType; }                    \
    uint64_t getCPUSize() const override { return static_cast<uint64_t>(cpuSize); }                 \
    bool isCPUResident() const override { return mData != nullptr; }                                \
    /* Only the resource system still holds the resource. */                                      \
    bool isCPUFreeable() const override { return GetReferences() == 1; }                            \
    bool isGPUFreeable() const override { return GetReferences() == 1; }                            \
    const char* getTypeName() const override { return GetType().GetName(); }                        \
    uint64_t getGPUSize() const override { return getCPUSize(); }                                   \
    bool isGPUResident() const override { return getIdentifier() != nullptr; }                      \
                                                                                                    \
    template <class, class> friend class ::zu::zuBlockResourceHandlerOf
