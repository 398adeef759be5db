#pragma once

#include <zuSceneGraph/stream/zuReferenceMap.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace zu {

class zuRttiInterface;

// The objects a save registered, in registration order, each once.
//
// Objects are found by their identifier (zuObject::GetID), which is dense in a process:
// pages of 1024 slots, one per block of identifiers, hold the object's place in the order.
// An empty slot means a new object, so the common case costs one load and one store. The
// identifier is not trusted to be unique (it wraps, and threads constructing objects under
// the no-op lock may share one): a slot taken by another object sends the object to a
// hashed set keyed by address, as do objects without an identifier and pages the set may
// not allocate (identifiers so sparse that a page would hold few objects).
class zuRegisteredSet {
public:
    // True when `object` was not registered yet; it is then appended to the order.
    bool insert(const zuRttiInterface* object, uint32_t identifier);
    // The same for an object without an identifier.
    bool insert(const zuRttiInterface* object);
    const std::vector<const zuRttiInterface*>& ordered() const { return mOrdered; }
    void clear();

private:
    static constexpr unsigned PAGE_SHIFT = 10;
    static constexpr size_t PAGE_SLOTS = size_t(1) << PAGE_SHIFT;
    // Pages are allocated while they hold on average at least one object in this many slots.
    static constexpr size_t SLOTS_PER_OBJECT = 8;
    static constexpr size_t FREE_PAGES = 64;

    // The page of identifiers page << PAGE_SHIFT and up; null when none may be allocated.
    uint32_t* pageOf(uint32_t page);
    bool insertByAddress(const zuRttiInterface* object);

    std::vector<const zuRttiInterface*> mOrdered;
    std::unordered_map<uint32_t, std::unique_ptr<uint32_t[]>> mPages;
    // Pages once refused stay so until the set is cleared: their objects are in the hashed
    // set, and a page allocated later would not know them.
    std::unordered_set<uint32_t> mRefused;
    // The page looked up last (consecutive objects mostly share one); null when refused.
    bool mHaveLast = false;
    uint32_t mLastPage = 0;
    uint32_t* mLastSlots = nullptr;
    zuReferenceMap mByAddress;
};

} // namespace zu
