// Run-time type records (names, base links, derivation by record identity) and the
// process-wide registry of factories by persisted type name.

#include "support/zuTestObjects.h"

#include <zuSystem/LibInitCounter.h>

#include <gtest/gtest.h>

namespace zu::test {
namespace {

TEST(zuRttiTest, IsDerivedFollowsTheBaseLinksAndComparesRecordsByIdentity)
{
    static const zuRtti root("zuTest.Root", nullptr);
    static const zuRtti middle("zuTest.Middle", &root);
    static const zuRtti leaf("zuTest.Leaf", &middle);
    static const zuRtti rootTwin("zuTest.Root", nullptr);  // same name, another record

    EXPECT_TRUE(leaf.IsDerived(leaf) && leaf.IsDerived(middle) && leaf.IsDerived(root));
    EXPECT_FALSE(root.IsDerived(leaf) || middle.IsDerived(leaf) || leaf.IsDerived(rootTwin));
    EXPECT_FALSE(rootTwin.IsDerived(root));
}

zuRttiInterface* firstFactory(zuBaseStream&)
{
    return nullptr;
}

zuRttiInterface* secondFactory(zuBaseStream&)
{
    return nullptr;
}

class FactoryRegistry : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(LibInitCounter::count("scenegraph"), 0) << "the library must not be started";
        mOwnsRegistry = true;
        zuRttiInterface::DestroyFactoryMap();
    }
    // A started library keeps its registry.
    void TearDown() override
    {
        if (mOwnsRegistry)
            zuRttiInterface::DestroyFactoryMap();
    }

    bool mOwnsRegistry = false;
};

TEST_F(FactoryRegistry, TheMapIsCreatedOnceAndANameKeepsItsFirstFactoryUntilUnregistered)
{
    EXPECT_TRUE(zuRttiInterface::GetFactory("zuTest.Probe") == nullptr && zuRttiInterface::GetFactoryNames().empty());
    EXPECT_TRUE(zuRttiInterface::CreateFactoryMap()
                && zuRttiInterface::RegisterFactoryFunction("zuTest.Probe", firstFactory));
    EXPECT_FALSE(zuRttiInterface::CreateFactoryMap());
    EXPECT_EQ(zuRttiInterface::GetFactory("zuTest.Probe"), firstFactory);  // the second call kept it

    zuRttiInterface::DestroyFactoryMap();
    EXPECT_TRUE(zuRttiInterface::GetFactory("zuTest.Probe") == nullptr && zuRttiInterface::CreateFactoryMap());
    EXPECT_EQ(zuRttiInterface::GetFactory("zuTest.Probe"), nullptr);

    // A name keeps its first factory.
    EXPECT_TRUE(zuRttiInterface::RegisterFactoryFunction("zuTest.Probe", firstFactory)
                && !zuRttiInterface::RegisterFactoryFunction("zuTest.Probe", secondFactory));
    EXPECT_EQ(zuRttiInterface::GetFactory("zuTest.Probe"), firstFactory);
    EXPECT_TRUE(zuRttiInterface::RegisterFactoryFunction("zuTest.Probe2", secondFactory));
    EXPECT_EQ(zuRttiInterface::GetFactory("zuTest.Probe2"), secondFactory);

    EXPECT_EQ(zuRttiInterface::GetFactory("zuTest.Prob"), nullptr);  // whole names only

    zuRttiInterface::UnregisterFactoryFunction("zuTest.Probe");
    EXPECT_EQ(zuRttiInterface::GetFactory("zuTest.Probe"), nullptr);
    zuRttiInterface::UnregisterFactoryFunction("zuTest.Unknown");
    EXPECT_TRUE(zuRttiInterface::RegisterFactoryFunction("zuTest.Probe", secondFactory));
    EXPECT_EQ(zuRttiInterface::GetFactory("zuTest.Probe"), secondFactory);
}

TEST_F(FactoryRegistry, AClassRegistersItsFactoryUnderItsTypeName)
{
    ASSERT_TRUE(zuRttiInterface::CreateFactoryMap());
    zuTestController::RegisterFactory();
    zuTestNode::RegisterFactory();
    EXPECT_EQ(zuRttiInterface::GetFactory("zuTest.zuTestNode"), &zuTestNode::Factory);
    EXPECT_EQ(zuRttiInterface::GetFactory("zuTest.zuTestController"), &zuTestController::Factory);
    EXPECT_EQ(zuRttiInterface::GetFactoryNames(),
              (std::vector<std::string>{"zuTest.zuTestController", "zuTest.zuTestNode"}));
    zuTestNode::UnRegisterFactory();
    EXPECT_EQ(zuRttiInterface::GetFactory("zuTest.zuTestNode"), nullptr);
    EXPECT_EQ(zuRttiInterface::GetFactory("zuTest.zuTestController"), &zuTestController::Factory);
}

} // namespace
} // namespace zu::test
