#include <zuSystem/zuProgressNotifier.h>
#include <zuSystem/zuProgressNotifierGroupCloser.h>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using zu::zuProgressNotifier;

namespace {

// Records every report and queries the notifier from inside the hook, as a progress bar would.
class RecordingNotifier : public zuProgressNotifier {
public:
    std::vector<double> reports;

    void expectIncreasing() const
    {
        for (size_t i = 1; i < reports.size(); ++i)
            ASSERT_LT(reports[i - 1], reports[i]) << i;
    }

protected:
    void onProgress(double value) override
    {
        EXPECT_GE(fraction(), value);
        reports.push_back(value);
    }
};

} // namespace

TEST(zuProgressNotifierTest, StepsOfOneGroup)
{
    RecordingNotifier notifier;
    notifier.openGroup("load", 4);
    EXPECT_EQ(notifier.currentLabel(), "load");
    for (int i = 0; i < 4; ++i)
        notifier.step();
    notifier.closeGroup(); // moves nothing more, so reports nothing more
    EXPECT_EQ(notifier.reports, (std::vector<double>{0.25, 0.5, 0.75, 1.0}));
    EXPECT_EQ(notifier.currentLabel(), "");
    EXPECT_EQ(notifier.totalSteps(), 4);
}

TEST(zuProgressNotifierTest, NestedGroupsCoverWeightedParentSteps)
{
    zuProgressNotifier notifier;
    notifier.openGroup("task", 2);
    notifier.openGroup("first half of step 0", 4, 0.5);
    notifier.step(2);
    EXPECT_DOUBLE_EQ(notifier.fraction(), 0.125);
    notifier.closeGroup();
    EXPECT_DOUBLE_EQ(notifier.fraction(), 0.25);
    {
        notifier.openGroup("second half of step 0", 1, 0.5);
        zu::zuProgressNotifierGroupCloser closer(&notifier);
        EXPECT_EQ(notifier.groupDepth(), 2);
    }
    EXPECT_EQ(notifier.groupDepth(), 1);
    EXPECT_DOUBLE_EQ(notifier.fraction(), 0.5);
    // The two halves advanced the parent by one whole step.
    notifier.step();
    EXPECT_DOUBLE_EQ(notifier.fraction(), 1.0);
}

TEST(zuProgressNotifierTest, ProgressStaysInsideGroupsAndNeverDecreases)
{
    RecordingNotifier notifier;
    notifier.openGroup("outer", 4);
    notifier.openGroup("inner", 2);
    notifier.step(10); // too many steps stop at the group's end
    EXPECT_DOUBLE_EQ(notifier.fraction(), 0.25);
    notifier.closeGroup();
    notifier.openGroup("greedy", 1, 100.0); // cut at the parent's end
    notifier.closeGroup();
    EXPECT_DOUBLE_EQ(notifier.fraction(), 1.0);

    // Ignored: negative steps, negative weights, a close without an open group.
    notifier.step(-3);
    notifier.openGroup("nothing", 5, -1.0);
    for (int i = 0; i < 3; ++i)
        notifier.closeGroup();
    EXPECT_DOUBLE_EQ(notifier.fraction(), 1.0);
    notifier.expectIncreasing();

    // A group without steps still offers its span to its children.
    zuProgressNotifier empty;
    empty.openGroup("no items", 0);
    empty.openGroup("child", 4);
    empty.step();
    EXPECT_DOUBLE_EQ(empty.fraction(), 0.25);
}

TEST(zuProgressNotifierTest, ConcurrentStepsAndCancel)
{
    RecordingNotifier notifier;
    const int threads = 4;
    const int stepsPerThread = 500;
    notifier.openGroup("parallel", threads * stepsPerThread);
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t)
        workers.emplace_back([&notifier] {
            for (int i = 0; i < stepsPerThread; ++i)
                notifier.step();
        });
    workers.emplace_back([&notifier] { notifier.requestCancel(); });
    for (std::thread& worker : workers)
        worker.join();

    EXPECT_TRUE(notifier.isCancelRequested());
    EXPECT_EQ(notifier.totalSteps(), threads * stepsPerThread);
    ASSERT_FALSE(notifier.reports.empty());
    EXPECT_DOUBLE_EQ(notifier.reports.back(), 1.0);
    notifier.expectIncreasing();
}
