// The intrusive pointer: who takes and releases references, and when objects die.

#include "support/zuTestObjects.h"

#include <gtest/gtest.h>

#include <utility>

namespace zu::test {
namespace {

class zuPointerTest : public ::testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(zuTestNode::msLiving, mLiving) << "a test node leaked or died twice"; }
    const int mLiving = zuTestNode::msLiving;
};

TEST_F(zuPointerTest, AssigningAnObjectOwnedByTheOldOneKeepsItAlive)
{
    zuPointer<zuTestNode> holder = new zuTestNode("parent");
    holder->AttachChild(new zuTestNode("child"));
    zuTestNode* child = holder->GetChild(0);
    EXPECT_EQ(child->GetReferences(), 1);

    holder = child;  // the parent dies and drops its reference only after ours is taken
    EXPECT_TRUE(zuTestNode::msLiving == mLiving + 1 && holder->GetName() == "child" && child->GetReferences() == 1);

    zuPointer<zuTestNode> parent = new zuTestNode("parent");
    parent->AttachChild(new zuTestNode("child"));
    zuPointer<zuTestNode> grandChildHolder = parent->GetChild(0);
    parent = std::move(grandChildHolder);
    EXPECT_TRUE(parent->GetName() == "child" && parent->GetReferences() == 1);
}

} // namespace
} // namespace zu::test
