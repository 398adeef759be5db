// Core settings: the values written from 5.20 on only, the value that is never persisted,
// hostile counts, and the Equals/Clone/assignment semantics.

#include "support/zuFactoryTest.h"
#include "support/zuRecordPins.h"
#include "support/zuSampleObjects.h"

#include <zuSceneGraph/objects/zuTSharedArray.h>
#include <zuSceneGraph/stream/zuCoreSettings.h>

#include <gtest/gtest.h>

#include <cstring>

namespace zu::test {
namespace {

using CoreSettings = zuFactoryTest;

// The persisted values: the 6.32 record without the identity (K is never saved).
std::vector<char> values(zuCoreSettings& settings)
{
    std::vector<char> bytes = saveToBytes({&settings}, zuStreamVersion(6, 32));
    const long identity = 4 + 9 + 4 + 21 + 4;
    bytes.erase(bytes.begin() + identity, bytes.begin() + identity + 8);
    return bytes;
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

// J3 and J4 are written from 5.20 on only, so 5.10 bytes read as 5.20 want two values that
// are not there; K is never written, so a loaded object keeps its default.
TEST_F(CoreSettings, J3AndJ4AreMissingBefore520AndKIsNeverSaved)
{
    zuPointer<zuCoreSettings> settings = filledSettings();
    const std::vector<char> bytes = saveToBytes({settings}, zuStreamVersion(5, 10));
    zuPointer<zuCoreSettings> loaded = loadSettings(bytes, zuStreamVersion(5, 10));
    ASSERT_NE(loaded, nullptr);
    EXPECT_TRUE(loaded->K == 2u && (loadSettings(bytes, zuStreamVersion(5, 20))) == nullptr);
}

TEST_F(CoreSettings, HostileListCountsFailTheLoad)
{
    // The entry, string and record counts in turn claim more than the data holds.
    for (const char* counts : {"ff ff ff 7f", "#0 ff ff ff 7f", "#0 #0 #100 #0 ~0.001 #1 ~1 #0 00 ff ff ff 7f"}) {
        SCOPED_TRACE(counts);
        std::vector<char> data = pinBytes(std::string("'Top Level' 'zuCore.zuCoreSettings' <0> #0 #0 ") + counts);
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
    EXPECT_TRUE(values(*target) == values(*filled) && target->K == filled->K && target->GetID() == targetID);
    EXPECT_TRUE(target->GetReferences() == 1 && zuCoreSettings(*filled).GetID() != filled->GetID());
}

} // namespace
} // namespace zu::test
