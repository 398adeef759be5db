// The stream's list of top-level objects: membership, references, and how it shapes what is
// saved and what a load hands out.

#include "support/zuFactoryTest.h"
#include "support/zuRecordPins.h"

#include <gtest/gtest.h>

namespace zu::test {
namespace {

using TopLevelList = zuLeakCheckedTest;

TEST_F(TopLevelList, EachObjectIsListedOnceAndHoldsOneReference)
{
    zuPointer<zuTestNode> first = new zuTestNode("first");
    zuPointer<zuTestNode> second = new zuTestNode("second");
    zuPointer<zuTestNode> stranger = new zuTestNode("stranger");
    zuBaseStream stream;
    EXPECT_EQ(stream.GetObjectAt(0), nullptr);
    EXPECT_FALSE(stream.InsertTopLevel(nullptr));
    EXPECT_TRUE(stream.InsertTopLevel(first) && stream.InsertTopLevel(second));
    EXPECT_FALSE(stream.InsertTopLevel(first));
    EXPECT_TRUE(stream.GetObjectCount() == 2 && first->GetReferences() == 2 && stream.GetObjectAt(1) == second);
    EXPECT_TRUE(stream.GetObjectAt(-1) == nullptr && stream.GetObjectAt(stream.GetObjectCount()) == nullptr);

    EXPECT_FALSE(stream.RemoveTopLevel(stranger));
    EXPECT_TRUE(stranger->GetReferences() == 1 && stream.RemoveTopLevel(first));
    EXPECT_FALSE(stream.RemoveTopLevel(first));
    EXPECT_TRUE(first->GetReferences() == 1 && stream.GetObjectAt(0) == second);
    EXPECT_FALSE(stream.IsTopLevel(first));

    // The list may hold the only reference: removing it destroys the object.
    stream.InsertTopLevel(new zuTestNode("owned"));
    EXPECT_TRUE(zuTestNode::msLiving == 4 && stream.RemoveTopLevel(stream.GetObjectAt(1)) && zuTestNode::msLiving == 3);

    stream.InsertTopLevel(first);
    stream.RemoveAllToLevel();
    EXPECT_TRUE(stream.GetObjectCount() == 0 && first->GetReferences() == 1 && second->GetReferences() == 1);
}

TEST_F(TopLevelList, ATopLevelObjectReachedFromAnotherIsOneRecordWithItsMarker)
{
    zuPointer<zuTestNode> outer = new zuTestNode("outer");
    zuPointer<zuTestNode> inner = new zuTestNode("inner");
    outer->AttachChild(inner);
    // Registration follows the list: the inner object is first met as a child.
    std::vector<char> saved = saveToBytes({outer, inner}, zuStreamVersion(6, 32));
    EXPECT_EQ(pinOf({outer.get(), inner.get()}, {6, 32}), "'Top Level' 'zuTest.zuTestNode' #62 <0> 'outer' #0 #0 #1 <1> |\n"
                                                          "'Top Level' 'zuTest.zuTestNode' #54 <1> 'inner' #0 #0 #0 |\n");
    const size_t outerFirstSize = saved.size();

    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    ASSERT_TRUE(stream.Load(saved.data(), saved.size()));
    ASSERT_EQ(stream.GetObjectCount(), 2);
    auto* loadedOuter = static_cast<zuTestNode*>(stream.GetObjectAt(0));
    auto* loadedInner = static_cast<zuTestNode*>(stream.GetObjectAt(1));
    EXPECT_TRUE(loadedOuter->GetName() == "outer" && loadedOuter->GetChild(0) == loadedInner);
    EXPECT_EQ(loadedInner->GetReferences(), 2);

    // Listed the other way round, the records are too, and so are the loaded objects.
    saved = saveToBytes({inner, outer}, zuStreamVersion(6, 32));
    ASSERT_EQ(saved.size(), outerFirstSize);
    ASSERT_TRUE(stream.Load(saved.data(), saved.size()));
    ASSERT_EQ(stream.GetObjectCount(), 2);
    EXPECT_EQ(static_cast<zuTestNode*>(stream.GetObjectAt(0))->GetName(), "inner");
    EXPECT_EQ(static_cast<zuTestNode*>(stream.GetObjectAt(1))->GetChild(0), stream.GetObjectAt(0));
    EXPECT_EQ(zuTestNode::msLiving, 4);
}

TEST_F(TopLevelList, TheListIsKeptBetweenSavesAndReplacedByALoad)
{
    zuSmallGraph g;
    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    stream.InsertTopLevel(g.root);
    stream.InsertTopLevel(g.root);
    char* first = nullptr;
    char* second = nullptr;
    unsigned long firstSize = 0;
    unsigned long secondSize = 0;
    ASSERT_TRUE(stream.Save(first, firstSize));
    ASSERT_TRUE(stream.Save(second, secondSize));
    EXPECT_EQ(std::vector<char>(first, first + firstSize), std::vector<char>(second, second + secondSize));
    EXPECT_EQ(std::vector<char>(first, first + firstSize), saveToBytes({g.root}, zuStreamVersion(6, 32)));
    EXPECT_TRUE(stream.GetObjectCount() == 1 && g.root->GetReferences() == 2);

    ASSERT_TRUE(stream.Load(first, firstSize));
    EXPECT_EQ(g.root->GetReferences(), 1);
    ASSERT_EQ(stream.GetObjectCount(), 1);
    EXPECT_TRUE(stream.GetObjectAt(0) != g.root && isSmallGraph(stream.GetObjectAt(0)));
    delete[] first;
    delete[] second;

    // With nothing listed, the saved buffer is empty, and loading it gives nothing.
    zuBaseStream empty;
    char* buffer = nullptr;
    unsigned long size = 99;
    ASSERT_TRUE(empty.Save(buffer, size));
    EXPECT_EQ(size, 0u);
    delete[] buffer;
    EXPECT_TRUE(empty.Load(nullptr, 0) && empty.GetObjectCount() == 0);
}

// References are resolved after the last record: forward references work, a record saved
// again under an identifier replaces the first, each reference read finds its object once,
// and an identifier no record carries reads as null.
TEST_F(TopLevelList, ReferencesResolveAfterTheLastRecord)
{
    std::vector<char> data = pinBytes("'Top Level' 'zuTest.zuTestNode' #79 <0> 'parent' #0 #0 #3 <1> <1> <2> |"
                                      "'zuTest.zuTestNode' #54 <1> 'first' #0 #0 #0 |"
                                      "'zuTest.zuTestNode' #55 <1> 'second' #0 #0 #0 |");
    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    ASSERT_TRUE(stream.Load(data.data(), data.size()));
    ASSERT_EQ(stream.GetObjectCount(), 1);
    auto* parent = static_cast<zuTestNode*>(stream.GetObjectAt(0));
    ASSERT_EQ(parent->GetChildQuantity(), 3);
    ASSERT_NE(parent->GetChild(0), nullptr);
    EXPECT_TRUE(parent->GetChild(0)->GetName() == "second" && parent->GetChild(1) == parent->GetChild(0));
    EXPECT_EQ(parent->GetChild(2), nullptr);
    // "first" was referenced by nobody: the load freed it.
    EXPECT_EQ(zuTestNode::msLiving, 2);
}

} // namespace
} // namespace zu::test
