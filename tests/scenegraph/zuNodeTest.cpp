// Nodes: what each child operation returns and which marks it leaves on which objects
// (the setChild / replaceChildAt asymmetry above all), refused children and cycles, slot
// compaction and resizing, the merged bound, Clean_Flags, look-ups, and freeing deep trees.

#include "scenegraph/zuSpatialTestHelpers.h"
#include "support/zuTestLeaf.h"

#include <zuSceneGraph/scenegraph/zuNode.h>

#include <gtest/gtest.h>

#include <pthread.h>

namespace zu::test {
namespace {

class Node : public ::testing::Test {
protected:
    zuTestFactories factories;
};

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

#define EXPECT_MASKS(object, d, u)                                 \
    do {                                                           \
        EXPECT_EQ((object)->GetDirtyMask(), (d)) << #object " dirty"; \
        EXPECT_EQ((object)->GetUpdateMask(), (u)) << #object " update"; \
    } while (0)

TEST_F(Node, AttachChildAppendsAndMarksTheChildAndItsAncestors)
{
    Tree t;
    zuPointer<zuTestLeaf> leaf = new zuTestLeaf;
    EXPECT_EQ(t.node->attachChild(leaf), 3);
    EXPECT_EQ(t.node->getNbChildren(), 4);
    EXPECT_EQ(t.node->getChild(3), leaf.get());
    EXPECT_EQ(leaf->GetParent(), t.node.get());
    // The leaf goes down with 0x2040 (a geometry leaf's mark), reported up to the root.
    EXPECT_MASKS(leaf, 0x2040u, 0x2040u);
    EXPECT_MASKS(t.node, 0x2040u, 0x2040u);
    EXPECT_MASKS(t.root, 0x2040u, 0x2040u);
    EXPECT_MASKS(t.c[0], 0u, 0u);

    // A subtree: its nodes add UPDATE_WORLD_DATA on the way down.
    zuPointer<zuNode> group = new zuNode;
    zuPointer<zuTestLeaf> inner = new zuTestLeaf;
    group->attachChild(inner);
    t.root->Clean_Flags();
    group->Clean_Flags();
    EXPECT_EQ(t.root->attachChild(group), 1);
    EXPECT_MASKS(inner, 0x2040u, 0x2040u);
    EXPECT_MASKS(group, 0x2041u, 0x2041u);
    EXPECT_MASKS(t.root, 0x2041u, 0x2041u);
    EXPECT_MASKS(t.node, 0u, 0u);
}

TEST_F(Node, AttachChildRefusesNullOwnedSelfAndAncestors)
{
    Tree t;
    zuPointer<zuNode> other = new zuNode;
    EXPECT_EQ(t.node->attachChild(nullptr), -1);
    EXPECT_EQ(t.node->attachChild(t.node), -1);
    EXPECT_EQ(t.c[0]->attachChild(t.root), -1) << "a cycle through the root";
    EXPECT_EQ(other->attachChild(t.c[1]), -1) << "the child belongs to another node";
    EXPECT_EQ(t.c[1]->GetParent(), t.node.get());
    EXPECT_EQ(t.node->getNbChildren(), 3);
    EXPECT_EQ(other->getNbChildren(), 0);
    EXPECT_MASKS(t.root, 0u, 0u);
}

TEST_F(Node, SetChildDetachesTheOldChildBeforeMarkingIt)
{
    Tree t;
    zuPointer<zuSpatial> old = t.node->setChild(2, nullptr);
    EXPECT_EQ(old.get(), t.c[2].get());
    EXPECT_EQ(old->GetParent(), nullptr);
    EXPECT_EQ(t.node->getNbChildren(), 3);
    EXPECT_EQ(t.node->getChild(2), nullptr);
    // Only the old child received its mark.
    EXPECT_MASKS(t.c[2], 0x01u, 0x01u);
    EXPECT_MASKS(t.node, 0u, 0u);
    EXPECT_MASKS(t.root, 0u, 0u);

    // A new child is attached and marked up to the root.
    zuPointer<zuNode> fresh = new zuNode;
    EXPECT_EQ(t.node->setChild(2, fresh).get(), nullptr);
    EXPECT_EQ(fresh->GetParent(), t.node.get());
    EXPECT_MASKS(fresh, 0x01u, 0x01u);
    EXPECT_MASKS(t.node, 0x01u, 0x01u);
    EXPECT_MASKS(t.root, 0x01u, 0x01u);

    // Refused: out of range, or a child that has a parent or would close a cycle.
    t.root->Clean_Flags();
    EXPECT_EQ(t.node->setChild(3, old).get(), nullptr);
    EXPECT_EQ(t.node->setChild(-1, old).get(), nullptr);
    EXPECT_EQ(t.node->setChild(0, t.c[1]).get(), nullptr);
    EXPECT_EQ(t.c[0]->setChild(0, t.root).get(), nullptr);
    EXPECT_EQ(t.node->getChild(0), t.c[0].get());
    EXPECT_EQ(old->GetParent(), nullptr);
    EXPECT_MASKS(t.root, 0u, 0u);
}

TEST_F(Node, ReplaceChildAtMarksTheOldChildWhileAttachedWithTheBoundBit)
{
    Tree t;
    zuSpatial* former = t.c[1];
    EXPECT_TRUE(t.node->replaceChildAt(1, nullptr));
    EXPECT_EQ(former->GetParent(), nullptr);
    EXPECT_EQ(t.node->getChild(1), nullptr);
    EXPECT_EQ(t.node->getNbChildren(), 3);
    // 0x01 from the empty node, 0x40 added: it reached this node and the root.
    EXPECT_MASKS(former, 0x41u, 0x41u);
    EXPECT_MASKS(t.node, 0x41u, 0x41u);
    EXPECT_MASKS(t.root, 0x41u, 0x41u);

    t.root->Clean_Flags();
    zuPointer<zuNode> fresh = new zuNode;
    EXPECT_TRUE(t.node->replaceChildAt(1, fresh));
    EXPECT_EQ(fresh->GetParent(), t.node.get());
    EXPECT_MASKS(fresh, 0x41u, 0x41u);
    EXPECT_MASKS(t.root, 0x41u, 0x41u);

    EXPECT_FALSE(t.node->replaceChildAt(3, nullptr));
    EXPECT_FALSE(t.node->replaceChildAt(-1, nullptr));
    EXPECT_FALSE(t.node->replaceChildAt(0, t.c[2])) << "has a parent";
    EXPECT_FALSE(t.node->replaceChildAt(0, t.node)) << "this node";
    EXPECT_FALSE(t.c[0]->replaceChildAt(0, t.root));

    // By pointer.
    zuPointer<zuNode> another = new zuNode;
    EXPECT_FALSE(t.node->replaceChild(former, another)) << "no longer a child";
    EXPECT_TRUE(t.node->replaceChild(fresh, another));
    EXPECT_EQ(t.node->getChildIndex(another), 1);
    EXPECT_EQ(t.node->getChildIndex(fresh), -1);
    EXPECT_EQ(fresh->GetParent(), nullptr);
    EXPECT_FALSE(t.node->replaceChild(another, t.c[0]));
}

TEST_F(Node, RemovingChildrenMarksThemWhileAttached)
{
    Tree t;
    zuPointer<zuSpatial> removed = t.node->removeChildAt(1);
    EXPECT_EQ(removed.get(), t.c[1].get());
    EXPECT_EQ(removed->GetParent(), nullptr);
    ASSERT_EQ(t.node->getNbChildren(), 2);
    EXPECT_EQ(t.node->getChild(0), t.c[0].get());
    EXPECT_EQ(t.node->getChild(1), t.c[2].get());
    EXPECT_MASKS(t.c[1], 0x01u, 0x01u);
    EXPECT_MASKS(t.node, 0x01u, 0x01u);
    EXPECT_MASKS(t.root, 0x01u, 0x01u);
    EXPECT_EQ(t.node->removeChildAt(2).get(), nullptr);
    EXPECT_EQ(t.node->removeChildAt(-1).get(), nullptr);
    EXPECT_EQ(t.node->getNbChildren(), 2);

    t.root->Clean_Flags();
    EXPECT_FALSE(t.node->removeChild(t.c[1]));
    EXPECT_TRUE(t.node->removeChild(t.c[2]));
    EXPECT_MASKS(t.root, 0x01u, 0x01u);
    EXPECT_TRUE(t.node->removeChild(t.c[0]));
    EXPECT_EQ(t.node->getNbChildren(), 0);
    EXPECT_EQ(t.node->getChild(0), nullptr);

    // removeAllChildren marks every child and reports all of them.
    Tree u;
    zuPointer<zuTestLeaf> leaf = new zuTestLeaf;
    u.node->setChild(1, nullptr);
    u.node->attachChild(leaf);
    u.root->Clean_Flags();
    u.node->removeAllChildren();
    EXPECT_EQ(u.node->getNbChildren(), 0);
    for (zuSpatial* child : {static_cast<zuSpatial*>(u.c[0]), static_cast<zuSpatial*>(u.c[2]), static_cast<zuSpatial*>(leaf)})
        EXPECT_EQ(child->GetParent(), nullptr);
    EXPECT_MASKS(leaf, 0x2040u, 0x2040u);
    EXPECT_MASKS(u.node, 0x2041u, 0x2041u);
    EXPECT_MASKS(u.root, 0x2041u, 0x2041u);
}

TEST_F(Node, ForceIgnoreWithPropagateReportsTheMarkUpward)
{
    Tree t;
    zuPointer<zuTestLeaf> leaf = new zuTestLeaf;
    t.c[0]->attachChild(leaf);
    t.root->Clean_Flags();

    // Downward on a node: the leaf's 0x2040 and the nodes' 0x01.
    t.c[0]->forceIgnore(true, true, true);
    EXPECT_MASKS(leaf, 0x2040u, 0x2040u);
    EXPECT_MASKS(t.c[0], 0x2041u, 0x2041u);
    EXPECT_MASKS(t.node, 0x2041u, 0x2041u);
    EXPECT_MASKS(t.root, 0x2041u, 0x2041u);
    EXPECT_MASKS(t.c[1], 0u, 0u);

    t.root->Clean_Flags();
    leaf->forceIgnore(false, true, false);
    EXPECT_MASKS(leaf, 0x09u, 0x09u);
    EXPECT_MASKS(t.c[0], 0x09u, 0x09u);
    EXPECT_MASKS(t.root, 0x09u, 0x09u);
}

TEST_F(Node, CleanFlagsVisitsOnlyDirtyChildren)
{
    Tree t;
    t.c[0]->SetUpdateMask(0x40);        // pending, but not reported: not visited
    t.c[1]->SetDirtyMask(0x01);
    t.c[1]->SetUpdateMask(0x01);
    t.node->SetDirtyMask(0x01);
    t.root->SetDirtyMask(0x01);
    t.root->Clean_Flags();
    EXPECT_MASKS(t.root, 0u, 0u);
    EXPECT_MASKS(t.node, 0u, 0u);
    EXPECT_MASKS(t.c[1], 0u, 0u);
    EXPECT_MASKS(t.c[0], 0u, 0x40u);
}

TEST_F(Node, RemoveNullChildrenCompactsEveryLevel)
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
    EXPECT_EQ(t.root->getNbChildren(), 1);
    EXPECT_EQ(t.node->getChild(0), t.c[1].get());
    EXPECT_EQ(t.node->getChild(1), t.c[2].get());
    ASSERT_EQ(t.c[2]->getNbChildren(), 1);
    EXPECT_EQ(t.c[2]->getChild(0), leaf.get());
    EXPECT_EQ(t.root->removeNullChildren(true, false), 0);
}

TEST_F(Node, SetNbChildrenResizesWithoutDetaching)
{
    Tree t;
    zuSpatial* dropped = t.c[2];
    t.node->setNbChildren(5);
    EXPECT_EQ(t.node->getNbChildren(), 5);
    EXPECT_EQ(t.node->getChild(2), dropped);
    EXPECT_EQ(t.node->getChild(4), nullptr);
    t.node->setNbChildren(2);
    EXPECT_EQ(t.node->getNbChildren(), 2);
    EXPECT_EQ(t.node->getChild(2), nullptr);
    EXPECT_EQ(dropped->GetParent(), t.node.get()) << "a raw step: the parent pointer is left";
    EXPECT_MASKS(t.root, 0u, 0u);
    dropped->SetParent(nullptr);
    t.node->setNbChildren(0);
    EXPECT_EQ(t.node->getNbChildren(), 0);
    EXPECT_EQ(t.node->getChild(0), nullptr);
    EXPECT_EQ(t.node->getChild(-1), nullptr);
}

TEST_F(Node, TheBoundMergesTheChildrenThatAreNotIgnored)
{
    zuPointer<zuNode> node = new zuNode;
    node->UpdateWorldBound();
    EXPECT_FALSE(node->GetWorldBound().isValid()) << "no children";

    zuPointer<zuTestLeaf> a = new zuTestLeaf, b = new zuTestLeaf, c = new zuTestLeaf;
    node->attachChild(a);
    node->attachChild(b);
    node->attachChild(c);
    a->SetWorldBound(zuBoundingVolume(Vec(0, 0, 0), Vec(1, 1, 1)));
    b->SetWorldBound(zuBoundingVolume(Vec(10, 0, 0), Vec(1, 1, 1)));
    c->SetWorldBound(zuBoundingVolume(Vec(0, -20, 0), Vec(1, 1, 1)));
    c->forceIgnore(true, false, false);
    node->UpdateWorldBound();
    EXPECT_EQ(node->GetWorldBound().GetCenter(), Vec(5, 0, 0));
    EXPECT_EQ(node->GetWorldBound().GetExtents(), Vec(6, 1, 1));

    // The only counted child has no valid bound: the node keeps its previous one.
    b->forceIgnore(true, false, false);
    a->SetWorldBound(zuBoundingVolume());
    node->UpdateWorldBound();
    EXPECT_EQ(node->GetWorldBound().GetExtents(), Vec(6, 1, 1));

    a->forceIgnore(true, false, false);
    node->UpdateWorldBound();
    EXPECT_FALSE(node->GetWorldBound().isValid()) << "only ignored children";
    EXPECT_EQ(node->GetWorldBound().GetCenter(), Vec(0, 0, 0));
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

TEST_F(Node, ADestroyedNodeLeavesNoDanglingParentBehind)
{
    zuPointer<zuTestLeaf> survivor = new zuTestLeaf;
    {
        zuPointer<zuNode> node = new zuNode;
        node->attachChild(survivor);
    }
    EXPECT_EQ(survivor->GetParent(), nullptr);
    EXPECT_EQ(survivor->GetReferences(), 1);
}

void* releaseOnSmallStack(void* holder)
{
    static_cast<zuPointer<zuNode>*>(holder)->operator=(nullptr);
    return nullptr;
}

TEST_F(Node, ADeepChainIsFreedWithoutRecursingPerLevel)
{
    // Freed on a thread with a 64 KiB stack: one destructor frame per level would need
    // some hundreds of kilobytes for 5000 levels.
    constexpr int depth = 5000;
    zuPointer<zuNode> root = new zuNode;
    zuPointer<zuTestLeaf> leaf = new zuTestLeaf;
    zuNode* bottom = root;
    for (int i = 0; i < depth; ++i) {
        zuNode* next = new zuNode;
        bottom->attachChild(next);
        bottom = next;
    }
    bottom->attachChild(leaf);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 64 * 1024);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, releaseOnSmallStack, &root), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(root.get(), nullptr);
    // Its node is gone: the whole chain was freed.
    EXPECT_EQ(leaf->GetParent(), nullptr);
    EXPECT_EQ(leaf->GetReferences(), 1);
}

} // namespace
} // namespace zu::test
