#include <zuSceneGraph/resources/zuAttributes.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace zu {

namespace {

const std::vector<int>& noUnits()
{
    static const std::vector<int> empty;
    return empty;
}

} // namespace

zuAttributes::zuAttributes() = default;

zuAttributes::Slot* zuAttributes::slot(Group group)
{
    switch (group) {
    case POSITION: return &mPosition;
    case BLEND_WEIGHT: return &mBlendWeight;
    case NORMAL: return &mNormal;
    case FOG: return &mFog;
    case PSIZE: return &mPSize;
    case BLEND_INDICES: return &mBlendIndices;
    case TANGENT: return &mTangent;
    case BITANGENT: return &mBitangent;
    default: return nullptr;
    }
}

zuAttributes::Units* zuAttributes::units(Group group)
{
    switch (group) {
    case COLOR: return &mColor;
    case TCOORD: return &mTCoord;
    case USER_BYTE:
    case USER_UBYTE:
    case USER_SHORT:
    case USER_USHORT:
    case USER_INT:
    case USER_UINT: return &mUser[group - USER_BYTE];
    default: return nullptr;
    }
}

bool zuAttributes::IsUnitFamily(Group group)
{
    return group == COLOR || group == TCOORD || (group >= USER_BYTE && group <= USER_UINT);
}

int zuAttributes::ComponentSize(Group group)
{
    switch (group) {
    case USER_BYTE:
    case USER_UBYTE: return 1;
    case USER_SHORT:
    case USER_USHORT: return 2;
    default: return 4;
    }
}

void zuAttributes::UpdateOffsets()
{
    // The running stride is kept in 64 bits: absurd channel counts saturate the stride at
    // the largest int instead of wrapping, and a group that would start beyond it stays
    // without an offset.
    int64_t stride = 0;
    auto place = [&stride](Group group, int& offset, int channels) {
        offset = -1;
        if (channels <= 0 || stride > std::numeric_limits<int>::max())
            return;
        offset = static_cast<int>(stride);
        stride += static_cast<int64_t>(channels) * ComponentSize(group);
    };
    auto placeUnits = [&place](Group group, Units& family) {
        family.offsets.assign(family.channels.size(), -1);
        for (size_t unit = 0; unit < family.channels.size(); ++unit)
            place(group, family.offsets[unit], family.channels[unit]);
    };
    place(POSITION, mPosition.offset, mPosition.channels);
    place(BLEND_WEIGHT, mBlendWeight.offset, mBlendWeight.channels);
    place(NORMAL, mNormal.offset, mNormal.channels);
    placeUnits(COLOR, mColor);
    place(FOG, mFog.offset, mFog.channels);
    place(PSIZE, mPSize.offset, mPSize.channels);
    place(BLEND_INDICES, mBlendIndices.offset, mBlendIndices.channels);
    placeUnits(TCOORD, mTCoord);
    place(TANGENT, mTangent.offset, mTangent.channels);
    place(BITANGENT, mBitangent.offset, mBitangent.channels);
    for (int family = USER_BYTE; family <= USER_UINT; ++family)
        placeUnits(static_cast<Group>(family), mUser[family - USER_BYTE]);
    mStride = static_cast<int>(std::min<int64_t>(stride, std::numeric_limits<int>::max()));
}

int zuAttributes::GetChannels(Group group, int unit) const
{
    if (const Slot* single = slot(group))
        return single->channels;
    const Units* family = units(group);
    if (!family || unit < 0 || static_cast<size_t>(unit) >= family->channels.size())
        return 0;
    return family->channels[static_cast<size_t>(unit)];
}

unsigned int zuAttributes::GetOffsetByte(Group group, int unit) const
{
    if (const Slot* single = slot(group))
        return static_cast<unsigned int>(single->offset);
    const Units* family = units(group);
    if (!family || unit < 0 || static_cast<size_t>(unit) >= family->offsets.size())
        return static_cast<unsigned int>(-1);
    return static_cast<unsigned int>(family->offsets[static_cast<size_t>(unit)]);
}

int zuAttributes::GetUnitCount(Group group) const
{
    const Units* family = units(group);
    return family ? static_cast<int>(family->channels.size()) : (slot(group) ? 1 : 0);
}

const std::vector<int>& zuAttributes::GetUnitChannels(Group group) const
{
    const Units* family = units(group);
    return family ? family->channels : noUnits();
}

void zuAttributes::SetChannels(Group group, int unit, int channels)
{
    if (Slot* single = slot(group)) {
        single->channels = channels;
    } else if (Units* family = units(group)) {
        if (unit < 0)
            return;
        if (static_cast<size_t>(unit) >= family->channels.size())
            family->channels.resize(static_cast<size_t>(unit) + 1, 0);
        family->channels[static_cast<size_t>(unit)] = channels;
    } else {
        return;
    }
    UpdateOffsets();
}

void zuAttributes::SetUnitChannels(Group group, const std::vector<int>& channels)
{
    Units* family = units(group);
    if (!family)
        return;
    family->channels = channels;
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
        if (IsUnitFamily(group) ? GetUnitChannels(group) != other.GetUnitChannels(group)
                                : GetChannels(group) != other.GetChannels(group))
            return false;
    }
    return true;
}

bool zuAttributes::operator==(const zuAttributes& other) const
{
    auto sameOffsets = [](const Slot& a, const Slot& b) { return a.offset == b.offset; };
    auto sameChannels = [](const Slot& a, const Slot& b) { return a.channels == b.channels; };
    return mStride == other.mStride
        && sameOffsets(mPosition, other.mPosition) && sameOffsets(mBlendWeight, other.mBlendWeight)
        && sameOffsets(mNormal, other.mNormal)
        && sameOffsets(mFog, other.mFog) && sameOffsets(mPSize, other.mPSize)
        && sameOffsets(mBlendIndices, other.mBlendIndices)
        && sameOffsets(mTangent, other.mTangent) && sameOffsets(mBitangent, other.mBitangent)
        && mColor.offsets == other.mColor.offsets
        && mTCoord.offsets == other.mTCoord.offsets
        && sameChannels(mPosition, other.mPosition) && sameChannels(mBlendWeight, other.mBlendWeight)
        && sameChannels(mNormal, other.mNormal)
        && mColor.channels == other.mColor.channels
        && sameChannels(mFog, other.mFog) && sameChannels(mPSize, other.mPSize)
        && sameChannels(mBlendIndices, other.mBlendIndices)
        && mTCoord.channels == other.mTCoord.channels
        && sameChannels(mTangent, other.mTangent) && sameChannels(mBitangent, other.mBitangent)
        && mUser[0].channels == other.mUser[0].channels;
}

void zuAttributes::swapAttributes(zuAttributes& other)
{
    std::swap(*this, other);
}

} // namespace zu
