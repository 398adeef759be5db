// The stream's list of top-level objects: membership, references, and how it shapes what is
// saved and what a load hands out.

#include "support/zuTestObjects.h"

#include <gtest/gtest.h>

namespace zu::test {
namespace {

class TopLevelList : public ::testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(zuTestNode::msLiving, 0) << "a test node leaked or died twice"; }
    zuTestFactories factories;
};

TEST_F(TopLevelList, EachObjectIsListedOnceAndHoldsOneReference)
{
    zuPointer<zuTestNode> first = new zuTestNode("first");
    zuPointer<zuTestNode> second = new zuTestNode("second");
    zuPointer<zuTestNode> stranger = new zuTestNode("stranger");
    zuBaseStream stream;
    EXPECT_EQ(stream.GetObjectAt(0), nullptr);
    EXPECT_FALSE(stream.InsertTopLevel(nullptr));
    EXPECT_TRUE(stream.InsertTopLevel(first));
    EXPECT_TRUE(stream.InsertTopLevel(second));
    EXPECT_FALSE(stream.InsertTopLevel(first));
    EXPECT_EQ(stream.GetObjectCount(), 2);
    EXPECT_EQ(first->GetReferences(), 2);
    EXPECT_EQ(stream.GetObjectAt(1), second);
    EXPECT_EQ(stream.GetObjectAt(-1), nullptr);
    EXPECT_EQ(stream.GetObjectAt(stream.GetObjectCount()), nullptr);

    EXPECT_FALSE(stream.RemoveTopLevel(stranger));
    EXPECT_EQ(stranger->GetReferences(), 1);
    EXPECT_TRUE(stream.RemoveTopLevel(first));
    EXPECT_FALSE(stream.RemoveTopLevel(first));
    EXPECT_EQ(first->GetReferences(), 1);
    EXPECT_EQ(stream.GetObjectAt(0), second);
    EXPECT_FALSE(stream.IsTopLevel(first));

    // The list may hold the only reference: removing it destroys the object.
    stream.InsertTopLevel(new zuTestNode("owned"));
    EXPECT_EQ(zuTestNode::msLiving, 4);
    EXPECT_TRUE(stream.RemoveTopLevel(stream.GetObjectAt(1)));
    EXPECT_EQ(zuTestNode::msLiving, 3);

    stream.InsertTopLevel(first);
    stream.RemoveAllToLevel();
    EXPECT_EQ(stream.GetObjectCount(), 0);
    EXPECT_EQ(first->GetReferences(), 1);
    EXPECT_EQ(second->GetReferences(), 1);

    // A stream releases its list when it goes.
    {
        zuBaseStream other;
        other.InsertTopLevel(new zuTestNode("owned"));
        other.InsertTopLevel(first);
        EXPECT_EQ(first->GetReferences(), 2);
    }
    EXPECT_EQ(first->GetReferences(), 1);
    EXPECT_EQ(zuTestNode::msLiving, 3);
}

TEST_F(TopLevelList, ATopLevelObjectReachedFromAnotherIsOneRecordWithItsMarker)
{
    zuPointer<zuTestNode> outer = new zuTestNode("outer");
    zuPointer<zuTestNode> inner = new zuTestNode("inner");
    outer->AttachChild(inner);
    const int innerRecord = 4 + 17 + 4 + 8 + 4 + 5 + 4 + 4 + 4;
    const int outerRecord = innerRecord + 8;
    const auto id = [](const void* object) { return static_cast<uint64_t>(reinterpret_cast<uintptr_t>(object)); };

    // Registration follows the list: the inner object is first met as a child.
    zuBytes outerFirst;
    outerFirst.str("Top Level").str("zuTest.zuTestNode").i32(outerRecord).u64(id(outer));
    outerFirst.str("outer").i32(0).i32(0).i32(1).u64(id(inner));
    outerFirst.str("Top Level").str("zuTest.zuTestNode").i32(innerRecord).u64(id(inner));
    outerFirst.str("inner").i32(0).i32(0).i32(0);
    std::vector<char> saved = saveToBytes({outer, inner}, zuStreamVersion(6, 32));
    EXPECT_EQ(saved, outerFirst.bytes());

    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    ASSERT_TRUE(stream.Load(saved.data(), saved.size()));
    ASSERT_EQ(stream.GetObjectCount(), 2);
    auto* loadedOuter = static_cast<zuTestNode*>(stream.GetObjectAt(0));
    auto* loadedInner = static_cast<zuTestNode*>(stream.GetObjectAt(1));
    EXPECT_EQ(loadedOuter->GetName(), "outer");
    EXPECT_EQ(loadedOuter->GetChild(0), loadedInner);
    EXPECT_EQ(loadedInner->GetReferences(), 2);

    // Listed the other way round, the records are too, and so are the loaded objects.
    saved = saveToBytes({inner, outer}, zuStreamVersion(6, 32));
    ASSERT_EQ(saved.size(), outerFirst.size());
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
    EXPECT_EQ(stream.GetObjectCount(), 1);
    EXPECT_EQ(g.root->GetReferences(), 2);

    ASSERT_TRUE(stream.Load(first, firstSize));
    EXPECT_EQ(g.root->GetReferences(), 1);
    ASSERT_EQ(stream.GetObjectCount(), 1);
    EXPECT_NE(stream.GetObjectAt(0), g.root);
    EXPECT_TRUE(isSmallGraph(stream.GetObjectAt(0)));
    delete[] first;
    delete[] second;

    // With nothing listed, the saved buffer is empty, and loading it gives nothing.
    zuBaseStream empty;
    char* buffer = nullptr;
    unsigned long size = 99;
    ASSERT_TRUE(empty.Save(buffer, size));
    EXPECT_EQ(size, 0u);
    delete[] buffer;
    EXPECT_TRUE(empty.Load(nullptr, 0));
    EXPECT_EQ(empty.GetObjectCount(), 0);
}

// References are resolved after the last record: forward references work, a record saved
// again under an identifier replaces the first, each reference read finds its object once,
// and an identifier no record carries reads as null.
TEST_F(TopLevelList, ReferencesResolveAfterTheLastRecord)
{
    const auto node = [](zuBytes& bytes, bool topLevel, uint64_t id, const std::string& name,
                         std::vector<uint64_t> children) {
        if (topLevel)
            bytes.str("Top Level");
        const int size = 4 + 17 + 4 + 8 + 4 + static_cast<int>(name.size()) + 12 + 8 * static_cast<int>(children.size());
        bytes.str("zuTest.zuTestNode").i32(size).u64(id).str(name).i32(0).i32(0);
        bytes.i32(static_cast<int>(children.size()));
        for (uint64_t child : children)
            bytes.u64(child);
    };
    zuBytes bytes;
    node(bytes, true, 0x10, "parent", {0x20, 0x20, 0x30});
    node(bytes, false, 0x20, "first", {});
    node(bytes, false, 0x20, "second", {});

    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    std::vector<char> data = bytes.bytes();
    ASSERT_TRUE(stream.Load(data.data(), data.size()));
    ASSERT_EQ(stream.GetObjectCount(), 1);
    auto* parent = static_cast<zuTestNode*>(stream.GetObjectAt(0));
    ASSERT_EQ(parent->GetChildQuantity(), 3);
    ASSERT_NE(parent->GetChild(0), nullptr);
    EXPECT_EQ(parent->GetChild(0)->GetName(), "second");
    EXPECT_EQ(parent->GetChild(1), parent->GetChild(0));
    EXPECT_EQ(parent->GetChild(2), nullptr);
    // "first" was referenced by nobody: the load freed it.
    EXPECT_EQ(zuTestNode::msLiving, 2);
}

} // namespace
} // namespace zu::test
