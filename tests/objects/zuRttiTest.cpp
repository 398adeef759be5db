// Run-time type records: names, base links and derivation by record identity.

#include "support/zuTestObjects.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zu::test {
namespace {

TEST(zuRttiTest, IsDerivedFollowsTheBaseLinksAndComparesRecordsByIdentity)
{
    static const zuRtti root("zuTest.Root", nullptr);
    static const zuRtti middle("zuTest.Middle", &root);
    static const zuRtti leaf("zuTest.Leaf", &middle);
    static const zuRtti rootTwin("zuTest.Root", nullptr);  // same name, another record

    EXPECT_TRUE(leaf.IsDerived(leaf));
    EXPECT_TRUE(leaf.IsDerived(middle));
    EXPECT_TRUE(leaf.IsDerived(root));
    EXPECT_FALSE(root.IsDerived(leaf));
    EXPECT_FALSE(middle.IsDerived(leaf));
    EXPECT_FALSE(leaf.IsDerived(rootTwin));
    EXPECT_FALSE(rootTwin.IsDerived(root));
    EXPECT_EQ(leaf.GetBaseType(), &middle);
    EXPECT_EQ(root.GetBaseType(), nullptr);
    EXPECT_STREQ(leaf.GetName(), "zuTest.Leaf");
}

TEST(zuRttiTest, TheLibraryRecordsFormOneHierarchy)
{
    EXPECT_STREQ(zuRttiInterface::TYPE.GetName(), "zuCore.zuRttiInterface");
    EXPECT_EQ(zuRttiInterface::TYPE.GetBaseType(), nullptr);
    EXPECT_STREQ(zuObject::TYPE.GetName(), "zuCore.zuObject");
    EXPECT_EQ(zuObject::TYPE.GetBaseType(), &zuRttiInterface::TYPE);
    EXPECT_STREQ(zuController::TYPE.GetName(), "zuCore.zuController");
    EXPECT_EQ(zuController::TYPE.GetBaseType(), &zuObject::TYPE);

    zuTestController controller;
    EXPECT_EQ(&controller.GetType(), &zuTestController::TYPE);
    EXPECT_TRUE(controller.IsDerived(zuController::TYPE));
    EXPECT_TRUE(controller.IsDerived(zuObject::TYPE));
    EXPECT_TRUE(controller.IsDerived(zuRttiInterface::TYPE));
    EXPECT_FALSE(controller.IsDerived(zuTestNode::TYPE));
    EXPECT_TRUE(controller.IsExactly(zuTestController::TYPE));
    EXPECT_FALSE(controller.IsExactly(zuController::TYPE));

    zuTestPlain plain;
    EXPECT_TRUE(plain.IsDerived(zuRttiInterface::TYPE));
    EXPECT_FALSE(plain.IsDerived(zuObject::TYPE));
}

} // namespace
} // namespace zu::test
