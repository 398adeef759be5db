// Progress reports of saves and loads, and cancellation through the notifier.

#include "support/zuFactoryTest.h"
#include "support/zuOutputCapture.h"
#include "support/zuTestObjects.h"

#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSystem/zuMemoryIoDevice.h>

#include <gtest/gtest.h>

namespace zu::test {
namespace {

using StreamProgress = zuLeakCheckedTest;

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
        EXPECT_TRUE(progress.mGroups[0].second == 4 && progress.mWeights[0] == 1.0);
        EXPECT_EQ(progress.mSteps, std::vector<int64_t>(cancelAfter < 0 ? 4 : cancelAfter, 1));
        EXPECT_EQ(progress.mOpenGroups, 0);
    }
}

// A load steps once per record, by bytes that add up to the stream's size; cancelled after
// the first, a middle or the last record, it fails, hands out nothing and cancels its loaders.
TEST_F(StreamProgress, ALoadStepsUpToTheStreamSizeAndFailsWhenCancelled)
{
    std::vector<char> fileBytes;
    {
        zuSmallGraph g;
        zuPointer<zuTestNode> second = new zuTestNode("second");
        fileBytes = saveToFileBytes({g.root, second}, zuStreamVersion(6, 32), 16);
    }
    const int64_t size = static_cast<int64_t>(fileBytes.size());
    for (const auto& [blockSize, cancelAfter] : {std::pair{16, int64_t(1)}, {16, 3}, {16, 5}, {8, -1}, {16, -1}, {1 << 20, -1}}) {
        SCOPED_TRACE(std::to_string(blockSize) + " " + std::to_string(cancelAfter));
        const bool whole = cancelAfter < 0;
        zuTestProgress progress;
        progress.mCancelAfterSteps = cancelAfter;
        zuTestStreamLoader loader;
        zuFileStream stream(blockSize);
        stream.SetProgressNotifier(&progress);
        stream.registerStreamLoader(&zuTestNode::TYPE, &loader);
        zuMemoryIoDevice device(fileBytes);
        EXPECT_TRUE((stream.Load(device, "memory")) == whole && stream.isStreamError() == (!whole));
        EXPECT_TRUE(stream.GetObjectCount() == (whole ? 2 : 0) && zuTestNode::msLiving == (whole ? 4 : 0));
        EXPECT_TRUE(whole || zuTestNode::msPostLinkCalls == 0);
        ASSERT_EQ(progress.mGroups.size(), 1u);
        EXPECT_EQ(progress.mGroups[0].second, size);
        EXPECT_EQ(progress.mSteps.size(), static_cast<size_t>(whole ? 5 : cancelAfter));
        EXPECT_TRUE((!whole || progress.mStepTotal == size) && progress.mOpenGroups == 0);
        EXPECT_TRUE(loader.mCancels == (whole ? 0 : 1) && loader.mWaits == 1);
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
    EXPECT_EQ(progress.mStepTotal, size);
}

} // namespace
} // namespace zu::test
