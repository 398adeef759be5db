// Stream loaders, which load bulk data beside a stream, and the custom information that
// classes attach to their objects for the length of a save or load.

#include "support/zuFactoryTest.h"
#include "support/zuOutputCapture.h"
#include "support/zuTestObjects.h"

#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSystem/zuMemoryIoDevice.h>

#include <gtest/gtest.h>

namespace zu::test {
namespace {

class StreamLoaders : public zuLeakCheckedTest {
protected:
    void SetUp() override
    {
        zuSmallGraph g;
        mFileBytes = saveToFileBytes({g.root}, zuStreamVersion(6, 32), 16);
        mRecords = saveToBytes({g.root}, zuStreamVersion(6, 32));
    }
    std::vector<char> mFileBytes;
    std::vector<char> mRecords;
};

TEST_F(StreamLoaders, EveryLoaderHearsOfEveryObjectAndIsWaitedForOnce)
{
    zuTestProgress progress;
    zuTestStreamLoader nodes;
    zuTestStreamLoader controllers;
    {
        zuFileStream stream(16);
        stream.SetProgressNotifier(&progress);
        stream.registerStreamLoader(&zuTestNode::TYPE, &nodes);
        stream.registerStreamLoader(&zuTestController::TYPE, &controllers);
        zuMemoryIoDevice device(mFileBytes);
        ASSERT_TRUE(stream.Load(device, "memory"));
        EXPECT_TRUE(isSmallGraph(stream.GetObjectAt(0)));
    }
    for (const zuTestStreamLoader* loader : {&nodes, &controllers}) {
        EXPECT_TRUE(loader->mObjectLoads == 4 && loader->mWaits == 1 && loader->mWaitProgress == (&progress));
        EXPECT_TRUE(loader->mCancels == 0 && loader->mResets == 0);
    }

    // A skipped record builds no object.
    zuTestController::UnRegisterFactory();
    zuTestStreamLoader skipping;
    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    stream.registerStreamLoader(&zuTestNode::TYPE, &skipping);
    zuOutputCapture capturedOut(zuOutputCapture::STDOUT);
    ASSERT_TRUE(stream.Load(mRecords.data(), mRecords.size()));
    capturedOut.take();
    EXPECT_TRUE(skipping.mObjectLoads == 3 && skipping.mWaits == 1);
}

TEST_F(StreamLoaders, ALoaderThatFailsFailsTheLoadAndABrokenStreamCancelsThem)
{
    zuTestStreamLoader failing;
    zuTestStreamLoader fine;
    failing.mWaitResult = false;
    {
        zuFileStream stream(16);
        stream.registerStreamLoader(&zuTestNode::TYPE, &failing);
        stream.registerStreamLoader(&zuTestController::TYPE, &fine);
        zuMemoryIoDevice device(mFileBytes);
        EXPECT_FALSE(stream.Load(device, "memory"));
        EXPECT_TRUE(stream.isStreamError() && failing.mWaits == 1);
        EXPECT_EQ(fine.mWaits, 1);  // every loader is waited for
        EXPECT_EQ(failing.mCancels, 0);
    }

    // Data that breaks off cancels the loaders before waiting for them.
    zuTestStreamLoader cancelled;
    zuFileStream stream(16);
    stream.registerStreamLoader(&zuTestNode::TYPE, &cancelled);
    zuMemoryIoDevice device(std::vector<char>(mFileBytes.begin(), mFileBytes.end() - 1));
    zuOutputCapture capturedErr(zuOutputCapture::STDERR);
    EXPECT_FALSE(stream.Load(device, "memory"));
    capturedErr.take();
    EXPECT_TRUE(cancelled.mCancels == 1 && cancelled.mWaits == 1 && stream.GetObjectCount() == 0);
}

TEST_F(StreamLoaders, TheStreamOwnsCustomInformations)
{
    zuPointer<zuTestNode> node = new zuTestNode("n");
    zuPointer<zuTestNode> other = new zuTestNode("o");
    {
        zuBaseStream stream;
        stream.SetVersion(zuStreamVersion(6, 32));
        auto* first = new zuTestInformation;
        stream.registerInformations(node, first);
        EXPECT_TRUE(stream.getInformations(node) == first && stream.getInformations(other) == nullptr);
        stream.registerInformations(node, first);  // the same again: kept
        EXPECT_EQ(zuTestInformation::msLiving, 1);
        auto* second = new zuTestInformation;
        stream.registerInformations(node, second);  // replaced: the first is deleted
        EXPECT_TRUE(zuTestInformation::msLiving == 1 && stream.getInformations(node) == second);

        // A save starts from none.
        stream.InsertTopLevel(node);
        char* buffer = nullptr;
        unsigned long size = 0;
        ASSERT_TRUE(stream.Save(buffer, size));
        EXPECT_TRUE(zuTestInformation::msLiving == 0 && stream.getInformations(node) == nullptr);

        // So does a load, and it ends with none.
        stream.registerInformations(other, new zuTestInformation);
        ASSERT_TRUE(stream.Load(buffer, size));
        EXPECT_EQ(zuTestInformation::msLiving, 0);
        delete[] buffer;

        stream.registerInformations(other, new zuTestInformation);
    }
    // The stream's end deletes what is left.
    EXPECT_EQ(zuTestInformation::msLiving, 0);

    zuFileStream fileStream(16);
    fileStream.registerInformations(node, new zuTestInformation);
    zuMemoryIoDevice device(mFileBytes);
    ASSERT_TRUE(fileStream.Load(device, "memory"));
    EXPECT_EQ(zuTestInformation::msLiving, 0);
}

} // namespace
} // namespace zu::test
