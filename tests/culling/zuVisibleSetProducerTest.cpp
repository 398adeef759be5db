// The visible-set producer's own operations over a derived producer's set.

#include "support/zuTestLeaf.h"

#include <zuSceneGraph/culling/zuVisibleSetProducer.h>
#include <zuSceneGraph/scenegraph/zuBaseLODPolicy.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>

#include <gtest/gtest.h>

namespace zu::test {
namespace {

class ListProducer : public zuVisibleSetProducer {
public:
    const std::vector<zuRenderableSpatial*>& getVisibleSet() const override { return mSet; }
    std::vector<zuRenderableSpatial*>& getVisibleSet() override { return mSet; }
    bool computeVisibleSet(zuSpatial*, const zuCamera*, bool) override { return false; }
    std::vector<zuRenderableSpatial*> mSet;
};

TEST(VisibleSetProducer, RemoveCopyClearAndTheDefaultPolicy)
{
    using Set = std::vector<zuRenderableSpatial*>;
    zuPointer<zuTestLeaf> a = new zuTestLeaf, b = new zuTestLeaf, c = new zuTestLeaf;
    ListProducer producer;
    // Removing nulls every occurrence and keeps the length.
    producer.mSet = {a, b, a, nullptr};
    EXPECT_TRUE(producer.removeVisibleItem(a));
    EXPECT_EQ(producer.mSet, (Set{nullptr, b, nullptr, nullptr}));
    EXPECT_FALSE(producer.removeVisibleItem(a));
    EXPECT_FALSE(producer.removeVisibleItem(c));
    EXPECT_EQ(producer.mSet.size(), 4u);

    // Copying appends or replaces.
    producer.mSet = {a, b};
    Set out{b};
    producer.copyVisibleSet(out, true);
    EXPECT_EQ(out, (Set{b, a, b}));
    producer.copyVisibleSet(out, false);
    EXPECT_EQ(out, producer.mSet);
    producer.clear();
    EXPECT_TRUE(producer.mSet.empty());

    // The shared distance-band policy of the level-of-detail nodes until a producer
    // chooses another.
    EXPECT_EQ(producer.getLODPolicy(), zuLODNode::GetBasePolicy());
}

} // namespace
} // namespace zu::test
