// The stream container over IO devices: header, block transfer, append mode, devices that
// fail. (Devices shorter than the header are among the cuts of badInputTest.cpp.)

#include "support/zuFactoryTest.h"
#include "support/zuOutputCapture.h"
#include "support/zuTestObjects.h"

#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSystem/zuFileIoDevice.h>
#include <zuSystem/zuMemoryIoDevice.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>
#include <unistd.h>

namespace zu::test {
namespace {

using FileStream = zuLeakCheckedTest;

std::vector<char> headerBytes(const char* text)
{
    return std::vector<char>(text, text + std::strlen(text) + 1);
}

std::vector<char> concat(std::vector<char> first, const std::vector<char>& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

TEST_F(FileStream, TheHeaderTextPrecedesTheRecordsOfTheBaseStream)
{
    zuSmallGraph g;
    const struct {
        zuStreamVersion version;
        const char* header;
    } cases[] = {
        {zuStreamVersion(6, 0), "MVK 6.00"},
        {zuStreamVersion(6, 32), "MVK 6.32"},
        {zuStreamVersion(6, 5), "MVK 6.05"},
        {zuStreamVersion(12, 345), "MVK 12.345"},
    };
    for (const auto& c : cases) {
        const std::vector<char> expected = concat(headerBytes(c.header), saveToBytes({g.root}, c.version));
        for (int blockSize : {8, 16, 24, 1000, zuFileStream::DEFAULT_BLOCK_SIZE})
            EXPECT_EQ(saveToFileBytes({g.root}, c.version, blockSize), expected) << c.header << " block " << blockSize;
    }
    // With no object at all the stream is the header alone.
    zuFileStream empty(16);
    empty.SetVersion(zuStreamVersion(6, 32));
    zuMemoryIoDevice device;
    ASSERT_TRUE(empty.Save(device, "empty", false));
    EXPECT_EQ(device.data(), headerBytes("MVK 6.32"));
}

TEST_F(FileStream, GraphsSurviveRoundTripsThroughMemoryWhateverTheBlockSizes)
{
    std::vector<char> saved;
    {
        zuSmallGraph g;
        saved = saveToFileBytes({g.root}, zuStreamVersion(6, 32), 8);
    }
    ASSERT_FALSE(saved.empty());
    // Values straddle the small blocks; the block size is not part of the format.
    for (int blockSize : {8, 16, 24, 1000, zuFileStream::DEFAULT_BLOCK_SIZE}) {
        zuFileStream stream(blockSize);
        zuMemoryIoDevice device(saved);
        ASSERT_TRUE(stream.Load(device, "memory")) << "block " << blockSize;
        EXPECT_TRUE(stream.GetVersion() == (zuStreamVersion(6, 32)) && stream.GetName() == "memory");
        EXPECT_EQ(stream.getStreamSize(), saved.size());
        ASSERT_EQ(stream.GetObjectCount(), 1);
        EXPECT_TRUE(isSmallGraph(stream.GetObjectAt(0))) << "block " << blockSize;
        EXPECT_EQ(zuTestNode::msLiving, 3);
    }

    // A record larger than several blocks, and a version 6.0 stream.
    zuSmallGraph g;
    g.a->SetName(std::string(100, 'n'));
    for (int blockSize : {8, 24}) {
        zuFileStream out(blockSize);
        out.SetVersion(zuStreamVersion(6, 0));
        out.InsertTopLevel(g.root);
        zuMemoryIoDevice device;
        ASSERT_TRUE(out.Save(device, "memory", false));
        ASSERT_TRUE(device.seek(0));
        zuFileStream in(blockSize);
        ASSERT_TRUE(in.Load(device, "memory"));
        ASSERT_EQ(in.GetObjectCount(), 1);
        EXPECT_TRUE(in.GetVersion() == (zuStreamVersion(6, 0)) && g.root->Equals(in.GetObjectAt(0)));
    }
}

TEST_F(FileStream, AppendingWritesRecordsWithoutAHeader)
{
    zuSmallGraph first;
    zuSmallGraph second;
    zuMemoryIoDevice device;
    {
        zuFileStream stream(16);
        stream.SetVersion(zuStreamVersion(6, 32));
        stream.InsertTopLevel(first.root);
        ASSERT_TRUE(stream.Save(device, "memory", false));
    }
    const std::vector<char> before = device.data();
    {
        zuFileStream stream(16);
        stream.SetVersion(zuStreamVersion(6, 32));
        stream.InsertTopLevel(second.root);
        ASSERT_TRUE(stream.Save(device, "memory", true));
    }
    EXPECT_EQ(device.data(), concat(before, saveToBytes({second.root}, zuStreamVersion(6, 32))));

    // The appended records load as part of the same stream.
    {
        zuFileStream stream(8);
        ASSERT_TRUE(device.seek(0));
        ASSERT_TRUE(stream.Load(device, "memory"));
        ASSERT_EQ(stream.GetObjectCount(), 2);
        EXPECT_TRUE(isSmallGraph(stream.GetObjectAt(0)) && isSmallGraph(stream.GetObjectAt(1)));
        EXPECT_NE(stream.GetObjectAt(0), stream.GetObjectAt(1));
    }

    // Appending has no version floor: an old version writes its records as they are.
    zuLogCapture log;
    zuFileStream old(16);
    old.SetVersion(zuStreamVersion(5, 20));
    old.InsertTopLevel(first.root);
    zuMemoryIoDevice oldDevice;
    ASSERT_TRUE(old.Save(oldDevice, "old", true));
    EXPECT_TRUE(oldDevice.data() == (saveToBytes({first.root}, zuStreamVersion(5, 20))) && log.mMessages.empty());
}

TEST_F(FileStream, BlockSizesAreRoundedDownToAMultipleOf8OfAtLeast8)
{
    const std::string warning
        = "Warning stream size has been truncatured to be a multiple of 8 (zu::zuStream constructor)\n";
    for (const auto& [asked, kept] : {std::pair{1001, 1000}, {1000, 1000}, {7, 8}}) {
        zuOutputCapture capturedOut(zuOutputCapture::STDOUT);
        EXPECT_EQ(zuFileStream(asked).GetBlockSize(), kept);
        EXPECT_EQ(capturedOut.take(), asked == kept ? "" : warning) << asked;
    }
    zuOutputCapture capturedOut(zuOutputCapture::STDOUT);
    EXPECT_EQ(zuFileStream().GetBlockSize(), 1 << 20);
    EXPECT_EQ(capturedOut.take(), "");
}

TEST_F(FileStream, TheCallersBlockIsUsedAndLeftToTheCaller)
{
    zuSmallGraph g;
    std::vector<char> block(16, '\x5a');
    std::vector<char> saved;
    {
        zuFileStream stream(16, nullptr, block.data());
        stream.SetVersion(zuStreamVersion(6, 32));
        stream.InsertTopLevel(g.root);
        zuMemoryIoDevice device;
        ASSERT_TRUE(stream.Save(device, "memory", false));
        saved = device.data();
    }
    // The block last held the stream's final bytes.
    const size_t tail = saved.size() % 16 ? saved.size() % 16 : 16;
    EXPECT_TRUE(std::equal(saved.end() - static_cast<long>(tail), saved.end(), block.begin()));
    EXPECT_EQ(saved, saveToFileBytes({g.root}, zuStreamVersion(6, 32), 16));
}

TEST_F(FileStream, SavingBeforeVersion6FailsUnlessAppending)
{
    zuSmallGraph g;
    for (zuStreamVersion version : {zuStreamVersion(5, 99), zuStreamVersion(5, 0), zuStreamVersion()}) {
        zuLogCapture log;
        zuFileStream stream(16);
        stream.SetVersion(version);
        stream.InsertTopLevel(g.root);
        zuMemoryIoDevice device;
        EXPECT_FALSE(stream.Save(device, "old", false));
        EXPECT_TRUE(device.data().empty());
        ASSERT_EQ(log.mMessages.size(), 2u);
        EXPECT_EQ(log.mMessages[0].first, "zustream");
        EXPECT_EQ(log.mMessages[0].second, "Too old version to save file stream");
        // The second line says how to name a version.
        EXPECT_NE(log.mMessages[1].second.find("SetVersion(zuStreamVersion(6, 32))"), std::string::npos);
        EXPECT_EQ(stream.GetErrorText(), log.mMessages[1].second);
    }
}

TEST_F(FileStream, DeviceFailuresFailTheSaveAndTheLoad)
{
    zuSmallGraph g;
    const std::vector<char> saved = saveToFileBytes({g.root}, zuStreamVersion(6, 32), 16);
    {
        zuLogCapture log;
        zuFileStream stream(16);
        stream.SetVersion(zuStreamVersion(6, 32));
        stream.InsertTopLevel(g.root);
        zuMemoryIoDevice device;
        device.setError();
        EXPECT_FALSE(stream.Save(device, "broken", false));
        EXPECT_TRUE(stream.isStreamError());
        ASSERT_FALSE(log.mMessages.empty());
        EXPECT_EQ(log.mMessages[0].first, "zustream");
        EXPECT_EQ(log.mMessages[0].second, "Cannot write the stream 'broken' at offset 0");
    }
    {
        zuLogCapture log;
        zuFileStream stream(16);
        zuMemoryIoDevice device(saved);
        device.setError();
        EXPECT_FALSE(stream.Load(device, "broken"));
        EXPECT_EQ(stream.GetObjectCount(), 0);
        ASSERT_FALSE(log.mMessages.empty());
        EXPECT_EQ(log.mMessages[0].second, "Cannot read the stream 'broken' at offset 0");
    }
    // A device that later works again is usable by the same stream.
    zuFileStream stream(16);
    zuMemoryIoDevice device(saved);
    EXPECT_TRUE(stream.Load(device, "fine"));
    EXPECT_FALSE(stream.isStreamError());
    EXPECT_EQ(stream.GetObjectCount(), 1);
}

// Takes `limit` bytes, then fails every write, on whichever thread it is called.
class zuShortMemoryDevice : public zuMemoryIoDevice {
public:
    explicit zuShortMemoryDevice(int64_t limit) : mLimit(limit) {}
    int64_t write(const void* source, int64_t size) override
    {
        if (pos() + size > mLimit) {
            setError();
            return -1;
        }
        return zuMemoryIoDevice::write(source, size);
    }

private:
    int64_t mLimit;
};

TEST_F(FileStream, WriterThreadKeepsTheBytesAndReportsTheBlockThatFailed)
{
    zuSmallGraph g;
    g.a->SetName(std::string(700000, 'n'));
    const std::vector<char> expected = concat(headerBytes("MVK 6.32"), saveToBytes({g.root}, zuStreamVersion(6, 32)));
    // Blocks of 64 KB go to a writer thread, smaller ones are written by the saving thread.
    for (int blockSize : {1000, 1 << 16, zuFileStream::DEFAULT_BLOCK_SIZE}) {
        EXPECT_EQ(saveToFileBytes({g.root}, zuStreamVersion(6, 32), blockSize), expected) << "block " << blockSize;
        const int64_t limit = 3 * (1 << 16) + 5;
        zuLogCapture log;
        zuFileStream stream(blockSize);
        stream.SetVersion(zuStreamVersion(6, 32));
        stream.InsertTopLevel(g.root);
        zuShortMemoryDevice device(limit);
        EXPECT_FALSE(stream.Save(device, "short", false));
        // Whole blocks reach the device until the one that did not fit.
        const int64_t failed = limit / blockSize * blockSize;
        EXPECT_EQ(stream.GetErrorText(), "Cannot write the stream 'short' at offset " + std::to_string(failed));
        EXPECT_TRUE(std::equal(device.data().begin(), device.data().end(), expected.begin())
                    && device.data().size() == static_cast<size_t>(failed)) << "block " << blockSize;
    }
}

} // namespace
} // namespace zu::test
