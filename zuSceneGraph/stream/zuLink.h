#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zu {

class zuRttiInterface;

// The references one loaded object read, in reading order, until the link pass turns
// them into objects.
class zuLink {
public:
    // The references are kept in `storage`: a stream gives all the links of a load one
    // vector, where each link's references lie side by side, freed at once when the load
    // ends. A link made without one keeps its own.
    explicit zuLink(zuRttiInterface* object = nullptr, std::vector<uint64_t>* storage = nullptr)
        : mObject(object), mStorage(storage)
    {
    }
    zuLink(const zuLink&) = delete;
    zuLink& operator=(const zuLink&) = delete;
    ~zuLink()
    {
        if (mOwnsStorage)
            delete mStorage;
    }

    zuRttiInterface* getObject() const { return mObject; }
    void setObject(zuRttiInterface* object) { mObject = object; }
    void addInterface(uint64_t value)
    {
        if (!mStorage) {
            mStorage = new std::vector<uint64_t>;
            mOwnsStorage = true;
        }
        // A record's references are read together, so they normally end the storage; should
        // another link have added some since, this link's move to the end first.
        if (mFirst + mCount != mStorage->size())
            moveToEnd();
        mStorage->push_back(value);
        ++mCount;
    }
    // The reference at the cursor, which then advances; 0 (null) past the last one.
    uint64_t getLinkID() { return mCursor < mCount ? (*mStorage)[mFirst + mCursor++] : 0; }
    int getQuantity() const { return static_cast<int>(mCount); }
    // How many references getLinkID handed out.
    uint32_t getCursor() const { return mCursor; }
    // The i-th reference read, whatever the cursor.
    uint64_t getInterface(int i) const { return (*mStorage)[mFirst + static_cast<size_t>(i)]; }

private:
    void moveToEnd()
    {
        const uint32_t first = static_cast<uint32_t>(mStorage->size());
        for (uint32_t i = 0; i < mCount; ++i) {
            const uint64_t value = (*mStorage)[mFirst + i];
            mStorage->push_back(value);
        }
        mFirst = first;
    }

    zuRttiInterface* mObject;
    std::vector<uint64_t>* mStorage;
    uint32_t mFirst = 0;  // a stream holds fewer than 2^32 references (it checks)
    uint32_t mCount = 0;
    uint32_t mCursor = 0;
    bool mOwnsStorage = false;
};

} // namespace zu
