// Core settings: the exact bytes at 5.10, 5.20 (J3 and J4 only from 5.20) and 6.32, the
// value that is never persisted, hostile counts, and the Equals/Clone/assignment semantics.

#include "support/zuTestObjects.h"

#include <zuSceneGraph/objects/zuTSharedArray.h>
#include <zuSceneGraph/stream/zuCoreSettings.h>

#include <gtest/gtest.h>

#include <cstring>

namespace zu::test {
namespace {

class CoreSettings : public ::testing::Test {
protected:
    zuTestFactories factories;
};

uint64_t id(const void* object)
{
    return reinterpret_cast<uintptr_t>(object);
}

// Settings whose every value differs from its default.
zuCoreSettings* filledSettings()
{
    zuCoreSettings* settings = new zuCoreSettings;
    settings->Entries.push_back({"alpha", 1.0f, 2.0f, 3.0f, true});
    settings->Entries.push_back({"", -0.5f, 0.25f, 1e10f, false});
    settings->Strings = {"x", "", "yz"};
    settings->S1 = -7;
    settings->S2 = 0xFFFFFFF0u;
    settings->S3 = 0.5f;
    settings->S4 = 42;
    settings->S5 = -3.0f;
    settings->S6 = 9;
    settings->S7 = true;
    zuCoreSettings::Record record;
    record.First = "first";
    record.Second = "2nd";
    record.Values[0] = 1;
    record.Values[1] = 0x80000000u;
    record.Values[2] = 3;
    settings->Records.push_back(record);
    settings->H1 = false;
    settings->H2 = true;
    settings->H3 = true;
    settings->H4 = false;
    settings->J1 = 11;
    settings->J2 = 12;
    settings->J3 = 13;
    settings->J4 = 14;
    settings->J5 = 15;
    settings->J6 = 16;
    settings->K = 17;
    settings->Width1 = 1920;
    settings->Height1 = 1080;
    settings->Width2 = 64;
    settings->Height2 = 48;
    return settings;
}

// The persisted values: the 6.32 record without the identity (K is never saved).
std::vector<char> values(zuCoreSettings& settings)
{
    std::vector<char> bytes = saveToBytes({&settings}, zuStreamVersion(6, 32));
    const long identity = 4 + 9 + 4 + 21 + 4;
    bytes.erase(bytes.begin() + identity, bytes.begin() + identity + 8);
    return bytes;
}

// The fields of filledSettings() up to the size pairs, as the stream writes them.
void filledFields(zuBytes& bytes)
{
    bytes.i32(2);
    bytes.str("alpha").u8(1).f32(3.0f).f32(1.0f).f32(2.0f);
    bytes.str("").u8(0).f32(1e10f).f32(-0.5f).f32(0.25f);
    bytes.i32(3).str("x").str("").str("yz");
    bytes.i32(-7).i32(static_cast<int32_t>(0xFFFFFFF0u)).f32(0.5f).i32(42).f32(-3.0f).i32(9).u8(1);
    bytes.i32(1).i32(1).i32(static_cast<int32_t>(0x80000000u)).i32(3).str("2nd").str("first");
    bytes.u8(0).u8(1).u8(1).u8(0);
    bytes.i32(11).i32(12).i32(15).i32(16);
    bytes.i32(1920).i32(1080).i32(64).i32(48);
}

zuPointer<zuCoreSettings> loadSettings(std::vector<char> bytes, zuStreamVersion version)
{
    zuBaseStream stream;
    stream.SetVersion(version);
    if (!stream.Load(bytes.data(), bytes.size()) || stream.GetObjectCount() != 1
        || !stream.GetObjectAt(0)->IsExactly(zuCoreSettings::TYPE))
        return nullptr;
    return static_cast<zuCoreSettings*>(stream.GetObjectAt(0));
}

// Every value of filled settings at 6.32 (with the size field), 5.20 and 5.10: J3 and J4
// are written last from 5.20 on only, and K never, so a loaded object keeps its default.
// The same 5.10 bytes read as 5.20 want the two values that are not there.
TEST_F(CoreSettings, FilledSettingsAt632And520WriteJ3AndJ4LastAnd510OmitsThem)
{
    zuPointer<zuCoreSettings> settings = filledSettings();
    for (const zuStreamVersion version : {zuStreamVersion(6, 32), zuStreamVersion(5, 20), zuStreamVersion(5, 10)}) {
        const bool withJ3J4 = version >= zuStreamVersion(5, 20);
        SCOPED_TRACE(std::to_string(version.GetMajor()) + "." + std::to_string(version.GetMinor()));
        zuBytes fields;
        filledFields(fields);
        if (withJ3J4)
            fields.i32(13).i32(14);
        zuBytes expected;
        expected.str("Top Level").str("zuCore.zuCoreSettings");
        if (version >= zuStreamVersion(6, 0))
            expected.i32(static_cast<int>(4 + 21 + 4 + 8 + 4 + 4 + fields.size()));
        expected.u64(id(settings)).str("").i32(0).raw(fields.bytes().data(), fields.size());
        EXPECT_EQ(saveToBytes({settings}, version), expected.bytes());

        zuPointer<zuCoreSettings> loaded = loadSettings(expected.bytes(), version);
        ASSERT_NE(loaded, nullptr);
        zuPointer<zuCoreSettings> written = new zuCoreSettings(*settings);
        if (!withJ3J4)
            written->J3 = written->J4 = 0;
        EXPECT_EQ(values(*loaded), values(*written));
        EXPECT_EQ(loaded->K, 2u);
        if (!withJ3J4) {
            zuBaseStream stream;
            stream.SetVersion(zuStreamVersion(5, 20));
            std::vector<char> bytes = expected.bytes();
            EXPECT_FALSE(stream.Load(bytes.data(), bytes.size()));
        }
    }
}

TEST_F(CoreSettings, DefaultSettingsAt632AndBack)
{
    zuPointer<zuCoreSettings> settings = new zuCoreSettings;
    zuBytes expected;
    const int size = 4 + 21 + 4 + 8 + 4 + 4 + (4 + 4 + 25 + 4 + 4 + 16 + 16 + 8);
    expected.str("Top Level").str("zuCore.zuCoreSettings").i32(size).u64(id(settings)).str("").i32(0);
    expected.i32(0).i32(0);
    expected.i32(100).i32(0).f32(0.001f).i32(1).f32(1.0f).i32(0).u8(0);
    expected.i32(0).u8(1).u8(0).u8(0).u8(1);
    expected.i32(0).i32(0).i32(5).i32(30).i32(800).i32(600).i32(320).i32(240).i32(0).i32(0);
    EXPECT_EQ(saveToBytes({settings}, zuStreamVersion(6, 32)), expected.bytes());
    // A default object comes back as its defaults, K included.
    zuPointer<zuCoreSettings> loaded = loadSettings(expected.bytes(), zuStreamVersion(6, 32));
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(values(*loaded), values(*settings));
}

TEST_F(CoreSettings, HostileListCountsFailTheLoad)
{
    // The entry, string and record counts in turn claim more than the data holds.
    for (int list = 0; list < 3; ++list) {
        SCOPED_TRACE(list);
        zuBytes bytes;
        bytes.str("Top Level").str("zuCore.zuCoreSettings").u64(0x1000).str("").i32(0);
        if (list == 0) {
            bytes.i32(0x7fffffff);
        } else {
            bytes.i32(0);
            if (list == 1) {
                bytes.i32(0x7fffffff);
            } else {
                bytes.i32(0).i32(100).i32(0).f32(0.001f).i32(1).f32(1.0f).i32(0).u8(0).i32(0x7fffffff);
            }
        }
        std::vector<char> data(bytes.bytes());
        data.resize(data.size() + 64, '\0');
        zuBaseStream stream;
        stream.SetVersion(zuStreamVersion(5, 20));
        EXPECT_FALSE(stream.Load(data.data(), data.size()));
        EXPECT_EQ(stream.GetObjectCount(), 0);
    }
}

TEST_F(CoreSettings, EqualsIgnoresTheValuesAndCloneKeepsTheTargetsOwn)
{
    zuPointer<zuCoreSettings> filled = filledSettings();
    zuPointer<zuCoreSettings> defaults = new zuCoreSettings;
    EXPECT_TRUE(filled->Equals(defaults));
    zuPointer<zuIntArray> array = new zuIntArray;
    EXPECT_FALSE(filled->Equals(array));

    zuRttiInterface* target = nullptr;
    ASSERT_TRUE(filled->Clone(target));
    ASSERT_NE(target, nullptr);
    zuPointer<zuRttiInterface> holder = target;
    ASSERT_TRUE(target->IsExactly(zuCoreSettings::TYPE));
    EXPECT_EQ(values(*static_cast<zuCoreSettings*>(target)), values(*defaults));

    zuPointer<zuCoreSettings> other = filledSettings();
    other->S1 = 555;
    target = other.get();
    ASSERT_TRUE(defaults->Clone(target));
    EXPECT_EQ(other->S1, 555);

    target = array.get();
    EXPECT_FALSE(filled->Clone(target));
}

TEST_F(CoreSettings, AssignmentCopiesEveryValueButNotTheIdentity)
{
    zuPointer<zuCoreSettings> filled = filledSettings();
    zuPointer<zuCoreSettings> target = new zuCoreSettings;
    const unsigned int targetID = target->GetID();
    *target = *filled;
    EXPECT_EQ(values(*target), values(*filled));
    EXPECT_EQ(target->K, filled->K);
    EXPECT_EQ(target->GetID(), targetID);
    EXPECT_EQ(target->GetReferences(), 1);
    EXPECT_NE(zuCoreSettings(*filled).GetID(), filled->GetID());
}

} // namespace
} // namespace zu::test
