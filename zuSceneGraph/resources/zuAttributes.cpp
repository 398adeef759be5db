#include <zuSceneGraph/resources/zuAttributes.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <mutex>
#include <unordered_set>
#include <utility>

namespace zu {

// ---------------------------------------------------------------------------------------
// Shared layout records

struct zuAttributes::LayoutHash {
    size_t operator()(const Layout* layout) const
    {
        uint64_t hash = 1469598103934665603ull;
        auto mix = [&hash](int value) { hash = (hash ^ static_cast<uint32_t>(value)) * 1099511628211ull; };
        for (const auto& single : layout->singles)
            mix(single.channels);
        for (int count : layout->unitCount)
            mix(count);
        for (const auto& unit : layout->units)
            mix(unit.channels);
        return static_cast<size_t>(hash);
    }
};

struct zuAttributes::SameCounts {
    bool operator()(const Layout* a, const Layout* b) const
    {
        auto sameChannels = [](const auto& x, const auto& y) { return x.channels == y.channels; };
        return std::equal(std::begin(a->singles), std::end(a->singles), std::begin(b->singles), sameChannels)
            && std::equal(std::begin(a->unitCount), std::end(a->unitCount), std::begin(b->unitCount))
            && std::equal(a->units.begin(), a->units.end(), b->units.begin(), b->units.end(), sameChannels);
    }
};

// Every record in use, by its counts. Made on first use and never destroyed, so that values
// in static objects may still drop their records while the process ends.
struct zuAttributes::LayoutTable {
    std::mutex mutex;
    std::unordered_set<const Layout*, LayoutHash, SameCounts> records;

    static LayoutTable& instance()
    {
        static LayoutTable* const table = new LayoutTable;
        return *table;
    }
};

constinit const zuAttributes::Layout zuAttributes::msEmpty{};

zuAttributes::Layout::Layout(const Layout& other)
    : stride(other.stride), units(other.units)
{
    std::copy(std::begin(other.singles), std::end(other.singles), std::begin(singles));
    std::copy(std::begin(other.unitCount), std::end(other.unitCount), std::begin(unitCount));
}

// The records a thread interned last, each with a reference of its own: the buffers of one
// load or build mostly share their layout, reached by setting one channel group at a time,
// and the next buffer then takes neither the lock nor the table.
struct zuAttributes::LastRecord {
    static constexpr int COUNT = 4;
    zuAttributes values[COUNT];
    int next = 0;

    static LastRecord& ofThisThread()
    {
        thread_local LastRecord last;
        return last;
    }
};

const zuAttributes::Layout* zuAttributes::intern(Layout&& draft)
{
    if (SameCounts()(&draft, &msEmpty))
        return &msEmpty;
    LastRecord& last = LastRecord::ofThisThread();
    for (const zuAttributes& value : last.values)
        if (SameCounts()(&draft, value.mLayout)) {
            retain(value.mLayout);
            return value.mLayout;
        }
    const Layout* record = internShared(std::move(draft));
    retain(record);
    zuAttributes& oldest = last.values[last.next];
    last.next = (last.next + 1) % LastRecord::COUNT;
    release(oldest.mLayout);
    oldest.mLayout = record;
    return record;
}

const zuAttributes::Layout* zuAttributes::internShared(Layout&& draft)
{
    LayoutTable& table = LayoutTable::instance();
    const std::lock_guard<std::mutex> lock(table.mutex);
    const auto found = table.records.find(&draft);
    if (found != table.records.end()) {
        // A record whose count reached 0 is being freed by its last holder: replace it.
        uint32_t references = (*found)->references.load(std::memory_order_relaxed);
        while (references != 0
               && !(*found)->references.compare_exchange_weak(references, references + 1, std::memory_order_relaxed))
            ;
        if (references != 0)
            return *found;
        table.records.erase(found);
    }
    Layout* record = new Layout(draft);
    record->references.store(1, std::memory_order_relaxed);
    table.records.insert(record);
    return record;
}

void zuAttributes::release(const Layout* layout)
{
    if (layout == &msEmpty || layout->references.fetch_sub(1, std::memory_order_acq_rel) != 1)
        return;
    {
        LayoutTable& table = LayoutTable::instance();
        const std::lock_guard<std::mutex> lock(table.mutex);
        const auto found = table.records.find(layout);
        if (found != table.records.end() && *found == layout)
            table.records.erase(found);
    }
    delete layout;
}

zuAttributes& zuAttributes::operator=(const zuAttributes& other)
{
    retain(other.mLayout);
    release(mLayout);
    mLayout = other.mLayout;
    return *this;
}

zuAttributes& zuAttributes::operator=(zuAttributes&& other) noexcept
{
    std::swap(mLayout, other.mLayout);
    return *this;
}

void zuAttributes::adopt(Layout&& draft)
{
    draft.layOut();
    const Layout* record = intern(std::move(draft));
    release(mLayout);
    mLayout = record;
}

// ---------------------------------------------------------------------------------------
// Counts and offsets

size_t zuAttributes::Layout::firstUnit(int familyIndex) const
{
    size_t first = 0;
    for (int f = 0; f < familyIndex; ++f)
        first += static_cast<size_t>(unitCount[f]);
    return first;
}

void zuAttributes::Layout::layOut()
{
    // The running stride is kept in 64 bits: absurd channel counts saturate the stride at
    // the largest int instead of wrapping, and a group that would start beyond it stays
    // without an offset.
    int64_t running = 0;
    auto place = [&running](Slot& group, int componentSize) {
        group.offset = -1;
        if (group.channels <= 0 || running > std::numeric_limits<int>::max())
            return;
        group.offset = static_cast<int>(running);
        running += static_cast<int64_t>(group.channels) * componentSize;
    };
    // The families are placed in the order `units` holds them, so one cursor walks it.
    Slot* unit = units.data();
    auto placeUnits = [this, &place, &unit](Group group) {
        const int componentSize = ComponentSize(group);
        for (int u = 0; u < unitCount[family(group)]; ++u)
            place(*unit++, componentSize);
    };
    auto placeSingle = [this, &place](Group group) { place(singles[singleIndex(group)], 4); };
    placeSingle(POSITION);
    placeSingle(BLEND_WEIGHT);
    placeSingle(NORMAL);
    placeUnits(COLOR);
    placeSingle(FOG);
    placeSingle(PSIZE);
    placeSingle(BLEND_INDICES);
    placeUnits(TCOORD);
    placeSingle(TANGENT);
    placeSingle(BITANGENT);
    for (int group = USER_BYTE; group <= USER_UINT; ++group)
        placeUnits(static_cast<Group>(group));
    stride = static_cast<int>(std::min<int64_t>(running, std::numeric_limits<int>::max()));
}

int zuAttributes::GetChannels(Group group, int unit) const
{
    const int single = singleIndex(group);
    if (single >= 0)
        return mLayout->singles[single].channels;
    const int f = family(group);
    if (f < 0 || unit < 0 || unit >= mLayout->unitCount[f])
        return 0;
    return mLayout->units[mLayout->firstUnit(f) + static_cast<size_t>(unit)].channels;
}

unsigned int zuAttributes::unitOffsetByte(Group group, int unit) const
{
    const int f = family(group);
    if (f < 0 || unit < 0 || unit >= mLayout->unitCount[f])
        return static_cast<unsigned int>(-1);
    return static_cast<unsigned int>(mLayout->units[mLayout->firstUnit(f) + static_cast<size_t>(unit)].offset);
}

int zuAttributes::GetUnitCount(Group group) const
{
    const int f = family(group);
    return f >= 0 ? mLayout->unitCount[f] : (singleIndex(group) >= 0 ? 1 : 0);
}

std::vector<int> zuAttributes::GetUnitChannels(Group group) const
{
    std::vector<int> channels;
    const int f = family(group);
    if (f < 0)
        return channels;
    const size_t first = mLayout->firstUnit(f);
    for (int u = 0; u < mLayout->unitCount[f]; ++u)
        channels.push_back(mLayout->units[first + static_cast<size_t>(u)].channels);
    return channels;
}

void zuAttributes::Layout::setChannels(Group group, int unit, int channels)
{
    const int single = singleIndex(group);
    if (single >= 0) {
        singles[single].channels = channels;
        return;
    }
    const int f = family(group);
    if (f < 0 || unit < 0)
        return;
    const size_t first = firstUnit(f);
    if (unit >= unitCount[f]) {
        const int added = unit + 1 - unitCount[f];
        units.insert(units.begin() + static_cast<ptrdiff_t>(first + static_cast<size_t>(unitCount[f])),
                     static_cast<size_t>(added), Slot());
        unitCount[f] = unit + 1;
    }
    units[first + static_cast<size_t>(unit)].channels = channels;
}

void zuAttributes::Layout::setUnitChannels(Group group, const std::vector<int>& channels)
{
    const int f = family(group);
    if (f < 0)
        return;
    const auto first = units.begin() + static_cast<ptrdiff_t>(firstUnit(f));
    units.erase(first, first + unitCount[f]);
    std::vector<Slot> added(channels.size());
    for (size_t u = 0; u < channels.size(); ++u)
        added[u].channels = channels[u];
    units.insert(units.begin() + static_cast<ptrdiff_t>(firstUnit(f)), added.begin(), added.end());
    unitCount[f] = static_cast<int>(channels.size());
}

void zuAttributes::SetChannels(Group group, int unit, int channels)
{
    if (singleIndex(group) < 0 && (family(group) < 0 || unit < 0))
        return;
    Layout changed = draft();
    changed.setChannels(group, unit, channels);
    adopt(std::move(changed));
}

void zuAttributes::SetUnitChannels(Group group, const std::vector<int>& channels)
{
    if (family(group) < 0)
        return;
    Layout changed = draft();
    changed.setUnitChannels(group, channels);
    adopt(std::move(changed));
}

bool zuAttributes::Matches(const zuAttributes& other, bool position, bool blendWeight, bool normal, bool color,
                           bool fog, bool pSize, bool blendIndices, bool tCoord, bool tangent, bool bitangent,
                           bool userByte, bool userUByte, bool userShort, bool userUShort, bool userInt,
                           bool userUInt) const
{
    const bool flags[GROUP_COUNT] = {position, blendWeight, normal, color, fog, pSize, blendIndices, tCoord,
                                     tangent, bitangent, userByte, userUByte, userShort, userUShort, userInt,
                                     userUInt};
    for (int g = 0; g < GROUP_COUNT; ++g) {
        const Group group = static_cast<Group>(g);
        if (!flags[g])
            continue;
        if (GetUnitCount(group) != other.GetUnitCount(group))
            return false;
        for (int unit = 0; unit < GetUnitCount(group); ++unit)
            if (GetChannels(group, unit) != other.GetChannels(group, unit))
                return false;
    }
    return true;
}

bool zuAttributes::operator==(const zuAttributes& other) const
{
    const Layout& a = *mLayout;
    const Layout& b = *other.mLayout;
    if (&a == &b)
        return true;
    auto sameOffsets = [&a, &b](Group group) { return a.singles[singleIndex(group)].offset == b.singles[singleIndex(group)].offset; };
    auto sameChannels = [&a, &b](Group group) {
        return a.singles[singleIndex(group)].channels == b.singles[singleIndex(group)].channels;
    };
    // The units of a family compared by offset or by channels.
    auto sameUnits = [&a, &b](Group group, bool offsets) {
        const int f = family(group);
        if (a.unitCount[f] != b.unitCount[f])
            return false;
        const Slot* x = a.units.data() + a.firstUnit(f);
        const Slot* y = b.units.data() + b.firstUnit(f);
        for (int u = 0; u < a.unitCount[f]; ++u)
            if (offsets ? x[u].offset != y[u].offset : x[u].channels != y[u].channels)
                return false;
        return true;
    };
    return a.stride == b.stride
        && sameOffsets(POSITION) && sameOffsets(BLEND_WEIGHT) && sameOffsets(NORMAL)
        && sameOffsets(FOG) && sameOffsets(PSIZE) && sameOffsets(BLEND_INDICES)
        && sameOffsets(TANGENT) && sameOffsets(BITANGENT)
        && sameUnits(COLOR, true) && sameUnits(TCOORD, true)
        && sameChannels(POSITION) && sameChannels(BLEND_WEIGHT) && sameChannels(NORMAL)
        && sameUnits(COLOR, false)
        && sameChannels(FOG) && sameChannels(PSIZE) && sameChannels(BLEND_INDICES)
        && sameUnits(TCOORD, false)
        && sameChannels(TANGENT) && sameChannels(BITANGENT)
        && sameUnits(USER_BYTE, false);
}

void zuAttributes::swapAttributes(zuAttributes& other)
{
    std::swap(mLayout, other.mLayout);
}

namespace {

// The groups' names as the accessors spell them, in layout order.
const char* const groupNames[zuAttributes::GROUP_COUNT] = {
    "Position", "BlendWeight", "Normal", "Color", "Fog", "PSize", "BlendIndices", "TCoord",
    "Tangent", "Bitangent", "UserByte", "UserUByte", "UserShort", "UserUShort", "UserInt", "UserUInt"};

} // namespace

void zuAttributes::DescribeFields(const char* name, zuFieldVisitor& visitor) const
{
    visitor.BeginGroup(name);
    visitor.Integer("stride", GetStride());
    for (int g = 0; g < GROUP_COUNT; ++g) {
        const auto group = static_cast<Group>(g);
        for (int unit = 0; unit < GetUnitCount(group); ++unit)
            if (Has(group, unit))
                visitor.Channel(groupNames[g], IsUnitFamily(group) ? unit : -1, GetChannels(group, unit),
                                static_cast<int>(GetOffsetByte(group, unit)));
    }
    visitor.EndGroup();
}

} // namespace zu
