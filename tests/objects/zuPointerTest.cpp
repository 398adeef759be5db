// The intrusive pointer: who takes and releases references, and when objects die.

#include "support/zuTestObjects.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace zu::test {
namespace {

class zuPointerTest : public ::testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(zuTestNode::msLiving, mLiving) << "a test node leaked or died twice"; }
    const int mLiving = zuTestNode::msLiving;
};

TEST_F(zuPointerTest, CopiesTakeReferencesMovesTransferThemAndTheLastReleaseDestroys)
{
    zuPointer<zuTestNode> empty;
    EXPECT_EQ(empty.get(), nullptr);
    EXPECT_FALSE(empty);

    auto* node = new zuTestNode("n");
    zuPointer<zuTestNode> first = node;
    EXPECT_EQ(node->GetReferences(), 1);
    {
        zuPointer<zuTestNode> copy = first;
        EXPECT_EQ(node->GetReferences(), 2);
        zuPointer<zuObject> base = first;  // converting copy
        EXPECT_EQ(node->GetReferences(), 3);
        EXPECT_EQ(base.get(), node);
        zuPointer<zuTestNode> moved = std::move(copy);
        EXPECT_EQ(copy.get(), nullptr);
        EXPECT_EQ(node->GetReferences(), 3);
    }
    EXPECT_EQ(node->GetReferences(), 1);
    EXPECT_EQ(&*first, node);
    EXPECT_EQ(first->GetName(), "n");

    first = node;  // the same object: no change
    EXPECT_EQ(node->GetReferences(), 1);
    zuPointer<zuTestNode>& alias = first;
    first = alias;
    EXPECT_EQ(node->GetReferences(), 1);

    zuPointer<zuTestNode> second = new zuTestNode("m");
    second = std::move(first);  // "m" is released, "n" moves over
    EXPECT_EQ(first.get(), nullptr);
    EXPECT_EQ(second.get(), node);
    EXPECT_EQ(node->GetReferences(), 1);
    EXPECT_EQ(zuTestNode::msLiving, mLiving + 1);

    second = nullptr;
    EXPECT_EQ(zuTestNode::msLiving, mLiving);

    std::vector<zuPointer<zuTestNode>> held(3, zuPointer<zuTestNode>(new zuTestNode));
    EXPECT_EQ(held[0]->GetReferences(), 3);
    held.clear();
}

TEST_F(zuPointerTest, AssigningAnObjectOwnedByTheOldOneKeepsItAlive)
{
    zuPointer<zuTestNode> holder = new zuTestNode("parent");
    holder->AttachChild(new zuTestNode("child"));
    zuTestNode* child = holder->GetChild(0);
    EXPECT_EQ(child->GetReferences(), 1);

    holder = child;  // the parent dies and drops its reference only after ours is taken
    EXPECT_EQ(zuTestNode::msLiving, mLiving + 1);
    EXPECT_EQ(holder->GetName(), "child");
    EXPECT_EQ(child->GetReferences(), 1);

    zuPointer<zuTestNode> parent = new zuTestNode("parent");
    parent->AttachChild(new zuTestNode("child"));
    zuPointer<zuTestNode> grandChildHolder = parent->GetChild(0);
    parent = std::move(grandChildHolder);
    EXPECT_EQ(parent->GetName(), "child");
    EXPECT_EQ(parent->GetReferences(), 1);
}

} // namespace
} // namespace zu::test
