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
    // The registered objects in registration order.
    size_t size() const { return mCount; }
    const zuRttiInterface* operator[](size_t i) const { return mChunks[i >> CHUNK_SHIFT][i & (CHUNK_SIZE - 1)]; }
    void clear();

private:
    static constexpr unsigned PAGE_SHIFT = 10;
    static constexpr size_t PAGE_SLOTS = size_t(1) << PAGE_SHIFT;
    // Pages are allocated while they hold on average at least one object in this many slots.
    static constexpr size_t SLOTS_PER_OBJECT = 8;
    static constexpr size_t FREE_PAGES = 64;

    // The order is kept in chunks, so that a large save neither copies it as it grows nor
    // touches more memory than it fills.
    static constexpr unsigned CHUNK_SHIFT = 13;
    static constexpr size_t CHUNK_SIZE = size_t(1) << CHUNK_SHIFT;

    // The page of identifiers page << PAGE_SHIFT and up; null when none may be allocated.
    uint32_t* pageOf(uint32_t page);
    bool insertByAddress(const zuRttiInterface* object);
    void append(const zuRttiInterface* object);

    std::vector<std::unique_ptr<const zuRttiInterface*[]>> mChunks;
    size_t mCount = 0;
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
