#include <zuSceneGraph/resources/zuAttributes.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace zu {

zuAttributes::zuAttributes() = default;

size_t zuAttributes::firstUnit(int familyIndex) const
{
    size_t first = 0;
    for (int f = 0; f < familyIndex; ++f)
        first += static_cast<size_t>(mUnitCount[f]);
    return first;
}

void zuAttributes::UpdateOffsets()
{
    // The running stride is kept in 64 bits: absurd channel counts saturate the stride at
    // the largest int instead of wrapping, and a group that would start beyond it stays
    // without an offset.
    int64_t stride = 0;
    auto place = [&stride](Slot& group, int componentSize) {
        group.offset = -1;
        if (group.channels <= 0 || stride > std::numeric_limits<int>::max())
            return;
        group.offset = static_cast<int>(stride);
        stride += static_cast<int64_t>(group.channels) * componentSize;
    };
    // The families are placed in the order mUnits holds them, so one cursor walks it.
    Slot* unit = mUnits.data();
    auto placeUnits = [this, &place, &unit](Group group) {
        const int componentSize = ComponentSize(group);
        for (int u = 0; u < mUnitCount[family(group)]; ++u)
            place(*unit++, componentSize);
    };
    place(mPosition, 4);
    place(mBlendWeight, 4);
    place(mNormal, 4);
    placeUnits(COLOR);
    place(mFog, 4);
    place(mPSize, 4);
    place(mBlendIndices, 4);
    placeUnits(TCOORD);
    place(mTangent, 4);
    place(mBitangent, 4);
    for (int group = USER_BYTE; group <= USER_UINT; ++group)
        placeUnits(static_cast<Group>(group));
    mStride = static_cast<int>(std::min<int64_t>(stride, std::numeric_limits<int>::max()));
}

int zuAttributes::GetChannels(Group group, int unit) const
{
    if (const Slot* single = slot(group))
        return single->channels;
    const int f = family(group);
    if (f < 0 || unit < 0 || unit >= mUnitCount[f])
        return 0;
    return mUnits[firstUnit(f) + static_cast<size_t>(unit)].channels;
}

unsigned int zuAttributes::unitOffsetByte(Group group, int unit) const
{
    const int f = family(group);
    if (f < 0 || unit < 0 || unit >= mUnitCount[f])
        return static_cast<unsigned int>(-1);
    return static_cast<unsigned int>(mUnits[firstUnit(f) + static_cast<size_t>(unit)].offset);
}

int zuAttributes::GetUnitCount(Group group) const
{
    const int f = family(group);
    return f >= 0 ? mUnitCount[f] : (slot(group) ? 1 : 0);
}

std::vector<int> zuAttributes::GetUnitChannels(Group group) const
{
    std::vector<int> channels;
    const int f = family(group);
    if (f < 0)
        return channels;
    const size_t first = firstUnit(f);
    for (int u = 0; u < mUnitCount[f]; ++u)
        channels.push_back(mUnits[first + static_cast<size_t>(u)].channels);
    return channels;
}

void zuAttributes::setChannelsOnly(Group group, int unit, int channels)
{
    if (Slot* single = slot(group)) {
        single->channels = channels;
        return;
    }
    const int f = family(group);
    if (f < 0 || unit < 0)
        return;
    const size_t first = firstUnit(f);
    if (unit >= mUnitCount[f]) {
        const int added = unit + 1 - mUnitCount[f];
        mUnits.insert(mUnits.begin() + static_cast<ptrdiff_t>(first + static_cast<size_t>(mUnitCount[f])),
                      static_cast<size_t>(added), Slot());
        mUnitCount[f] = unit + 1;
    }
    mUnits[first + static_cast<size_t>(unit)].channels = channels;
}

void zuAttributes::setUnitChannelsOnly(Group group, const std::vector<int>& channels)
{
    const int f = family(group);
    if (f < 0)
        return;
    const auto first = mUnits.begin() + static_cast<ptrdiff_t>(firstUnit(f));
    mUnits.erase(first, first + mUnitCount[f]);
    std::vector<Slot> units(channels.size());
    for (size_t u = 0; u < channels.size(); ++u)
        units[u].channels = channels[u];
    mUnits.insert(mUnits.begin() + static_cast<ptrdiff_t>(firstUnit(f)), units.begin(), units.end());
    mUnitCount[f] = static_cast<int>(channels.size());
}

void zuAttributes::SetChannels(Group group, int unit, int channels)
{
    if (!slot(group) && (family(group) < 0 || unit < 0))
        return;
    setChannelsOnly(group, unit, channels);
    UpdateOffsets();
}

void zuAttributes::SetUnitChannels(Group group, const std::vector<int>& channels)
{
    if (family(group) < 0)
        return;
    setUnitChannelsOnly(group, channels);
    UpdateOffsets();
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
    auto sameOffsets = [](const Slot& a, const Slot& b) { return a.offset == b.offset; };
    auto sameChannels = [](const Slot& a, const Slot& b) { return a.channels == b.channels; };
    // The units of a family compared by offset or by channels.
    auto sameUnits = [this, &other](Group group, bool offsets) {
        const int f = family(group);
        if (mUnitCount[f] != other.mUnitCount[f])
            return false;
        const Slot* a = mUnits.data() + firstUnit(f);
        const Slot* b = other.mUnits.data() + other.firstUnit(f);
        for (int u = 0; u < mUnitCount[f]; ++u)
            if (offsets ? a[u].offset != b[u].offset : a[u].channels != b[u].channels)
                return false;
        return true;
    };
    return mStride == other.mStride
        && sameOffsets(mPosition, other.mPosition) && sameOffsets(mBlendWeight, other.mBlendWeight)
        && sameOffsets(mNormal, other.mNormal)
        && sameOffsets(mFog, other.mFog) && sameOffsets(mPSize, other.mPSize)
        && sameOffsets(mBlendIndices, other.mBlendIndices)
        && sameOffsets(mTangent, other.mTangent) && sameOffsets(mBitangent, other.mBitangent)
        && sameUnits(COLOR, true) && sameUnits(TCOORD, true)
        && sameChannels(mPosition, other.mPosition) && sameChannels(mBlendWeight, other.mBlendWeight)
        && sameChannels(mNormal, other.mNormal)
        && sameUnits(COLOR, false)
        && sameChannels(mFog, other.mFog) && sameChannels(mPSize, other.mPSize)
        && sameChannels(mBlendIndices, other.mBlendIndices)
        && sameUnits(TCOORD, false)
        && sameChannels(mTangent, other.mTangent) && sameChannels(mBitangent, other.mBitangent)
        && sameUnits(USER_BYTE, false);
}

void zuAttributes::swapAttributes(zuAttributes& other)
{
    std::swap(*this, other);
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
    visitor.Integer("stride", mStride);
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
