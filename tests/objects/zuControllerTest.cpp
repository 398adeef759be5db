// The controller base: time mapping over several periods, the update gate with its forcing
// value, its record and its links, comparison and copy.

#include "support/zuFactoryTest.h"
#include "animation/zuAnimationTestHelpers.h"

#include <zuSceneGraph/objects/zuController.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <functional>
#include <limits>
#include <vector>

namespace zu::test {
namespace {

// The base as it is: its own gate, no change of its own.
class PlainController : public zuController {
};

using Controller = zuFactoryTest;

void configure(zuController& controller, int repeatType, double minTime, double maxTime, double phase,
               double frequency, bool active)
{
    controller.repeatType = repeatType;
    controller.minTime = minTime;
    controller.maxTime = maxTime;
    controller.phase = phase;
    controller.frequency = frequency;
    controller.active = active;
}

TEST_F(Controller, TimeMappingClampsWrapsOrCyclesTheScaledTime)
{
    struct TimeCase {
        double appTime;
        double expected;
    };
    struct Mapping {
        const char* what;
        int repeatType;
        double minTime, maxTime, frequency, phase;
        std::vector<TimeCase> times;
    };
    const Mapping mappings[] = {
        // t = 2 appTime + 0.5 held within [1, 3].
        {"clamp", zuController::RT_CLAMP, 1.0, 3.0, 2.0, 0.5,
         {{-10.0, 1.0}, {0.25, 1.0}, {0.5, 1.5}, {1.0, 2.5}, {1.25, 3.0}, {100.0, 3.0}}},
        // A reversed interval: below minTime gives minTime, everything else maxTime at most.
        {"clamp reversed", zuController::RT_CLAMP, 5.0, 2.0, 1.0, 0.0, {{3.0, 5.0}, {6.0, 2.0}, {1.0, 5.0}}},
        // The value in [2, 5) that differs from t by a whole number of periods of 3.
        {"wrap", zuController::RT_WRAP, 2.0, 5.0, 1.0, 0.0,
         {{2.0, 2.0}, {3.5, 3.5}, {5.0, 2.0}, {6.5, 3.5}, {8.0, 2.0}, {9.25, 3.25}, {14.75, 2.75}, {-0.5, 2.5},
          {-4.0, 2.0}, {-5.5, 3.5}}},
        // Frequency and phase act before the wrap: t = 2 * 7 + 1 = 15 in [0, 10) is 5.
        {"wrap scaled", zuController::RT_WRAP, 0.0, 10.0, 2.0, 1.0, {{7.0, 5.0}, {-1.0, 9.0}}},
        // A triangle wave of period 6: forwards in even periods, backwards in odd ones (x is
        // the number of periods from minTime).
        {"cycle", zuController::RT_CYCLE, 2.0, 5.0, 1.0, 0.0,
         {{2.0, 2.0}, {3.5, 3.5}, {5.0, 5.0} /* x = 1: backwards from maxTime */, {6.0, 4.0}, {7.5, 2.5},
          {7.99, 2.01}, {8.0, 2.0} /* x = 2: forwards again */, {9.0, 3.0}, {12.0, 4.0}, {14.0, 2.0},
          {-1.0, 5.0} /* x = -1 is odd */, {-0.5, 4.5}, {-4.0, 2.0}, {-5.0, 3.0}}},
        {"unknown repeat type cycles", 7, 2.0, 5.0, 1.0, 0.0, {{6.0, 4.0}, {9.0, 3.0}}},
        // An empty or reversed interval gives minTime.
        {"wrap empty", zuController::RT_WRAP, 2.0, 2.0, 1.0, 0.0, {{-3.0, 2.0}, {2.5, 2.0}, {1e9, 2.0}}},
        {"wrap reversed", zuController::RT_WRAP, 2.0, 1.0, 1.0, 0.0, {{-3.0, 2.0}, {2.5, 2.0}}},
        {"cycle empty", zuController::RT_CYCLE, 2.0, 2.0, 1.0, 0.0, {{-3.0, 2.0}, {2.5, 2.0}, {1e9, 2.0}}},
        {"cycle reversed", zuController::RT_CYCLE, 2.0, 1.0, 1.0, 0.0, {{-3.0, 2.0}, {2.5, 2.0}}},
        // x = 2^32 + 1 (odd) and 2^32 + 2 (even), each a quarter in: the parity of periods
        // beyond the int range.
        {"cycle far", zuController::RT_CYCLE, 0.0, 1.0, 1.0, 0.0, {{4294967297.25, 0.75}, {4294967298.25, 0.25}}},
    };
    for (const Mapping& m : mappings) {
        SCOPED_TRACE(m.what);
        PlainController controller;
        EXPECT_EQ(controller.repeatType, zuController::RT_CLAMP);
        configure(controller, m.repeatType, m.minTime, m.maxTime, m.phase, m.frequency, true);
        for (const TimeCase& c : m.times)
            EXPECT_NEAR(controller.GetControlTime(c.appTime), c.expected, 1e-12) << "at application time " << c.appTime;
    }
    // Not a number stays so through a cycle, without a trap.
    PlainController cycle;
    configure(cycle, zuController::RT_CYCLE, 0.0, 1.0, 0.0, 1.0, true);
    EXPECT_TRUE(std::isnan(cycle.GetControlTime(std::numeric_limits<double>::quiet_NaN())));
}

TEST_F(Controller, TheSameTimeTwiceUpdatesOnceUnlessItIsTheForcingTime)
{
    PlainController controller;
    EXPECT_EQ(controller.GetLastAppTime(), -1.7976931348623157e308);
    // Each new time updates once; going back is a change as well.
    for (double time : {0.0, 0.5, 0.0})
        EXPECT_TRUE(controller.Update(time) && !controller.Update(time)) << time;
    EXPECT_EQ(controller.GetLastAppTime(), 0.0);
    // The initial value is itself a time already seen.
    PlainController fresh;
    EXPECT_FALSE(fresh.Update(-std::numeric_limits<double>::max()));

    // Minus the largest float forces every update.
    const double force = -static_cast<double>(FLT_MAX);
    EXPECT_TRUE(zuController::FORCE_UPDATE_TIME == force && controller.Update(force) && controller.Update(force));
    // An ordinary time after it updates once; the neighbour of the forcing value and the
    // double minimum are ordinary times.
    for (double time : {1.0, std::nextafter(force, 0.0), -DBL_MAX})
        EXPECT_TRUE(controller.Update(time) && !controller.Update(time)) << time;

    // An inactive controller never updates, not even when forced.
    PlainController inactive;
    inactive.active = false;
    for (double time : {0.0, 1.0, zuController::FORCE_UPDATE_TIME, 2.0})
        EXPECT_FALSE(inactive.Update(time)) << time;
    EXPECT_EQ(inactive.GetLastAppTime(), zuController::NEVER_UPDATED);
}

zuBaseStream* loadInto(zuBaseStream& stream, std::vector<char>& bytes)
{
    stream.SetVersion(zuStreamVersion(6, 32));
    return stream.Load(bytes.data(), bytes.size()) ? &stream : nullptr;
}

TEST_F(Controller, ALoadedReferenceToAnObjectThatDoesNotHoldTheControllerIsDropped)
{
    // c claims b, which does not hold it; then a holds c but c claims b.
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
    zuBaseStream first;
    ASSERT_TRUE(loadInto(first, alone) && first.GetObjectCount() == 2);
    EXPECT_EQ(static_cast<zuController*>(first.GetObjectAt(0))->GetObject(), nullptr);
    zuBaseStream second;
    ASSERT_TRUE(loadInto(second, held) && second.GetObjectCount() == 2);
    auto* a = static_cast<zuTestNode*>(second.GetObjectAt(0));
    ASSERT_EQ(a->GetControllerQuantity(), 1);
    EXPECT_EQ(a->GetController(0)->GetObject(), a) << "the holder wins over the record's claim";

    // A controller record with a controller count of 1 (pointing at itself) is refused.
    const int header = 4 + 23 + 4 + 8 + 4 + 4 + 8;
    zuBytes bytes;
    bytes.str("Top Level").str("zuTest.zuTestController").i32(header + 45).u64(77).str("").i32(1).u64(77);
    bytes.i32(0);
    for (double value : {0.0, 0.0, 0.0, 1.0})
        f64(bytes, value);
    bytes.u8(1).u64(0);
    std::vector<char> data = bytes.bytes();
    zuBaseStream refused;
    EXPECT_TRUE(!loadInto(refused, data) && refused.GetObjectCount() == 0);
}

TEST_F(Controller, EqualsComparesTheMappingButNotTheObjectOrTheLastTime)
{
    zuPointer<zuTestController> a = new zuTestController;
    configure(*a, zuController::RT_WRAP, 1.0, 2.0, 0.25, 3.0, true);
    zuPointer<zuTestNode> node = new zuTestNode("n");
    node->AttachController(a);
    a->zuController::Update(5.0);
    EXPECT_FALSE(a->Equals(nullptr) || a->Equals(node));

    struct Change {
        const char* what;
        std::function<void(zuController&)> change;
        bool equal;
    };
    const Change changes[] = {
        {"nothing", [](zuController&) {}, true},
        {"interval ends within 1e-6", [](zuController& b) { b.minTime = 1.0 + 5e-7; b.maxTime = 2.0 - 5e-7; }, true},
        {"minTime 2e-6 off", [](zuController& b) { b.minTime = 1.0 + 2e-6; }, false},
        {"maxTime 2e-6 off", [](zuController& b) { b.maxTime = 2.0 + 2e-6; }, false},
        {"phase compares exactly", [](zuController& b) { b.phase = 0.25 + 1e-12; }, false},
        {"frequency compares exactly", [](zuController& b) { b.frequency = std::nextafter(3.0, 4.0); }, false},
        {"repeat type", [](zuController& b) { b.repeatType = zuController::RT_CYCLE; }, false},
        {"active", [](zuController& b) { b.active = false; }, false},
        {"name", [](zuController& b) { b.SetName("other"); }, false},
    };
    for (const Change& c : changes) {
        SCOPED_TRACE(c.what);
        zuPointer<zuTestController> b = new zuTestController;
        configure(*b, zuController::RT_WRAP, 1.0, 2.0, 0.25, 3.0, true);
        c.change(*b);
        EXPECT_TRUE(a->Equals(b) == c.equal && b->Equals(a) == c.equal);
    }
}

TEST_F(Controller, CloneCopiesTheMappingIntoAnExistingController)
{
    zuPointer<zuTestController> source = new zuTestController;
    source->SetName("src");
    configure(*source, zuController::RT_CYCLE, -1.0, 1.0, 0.5, 4.0, false);

    zuRttiInterface* none = nullptr;
    EXPECT_TRUE(!source->Clone(none) && none == nullptr) << "the base cannot build a controller of an unknown kind";

    zuPointer<zuTestNode> holder = new zuTestNode("holder");
    zuPointer<zuTestController> target = new zuTestController;
    holder->AttachController(target);
    target->zuController::Update(9.0);
    zuRttiInterface* into = target.get();
    ASSERT_TRUE(source->Clone(into));
    EXPECT_TRUE(target->Equals(source) && target->GetName() == "src");
    EXPECT_EQ(target->GetObject(), holder.get()) << "the copy keeps what it controls";
    EXPECT_EQ(target->GetLastAppTime(), zuController::NEVER_UPDATED);

    zuPointer<zuTestNode> node = new zuTestNode("n");
    zuRttiInterface* wrong = node.get();
    EXPECT_FALSE(source->Clone(wrong));
}

} // namespace
} // namespace zu::test
