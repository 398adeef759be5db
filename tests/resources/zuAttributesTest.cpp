// The vertex layout: offsets packed with no gaps in layout order, units created on demand,
// the range rules of the getters, Matches, and the deliberately partial equality.

#include <zuSceneGraph/resources/zuAttributes.h>

#include <gtest/gtest.h>

#include <vector>

namespace zu {
namespace {

const unsigned int NO_OFFSET = 0xFFFFFFFFu;

TEST(zuAttributes, DefaultHasNoGroup)
{
    zuAttributes layout;
    EXPECT_EQ(layout.GetStride(), 0);
    for (int g = 0; g < zuAttributes::GROUP_COUNT; ++g) {
        const auto group = static_cast<zuAttributes::Group>(g);
        EXPECT_EQ(layout.GetChannels(group), 0) << g;
        EXPECT_EQ(layout.GetOffsetByte(group), NO_OFFSET) << g;
        EXPECT_FALSE(layout.Has(group)) << g;
        EXPECT_EQ(layout.GetUnitCount(group), zuAttributes::IsUnitFamily(group) ? 0 : 1) << g;
    }
}

TEST(zuAttributes, GroupsFollowEachOtherInLayoutOrderWithNoGaps)
{
    zuAttributes small;
    small.SetPositionChannels(3);
    small.SetUserByteChannels(0, 3);
    EXPECT_EQ(small.GetStride(), 15);
    EXPECT_EQ(small.GetUserByteOffsetByte(0), 12u);

    // Set in an order unlike the layout's, so that the offsets can only come from the walk.
    zuAttributes layout;
    layout.SetUserUIntChannels(0, 1);
    layout.SetUserIntChannels(0, 2);
    layout.SetUserUShortChannels(0, 1);
    layout.SetUserShortChannels(0, 3);
    layout.SetUserUByteChannels(0, 1);
    layout.SetUserByteChannels(0, 3);
    layout.SetBitangentChannels(3);
    layout.SetTangentChannels(3);
    layout.SetTCoordChannels(0, 2);
    layout.SetBlendIndicesChannels(4);
    layout.SetPSizeChannels(1);
    layout.SetFogChannels(1);
    layout.SetColorChannels(2, 3);
    layout.SetColorChannels(0, 4);
    layout.SetNormalChannels(3);
    layout.SetBlendWeightChannels(2);
    layout.SetPositionChannels(3);

    EXPECT_EQ(layout.GetPositionOffsetByte(), 0u);
    EXPECT_EQ(layout.GetBlendWeightOffsetByte(), 12u);
    EXPECT_EQ(layout.GetNormalOffsetByte(), 20u);
    EXPECT_EQ(layout.GetColorOffsetByte(0), 32u);
    EXPECT_EQ(layout.GetColorOffsetByte(1), NO_OFFSET);  // a unit with 0 channels
    EXPECT_EQ(layout.GetColorOffsetByte(2), 48u);
    EXPECT_EQ(layout.GetFogOffsetByte(), 60u);
    EXPECT_EQ(layout.GetPSizeOffsetByte(), 64u);
    EXPECT_EQ(layout.GetBlendIndicesOffsetByte(), 68u);
    EXPECT_EQ(layout.GetTCoordOffsetByte(0), 84u);
    EXPECT_EQ(layout.GetTangentOffsetByte(), 92u);
    EXPECT_EQ(layout.GetBitangentOffsetByte(), 104u);
    EXPECT_EQ(layout.GetUserByteOffsetByte(0), 116u);
    EXPECT_EQ(layout.GetUserUByteOffsetByte(0), 119u);
    EXPECT_EQ(layout.GetUserShortOffsetByte(0), 120u);
    EXPECT_EQ(layout.GetUserUShortOffsetByte(0), 126u);
    EXPECT_EQ(layout.GetUserIntOffsetByte(0), 128u);
    EXPECT_EQ(layout.GetUserUIntOffsetByte(0), 136u);
    EXPECT_EQ(layout.GetStride(), 140);

    // Removing a group closes the gap behind it.
    layout.SetBlendWeightChannels(0);
    EXPECT_EQ(layout.GetBlendWeightOffsetByte(), NO_OFFSET);
    EXPECT_EQ(layout.GetNormalOffsetByte(), 12u);
    EXPECT_EQ(layout.GetStride(), 132);
}

TEST(zuAttributes, SettingAUnitCreatesTheUnitsBelowItEmptyAndGettersAnswerNothingOutsideThem)
{
    zuAttributes layout;
    layout.SetTCoordChannels(3, 2);
    ASSERT_EQ(layout.GetTCoordUnitCount(), 4);
    for (int unit : {-1, 0, 1, 2, 4, 1000}) {
        EXPECT_EQ(layout.GetTCoordChannels(unit), 0) << unit;
        EXPECT_EQ(layout.GetTCoordOffsetByte(unit), NO_OFFSET) << unit;
        EXPECT_FALSE(layout.HasTCoord(unit)) << unit;
        EXPECT_EQ(layout.GetUserUIntOffsetByte(unit), NO_OFFSET) << unit;
    }
    EXPECT_EQ(layout.GetTCoordChannels(3), 2);
    EXPECT_EQ(layout.GetTCoordOffsetByte(3), 0u);
    EXPECT_TRUE(layout.HasTCoord(3));
    EXPECT_EQ(layout.GetStride(), 8);

    // Lowering a unit keeps the unit count; a negative unit changes nothing.
    layout.SetTCoordChannels(1, 1);
    layout.SetTCoordChannels(-1, 5);
    EXPECT_EQ(layout.GetTCoordUnitCount(), 4);
    EXPECT_EQ(layout.GetTCoordOffsetByte(3), 4u);
    EXPECT_EQ(layout.GetStride(), 12);
    EXPECT_EQ(layout.GetUnitChannels(zuAttributes::TCOORD), (std::vector<int>{0, 1, 0, 2}));
}

TEST(zuAttributes, BulkUnitsEqualUnitByUnitSetting)
{
    zuAttributes oneByOne;
    oneByOne.SetPositionChannels(3);
    oneByOne.SetUserShortChannels(0, 0);
    oneByOne.SetUserShortChannels(1, 2);
    oneByOne.SetUserShortChannels(2, 0);
    zuAttributes bulk;
    bulk.SetPositionChannels(3);
    bulk.SetUnitChannels(zuAttributes::USER_SHORT, {0, 2, 0});
    EXPECT_EQ(bulk.GetStride(), oneByOne.GetStride());
    EXPECT_EQ(bulk.GetUserShortUnitCount(), 3);
    for (int unit = 0; unit < 3; ++unit)
        EXPECT_EQ(bulk.GetUserShortOffsetByte(unit), oneByOne.GetUserShortOffsetByte(unit));
    EXPECT_TRUE(bulk.Matches(oneByOne, true, true, true, true, true, true, true, true, true, true, true, true, true,
                             true, true, true));
}

TEST(zuAttributes, MatchesComparesTheFlaggedChannelCountsOnly)
{
    zuAttributes a;
    a.SetPositionChannels(3);
    a.SetNormalChannels(3);
    a.SetTCoordChannels(0, 2);
    zuAttributes b = a;
    b.SetColorChannels(0, 4);  // moves the texture coordinates: offsets differ
    const bool all = true;
    EXPECT_FALSE(a.Matches(b, all, all, all, all, all, all, all, all, all, all, all, all, all, all, all, all));
    EXPECT_TRUE(a.Matches(b, true, true, true, false, true, true, true, true, true, true, true, true, true, true, true,
                          true));

    // A unit family matches only with the same units: an extra empty unit differs.
    zuAttributes c = a;
    c.SetTCoordChannels(1, 0);
    EXPECT_FALSE(a.Matches(c, false, false, false, false, false, false, false, true, false, false, false, false, false,
                           false, false, false));
    EXPECT_TRUE(a.Matches(c, true, true, true, true, true, true, true, false, true, true, true, true, true, true, true,
                          true));

    // Each user family has its own flag.
    zuAttributes d = a;
    d.SetUserUIntChannels(0, 1);
    EXPECT_FALSE(a.Matches(d, false, false, false, false, false, false, false, false, false, false, false, false,
                           false, false, false, true));
    EXPECT_TRUE(a.Matches(d, true, true, true, true, true, true, true, true, true, true, true, true, true, true, true,
                          false));
}

TEST(zuAttributes, EqualityIgnoresTheUserFamiliesAfterUserByte)
{
    zuAttributes base;
    base.SetPositionChannels(3);

    // Same stride (20), different UserInt and UserUInt channels: equal.
    zuAttributes a = base;
    a.SetUserIntChannels(0, 1);
    a.SetUserUIntChannels(0, 1);
    zuAttributes b = base;
    b.SetUserIntChannels(0, 2);
    ASSERT_EQ(a.GetStride(), b.GetStride());
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a != b);

    // UserUByte against UserShort at the same stride: equal too.
    zuAttributes c = base;
    c.SetUserUByteChannels(0, 2);
    zuAttributes d = base;
    d.SetUserShortChannels(0, 1);
    EXPECT_TRUE(c == d);

    // UserByte channels take part.
    zuAttributes e = base;
    e.SetUserByteChannels(0, 2);
    EXPECT_FALSE(e == c);

    // So do the stride and every float group.
    EXPECT_FALSE(a == base);
    zuAttributes f = base;
    f.SetTCoordChannels(0, 2);
    zuAttributes g = base;
    g.SetColorChannels(0, 2);
    EXPECT_FALSE(f == g);
}

} // namespace
} // namespace zu
