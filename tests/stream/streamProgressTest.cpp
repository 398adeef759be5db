// Progress reports of saves and loads, and cancellation through the notifier.

#include "support/zuOutputCapture.h"
#include "support/zuTestObjects.h"

#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSystem/zuMemoryIoDevice.h>

#include <gtest/gtest.h>

namespace zu::test {
namespace {

class StreamProgress : public ::testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(zuTestNode::msLiving, 0) << "a test node leaked or died twice"; }
    zuTestFactories factories;
};

TEST_F(StreamProgress, ASaveStepsOncePerRecordAndFailsWhenCancelled)
{
    zuSmallGraph g;
    // Never cancelled, then cancelled after the first, second and last record.
    for (int64_t cancelAfter : {-1, 1, 2, 4}) {
        SCOPED_TRACE(cancelAfter);
        zuTestProgress progress;
        progress.mCancelAfterSteps = cancelAfter;
        zuFileStream stream(16);
        stream.SetVersion(zuStreamVersion(6, 32));
        stream.SetProgressNotifier(&progress);
        stream.InsertTopLevel(g.root);
        zuMemoryIoDevice device;
        EXPECT_EQ(stream.Save(device, "memory", false), cancelAfter < 0);
        ASSERT_EQ(progress.mGroups.size(), 1u);
        EXPECT_EQ(progress.mGroups[0].second, 4);
        EXPECT_EQ(progress.mWeights[0], 1.0);
        EXPECT_EQ(progress.mSteps, std::vector<int64_t>(cancelAfter < 0 ? 4 : cancelAfter, 1));
        EXPECT_EQ(progress.mOpenGroups, 0);
    }
    // The buffer save honours the notifier too, and hands out nothing.
    zuTestProgress progress;
    progress.mCancelAfterSteps = 2;
    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    stream.SetProgressNotifier(&progress);
    stream.InsertTopLevel(g.root);
    char* buffer = nullptr;
    unsigned long size = 0;
    EXPECT_FALSE(stream.Save(buffer, size));
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(progress.mSteps.size(), 2u);
}

TEST_F(StreamProgress, TheStepsOfALoadAddUpToTheStreamSize)
{
    std::vector<char> fileBytes;
    std::vector<char> records;
    {
        zuSmallGraph g;
        zuPointer<zuTestNode> second = new zuTestNode("second");
        fileBytes = saveToFileBytes({g.root, second}, zuStreamVersion(6, 32), 16);
        records = saveToBytes({g.root, second}, zuStreamVersion(6, 32));
    }
    for (int blockSize : {8, 16, 1 << 20}) {
        zuTestProgress progress;
        zuFileStream stream(blockSize);
        stream.SetProgressNotifier(&progress);
        zuMemoryIoDevice device(fileBytes);
        ASSERT_TRUE(stream.Load(device, "memory"));
        ASSERT_EQ(progress.mGroups.size(), 1u);
        EXPECT_EQ(progress.mGroups[0].second, static_cast<int64_t>(fileBytes.size()));
        EXPECT_EQ(progress.mStepTotal, static_cast<int64_t>(fileBytes.size())) << "block " << blockSize;
        EXPECT_EQ(progress.mSteps.size(), 5u);  // one per record
        EXPECT_EQ(progress.mOpenGroups, 0);
    }
    {
        zuTestProgress progress;
        zuBaseStream stream;
        stream.SetVersion(zuStreamVersion(6, 32));
        stream.SetProgressNotifier(&progress);
        ASSERT_TRUE(stream.Load(records.data(), records.size()));
        EXPECT_EQ(progress.mStepTotal, static_cast<int64_t>(records.size()));
    }
    // Skipped records are counted as well.
    zuTestController::UnRegisterFactory();
    zuTestProgress progress;
    zuFileStream stream(16);
    stream.SetProgressNotifier(&progress);
    zuMemoryIoDevice device(fileBytes);
    zuOutputCapture capturedOut(zuOutputCapture::STDOUT);
    ASSERT_TRUE(stream.Load(device, "memory"));
    capturedOut.take();
    EXPECT_EQ(progress.mStepTotal, static_cast<int64_t>(fileBytes.size()));
}

TEST_F(StreamProgress, ACancelledLoadFailsAndHandsOutNothing)
{
    std::vector<char> fileBytes;
    std::vector<char> records;
    {
        zuSmallGraph g;
        fileBytes = saveToFileBytes({g.root}, zuStreamVersion(6, 32), 16);
        records = saveToBytes({g.root}, zuStreamVersion(6, 32));
    }
    for (int64_t cancelAfter : {1, 3, 4}) {
        zuTestProgress progress;
        progress.mCancelAfterSteps = cancelAfter;
        zuTestStreamLoader loader;
        zuFileStream stream(16);
        stream.SetProgressNotifier(&progress);
        stream.registerStreamLoader(&zuTestNode::TYPE, &loader);
        zuMemoryIoDevice device(fileBytes);
        EXPECT_FALSE(stream.Load(device, "memory")) << cancelAfter;
        EXPECT_TRUE(stream.isStreamError());
        EXPECT_EQ(stream.GetObjectCount(), 0);
        EXPECT_EQ(zuTestNode::msLiving, 0);
        EXPECT_EQ(zuTestNode::msPostLinkCalls, 0);
        EXPECT_EQ(static_cast<int64_t>(progress.mSteps.size()), cancelAfter);
        EXPECT_EQ(progress.mOpenGroups, 0);
        EXPECT_EQ(loader.mCancels, 1);
        EXPECT_EQ(loader.mWaits, 1);
    }
    zuTestProgress progress;
    progress.mCancelAfterSteps = 2;
    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    stream.SetProgressNotifier(&progress);
    EXPECT_FALSE(stream.Load(records.data(), records.size()));
    EXPECT_EQ(stream.GetObjectCount(), 0);
    EXPECT_EQ(zuTestNode::msLiving, 0);
}

} // namespace
} // namespace zu::test
