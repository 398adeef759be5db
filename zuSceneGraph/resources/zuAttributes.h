#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zu {

class zuFieldVisitor;

// The byte layout of one vertex of a zuVertexBuffer: which channel groups are present, how
// many components each has, and at which byte offset inside the vertex each starts.
//
// Groups, in the order they are laid out: position, blend weight, normal, colour units,
// fog, point size, blend indices, texture-coordinate units, tangent, bitangent, then the
// units of the six typed user families (UserByte, UserUByte, UserShort, UserUShort,
// UserInt, UserUInt). Groups up to the bitangent hold 32-bit floats (blend indices too);
// the user families hold signed/unsigned 8-, 16- and 32-bit integers. Groups follow each
// other with no gap for alignment: 3 position floats and one UserByte unit of 3 channels
// make a stride of 15, so the floats of the next vertex may be unaligned.
//
// An absent group has offset -1 and 0 channels. Every setter recomputes the offsets and
// the stride (UpdateOffsets): they are derived from the channel counts alone.
//
// A value holds one pointer to an immutable layout record shared by every equal value
// (interned): a model has a handful of distinct layouts and very many buffers. A setter
// makes (or finds) the record of the changed layout. Copies share the record; values may be
// made, copied and dropped on several threads at once.
class zuAttributes {
public:
    // Every group, in layout order. COLOR, TCOORD and the USER_ families have units
    // (numbered from 0, with no upper bound); the others are single groups.
    enum Group : int {
        POSITION,
        BLEND_WEIGHT,
        NORMAL,
        COLOR,
        FOG,
        PSIZE,
        BLEND_INDICES,
        TCOORD,
        TANGENT,
        BITANGENT,
        USER_BYTE,
        USER_UBYTE,
        USER_SHORT,
        USER_USHORT,
        USER_INT,
        USER_UINT,
        GROUP_COUNT
    };

    // Stride 0, no group.
    zuAttributes() = default;
    zuAttributes(const zuAttributes& other) : mLayout(other.mLayout) { retain(mLayout); }
    zuAttributes(zuAttributes&& other) noexcept : mLayout(other.mLayout) { other.mLayout = &msEmpty; }
    zuAttributes& operator=(const zuAttributes& other);
    zuAttributes& operator=(zuAttributes&& other) noexcept;
    ~zuAttributes() { release(mLayout); }

    // Each present group (unit) in layout order has the running stride as its offset and adds
    // its bytes (channels × component size). Every setter lays the groups out so; this
    // call finds them laid out already and changes nothing.
    void UpdateOffsets() {}
    int GetStride() const { return mLayout->stride; }

    // The generic forms, for code that walks every group. `unit` is ignored by the single
    // groups. The channel count is 0 and the offset -1 (all ones as an unsigned value) for
    // a negative or missing unit.
    int GetChannels(Group group, int unit = 0) const;
    unsigned int GetOffsetByte(Group group, int unit = 0) const
    {
        // Inline for the single groups: the vertex accessors ask once per element.
        const int single = singleIndex(group);
        if (single >= 0)
            return static_cast<unsigned int>(mLayout->singles[single].offset);
        return unitOffsetByte(group, unit);
    }
    bool Has(Group group, int unit = 0) const { return GetChannels(group, unit) > 0; }
    // The number of units of a unit family; 1 for a single group.
    int GetUnitCount(Group group) const;
    // The channel count of every unit of a unit family (empty for a single group).
    std::vector<int> GetUnitChannels(Group group) const;
    // Sets a group's count. For a unit family the units grow to `unit + 1` when needed (new
    // units get 0 channels); a negative unit changes nothing.
    void SetChannels(Group group, int unit, int channels);
    // Replaces every unit of a unit family at once, the same as setting the units one by
    // one in order (a stream load uses it, so that many units cost one UpdateOffsets).
    void SetUnitChannels(Group group, const std::vector<int>& channels);

    static bool IsUnitFamily(Group group) { return family(group) >= 0; }
    // Bytes per component: 4 for the float groups, 1, 1, 2, 2, 4, 4 for the user families.
    static constexpr int ComponentSize(Group group)
    {
        if (group == USER_BYTE || group == USER_UBYTE)
            return 1;
        return group == USER_SHORT || group == USER_USHORT ? 2 : 4;
    }

    // The named forms of the single groups: Set<Group>Channels(int), Get<Group>Channels(),
    // Get<Group>OffsetByte(), Has<Group>().
#define ZU_ATTRIBUTES_GROUP(Name, GROUP)                                                        \
    void Set##Name##Channels(int channels) { SetChannels(GROUP, 0, channels); }                 \
    int Get##Name##Channels() const { return GetChannels(GROUP); }                              \
    unsigned int Get##Name##OffsetByte() const { return GetOffsetByte(GROUP); }                 \
    bool Has##Name() const { return Has(GROUP); }
    ZU_ATTRIBUTES_GROUP(Position, POSITION)
    ZU_ATTRIBUTES_GROUP(BlendWeight, BLEND_WEIGHT)
    ZU_ATTRIBUTES_GROUP(Normal, NORMAL)
    ZU_ATTRIBUTES_GROUP(Fog, FOG)
    ZU_ATTRIBUTES_GROUP(PSize, PSIZE)
    ZU_ATTRIBUTES_GROUP(BlendIndices, BLEND_INDICES)
    ZU_ATTRIBUTES_GROUP(Tangent, TANGENT)
    ZU_ATTRIBUTES_GROUP(Bitangent, BITANGENT)
#undef ZU_ATTRIBUTES_GROUP

    // The named forms of the unit families: Set<Family>Channels(unit, channels),
    // Get<Family>Channels(unit), Get<Family>OffsetByte(unit), Has<Family>(unit) and
    // Get<Family>UnitCount().
#define ZU_ATTRIBUTES_UNITS(Name, GROUP)                                                        \
    void Set##Name##Channels(int unit, int channels) { SetChannels(GROUP, unit, channels); }    \
    int Get##Name##Channels(int unit) const { return GetChannels(GROUP, unit); }                \
    unsigned int Get##Name##OffsetByte(int unit) const { return GetOffsetByte(GROUP, unit); }   \
    bool Has##Name(int unit) const { return Has(GROUP, unit); }                                 \
    int Get##Name##UnitCount() const { return GetUnitCount(GROUP); }
    ZU_ATTRIBUTES_UNITS(Color, COLOR)
    ZU_ATTRIBUTES_UNITS(TCoord, TCOORD)
    ZU_ATTRIBUTES_UNITS(UserByte, USER_BYTE)
    ZU_ATTRIBUTES_UNITS(UserUByte, USER_UBYTE)
    ZU_ATTRIBUTES_UNITS(UserShort, USER_SHORT)
    ZU_ATTRIBUTES_UNITS(UserUShort, USER_USHORT)
    ZU_ATTRIBUTES_UNITS(UserInt, USER_INT)
    ZU_ATTRIBUTES_UNITS(UserUInt, USER_UINT)
#undef ZU_ATTRIBUTES_UNITS

    // True when, for every group whose flag is set, the channel counts are equal; a unit
    // family must have the same units with the same counts. Offsets and strides are not
    // compared.
    bool Matches(const zuAttributes& other, bool position, bool blendWeight, bool normal, bool color, bool fog,
                 bool pSize, bool blendIndices, bool tCoord, bool tangent, bool bitangent, bool userByte,
                 bool userUByte, bool userShort, bool userUShort, bool userInt, bool userUInt) const;

    // Deliberately partial: the stride, the offsets of the float groups, the channels of the
    // float groups and the UserByte channels. The offsets of every user family and the
    // channels of UserUByte, UserShort, UserUShort, UserInt and UserUInt take no part, so two
    // layouts that differ only there, with the same stride, are equal. Buffers compare
    // their layouts with it, and files of this format rely on the same answer.
    bool operator==(const zuAttributes& other) const;
    bool operator!=(const zuAttributes& other) const { return !(*this == other); }

    void swapAttributes(zuAttributes& other);
    // Reports the stride and each present group (unit) with its channels and offset, as the
    // group `name`.
    void DescribeFields(const char* name, zuFieldVisitor& visitor) const;

private:
    friend class zuVertexBuffer;

    // A single group, or one unit of a family.
    struct Slot {
        int offset = -1;
        int channels = 0;
    };
    static constexpr int SINGLE_COUNT = 8;  // the groups without units
    static constexpr int FAMILY_COUNT = 8;  // COLOR, TCOORD, USER_BYTE ... USER_UINT

    // One distinct layout. The channel counts are its identity; the offsets and the stride
    // follow from them (layOut). Records in use are never changed.
    struct Layout {
        mutable std::atomic<uint32_t> references{0};
        int stride = 0;
        Slot singles[SINGLE_COUNT];
        int unitCount[FAMILY_COUNT] = {};
        // The units of every family, family after family in layout order (colour, texture
        // coordinates, the six user families).
        std::vector<Slot> units;

        Layout() = default;
        Layout(const Layout& other);
        size_t firstUnit(int familyIndex) const;
        void layOut();
        void setChannels(Group group, int unit, int channels);
        void setUnitChannels(Group group, const std::vector<int>& channels);
    };

    // The index of a single group in Layout::singles, -1 for a unit family.
    static constexpr int singleIndex(Group group)
    {
        switch (group) {
        case POSITION: return 0;
        case BLEND_WEIGHT: return 1;
        case NORMAL: return 2;
        case FOG: return 3;
        case PSIZE: return 4;
        case BLEND_INDICES: return 5;
        case TANGENT: return 6;
        case BITANGENT: return 7;
        default: return -1;
        }
    }
    // The offset of a unit of a unit family.
    unsigned int unitOffsetByte(Group group, int unit) const;
    // The index of a unit family in Layout::unitCount (-1 for a single group).
    static constexpr int family(Group group)
    {
        if (group == COLOR)
            return 0;
        if (group == TCOORD)
            return 1;
        return group >= USER_BYTE && group <= USER_UINT ? 2 + (group - USER_BYTE) : -1;
    }
    // A copy of the current record's counts to change; adopt lays it out and makes it this
    // value's layout (a stream load sets every count of one draft, then adopts it once).
    Layout draft() const { return Layout(*mLayout); }
    void adopt(Layout&& draft);

    static void retain(const Layout* layout)
    {
        if (layout != &msEmpty)
            layout->references.fetch_add(1, std::memory_order_relaxed);
    }
    static void release(const Layout* layout);
    struct LayoutHash;
    struct SameCounts;
    struct LayoutTable;
    struct LastRecord;
    // The shared record equal to `draft` (laid out), made when there is none; with a
    // reference taken for the caller.
    static const Layout* intern(Layout&& draft);
    static const Layout* internShared(Layout&& draft);

    // The layout of a default value: no group, never counted or freed.
    static const Layout msEmpty;
    const Layout* mLayout = &msEmpty;
};

} // namespace zu
