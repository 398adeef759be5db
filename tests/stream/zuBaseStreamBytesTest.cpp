// A small graph read back: shared children linked once, controllers to their objects.

#include "support/zuTestObjects.h"

#include <gtest/gtest.h>

namespace zu::test {
namespace {

class BaseStreamBytes : public ::testing::Test {
protected:
    zuTestFactories factories;
};

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
