#include <zuSceneGraph/stream/zuReferenceMap.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <random>

namespace zu {

namespace {

// 64 bits that a file cannot know in advance. The random device may be missing (it then
// throws); the clock and a counter still differ from run to run and from load to load.
uint64_t unpredictableBits()
{
    static std::atomic<uint64_t> counter{0};
    uint64_t bits = static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    bits ^= counter.fetch_add(0x9E3779B97F4A7C15ull, std::memory_order_relaxed);
    try {
        std::random_device device;
        bits ^= (static_cast<uint64_t>(device()) << 32) ^ device();
    } catch (...) {
    }
    // A final mix, so that every output bit depends on every input bit.
    bits ^= bits >> 33;
    bits *= 0xFF51AFD7ED558CCDull;
    bits ^= bits >> 33;
    bits *= 0xC4CEB9FE1A85EC53ull;
    return bits ^ (bits >> 33);
}

} // namespace

uint32_t zuReferenceMap::findOrInsertNumber(uint64_t identifier)
{
    // Kept at most half full, so probe sequences stay short.
    if (2 * (mEntries.size() + 1) > mCapacity)
        rebuild(true);
    if (mProbes > PROBES_PER_LOOKUP * mLookups + PROBES_ALLOWED && !mKeyed)
        takeKeyedHash();
    ++mLookups;
    size_t step = 0;
    for (size_t slot = slotOf(identifier);; slot = (slot + ++step) & mMask, ++mProbes) {
        const uint32_t number = mSlots[slot];
        if (number == 0) {
            mEntries.push_back(Entry{identifier, nullptr, 0});
            mSlots[slot] = static_cast<uint32_t>(mEntries.size());
            return static_cast<uint32_t>(mEntries.size() - 1);
        }
        if (mEntries[number - 1].identifier == identifier)
            return number - 1;
    }
}

bool zuReferenceMap::adopt(std::vector<Entry>&& entries)
{
    clear();
    mEntries = std::move(entries);
    mCapacity = capacityFor(mEntries.size(), INITIAL_CAPACITY);
    mMask = mCapacity - 1;
    mSlots = std::make_unique<uint32_t[]>(mCapacity);
    bool distinct = true;
    while (!indexAdopted(distinct)) {
        // Chosen identifiers: all of them again, under the keyed hash.
        chooseKeys();
        std::fill_n(mSlots.get(), mCapacity, 0u);
    }
    return distinct;
}

bool zuReferenceMap::indexAdopted(bool& distinct)
{
    distinct = true;
    for (size_t i = 0; i < mEntries.size(); ++i) {
        if (!mKeyed && mProbes > PROBES_PER_LOOKUP * mLookups + PROBES_ALLOWED)
            return false;
        ++mLookups;
        const uint64_t identifier = mEntries[i].identifier;
        size_t step = 0;
        for (size_t slot = slotOf(identifier);; slot = (slot + ++step) & mMask, ++mProbes) {
            const uint32_t number = mSlots[slot];
            if (number == 0) {
                mSlots[slot] = static_cast<uint32_t>(i + 1);
                break;
            }
            if (mEntries[number - 1].identifier == identifier) {
                mEntries[number - 1].object = mEntries[i].object;
                distinct = false;
                break;
            }
        }
    }
    return true;
}

zuReferenceMap::Entry* zuReferenceMap::find(uint64_t identifier)
{
    // No probe count here: a look-up follows the path its identifier's insertion took, so
    // the insertions' count bounds the look-ups' too.
    if (mEntries.empty())
        return nullptr;
    size_t step = 0;
    for (size_t slot = slotOf(identifier);; slot = (slot + ++step) & mMask) {
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
    mProbes = 0;
    mLookups = 0;
    mKeyed = false;
}

void zuReferenceMap::reserve(size_t count)
{
    mEntries.reserve(count);
    const size_t capacity = capacityFor(count, mCapacity ? mCapacity : INITIAL_CAPACITY);
    if (capacity != mCapacity) {
        mCapacity = capacity / 2;
        rebuild(true);
    }
}

size_t zuReferenceMap::capacityFor(size_t count, size_t capacity)
{
    while (capacity < 2 * (count + 1))
        capacity *= 2;
    return capacity;
}

void zuReferenceMap::chooseKeys()
{
    mKeyed = true;
    mKey0 = unpredictableBits();
    mKey1 = unpredictableBits() | 1;
}

void zuReferenceMap::takeKeyedHash()
{
    chooseKeys();
    rebuild(false);
}

void zuReferenceMap::rebuild(bool doubling)
{
    if (doubling || !mCapacity)
        mCapacity = mCapacity ? 2 * mCapacity : INITIAL_CAPACITY;
    mMask = mCapacity - 1;
    mSlots = std::make_unique<uint32_t[]>(mCapacity);
    for (size_t i = 0; i < mEntries.size(); ++i) {
        size_t slot = slotOf(mEntries[i].identifier);
        size_t step = 0;
        while (mSlots[slot] != 0) {
            slot = (slot + ++step) & mMask;
            ++mProbes;
        }
        mSlots[slot] = static_cast<uint32_t>(i + 1);
    }
}

} // namespace zu
