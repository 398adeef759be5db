#include <zuSceneGraph/stream/zuReferenceMap.h>

namespace zu {

zuReferenceMap::Entry& zuReferenceMap::findOrInsert(uint64_t identifier)
{
    // Kept at most half full, so probe sequences stay short.
    if (2 * (mEntries.size() + 1) > mCapacity)
        grow();
    const size_t mask = mCapacity - 1;
    for (size_t slot = slotOf(identifier);; slot = (slot + 1) & mask) {
        const uint32_t number = mSlots[slot];
        if (number == 0) {
            mEntries.push_back(Entry{identifier, nullptr, 0});
            mSlots[slot] = static_cast<uint32_t>(mEntries.size());
            return mEntries.back();
        }
        Entry& entry = mEntries[number - 1];
        if (entry.identifier == identifier)
            return entry;
    }
}

zuReferenceMap::Entry* zuReferenceMap::find(uint64_t identifier)
{
    if (mEntries.empty())
        return nullptr;
    const size_t mask = mCapacity - 1;
    for (size_t slot = slotOf(identifier);; slot = (slot + 1) & mask) {
        const uint32_t number = mSlots[slot];
        if (number == 0)
            return nullptr;
        Entry& entry = mEntries[number - 1];
        if (entry.identifier == identifier)
            return &entry;
    }
}

void zuReferenceMap::clear()
{
    std::vector<Entry>().swap(mEntries);
    mSlots.reset();
    mCapacity = 0;
    mMask = 0;
}

void zuReferenceMap::reserve(size_t count)
{
    mEntries.reserve(count);
    size_t capacity = mCapacity ? mCapacity : INITIAL_CAPACITY;
    while (capacity < 2 * (count + 1))
        capacity *= 2;
    if (capacity != mCapacity) {
        mCapacity = capacity / 2;
        grow();
    }
}

void zuReferenceMap::grow()
{
    mCapacity = mCapacity ? 2 * mCapacity : INITIAL_CAPACITY;
    mMask = mCapacity - 1;
    mSlots = std::make_unique<uint32_t[]>(mCapacity);
    const size_t mask = mCapacity - 1;
    for (size_t i = 0; i < mEntries.size(); ++i) {
        size_t slot = slotOf(mEntries[i].identifier);
        while (mSlots[slot] != 0)
            slot = (slot + 1) & mask;
        mSlots[slot] = static_cast<uint32_t>(i + 1);
    }
}

} // namespace zu
