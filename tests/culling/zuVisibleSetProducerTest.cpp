// The visible-set producer's own operations over a derived producer's set.

#include "support/zuTestLeaf.h"

#include <zuSceneGraph/culling/zuVisibleSetProducer.h>
#include <zuSceneGraph/scenegraph/zuBaseLODPolicy.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>
#include <zuSceneGraph/scenegraph/zuLODPolicy.h>

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

TEST(VisibleSetProducer, RemoveVisibleItemNullsEveryOccurrenceAndKeepsTheLength)
{
    zuPointer<zuTestLeaf> a = new zuTestLeaf, b = new zuTestLeaf, c = new zuTestLeaf;
    ListProducer producer;
    producer.mSet = {a, b, a, nullptr};
    EXPECT_TRUE(producer.removeVisibleItem(a));
    EXPECT_EQ(producer.mSet, (std::vector<zuRenderableSpatial*>{nullptr, b, nullptr, nullptr}));
    EXPECT_FALSE(producer.removeVisibleItem(a));
    EXPECT_FALSE(producer.removeVisibleItem(c));
    EXPECT_EQ(producer.mSet.size(), 4u);
}

TEST(VisibleSetProducer, CopyAppendsOrReplacesAndClearEmpties)
{
    zuPointer<zuTestLeaf> a = new zuTestLeaf, b = new zuTestLeaf;
    ListProducer producer;
    producer.mSet = {a, b};
    std::vector<zuRenderableSpatial*> out{b};
    producer.copyVisibleSet(out, true);
    EXPECT_EQ(out, (std::vector<zuRenderableSpatial*>{b, a, b}));
    producer.copyVisibleSet(out, false);
    EXPECT_EQ(out, producer.mSet);
    producer.clear();
    EXPECT_TRUE(producer.mSet.empty());
}

class FixedPolicy : public zuLODPolicy {
public:
    zuSpatial* selectItem(zuLODNode*, const zuCamera*) const override { return nullptr; }
};

TEST(VisibleSetProducer, ThePolicyIsTheProducersChoice)
{
    ListProducer producer;
    // The shared distance-band policy of the level-of-detail nodes until a producer
    // chooses another.
    EXPECT_EQ(producer.getLODPolicy(), zuLODNode::GetBasePolicy());
    FixedPolicy policy;
    producer.setLODPolicy(&policy);
    EXPECT_EQ(producer.getLODPolicy(), &policy);
}

} // namespace
} // namespace zu::test
