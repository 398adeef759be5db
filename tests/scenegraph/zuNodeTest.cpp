// Nodes: what each child operation returns and which marks it leaves on which objects
// (the setChild / replaceChildAt asymmetry above all), refused children and cycles, slot
// compaction and resizing, the merged bound, Clean_Flags, look-ups, and freeing deep trees.

#include "scenegraph/zuSpatialTestHelpers.h"
#include "support/zuFactoryTest.h"
#include "support/zuTestLeaf.h"

#include <zuSceneGraph/scenegraph/zuNode.h>

#include <gtest/gtest.h>

namespace zu::test {
namespace {

using Node = zuFactoryTest;

// root -> node -> three empty child nodes (c0, c1, c2), all masks clean. An empty node's
// setDirtyDown gives 0x01, so a child's mark is 0x01 and the bound bit shows what
// replaceChildAt adds.
struct Tree {
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuNode> node = new zuNode;
    zuPointer<zuNode> c[3] = {new zuNode, new zuNode, new zuNode};
    Tree()
    {
        root->attachChild(node);
        for (auto& child : c)
            node->attachChild(child);
        root->Clean_Flags();
    }
};

TEST_F(Node, AttachChildAppendsAndMarksTheChildAndItsAncestorsOrRefuses)
{
    Tree t;
    zuPointer<zuTestLeaf> leaf = new zuTestLeaf;
    EXPECT_EQ(t.node->attachChild(leaf), 3);
    EXPECT_EQ(childrenOf(t.node), (Slots{t.c[0], t.c[1], t.c[2], leaf}));
    EXPECT_EQ(leaf->GetParent(), t.node.get());
    // The leaf goes down with 0x2040 (a geometry leaf's mark), reported up to the root.
    EXPECT_TRUE(marked({leaf, t.node, t.root}, 0x2040));
    EXPECT_TRUE(marked(t.c[0], 0));

    // A subtree: its nodes add UPDATE_WORLD_DATA on the way down.
    zuPointer<zuNode> group = new zuNode;
    zuPointer<zuTestLeaf> inner = new zuTestLeaf;
    group->attachChild(inner);
    t.root->Clean_Flags();
    group->Clean_Flags();
    EXPECT_EQ(t.root->attachChild(group), 1);
    EXPECT_TRUE(marked(inner, 0x2040));
    EXPECT_TRUE(marked({group, t.root}, 0x2041));
    EXPECT_TRUE(marked(t.node, 0));

    // Refused: null, this node, an ancestor, a child of another node.
    t.root->Clean_Flags();
    zuPointer<zuNode> other = new zuNode;
    EXPECT_EQ(t.node->attachChild(nullptr), -1);
    EXPECT_EQ(t.node->attachChild(t.node), -1);
    EXPECT_EQ(t.c[0]->attachChild(t.root), -1) << "a cycle through the root";
    EXPECT_EQ(other->attachChild(t.c[1]), -1) << "the child belongs to another node";
    EXPECT_EQ(t.c[1]->GetParent(), t.node.get());
    EXPECT_TRUE(t.node->getNbChildren() == 4 && other->getNbChildren() == 0);
    EXPECT_TRUE(marked(t.root, 0));
}

TEST_F(Node, SetChildDetachesTheOldChildBeforeMarkingIt)
{
    Tree t;
    zuPointer<zuSpatial> old = t.node->setChild(2, nullptr);
    EXPECT_TRUE(old.get() == t.c[2].get() && !old->GetParent());
    EXPECT_EQ(childrenOf(t.node), (Slots{t.c[0], t.c[1], nullptr}));
    // Only the old child received its mark.
    EXPECT_TRUE(marked(t.c[2], 0x01));
    EXPECT_TRUE(marked({t.node, t.root}, 0));

    // A new child is attached and marked up to the root.
    zuPointer<zuNode> fresh = new zuNode;
    EXPECT_EQ(t.node->setChild(2, fresh).get(), nullptr);
    EXPECT_EQ(fresh->GetParent(), t.node.get());
    EXPECT_TRUE(marked({fresh, t.node, t.root}, 0x01));

    // Refused: out of range, or a child that has a parent or would close a cycle.
    t.root->Clean_Flags();
    EXPECT_TRUE(!t.node->setChild(3, old) && !t.node->setChild(0, t.c[1]) && !t.c[0]->setChild(0, t.root));
    EXPECT_TRUE(t.node->getChild(0) == t.c[0].get() && !old->GetParent());
    EXPECT_TRUE(marked(t.root, 0));
}

TEST_F(Node, ReplaceChildAtMarksTheOldChildWhileAttachedWithTheBoundBit)
{
    Tree t;
    zuSpatial* former = t.c[1];
    EXPECT_TRUE(t.node->replaceChildAt(1, nullptr));
    EXPECT_EQ(former->GetParent(), nullptr);
    EXPECT_EQ(childrenOf(t.node), (Slots{t.c[0], nullptr, t.c[2]}));
    // 0x01 from the empty node, 0x40 added: it reached this node and the root.
    EXPECT_TRUE(marked({former, t.node, t.root}, 0x41));

    t.root->Clean_Flags();
    zuPointer<zuNode> fresh = new zuNode;
    EXPECT_TRUE(t.node->replaceChildAt(1, fresh));
    EXPECT_EQ(fresh->GetParent(), t.node.get());
    EXPECT_TRUE(marked({fresh, t.root}, 0x41));

    // Refused: out of range, a child with a parent, this node, a cycle.
    EXPECT_FALSE(t.node->replaceChildAt(3, nullptr) || t.node->replaceChildAt(0, t.c[2])
                 || t.node->replaceChildAt(0, t.node) || t.c[0]->replaceChildAt(0, t.root));

    // By pointer.
    zuPointer<zuNode> another = new zuNode;
    EXPECT_FALSE(t.node->replaceChild(former, another)) << "no longer a child";
    EXPECT_TRUE(t.node->replaceChild(fresh, another));
    EXPECT_TRUE(t.node->getChildIndex(another) == 1 && t.node->getChildIndex(fresh) == -1 && !fresh->GetParent());
    EXPECT_FALSE(t.node->replaceChild(another, t.c[0]));
}

TEST_F(Node, RemovingChildrenMarksThemWhileAttached)
{
    Tree t;
    zuPointer<zuSpatial> removed = t.node->removeChildAt(1);
    EXPECT_TRUE(removed.get() == t.c[1].get() && !removed->GetParent());
    EXPECT_EQ(childrenOf(t.node), (Slots{t.c[0], t.c[2]}));
    EXPECT_TRUE(marked({t.c[1], t.node, t.root}, 0x01));
    EXPECT_TRUE(!t.node->removeChildAt(2) && t.node->getNbChildren() == 2);

    t.root->Clean_Flags();
    EXPECT_FALSE(t.node->removeChild(t.c[1]));
    EXPECT_TRUE(t.node->removeChild(t.c[2]));
    EXPECT_TRUE(marked(t.root, 0x01));
    EXPECT_TRUE(t.node->removeChild(t.c[0]));
    EXPECT_TRUE(t.node->getNbChildren() == 0 && !t.node->getChild(0));

    // removeAllChildren marks every child and reports all of them.
    Tree u;
    zuPointer<zuTestLeaf> leaf = new zuTestLeaf;
    u.node->setChild(1, nullptr);
    u.node->attachChild(leaf);
    u.root->Clean_Flags();
    u.node->removeAllChildren();
    EXPECT_EQ(u.node->getNbChildren(), 0);
    for (zuSpatial* child : Slots{u.c[0], u.c[2], leaf})
        EXPECT_EQ(child->GetParent(), nullptr);
    EXPECT_TRUE(marked(leaf, 0x2040));
    EXPECT_TRUE(marked({u.node, u.root}, 0x2041));
}

TEST_F(Node, ForceIgnoreWithPropagateReportsTheMarkUpward)
{
    Tree t;
    zuPointer<zuTestLeaf> leaf = new zuTestLeaf;
    t.c[0]->attachChild(leaf);
    t.root->Clean_Flags();
    // Downward on a node: the leaf's 0x2040 and the nodes' 0x01.
    t.c[0]->forceIgnore(true, true, true);
    EXPECT_TRUE(marked(leaf, 0x2040));
    EXPECT_TRUE(marked({t.c[0], t.node, t.root}, 0x2041));
    EXPECT_TRUE(marked(t.c[1], 0));
    t.root->Clean_Flags();
    leaf->forceIgnore(false, true, false);
    EXPECT_TRUE(marked({leaf, t.c[0], t.root}, 0x09));
}

TEST_F(Node, CleanFlagsVisitsOnlyDirtyChildren)
{
    Tree t;
    t.c[0]->SetUpdateMask(0x40);  // pending, but not reported: not visited
    t.c[1]->SetDirtyMask(0x01);
    t.c[1]->SetUpdateMask(0x01);
    t.node->SetDirtyMask(0x01);
    t.root->SetDirtyMask(0x01);
    t.root->Clean_Flags();
    EXPECT_TRUE(marked({t.root, t.node, t.c[1]}, 0));
    EXPECT_TRUE(hasMasks(t.c[0], 0, 0x40));
}

TEST_F(Node, RemoveNullChildrenCompactsEveryLevelAndSetNbChildrenResizes)
{
    Tree t;
    zuPointer<zuTestLeaf> leaf = new zuTestLeaf;
    t.c[2]->setNbChildren(3);
    t.c[2]->setChild(1, leaf);
    t.node->setChild(0, nullptr);
    t.root->setNbChildren(2);
    EXPECT_EQ(t.root->getChild(1), nullptr);
    EXPECT_EQ(t.node->removeNullChildren(false, false), 1);
    EXPECT_EQ(t.node->getNbChildren(), 2);
    EXPECT_EQ(t.c[2]->getNbChildren(), 3) << "not recursive";
    EXPECT_EQ(t.root->removeNullChildren(true, true), 3);
    EXPECT_EQ(childrenOf(t.root), (Slots{t.node}));
    EXPECT_EQ(childrenOf(t.node), (Slots{t.c[1], t.c[2]}));
    EXPECT_EQ(childrenOf(t.c[2]), (Slots{leaf}));
    EXPECT_EQ(t.root->removeNullChildren(true, false), 0);

    // setNbChildren resizes as a raw step: no marks, and the parent pointer is left.
    zuSpatial* dropped = t.c[2];
    t.root->Clean_Flags();
    t.node->setNbChildren(4);
    EXPECT_EQ(childrenOf(t.node), (Slots{t.c[1], dropped, nullptr, nullptr}));
    t.node->setNbChildren(1);
    EXPECT_EQ(childrenOf(t.node), (Slots{t.c[1]}));
    EXPECT_EQ(t.node->getChild(1), nullptr);
    EXPECT_EQ(dropped->GetParent(), t.node.get());
    EXPECT_TRUE(marked(t.root, 0));
    dropped->SetParent(nullptr);
    t.node->setNbChildren(0);
    EXPECT_TRUE(t.node->getNbChildren() == 0 && !t.node->getChild(0) && !t.node->getChild(-1));
}

TEST_F(Node, TheBoundMergesTheChildrenThatAreNotIgnored)
{
    zuPointer<zuNode> node = new zuNode;
    node->UpdateWorldBound();
    EXPECT_FALSE(node->GetWorldBound().isValid()) << "no children";

    zuPointer<zuTestLeaf> a = new zuTestLeaf, b = new zuTestLeaf, c = new zuTestLeaf;
    attachAll(node, {a, b, c});
    a->SetWorldBound(zuBoundingVolume(Vec(0, 0, 0), Vec(1, 1, 1)));
    b->SetWorldBound(zuBoundingVolume(Vec(10, 0, 0), Vec(1, 1, 1)));
    c->SetWorldBound(zuBoundingVolume(Vec(0, -20, 0), Vec(1, 1, 1)));
    c->forceIgnore(true, false, false);
    node->UpdateWorldBound();
    EXPECT_EQ(node->GetWorldBound(), zuBoundingVolume(Vec(5, 0, 0), Vec(6, 1, 1)));

    // The only counted child has no valid bound: the node keeps its previous one.
    b->forceIgnore(true, false, false);
    a->SetWorldBound(zuBoundingVolume());
    node->UpdateWorldBound();
    EXPECT_EQ(node->GetWorldBound().GetExtents(), Vec(6, 1, 1));
    a->forceIgnore(true, false, false);
    node->UpdateWorldBound();
    EXPECT_EQ(node->GetWorldBound(), zuBoundingVolume()) << "only ignored children";
}

TEST_F(Node, LookUpsSearchThisNodeThenTheChildrenDepthFirst)
{
    Tree t;
    t.node->SetName("n");
    t.c[0]->SetName("x");
    t.c[2]->SetName("x");
    zuPointer<zuTestLeaf> leaf = new zuTestLeaf;
    leaf->SetName("x");
    t.c[0]->attachChild(leaf);
    t.node->setChild(1, nullptr);

    EXPECT_EQ(t.root->GetObjectByName("n"), t.node.get());
    EXPECT_EQ(t.root->GetObjectByName("x"), t.c[0].get());
    EXPECT_EQ(t.root->GetObjectByName("y"), nullptr);
    std::vector<zuObject*> all;
    t.root->GetAllObjectsByName("x", all);
    EXPECT_EQ(all, (std::vector<zuObject*>{t.c[0], leaf, t.c[2]}));
    EXPECT_EQ(t.root->GetObjectByID(leaf->GetID()), leaf.get());
    EXPECT_EQ(t.root->GetObjectByID(t.root->GetID()), t.root.get());
    EXPECT_EQ(t.c[2]->GetObjectByID(leaf->GetID()), nullptr);
}

TEST_F(Node, ADeepChainIsFreedWithoutRecursingPerLevelAndLeavesNoDanglingParent)
{
    // Freed on a thread with a 64 KiB stack: one destructor frame per level would need
    // some hundreds of kilobytes for 5000 levels.
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuTestLeaf> leaf = new zuTestLeaf;
    zuNode* bottom = root;
    for (int i = 0; i < 5000; ++i) {
        zuNode* next = new zuNode;
        bottom->attachChild(next);
        bottom = next;
    }
    bottom->attachChild(leaf);
    runOnStack(64 * 1024, [&root] { root = nullptr; });
    // The whole chain was freed, and the leaf knows.
    EXPECT_TRUE(!root && !leaf->GetParent() && leaf->GetReferences() == 1);
}

} // namespace
} // namespace zu::test
