#include <zuSceneGraph/stream/zuRegisteredSet.h>

namespace zu {

bool zuRegisteredSet::insert(const zuRttiInterface* object, uint32_t identifier)
{
    const uint32_t page = identifier >> PAGE_SHIFT;
    if (!mHaveLast || page != mLastPage) {
        mLastSlots = pageOf(page);
        mLastPage = page;
        mHaveLast = true;
    }
    if (!mLastSlots)
        return insertByAddress(object);
    uint32_t& slot = mLastSlots[identifier & (PAGE_SLOTS - 1)];
    if (slot == 0) {
        append(object);
        slot = static_cast<uint32_t>(mCount);
        return true;
    }
    if ((*this)[slot - 1] == object)
        return false;
    // Another object holds this identifier.
    return insertByAddress(object);
}

bool zuRegisteredSet::insert(const zuRttiInterface* object)
{
    return insertByAddress(object);
}

bool zuRegisteredSet::insertByAddress(const zuRttiInterface* object)
{
    const size_t known = mByAddress.size();
    mByAddress.findOrInsert(reinterpret_cast<uintptr_t>(object));
    if (mByAddress.size() == known)
        return false;
    append(object);
    return true;
}

void zuRegisteredSet::append(const zuRttiInterface* object)
{
    if ((mCount >> CHUNK_SHIFT) == mChunks.size())
        mChunks.emplace_back(new const zuRttiInterface*[CHUNK_SIZE]);
    mChunks[mCount >> CHUNK_SHIFT][mCount & (CHUNK_SIZE - 1)] = object;
    ++mCount;
}

uint32_t* zuRegisteredSet::pageOf(uint32_t page)
{
    const auto found = mPages.find(page);
    if (found != mPages.end())
        return found->second.get();
    if (mRefused.count(page) != 0)
        return nullptr;
    if ((mPages.size() + 1) * PAGE_SLOTS > SLOTS_PER_OBJECT * mCount + FREE_PAGES * PAGE_SLOTS) {
        mRefused.insert(page);
        return nullptr;
    }
    // Zeroed: every slot empty.
    return mPages.emplace(page, std::make_unique<uint32_t[]>(PAGE_SLOTS)).first->second.get();
}

void zuRegisteredSet::clear()
{
    mChunks.clear();
    mCount = 0;
    mPages.clear();
    mRefused.clear();
    mHaveLast = false;
    mLastSlots = nullptr;
    mByAddress.clear();
}

} // namespace zu
