// The controller base: time mapping over several periods, the update gate with its forcing
// value, the controller operations it refuses, its record and its links.

#include "animation/zuAnimationTestHelpers.h"

#include <zuSceneGraph/animation/zuController.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <vector>

namespace zu::test {
namespace {

// The base as it is: its own gate, no change of its own.
class PlainController : public zuController {
};

class Controller : public ::testing::Test {
protected:
    zuTestFactories factories;
};

struct TimeCase {
    double appTime;
    double expected;
};

void expectControlTimes(const zuController& controller, const std::vector<TimeCase>& cases)
{
    for (const TimeCase& c : cases)
        EXPECT_NEAR(controller.GetControlTime(c.appTime), c.expected, 1e-12) << "at application time " << c.appTime;
}

// ---------------------------------------------------------------------------------------
// Time mapping

TEST_F(Controller, ClampHoldsTheScaledTimeWithinTheInterval)
{
    PlainController controller;
    EXPECT_EQ(controller.repeatType, zuController::RT_CLAMP);
    controller.minTime = 1.0;
    controller.maxTime = 3.0;
    controller.frequency = 2.0;
    controller.phase = 0.5;
    // t = 2 appTime + 0.5
    expectControlTimes(controller, {{-10.0, 1.0}, {0.25, 1.0}, {0.5, 1.5}, {1.0, 2.5}, {1.25, 3.0}, {100.0, 3.0}});

    // A reversed interval: below minTime gives minTime, everything else maxTime at most.
    controller.minTime = 5.0;
    controller.maxTime = 2.0;
    controller.frequency = 1.0;
    controller.phase = 0.0;
    expectControlTimes(controller, {{3.0, 5.0}, {6.0, 2.0}, {1.0, 5.0}});
}

TEST_F(Controller, WrapStartsAgainAtMinTimeInEveryPeriod)
{
    PlainController controller;
    controller.repeatType = zuController::RT_WRAP;
    controller.minTime = 2.0;
    controller.maxTime = 5.0;
    // The value in [2, 5) that differs from t by a whole number of periods of 3.
    expectControlTimes(controller, {{2.0, 2.0},
                                    {3.5, 3.5},
                                    {5.0, 2.0},
                                    {6.5, 3.5},
                                    {8.0, 2.0},
                                    {9.25, 3.25},
                                    {14.75, 2.75},
                                    {-0.5, 2.5},
                                    {-4.0, 2.0},
                                    {-5.5, 3.5}});

    // Frequency and phase act before the wrap: t = 2 * 7 + 1 = 15 in [0, 10) is 5.
    controller.minTime = 0.0;
    controller.maxTime = 10.0;
    controller.frequency = 2.0;
    controller.phase = 1.0;
    expectControlTimes(controller, {{7.0, 5.0}, {-1.0, 9.0}});
}

TEST_F(Controller, CycleRunsForwardsInEvenPeriodsAndBackwardsInOddOnes)
{
    PlainController controller;
    controller.repeatType = zuController::RT_CYCLE;
    controller.minTime = 2.0;
    controller.maxTime = 5.0;
    // A triangle wave of period 6: 2 at t = 2 + 6k, 5 at t = 5 + 6k.
    expectControlTimes(controller, {{2.0, 2.0},
                                    {3.5, 3.5},
                                    {5.0, 5.0},   // x = 1: the backward period starts at maxTime
                                    {6.0, 4.0},   // x between 1 and 2
                                    {7.5, 2.5},
                                    {7.99, 2.01},
                                    {8.0, 2.0},   // x = 2: forwards again
                                    {9.0, 3.0},
                                    {12.0, 4.0},  // x = 3 1/3
                                    {14.0, 2.0},
                                    {-1.0, 5.0},  // x = -1 is odd
                                    {-0.5, 4.5},
                                    {-4.0, 2.0},
                                    {-5.0, 3.0}});
}

TEST_F(Controller, AnUnknownRepeatTypeCyclesAndAnEmptyIntervalGivesMinTime)
{
    PlainController controller;
    controller.repeatType = 7;
    controller.minTime = 2.0;
    controller.maxTime = 5.0;
    expectControlTimes(controller, {{6.0, 4.0}, {9.0, 3.0}});

    for (int type : {zuController::RT_WRAP, zuController::RT_CYCLE}) {
        controller.repeatType = type;
        controller.maxTime = 2.0;
        expectControlTimes(controller, {{-3.0, 2.0}, {2.5, 2.0}, {1e9, 2.0}});
        controller.maxTime = 1.0;
        expectControlTimes(controller, {{-3.0, 2.0}, {2.5, 2.0}});
    }
}

TEST_F(Controller, CycleTakesTheParityOfPeriodsBeyondTheIntRange)
{
    PlainController controller;
    controller.repeatType = zuController::RT_CYCLE;
    controller.minTime = 0.0;
    controller.maxTime = 1.0;
    // x = 2^32 + 1 (odd) and 2^32 + 2 (even), each a quarter in.
    const double odd = 4294967297.0;
    EXPECT_DOUBLE_EQ(controller.GetControlTime(odd + 0.25), 0.75);
    EXPECT_DOUBLE_EQ(controller.GetControlTime(odd + 1.25), 0.25);
    // Not a number stays so, without a trap.
    EXPECT_TRUE(std::isnan(controller.GetControlTime(std::numeric_limits<double>::quiet_NaN())));
}

// ---------------------------------------------------------------------------------------
// Update gate

TEST_F(Controller, TheSameTimeTwiceUpdatesOnce)
{
    PlainController controller;
    EXPECT_EQ(controller.GetLastAppTime(), -1.7976931348623157e308);
    EXPECT_TRUE(controller.Update(0.0));
    EXPECT_FALSE(controller.Update(0.0));
    EXPECT_TRUE(controller.Update(0.5));
    EXPECT_FALSE(controller.Update(0.5));
    // Going back is a change as well.
    EXPECT_TRUE(controller.Update(0.0));
    EXPECT_EQ(controller.GetLastAppTime(), 0.0);

    // The initial value is itself a time already seen.
    PlainController fresh;
    EXPECT_FALSE(fresh.Update(-std::numeric_limits<double>::max()));
}

TEST_F(Controller, MinusTheLargestFloatForcesEveryUpdate)
{
    const double force = -static_cast<double>(FLT_MAX);
    EXPECT_EQ(zuController::FORCE_UPDATE_TIME, force);
    EXPECT_EQ(force, -3.4028234663852886e38);

    PlainController controller;
    EXPECT_TRUE(controller.Update(force));
    EXPECT_EQ(controller.GetLastAppTime(), force);
    EXPECT_TRUE(controller.Update(force));
    EXPECT_TRUE(controller.Update(force));
    // An ordinary time after it updates once, and the neighbour of the forcing value is
    // an ordinary time.
    EXPECT_TRUE(controller.Update(1.0));
    EXPECT_FALSE(controller.Update(1.0));
    const double near = std::nextafter(force, 0.0);
    EXPECT_TRUE(controller.Update(near));
    EXPECT_FALSE(controller.Update(near));
    // The double minimum is not the forcing value.
    EXPECT_TRUE(controller.Update(-DBL_MAX));
    EXPECT_FALSE(controller.Update(-DBL_MAX));
}

TEST_F(Controller, AnInactiveControllerNeverUpdates)
{
    PlainController controller;
    controller.active = false;
    for (double time : {0.0, 1.0, zuController::FORCE_UPDATE_TIME, 2.0})
        EXPECT_FALSE(controller.Update(time)) << time;
    EXPECT_EQ(controller.GetLastAppTime(), zuController::NEVER_UPDATED);
    controller.active = true;
    EXPECT_TRUE(controller.Update(2.0));
}

// ---------------------------------------------------------------------------------------
// Controllers of a controller, the controlled object

TEST_F(Controller, CarriesNoControllersOfItsOwn)
{
    zuPointer<PlainController> controller = new PlainController;
    zuPointer<zuTestController> other = new zuTestController;
    EXPECT_FALSE(controller->AttachController(other));
    EXPECT_EQ(other->GetObject(), nullptr);
    controller->SetControllerQuantity(3);
    controller->SetController(0, other);
    EXPECT_EQ(controller->GetControllerQuantity(), 0);
    EXPECT_EQ(controller->GetController(0), nullptr);
    EXPECT_EQ(other->GetObject(), nullptr);
    EXPECT_EQ(other->GetReferences(), 1);
}

TEST_F(Controller, TheHolderHandsItselfOverAndTakesItselfBack)
{
    zuPointer<zuTestController> controller = new zuTestController;
    {
        zuPointer<zuTestNode> node = new zuTestNode("n");
        EXPECT_TRUE(node->AttachController(controller));
        EXPECT_EQ(controller->GetObject(), node.get());
        node->DetachController(controller);
        EXPECT_EQ(controller->GetObject(), nullptr);
        node->AttachController(controller);
    }
    // The holder went away; the controller lives on without it.
    EXPECT_EQ(controller->GetObject(), nullptr);
}

// ---------------------------------------------------------------------------------------
// Record

TEST_F(Controller, RecordAt632IsTheObjectPartThen45Bytes)
{
    zuPointer<zuTestNode> node = new zuTestNode("n");
    zuPointer<zuTestController> controller = new zuTestController;
    controller->SetName("spin");
    controller->repeatType = zuController::RT_CYCLE;
    controller->minTime = 0.5;
    controller->maxTime = 4.25;
    controller->phase = -1.5;
    controller->frequency = 2.0;
    controller->active = false;
    node->AttachController(controller);
    controller->Update(3.0);  // lastAppTime is not saved

    // The controller alone: its object is written as a reference, not saved with it.
    const std::vector<char> saved = saveToBytes({controller}, zuStreamVersion(6, 32));
    const int header = 4 + 23 + 4 + 8 + 4 + 4 + 4;  // type, size, identity, "spin", count
    zuBytes expected;
    expected.str("Top Level").str("zuTest.zuTestController").i32(header + 45).u64(id(controller));
    expected.str("spin").i32(0).i32(2);
    f64(f64(f64(f64(expected, 0.5), 4.25), -1.5), 2.0);
    expected.u8(0).u64(id(node));
    EXPECT_EQ(saved, expected.bytes());

    // Before 6.0 the same fields follow, without the size.
    const std::vector<char> old = saveToBytes({controller}, zuStreamVersion(5, 20));
    EXPECT_EQ(old.size(), saved.size() - 4);
}

TEST_F(Controller, LoadRestoresTheFieldsAndLinksTheHolder)
{
    std::vector<char> saved;
    {
        zuPointer<zuTestNode> node = new zuTestNode("holder");
        zuPointer<zuTestController> controller = new zuTestController;
        controller->repeatType = zuController::RT_WRAP;
        controller->minTime = -2.0;
        controller->maxTime = 8.0;
        controller->phase = 0.125;
        controller->frequency = 0.5;
        controller->active = false;
        node->AttachController(controller);
        saved = saveToBytes({node}, zuStreamVersion(6, 32));
    }
    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    ASSERT_TRUE(stream.Load(saved.data(), saved.size()));
    ASSERT_EQ(stream.GetObjectCount(), 1);
    auto* node = static_cast<zuTestNode*>(stream.GetObjectAt(0));
    ASSERT_EQ(node->GetControllerQuantity(), 1);
    zuController* controller = node->GetController(0);
    ASSERT_TRUE(controller->IsExactly(zuTestController::TYPE));
    EXPECT_EQ(controller->GetObject(), node);
    EXPECT_EQ(controller->repeatType, zuController::RT_WRAP);
    EXPECT_EQ(controller->minTime, -2.0);
    EXPECT_EQ(controller->maxTime, 8.0);
    EXPECT_EQ(controller->phase, 0.125);
    EXPECT_EQ(controller->frequency, 0.5);
    EXPECT_FALSE(controller->active);
    EXPECT_EQ(controller->GetLastAppTime(), zuController::NEVER_UPDATED);
}

TEST_F(Controller, ALoadedReferenceToAnObjectThatDoesNotHoldTheControllerIsDropped)
{
    // c claims b, which does not hold it; a holds c but c claims b.
    std::vector<char> alone;
    std::vector<char> held;
    {
        zuPointer<zuTestNode> a = new zuTestNode("a");
        zuPointer<zuTestNode> b = new zuTestNode("b");
        zuPointer<zuTestController> c = new zuTestController;
        c->SetObject(b);
        alone = saveToBytes({c, b}, zuStreamVersion(6, 32));
        a->AttachController(c);
        c->SetObject(b);
        held = saveToBytes({a, b}, zuStreamVersion(6, 32));
        c->SetObject(nullptr);
    }
    {
        zuBaseStream stream;
        stream.SetVersion(zuStreamVersion(6, 32));
        ASSERT_TRUE(stream.Load(alone.data(), alone.size()));
        ASSERT_EQ(stream.GetObjectCount(), 2);
        auto* c = static_cast<zuController*>(stream.GetObjectAt(0));
        EXPECT_EQ(c->GetObject(), nullptr);
    }
    {
        zuBaseStream stream;
        stream.SetVersion(zuStreamVersion(6, 32));
        ASSERT_TRUE(stream.Load(held.data(), held.size()));
        ASSERT_EQ(stream.GetObjectCount(), 2);
        auto* a = static_cast<zuTestNode*>(stream.GetObjectAt(0));
        ASSERT_EQ(a->GetControllerQuantity(), 1);
        // The holder wins over the record's claim.
        EXPECT_EQ(a->GetController(0)->GetObject(), a);
    }
}

TEST_F(Controller, AControllerRecordThatCarriesControllersIsRefused)
{
    // A controller record with a controller count of 1 (pointing at itself).
    zuPointer<zuTestController> controller = new zuTestController;
    const int header = 4 + 23 + 4 + 8 + 4 + 4 + 8;
    zuBytes bytes;
    bytes.str("Top Level").str("zuTest.zuTestController").i32(header + 45).u64(77).str("").i32(1).u64(77);
    bytes.i32(0);
    for (double value : {0.0, 0.0, 0.0, 1.0})
        f64(bytes, value);
    bytes.u8(1).u64(0);
    std::vector<char> data = bytes.bytes();
    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    EXPECT_FALSE(stream.Load(data.data(), data.size()));
    EXPECT_EQ(stream.GetObjectCount(), 0);
}

// ---------------------------------------------------------------------------------------
// Equals and Clone

TEST_F(Controller, EqualsComparesTheMappingButNotTheObjectOrTheLastTime)
{
    zuPointer<zuTestController> a = new zuTestController;
    zuPointer<zuTestController> b = new zuTestController;
    for (zuController* c : {static_cast<zuController*>(a.get()), static_cast<zuController*>(b.get())}) {
        c->repeatType = zuController::RT_WRAP;
        c->minTime = 1.0;
        c->maxTime = 2.0;
        c->phase = 0.25;
        c->frequency = 3.0;
    }
    zuPointer<zuTestNode> node = new zuTestNode("n");
    node->AttachController(a);
    a->zuController::Update(5.0);
    EXPECT_TRUE(a->Equals(b));
    EXPECT_TRUE(b->Equals(a));

    EXPECT_FALSE(a->Equals(nullptr));
    EXPECT_FALSE(a->Equals(node));

    b->minTime = 1.0 + 5e-7;
    b->maxTime = 2.0 - 5e-7;
    EXPECT_TRUE(a->Equals(b)) << "interval ends within 1e-6";
    b->minTime = 1.0 + 2e-6;
    EXPECT_FALSE(a->Equals(b));
    b->minTime = 1.0;
    b->maxTime = 2.0 + 2e-6;
    EXPECT_FALSE(a->Equals(b));
    b->maxTime = 2.0;

    b->phase = 0.25 + 1e-12;
    EXPECT_FALSE(a->Equals(b)) << "phase compares exactly";
    b->phase = 0.25;
    b->frequency = std::nextafter(3.0, 4.0);
    EXPECT_FALSE(a->Equals(b)) << "frequency compares exactly";
    b->frequency = 3.0;
    b->repeatType = zuController::RT_CYCLE;
    EXPECT_FALSE(a->Equals(b));
    b->repeatType = zuController::RT_WRAP;
    b->active = false;
    EXPECT_FALSE(a->Equals(b));
    b->active = true;
    b->SetName("other");
    EXPECT_FALSE(a->Equals(b));
}

TEST_F(Controller, CloneCopiesTheMappingIntoAnExistingController)
{
    zuPointer<zuTestController> source = new zuTestController;
    source->SetName("src");
    source->repeatType = zuController::RT_CYCLE;
    source->minTime = -1.0;
    source->maxTime = 1.0;
    source->phase = 0.5;
    source->frequency = 4.0;
    source->active = false;

    zuRttiInterface* none = nullptr;
    EXPECT_FALSE(source->Clone(none)) << "the base cannot build a controller of an unknown kind";
    EXPECT_EQ(none, nullptr);

    zuPointer<zuTestNode> holder = new zuTestNode("holder");
    zuPointer<zuTestController> target = new zuTestController;
    holder->AttachController(target);
    target->Update(9.0);
    target->zuController::Update(9.0);
    zuRttiInterface* into = target.get();
    ASSERT_TRUE(source->Clone(into));
    EXPECT_TRUE(target->Equals(source));
    EXPECT_EQ(target->GetName(), "src");
    EXPECT_EQ(target->GetObject(), holder.get()) << "the copy keeps what it controls";
    EXPECT_EQ(target->GetLastAppTime(), zuController::NEVER_UPDATED);

    zuPointer<zuTestNode> node = new zuTestNode("n");
    zuRttiInterface* wrong = node.get();
    EXPECT_FALSE(source->Clone(wrong));
}

} // namespace
} // namespace zu::test
