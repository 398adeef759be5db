// The catalogue of objects shared by name: what it lists, and the references it holds.

#include "support/zuFactoryTest.h"
#include "support/zuTestObjects.h"

#include <zuSceneGraph/objects/zuCatalog.h>

#include <gtest/gtest.h>

namespace zu::test {
namespace {

using Catalog = zuFactoryTest;

TEST_F(Catalog, ListsByNameAndKeepsTheFirst)
{
    const int living = zuTestNode::msLiving;
    {
        zuCatalog<zuTestNode> catalog;
        zuTestNode* first = new zuTestNode("wood");
        EXPECT_TRUE(catalog.Add(first) && 1 == first->GetReferences());
        // Refused: the same name again, a null, an object without a name. A refused object
        // that nothing references is not freed by the refusal.
        zuPointer<zuTestNode> second = new zuTestNode("wood");
        EXPECT_FALSE(catalog.Add(second) || catalog.Add(first) || catalog.Add(nullptr));
        zuTestNode* unnamed = new zuTestNode("");
        EXPECT_TRUE(!catalog.Add(unnamed) && unnamed->GetReferences() == 0);
        delete unnamed;
        EXPECT_EQ(1, second->GetReferences());

        EXPECT_TRUE(first == catalog.Find("wood") && first == catalog.Share(second));
        zuTestNode* stone = new zuTestNode("stone");
        zuPointer<zuTestNode> keepStone = stone;
        EXPECT_EQ(stone, catalog.Share(stone));
        EXPECT_EQ((std::vector<std::string>{"stone", "wood"}), catalog.GetNames());

        // Renaming does not move an entry; removing by object needs the listed object.
        stone->SetName("marble");
        EXPECT_EQ(stone, catalog.Find("stone"));
        EXPECT_FALSE(catalog.Remove(second) || catalog.Remove(stone));
        EXPECT_TRUE(catalog.Remove("stone") && stone->GetReferences() == 1);
        EXPECT_TRUE(catalog.Remove(first));  // frees it: the catalogue held the only reference
        EXPECT_EQ(0, catalog.GetQuantity());
    }
    EXPECT_EQ(living, zuTestNode::msLiving);
}

} // namespace
} // namespace zu::test
