// Identity, reference counts, look-ups, Equals, Clone and controller updates of zuObject;
// the controller list of named objects.

#include "support/zuTestObjects.h"

#include <zuSystem/LibInitCounter.h>
#include <zuSystem/zuMutex.h>

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <set>
#include <thread>
#include <vector>

namespace zu::test {
namespace {

// Restores the default identifier policy and drops a library mutex the test created.
class IdentifierPolicy : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(LibInitCounter::count("scenegraph"), 0) << "the library must not be started";
        mOwnsLibraryMutex = true;
    }
    void TearDown() override
    {
        zuObject::setDefaultLockFunctions();
        if (mOwnsLibraryMutex)
            zuObject::destroyLibraryMutex();
    }

    // Builds objects on another thread while this one holds the library mutex: a policy
    // that took the mutex would block there. The wait is a guard against a deadlock only.
    static bool buildsWhileTheLibraryMutexIsHeld()
    {
        zuMutex* mutex = zuObject::libraryMutex();
        mutex->lock();
        auto built = std::async(std::launch::async, [] {
            for (int i = 0; i < 16; ++i)
                zuPointer<zuTestController> controller = new zuTestController;
        });
        const bool finished = built.wait_for(std::chrono::seconds(60)) == std::future_status::ready;
        mutex->unlock();
        built.wait();
        return finished;
    }

    bool mOwnsLibraryMutex = false;
};

TEST_F(IdentifierPolicy, OnlyTheMutexPolicyTakesTheLibraryMutex)
{
    zuObject::createLibraryMutex();
    zuObject::setDefaultLockFunctions();
    EXPECT_TRUE(buildsWhileTheLibraryMutexIsHeld());
    zuObject::setNoLockFunctions();
    EXPECT_TRUE(buildsWhileTheLibraryMutexIsHeld());

    // Under the mutex policy, objects built on several threads at once take distinct
    // identifiers and none is lost.
    zuObject::setMutexLockFunctions();
    constexpr int threads = 4;
    constexpr int perThread = 5000;
    const unsigned int first = zuObject::GetNextID();
    std::vector<std::vector<unsigned int>> identifiers(threads);
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t)
        workers.emplace_back([&identifiers, t] {
            for (int i = 0; i < perThread; ++i) {
                zuPointer<zuTestController> controller = new zuTestController;
                identifiers[static_cast<size_t>(t)].push_back(controller->GetID());
            }
        });
    for (auto& worker : workers)
        worker.join();
    std::set<unsigned int> distinct;
    for (const auto& list : identifiers)
        distinct.insert(list.begin(), list.end());
    EXPECT_EQ(distinct.size(), static_cast<size_t>(threads * perThread));
    EXPECT_TRUE(*distinct.begin() == first && *distinct.rbegin() == first + threads * perThread - 1);
    EXPECT_EQ(zuObject::GetNextID(), first + threads * perThread);
}

TEST(zuObjectTest, DecrementingTheLastReferenceDestroysAndDecrementingZeroWraps)
{
    const int living = zuTestNode::msLiving;
    auto* node = new zuTestNode;
    EXPECT_EQ(node->GetReferences(), 0);
    node->IncrementReferences();
    node->IncrementReferences();
    EXPECT_EQ(node->GetReferences(), 2);
    node->DecrementReferences();
    EXPECT_EQ(node->GetReferences(), 1);
    node->DecrementReferences();
    EXPECT_EQ(zuTestNode::msLiving, living);

    node = new zuTestNode;
    node->DecrementReferences();  // 0 -> 0xFFFFFFFF, the object lives on
    EXPECT_TRUE(zuTestNode::msLiving == living + 1 && node->GetReferences() == -1);
    node->ClearReferences();
    EXPECT_EQ(node->GetReferences(), 0);
    zuPointer<zuTestNode> owner = node;
    owner = nullptr;
    EXPECT_EQ(zuTestNode::msLiving, living);

    // The root of the hierarchy keeps no count at all.
    zuTestPlain plain;
    plain.IncrementReferences();
    EXPECT_EQ(plain.GetReferences(), 0);
    plain.DecrementReferences();
}

// A node with controllers: slot 0 "first", slot 1 empty, slot 2 "second". Controllers carry
// no controllers of their own, so the search is one level deep here; nodes extend it.
struct ControlledNode {
    zuPointer<zuTestNode> node = new zuTestNode("node");
    zuPointer<zuTestController> first = new zuTestController;
    zuPointer<zuTestController> second = new zuTestController;
    ControlledNode(const std::string& firstName, const std::string& secondName)
    {
        first->SetName(firstName);
        second->SetName(secondName);
        node->SetControllerQuantity(3);
        node->SetController(0, first);
        node->SetController(2, second);
    }
};

TEST(zuObjectTest, LookUpsVisitTheObjectThenItsControllersInSlotOrder)
{
    ControlledNode graph("twin", "twin");
    EXPECT_EQ(graph.node->GetObjectByName("node"), graph.node);
    EXPECT_EQ(graph.node->GetObjectByName("twin"), graph.first);
    for (const char* other : {"twi", "twins", ""})
        EXPECT_EQ(graph.node->GetObjectByName(other), nullptr) << other;
    EXPECT_EQ(graph.node->GetObjectByID(graph.node->GetID()), graph.node);
    EXPECT_EQ(graph.node->GetObjectByID(graph.second->GetID()), graph.second);
    EXPECT_EQ(graph.node->GetObjectByID(zuObject::GetNextID()), nullptr);
    EXPECT_EQ(graph.first->GetObjectByID(graph.second->GetID()), nullptr);

    // An empty name matches an empty name: an unnamed object finds itself.
    zuTestNode unnamed;
    EXPECT_EQ(unnamed.GetObjectByName(""), &unnamed);
    ControlledNode emptyInside("a", "");
    EXPECT_EQ(emptyInside.node->GetObjectByName(""), emptyInside.second);

    // GetAllObjectsByName lists the object before its controllers, and appends.
    graph.node->SetName("twin");
    std::vector<zuObject*> found{nullptr};
    graph.node->GetAllObjectsByName("twin", found);
    EXPECT_EQ(found, (std::vector<zuObject*>{nullptr, graph.node, graph.first, graph.second}));
    found.clear();
    emptyInside.node->GetAllObjectsByName("a", found);
    EXPECT_EQ(found, (std::vector<zuObject*>{emptyInside.first}));
    found.clear();
    graph.node->GetAllObjectsByName("none", found);
    EXPECT_TRUE(found.empty());
}

TEST(zuObjectTest, EqualsComparesNamesAndControllerCountsOnly)
{
    zuPointer<zuTestNode> a = new zuTestNode("n");
    zuPointer<zuTestNode> b = new zuTestNode("n");
    EXPECT_NE(a->GetID(), b->GetID());
    b->IncrementReferences();
    EXPECT_TRUE(a->Equals(b));  // identifiers and reference counts are not compared
    b->DecrementReferences();

    zuTestPlain plain;
    EXPECT_FALSE(a->Equals(&plain));
    EXPECT_TRUE(plain.Equals(a));  // the root only asks for a persistable object

    // Controller counts must match; the controllers themselves are not compared.
    zuPointer<zuTestController> ca = new zuTestController;
    zuPointer<zuTestController> cb = new zuTestController;
    ca->SetName("one");
    cb->SetName("other");
    a->SetControllerQuantity(1);
    EXPECT_FALSE(a->Equals(b) || b->Equals(a));
    b->SetControllerQuantity(1);
    EXPECT_TRUE(a->Equals(b));
    a->SetController(0, ca);
    b->SetController(0, cb);
    EXPECT_TRUE(a->Equals(b));
}

TEST(zuObjectTest, CloneCopiesTheNameButNotTheControllers)
{
    zuPointer<zuTestNode> source = new zuTestNode("source", 9);
    zuPointer<zuTestController> controller = new zuTestController;
    source->AttachController(controller);

    // At the zuObject level the target must exist already.
    zuRttiInterface* target = nullptr;
    EXPECT_FALSE(source->zuObject::Clone(target));
    EXPECT_EQ(target, nullptr);
    zuTestPlain plain;
    target = &plain;
    EXPECT_FALSE(source->zuObject::Clone(target) || source->Clone(target));
    EXPECT_EQ(target, &plain);

    // Into an existing object of another class: only the name moves.
    zuPointer<zuTestOtherNode> existing = new zuTestOtherNode;
    existing->SetControllerQuantity(2);
    target = existing;
    EXPECT_TRUE(source->zuObject::Clone(target));
    EXPECT_TRUE(target == existing && existing->GetName() == "source" && existing->GetControllerQuantity() == 2);

    // A concrete class creates the target.
    const int living = zuTestNode::msLiving;
    target = nullptr;
    ASSERT_TRUE(source->Clone(target));
    zuPointer<zuTestNode> clone = static_cast<zuTestNode*>(target);
    EXPECT_EQ(zuTestNode::msLiving, living + 1);
    EXPECT_TRUE(clone->IsExactly(zuTestNode::TYPE) && clone->GetName() == "source" && clone->GetValue() == 9);
    EXPECT_TRUE(clone->GetControllerQuantity() == 0 && clone->GetReferences() == 1);
    EXPECT_EQ(controller->GetObject(), source);
}

TEST(zuObjectTest, UpdateControllersUpdatesEveryControllerAndTellsWhetherAnyChanged)
{
    zuTestNode node("n");
    EXPECT_FALSE(node.UpdateControllers(1.0));

    zuPointer<zuTestController> quiet = new zuTestController;
    zuPointer<zuTestController> busy = new zuTestController;
    quiet->mChanges = false;
    busy->mChanges = true;
    node.SetControllerQuantity(3);
    node.SetController(0, busy);
    node.SetController(2, quiet);

    // The controller that changes comes first: the later one is still updated.
    EXPECT_TRUE(node.UpdateControllers(2.5));
    EXPECT_EQ((std::vector{busy->mTimes, quiet->mTimes}), (std::vector<std::vector<double>>{{2.5}, {2.5}}));

    busy->mChanges = false;
    EXPECT_FALSE(node.UpdateControllers(3.0));
    EXPECT_EQ((std::vector{busy->mTimes, quiet->mTimes}), (std::vector<std::vector<double>>{{2.5, 3.0}, {2.5, 3.0}}));
}

TEST(zuObjectTest, AControllerPointsAtTheObjectItControlsOnlyWhileAttached)
{
    zuPointer<zuTestController> kept = new zuTestController;
    zuPointer<zuTestController> other = new zuTestController;
    {
        zuPointer<zuTestNode> node = new zuTestNode("n");
        EXPECT_TRUE(!node->AttachController(nullptr) && node->AttachController(kept) && !node->AttachController(kept));
        EXPECT_TRUE(node->GetControllerQuantity() == 1 && kept->GetObject() == node && kept->GetReferences() == 2);

        node->DetachController(kept);
        EXPECT_TRUE(kept->GetObject() == nullptr && kept->GetReferences() == 1 && node->GetControllerQuantity() == 0);
        node->DetachController(kept);  // not attached: nothing happens

        // Replacing a slot or shrinking the list releases the controller it held.
        node->SetControllerQuantity(2);
        node->SetController(0, kept);
        node->SetController(2, other);  // past the end: ignored
        EXPECT_TRUE(node->GetControllerQuantity() == 2 && other->GetObject() == nullptr);
        node->SetController(0, other);
        EXPECT_TRUE(kept->GetObject() == nullptr && other->GetObject() == node);
        node->SetController(1, kept);
        node->SetControllerQuantity(1);
        EXPECT_EQ(kept->GetObject(), nullptr);
        node->SetController(0, nullptr);
        EXPECT_EQ(other->GetObject(), nullptr);
        node->SetController(0, kept);
        EXPECT_EQ(kept->GetObject(), node);
    }
    // The object is gone: its controllers no longer point at it.
    EXPECT_TRUE(kept->GetObject() == nullptr && kept->GetReferences() == 1);

    // A controller carries no controllers of its own.
    EXPECT_FALSE(kept->AttachController(other));
    kept->SetControllerQuantity(3);
    kept->SetController(0, other);
    EXPECT_TRUE(kept->GetControllerQuantity() == 0 && other->GetReferences() == 1);
}

} // namespace
} // namespace zu::test
