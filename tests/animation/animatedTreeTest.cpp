// A tree of nodes and leaves animated by keyframe controllers that share their time
// arrays: subtree updates, and a saved and reloaded tree that moves as the original does.

#include "animation/zuAnimationTestHelpers.h"
#include "support/zuFactoryTest.h"
#include "support/zuTestLeaf.h"

#include <zuSceneGraph/animation/zuKeyframeController.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/stream/zuBaseStream.h>
#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSystem/zuMemoryIoDevice.h>

#include <gtest/gtest.h>

#include <vector>

namespace zu::test {
namespace {

using AnimatedTree = zuFactoryTest;

// root (static, moved to x = 10)
//   arm    A: translation and rotation over times T1, cycling over [0, 4]
//     hand   B: rotation over T1, scale over T2, wrapping, frequency 1.5, phase 0.25
//       finger (leaf)  C: translation over T2, clamped to [0.5, 3]
//     thumb (leaf, static)
//   wheel  D: rotation over T1, wrapping over [0, 4]
struct Tree {
    zuPointer<zuNode> root = new zuNode;
    zuNode* arm = new zuNode;
    zuNode* hand = new zuNode;
    zuNode* wheel = new zuNode;
    zuTestLeaf* finger = new zuTestLeaf(Vec(0, 0, 0), Vec(0.5f, 0.5f, 0.5f));
    zuTestLeaf* thumb = new zuTestLeaf(Vec(1, 0, 0), Vec(0.25f, 0.25f, 0.25f));

    Tree()
    {
        zuPointer<zuFloatArray> t1 = floats({0.0f, 1.0f, 2.0f, 3.0f, 4.0f});
        zuPointer<zuFloatArray> t2 = floats({0.5f, 1.25f, 3.0f});

        root->GetLocalTransform().SetTranslate(Vec(10, 0, 0));
        root->attachChild(arm);
        root->attachChild(wheel);
        arm->attachChild(hand);
        arm->attachChild(thumb);
        hand->attachChild(finger);
        hand->GetLocalTransform().SetTranslate(Vec(0, 2, 0));

        auto* a = new zuKeyframeController;
        a->SetName("A");
        a->repeatType = zuController::RT_CYCLE;
        a->maxTime = 4.0;
        a->translationTimes = t1;
        a->translationKeys = vectors({Vec(0, 0, 0), Vec(1, 0, 0), Vec(1, 1, 0), Vec(0, 1, 1), Vec(-1, 0, 2)});
        a->rotationTimes = t1;
        a->rotationKeys = quaternions({turn(0, 0, 1, 0), turn(0, 0, 1, 45), turn(0, 1, 1, 90), turn(1, 0, 0, 120),
                                       turn(1, 1, 1, 200)});
        arm->AttachController(a);

        auto* b = new zuKeyframeController;
        b->SetName("B");
        b->repeatType = zuController::RT_WRAP;
        b->maxTime = 4.0;
        b->frequency = 1.5;
        b->phase = 0.25;
        b->rotationTimes = t1;
        b->rotationKeys = quaternions({turn(1, 0, 0, 0), turn(1, 0, 0, 30), turn(1, 0, 0, 60), turn(0, 1, 0, 30),
                                       turn(0, 1, 0, 0)});
        b->scaleTimes = t2;
        b->scaleKeys = vectors({Vec(1, 1, 1), Vec(2, 2, 2), Vec(1, 0.5f, 2)});
        hand->AttachController(b);

        auto* c = new zuKeyframeController;
        c->SetName("C");
        c->minTime = 0.5;
        c->maxTime = 3.0;
        c->translationTimes = t2;
        c->translationKeys = vectors({Vec(0, 0, 1), Vec(0, 0, 2), Vec(3, 0, 2)});
        finger->AttachController(c);

        auto* d = new zuKeyframeController;
        d->SetName("D");
        d->repeatType = zuController::RT_WRAP;
        d->maxTime = 4.0;
        d->rotationTimes = t1;
        d->rotationKeys = quaternions({turn(0, 0, 1, 0), turn(0, 0, 1, 90), turn(0, 0, 1, 180), turn(0, 0, 1, 270),
                                       turn(0, 0, 1, 359)});
        wheel->AttachController(d);
    }
};

// The spatial objects of a tree, depth-first, parents first.
void collect(zuSpatial* object, std::vector<zuSpatial*>& objects)
{
    objects.push_back(object);
    if (object->IsDerived(zuNode::TYPE)) {
        auto* node = static_cast<zuNode*>(object);
        for (int i = 0; i < node->getNbChildren(); ++i)
            if (zuSpatial* child = node->getChild(i))
                collect(child, objects);
    }
}

zuKeyframeController* keyframes(zuSpatial* object)
{
    zuController* controller = object->GetController(0);
    return controller && controller->IsDerived(zuKeyframeController::TYPE)
        ? static_cast<zuKeyframeController*>(controller)
        : nullptr;
}

const double TIMES[] = {-1.0, 0.0, 0.3, 0.3, 1.7, 2.0, 3.99, 4.0, 5.5, 7.25, 11.0, 3.0, 0.1,
                        zuController::FORCE_UPDATE_TIME, 0.1, 2.6, -7.3, 101.5};

// Animates both trees through TIMES and compares every world transformation.
void expectSameMotion(zuNode* original, zuNode* loaded)
{
    std::vector<zuSpatial*> a;
    std::vector<zuSpatial*> b;
    collect(original, a);
    collect(loaded, b);
    ASSERT_EQ(a.size(), b.size());
    ASSERT_EQ(a.size(), 6u);
    for (double time : TIMES) {
        const bool changedA = original->UpdateSubtreeControllers(time);
        const bool changedB = loaded->UpdateSubtreeControllers(time);
        EXPECT_EQ(changedA, changedB) << "at " << time;
        original->UpdateGS();
        loaded->UpdateGS();
        for (size_t i = 0; i < a.size(); ++i) {
            EXPECT_TRUE(a[i]->GetLocalTransform() == b[i]->GetLocalTransform()) << "object " << i << " at " << time;
            EXPECT_TRUE(a[i]->GetWorldTransform() == b[i]->GetWorldTransform()) << "object " << i << " at " << time;
        }
    }
}

// The loaded tree's controllers control their own objects and share the arrays as the
// original's do.
void expectSharedArrays(zuNode* loaded)
{
    std::vector<zuSpatial*> objects;
    collect(loaded, objects);
    // root, arm, hand, finger, thumb, wheel
    zuKeyframeController* a = keyframes(objects[1]);
    zuKeyframeController* b = keyframes(objects[2]);
    zuKeyframeController* c = keyframes(objects[3]);
    zuKeyframeController* d = keyframes(objects[5]);
    ASSERT_TRUE(a && b && c && d);
    EXPECT_EQ(a->GetName(), "A");
    EXPECT_EQ((std::vector<zuObject*>{a->GetObject(), b->GetObject(), c->GetObject(), d->GetObject()}),
              (std::vector<zuObject*>{objects[1], objects[2], objects[3], objects[5]}));
    ASSERT_TRUE(a->translationTimes && b->scaleTimes);
    EXPECT_TRUE(a->rotationTimes == a->translationTimes && b->rotationTimes == a->translationTimes
                && d->rotationTimes == a->translationTimes && c->translationTimes == b->scaleTimes);
    EXPECT_EQ(objects[4]->GetControllerQuantity(), 0);
}

TEST_F(AnimatedTree, SubtreeUpdatesReachEveryObjectButUpdateControllersStaysWithItsObject)
{
    Tree tree;
    const zuGenericTransformation<float> before = tree.arm->GetLocalTransform();
    EXPECT_FALSE(tree.root->UpdateControllers(1.5)) << "the root carries no controllers";
    EXPECT_TRUE(tree.arm->GetLocalTransform() == before);

    EXPECT_TRUE(tree.arm->UpdateControllers(1.5));
    EXPECT_EQ(tree.arm->GetLocalTransform().GetTranslate(), Vec(1, 0.5f, 0));
    EXPECT_EQ(tree.finger->GetLocalTransform().GetTranslate(), Vec(0, 0, 0)) << "not reached";

    EXPECT_TRUE(tree.root->UpdateSubtreeControllers(2.125));
    EXPECT_EQ(tree.finger->GetLocalTransform().GetTranslate(), Vec(1.5f, 0, 2));
    // Every controller saw 2.125: a second pass changes nothing.
    EXPECT_FALSE(tree.root->UpdateSubtreeControllers(2.125));

    // The world of the leaf composes the whole chain once UpdateGS runs.
    tree.root->UpdateGS();
    zuGenericTransformation<float> chain;
    chain.Product(tree.root->GetLocalTransform(), tree.arm->GetLocalTransform());
    chain.Product(chain, tree.hand->GetLocalTransform());
    chain.Product(chain, tree.finger->GetLocalTransform());
    EXPECT_TRUE(chain.Equals(tree.finger->GetWorldTransform()));
}

// Saved and loaded through a plain stream or a file container.
zuPointer<zuNode> reload(zuNode* root, bool throughFile)
{
    const zuStreamVersion version(6, 32);
    std::vector<char> bytes = throughFile ? saveToFileBytes({root}, version, 256) : saveToBytes({root}, version);
    zuMemoryIoDevice input(bytes);
    zuFileStream file(256);
    zuBaseStream plain;
    plain.SetVersion(version);
    zuBaseStream& stream = throughFile ? static_cast<zuBaseStream&>(file) : plain;
    if (!(throughFile ? file.Load(input, "tree") : plain.Load(bytes.data(), bytes.size()))
        || stream.GetObjectCount() != 1 || !stream.GetObjectAt(0)->IsExactly(zuNode::TYPE))
        return nullptr;
    return static_cast<zuNode*>(stream.GetObjectAt(0));
}

TEST_F(AnimatedTree, AReloadedTreeMovesAsTheOriginal)
{
    for (bool throughFile : {false, true}) {
        SCOPED_TRACE(throughFile ? "file container" : "plain stream");
        Tree tree;
        // Move the original first: its last key indices differ from the fresh ones of the
        // loaded tree, which must not matter.
        tree.root->UpdateSubtreeControllers(3.5);
        tree.root->UpdateGS();
        zuPointer<zuNode> loaded = reload(tree.root, throughFile);
        ASSERT_TRUE(loaded);
        expectSharedArrays(loaded);
        // The original's controllers have seen 3.5 already; so must the copy's.
        loaded->UpdateSubtreeControllers(3.5);
        loaded->UpdateGS();
        expectSameMotion(tree.root, loaded);
    }
}

} // namespace
} // namespace zu::test
