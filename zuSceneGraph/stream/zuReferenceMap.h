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
//
// The identifiers come from the file, so a crafted file can choose them to share one slot.
// The probes are counted: when they pass a few per look-up, the table is rebuilt with a hash
// keyed by a random number drawn then, which a file cannot aim at, and stays keyed until
// it is cleared.
class zuReferenceMap {
public:
    struct Entry {
        uint64_t identifier;
        zuRttiInterface* object;
        uint32_t pending;
    };

    // The entry of identifier, created (no object, nothing pending) when absent. The
    // reference is valid until the next insertion.
    Entry& findOrInsert(uint64_t identifier) { return mEntries[findOrInsertNumber(identifier)]; }
    // The same as an entry number, which stays valid until the map is cleared.
    uint32_t findOrInsertNumber(uint64_t identifier);
    Entry& entryAt(uint32_t number) { return mEntries[number]; }
    // Null when absent.
    Entry* find(uint64_t identifier);
    // Takes `entries` (nothing pending) as the map's first entries, in their order, and finds
    // them; an identifier met again gives its object to the entry of its first appearance
    // and is found there only. True when every identifier appeared once.
    bool adopt(std::vector<Entry>&& entries);
    void clear();
    // Makes room for count entries, so that inserting them never grows the table.
    void reserve(size_t count);
    size_t size() const { return mEntries.size(); }
    // Whether the table switched to its keyed hash (for tests and benchmarks).
    bool isKeyed() const { return mKeyed; }

private:
    static constexpr size_t INITIAL_CAPACITY = 1024;
    // Probes past the first slot that the table tolerates per look-up, and in all, before
    // it takes the keyed hash; ordinary loads probe far fewer.
    static constexpr size_t PROBES_PER_LOOKUP = 8;
    static constexpr size_t PROBES_ALLOWED = 4096;

    size_t slotOf(uint64_t identifier) const
    {
        if (mKeyed) {
            const unsigned __int128 product = static_cast<unsigned __int128>(identifier ^ mKey0) * mKey1;
            return static_cast<size_t>(static_cast<uint64_t>(product >> 64) ^ static_cast<uint64_t>(product)) & mMask;
        }
        // Identifiers are object addresses, mostly made one after another: dropping their
        // alignment bits keeps neighbours in neighbouring slots (the link pass then walks the
        // table almost in order), and folding in the high bits spreads separate heaps.
        const uint64_t folded = (identifier >> 4) ^ (identifier >> 28) ^ (identifier >> 52);
        return static_cast<size_t>(folded) & mMask;
    }
    // `capacity` doubled until `count` entries leave the table at most half full.
    static size_t capacityFor(size_t count, size_t capacity);
    // Rebuilds the slots of the present capacity (doubled with `doubling`).
    void rebuild(bool doubling);
    void takeKeyedHash();
    void chooseKeys();
    // Finds the adopted entries; false when they ask for the keyed hash first.
    bool indexAdopted(bool& distinct);

    std::vector<Entry> mEntries;
    std::unique_ptr<uint32_t[]> mSlots;  // entry number + 1, or 0 for an empty slot
    size_t mCapacity = 0;
    size_t mMask = 0;
    size_t mProbes = 0;   // probes past the first slot since the last clear
    size_t mLookups = 0;  // calls of findOrInsert since the last clear
    bool mKeyed = false;
    uint64_t mKey0 = 0;
    uint64_t mKey1 = 0;  // odd
};

} // namespace zu
