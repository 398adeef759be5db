// Pins the exact bytes the stream writes for a small graph, and reads them back.

#include "support/zuTestObjects.h"

#include <gtest/gtest.h>

namespace zu::test {
namespace {

class BaseStreamBytes : public ::testing::Test {
protected:
    zuTestFactories factories;
};

uint64_t id(const void* object)
{
    return reinterpret_cast<uintptr_t>(object);
}

TEST_F(BaseStreamBytes, RecordsOfVersion6CarryTheirSizeAndAppearOnceInDepthFirstOrder)
{
    zuSmallGraph g;
    // Record sizes count from the type name's length field onward.
    const int nodeHeader = 4 + 17 + 4 + 8;  // "zuTest.zuTestNode"
    zuBytes expected;
    expected.str("Top Level");
    expected.str("zuTest.zuTestNode").i32(nodeHeader + 4 + 4 + 4 + 8 + 4 + 4 + 16).u64(id(g.root));
    expected.str("root").i32(1).u64(id(g.c)).i32(7).i32(2).u64(id(g.a)).u64(id(g.b));
    // The controller part: clamp, [0, 0], phase 0, frequency 1, active, its object.
    const double times[] = {0.0, 0.0, 0.0, 1.0};
    expected.str("zuTest.zuTestController").i32(4 + 23 + 4 + 8 + 4 + 3 + 4 + 45).u64(id(g.c)).str("ctl").i32(0);
    expected.i32(0).raw(times, sizeof(times)).u8(1).u64(id(g.root));
    expected.str("zuTest.zuTestNode").i32(nodeHeader + 4 + 1 + 4 + 4 + 4).u64(id(g.a));
    expected.str("a").i32(0).i32(1).i32(0);
    expected.str("zuTest.zuTestNode").i32(nodeHeader + 4 + 1 + 4 + 4 + 4 + 8).u64(id(g.b));
    expected.str("b").i32(0).i32(2).i32(1).u64(id(g.a));
    EXPECT_EQ(saveToBytes({g.root}, zuStreamVersion(6, 32)), expected.bytes());
}

TEST_F(BaseStreamBytes, RecordsBeforeVersion6HaveNoSizeField)
{
    zuPointer<zuTestNode> leaf = new zuTestNode("x", -1);
    zuBytes expected;
    expected.str("Top Level").str("zuTest.zuTestNode").u64(id(leaf)).str("x").i32(0).i32(-1).i32(0);
    EXPECT_EQ(saveToBytes({leaf}, zuStreamVersion(5, 20)), expected.bytes());
}

TEST_F(BaseStreamBytes, LoadRebuildsTheGraphWithSharedChildrenLinkedOnceAndSavesItAgainAlike)
{
    zuSmallGraph g;
    std::vector<char> saved = saveToBytes({g.root}, zuStreamVersion(6, 32));
    ASSERT_EQ(zuTestNode::msLiving, 3);

    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    ASSERT_TRUE(stream.Load(saved.data(), saved.size()));
    ASSERT_EQ(stream.GetObjectCount(), 1);
    auto* root = static_cast<zuTestNode*>(stream.GetObjectAt(0));
    ASSERT_TRUE(root->IsExactly(zuTestNode::TYPE));
    EXPECT_EQ(root->GetName(), "root");
    EXPECT_EQ(root->GetValue(), 7);
    ASSERT_EQ(root->GetChildQuantity(), 2);
    zuTestNode* a = root->GetChild(0);
    zuTestNode* b = root->GetChild(1);
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(b->GetChild(0), a);  // one record, one object, two holders
    EXPECT_EQ(a->GetReferences(), 2);
    ASSERT_EQ(root->GetControllerQuantity(), 1);
    ASSERT_NE(root->GetController(0), nullptr);
    EXPECT_EQ(root->GetController(0)->GetObject(), root);
    EXPECT_EQ(zuTestNode::msPostLinkCalls, 3);
    EXPECT_EQ(zuTestNode::msLiving, 3 + 3);

    EXPECT_TRUE(root->Equals(g.root));
    EXPECT_EQ(saveToBytes({root}, zuStreamVersion(6, 32)).size(), saved.size());
    stream.RemoveAllToLevel();
    EXPECT_EQ(zuTestNode::msLiving, 3);
}

} // namespace
} // namespace zu::test
