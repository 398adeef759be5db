// The order of the virtual operations is part of the library's binary interface: a renderer
// built against these headers calls them by slot. Each row asks where a member function
// pointer lands in the primary table of the class (Itanium C++ ABI: a virtual member
// pointer holds 1 + the byte offset of its slot, and a this-adjustment that is 0 only for
// the primary table; the destructor takes two slots).

#include <zuSceneGraph/objects/zuController.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuRequestInterfaceForDynamicResource.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>

namespace zu {
namespace {

template <class C, class F> struct MemberOf;
template <class C, class B, class R, class... A> struct MemberOf<C, R (B::*)(A...)> {
    using Type = R (C::*)(A...);
};
template <class C, class B, class R, class... A> struct MemberOf<C, R (B::*)(A...) const> {
    using Type = R (C::*)(A...) const;
};

// The slot of `member` in the primary table of C; -1 when it is not there.
template <class C, class F> long primarySlot(F member)
{
    const typename MemberOf<C, F>::Type asMember = member;
    struct {
        uintptr_t pointer;
        ptrdiff_t adjustment;
    } representation;
    static_assert(sizeof(representation) == sizeof(asMember));
    std::memcpy(&representation, &asMember, sizeof(representation));
    if ((representation.pointer & 1) == 0 || representation.adjustment != 0)
        return -1;
    return static_cast<long>((representation.pointer - 1) / sizeof(void*));
}

struct Row {
    const char* name;
    long slot;
    long expected;
};
#define ZU_SLOT(Class, member, expected) Row{#Class "::" #member, primarySlot<Class>(&Class::member), expected}

void expectSlots(std::initializer_list<Row> rows)
{
    for (const Row& row : rows)
        EXPECT_EQ(row.expected, row.slot) << row.name;
}

TEST(SlotOrder, PrimaryTablesKeepTheirOrder)
{
    expectSlots({
        ZU_SLOT(zuObject, GetType, 2), ZU_SLOT(zuObject, IncrementReferences, 3),
        ZU_SLOT(zuObject, DecrementReferences, 4), ZU_SLOT(zuObject, GetReferences, 5), ZU_SLOT(zuObject, Load, 6),
        ZU_SLOT(zuObject, Link, 7), ZU_SLOT(zuObject, PostLink, 8), ZU_SLOT(zuObject, Register, 9),
        ZU_SLOT(zuObject, Save, 10), ZU_SLOT(zuObject, GetDiskUsed, 11), ZU_SLOT(zuObject, Equals, 12),
        ZU_SLOT(zuObject, Clone, 13), ZU_SLOT(zuObject, GetObjectByName, 14),
        ZU_SLOT(zuObject, GetAllObjectsByName, 15), ZU_SLOT(zuObject, GetObjectByID, 16),
        ZU_SLOT(zuObject, GetControllerQuantity, 17), ZU_SLOT(zuObject, GetController, 18),
        ZU_SLOT(zuObject, SetControllerQuantity, 19), ZU_SLOT(zuObject, SetController, 20),
        ZU_SLOT(zuObject, AttachController, 21), ZU_SLOT(zuObject, DetachController, 22),
        ZU_SLOT(zuObject, DetachAllControllers, 23), ZU_SLOT(zuObject, SetName, 24), ZU_SLOT(zuObject, GetName, 25),
        ZU_SLOT(zuObject, debugObject, 26), ZU_SLOT(zuController, Update, 27), ZU_SLOT(zuController, SetObject, 28),

        ZU_SLOT(zuDynamicLoadingResource, getResourceID, 2), ZU_SLOT(zuDynamicLoadingResource, createHandler, 3),
        ZU_SLOT(zuDynamicLoadingResource, getResourceType, 4),
        ZU_SLOT(zuDynamicLoadingResource, getResourceHandlerType, 5),
        ZU_SLOT(zuDynamicLoadingResource, getGPUSize, 6), ZU_SLOT(zuDynamicLoadingResource, isGPUResident, 7),
        ZU_SLOT(zuDynamicLoadingResource, isGPUFreeable, 8), ZU_SLOT(zuDynamicLoadingResource, getCPUSize, 9),
        ZU_SLOT(zuDynamicLoadingResource, isCPUResident, 10), ZU_SLOT(zuDynamicLoadingResource, isCPUFreeable, 11),
        ZU_SLOT(zuDynamicLoadingResource, getTypeName, 12),

        ZU_SLOT(zuRequestInterfaceForDynamicResource, execute, 2),
        ZU_SLOT(zuRequestInterfaceForDynamicResource, compare, 3),
        ZU_SLOT(zuRequestInterfaceForDynamicResource, getThreadCPUMemoryAllocation, 4),
        ZU_SLOT(zuRequestInterfaceForDynamicResource, cancelRequest, 5),
        ZU_SLOT(zuRequestInterfaceForDynamicResource, finalizeRequest, 6),
        ZU_SLOT(zuRequestInterfaceForDynamicResource, onFinished, 7),
        ZU_SLOT(zuRequestInterfaceForDynamicResource, finalizeDynamicResourceRequest, 8),
    });
}

// The vertex and index buffers share one table: the destructor, zuBindable's four, the
// zuObject operations, then the resource operations in an order of their own.
template <class Buffer> void expectBufferTable()
{
    expectSlots({
        ZU_SLOT(Buffer, getIdentifier, 2), ZU_SLOT(Buffer, release, 3), ZU_SLOT(Buffer, onLoad, 4),
        ZU_SLOT(Buffer, onRelease, 5), ZU_SLOT(Buffer, GetType, 6), ZU_SLOT(Buffer, GetObjectByName, 7),
        ZU_SLOT(Buffer, GetAllObjectsByName, 8), ZU_SLOT(Buffer, GetObjectByID, 9), ZU_SLOT(Buffer, Load, 10),
        ZU_SLOT(Buffer, Link, 11), ZU_SLOT(Buffer, PostLink, 12), ZU_SLOT(Buffer, Register, 13),
        ZU_SLOT(Buffer, Save, 14), ZU_SLOT(Buffer, GetDiskUsed, 15), ZU_SLOT(Buffer, Equals, 16),
        ZU_SLOT(Buffer, Clone, 17), ZU_SLOT(Buffer, SetName, 18), ZU_SLOT(Buffer, GetName, 19),
        ZU_SLOT(Buffer, GetControllerQuantity, 20), ZU_SLOT(Buffer, GetController, 21),
        ZU_SLOT(Buffer, SetControllerQuantity, 22), ZU_SLOT(Buffer, SetController, 23),
        ZU_SLOT(Buffer, AttachController, 24), ZU_SLOT(Buffer, DetachController, 25),
        ZU_SLOT(Buffer, DetachAllControllers, 26), ZU_SLOT(Buffer, getResourceID, 27),
        ZU_SLOT(Buffer, createHandler, 28), ZU_SLOT(Buffer, getResourceType, 29),
        ZU_SLOT(Buffer, getResourceHandlerType, 30), ZU_SLOT(Buffer, getCPUSize, 31),
        ZU_SLOT(Buffer, isCPUResident, 32), ZU_SLOT(Buffer, isCPUFreeable, 33), ZU_SLOT(Buffer, isGPUFreeable, 34),
        ZU_SLOT(Buffer, getTypeName, 35), ZU_SLOT(Buffer, getGPUSize, 36), ZU_SLOT(Buffer, isGPUResident, 37),
    });
}

TEST(SlotOrder, BuffersHoldEveryOperationInTheirPrimaryTable)
{
    expectBufferTable<zuVertexBuffer>();
    expectBufferTable<zuIndexBuffer>();
}

} // namespace
} // namespace zu
