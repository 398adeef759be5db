#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace zu {

class zuRttiInterface;

// The saved identifiers of a load and the objects they stand for, with the number of
// references still to resolve.
//
// Entries are kept densely in insertion order; an open-addressing table of 32-bit entry
// numbers finds them. The table stays small enough to sit in the cache even for millions of
// identifiers, and the entries are visited roughly in the order they were made, since the
// link pass follows the records. Entries are never removed during a load: an entry whose
// pending count is 0 counts as absent to the link pass.
class zuReferenceMap {
public:
    struct Entry {
        uint64_t identifier;
        zuRttiInterface* object;
        uint32_t pending;
    };

    // The entry of identifier, created (no object, nothing pending) when absent. The
    // reference is valid until the next insertion.
    Entry& findOrInsert(uint64_t identifier);
    // Null when absent.
    Entry* find(uint64_t identifier);
    void clear();
    // Makes room for count entries, so that inserting them never grows the table.
    void reserve(size_t count);
    size_t size() const { return mEntries.size(); }

private:
    static constexpr size_t INITIAL_CAPACITY = 1024;

    size_t slotOf(uint64_t identifier) const
    {
        // Identifiers are object addresses, mostly made one after another: dropping their
        // alignment bits keeps neighbours in neighbouring slots (the link pass then walks the
        // table almost in order), and folding in the high bits spreads separate heaps.
        const uint64_t folded = (identifier >> 4) ^ (identifier >> 28) ^ (identifier >> 52);
        return static_cast<size_t>(folded) & mMask;
    }
    void grow();

    std::vector<Entry> mEntries;
    std::unique_ptr<uint32_t[]> mSlots;  // entry number + 1, or 0 for an empty slot
    size_t mCapacity = 0;
    size_t mMask = 0;
};

} // namespace zu
