#pragma once

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <vector>

namespace zu {

class zuRttiInterface;

// The references one loaded object read, in reading order, until the link pass turns
// them into objects.
class zuLink {
public:
    // The references are kept in memory from resource: a stream gives all the links of a
    // load one arena, freed at once when the load ends.
    explicit zuLink(zuRttiInterface* object = nullptr,
                    std::pmr::memory_resource* resource = std::pmr::get_default_resource())
        : mObject(object), mReferences(resource)
    {
    }

    zuRttiInterface* getObject() const { return mObject; }
    void setObject(zuRttiInterface* object) { mObject = object; }
    void addInterface(uint64_t value)
    {
        // Most records read a few references (a mesh its states and buffers): room for
        // four at once saves the arena the copies of growing one by one.
        if (mReferences.empty())
            mReferences.reserve(4);
        mReferences.push_back(value);
    }
    // The reference at the cursor, which then advances; 0 (null) past the last one.
    uint64_t getLinkID()
    {
        return mCursor < mReferences.size() ? mReferences[mCursor++] : 0;
    }
    int getQuantity() const { return static_cast<int>(mReferences.size()); }
    // How many references getLinkID handed out.
    uint32_t getCursor() const { return mCursor; }
    // The i-th reference read, whatever the cursor.
    uint64_t getInterface(int i) const { return mReferences[static_cast<size_t>(i)]; }

private:
    zuRttiInterface* mObject;
    uint32_t mCursor = 0;
    std::pmr::vector<uint64_t> mReferences;
};

} // namespace zu
