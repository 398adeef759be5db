// A save checks that every record writes what it reported, into the stream's own buffer
// and into one the caller provides.

#include "support/zuFactoryTest.h"
#include "support/zuOutputCapture.h"
#include "support/zuTestObjects.h"

#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSystem/zuMemoryIoDevice.h>

#include <gtest/gtest.h>

namespace zu::test {
namespace {

using SaveSizeCheck = zuLeakCheckedTest;

const std::string explanation = " bytes written regarding bytes to be written\n"
                                " This is an indication that some class is either incorrectly reporting the number"
                                " of disk bytes used (via the GetDiskUsed function) or incorrectly writing the member"
                                " data to disk.\n";

TEST_F(SaveSizeCheck, ARecordOneByteLongerThanItsReportedSizeFailsTheSave)
{
    zuPointer<zuShortRecord> shortRecord = new zuShortRecord;
    zuPointer<zuTestNode> node = new zuTestNode("n");
    // "Top Level" 13, type name 4 + 20, size 4, identity 8, name 4, controllers 4, then the
    // int the class forgot: 61 written for 60 reported. Before 6.0 there is no size field.
    const struct {
        zuStreamVersion version;
        std::vector<zuRttiInterface*> topLevel;
        const char* counts;
    } cases[] = {
        {zuStreamVersion(6, 32), {shortRecord}, "61/60"},
        {zuStreamVersion(5, 20), {shortRecord}, "57/56"},
        {zuStreamVersion(6, 32), {node, shortRecord}, "124/123"},
    };
    for (const auto& c : cases) {
        zuBaseStream stream;
        stream.SetVersion(c.version);
        for (zuRttiInterface* object : c.topLevel)
            stream.InsertTopLevel(object);
        char* buffer = nullptr;
        unsigned long size = 12345;
        zuOutputCapture capturedErr(zuOutputCapture::STDERR);
        EXPECT_FALSE(stream.Save(buffer, size));
        EXPECT_EQ(capturedErr.take(),
                  "The buffer is not exactly filled : " + std::string(c.counts) + explanation);
        EXPECT_TRUE(buffer == nullptr && size == 12345u);
    }
}

TEST_F(SaveSizeCheck, ContainersRefuseARecordThatOutgrowsItsSizeBeforeItsBlockIsWritten)
{
    zuPointer<zuShortRecord> shortRecord = new zuShortRecord;
    // Containers fill a record's size in after the record, from the bytes it holds, unless
    // the block must go to the device first: GetDiskUsed says it then, and must be right.
    for (int blockSize : {56, 1 << 20}) {
        zuLogCapture log;
        zuFileStream stream(blockSize);
        stream.SetVersion(zuStreamVersion(6, 32));
        stream.InsertTopLevel(shortRecord);
        zuMemoryIoDevice device;
        const bool saved = stream.Save(device, "memory", false);
        EXPECT_EQ(saved, blockSize > 61) << blockSize;
        if (!saved)
            EXPECT_EQ(stream.GetErrorText(), std::string("Cannot save \"") + zuShortRecord::TYPE.GetName()
                                                 + "\": its record holds 48 bytes, not the 47 its GetDiskUsed reports");
        else
            EXPECT_EQ(device.data()[9 + 13 + 24], 48);
    }
}

TEST_F(SaveSizeCheck, WritesTheSameBytesAsSaveIntoABufferOfTheAnnouncedSize)
{
    zuSmallGraph g;
    for (zuStreamVersion version : {zuStreamVersion(6, 32), zuStreamVersion(5, 20)}) {
        const std::vector<char> expected = saveToBytes({g.root}, version);
        zuBaseStream stream;
        stream.SetVersion(version);
        stream.InsertTopLevel(g.root);
        const unsigned long size = stream.initializeClientBufferSave();
        ASSERT_EQ(size, expected.size());
        std::vector<char> buffer(size);
        zuOutputCapture capturedErr(zuOutputCapture::STDERR);
        EXPECT_TRUE(stream.finalizeClientBufferSave(buffer.data(), static_cast<int>(size)));
        EXPECT_TRUE(capturedErr.take() == "" && buffer == expected);
    }

    zuBaseStream empty;
    EXPECT_TRUE(empty.initializeClientBufferSave() == 0u && empty.finalizeClientBufferSave(nullptr, 0));
}

TEST_F(SaveSizeCheck, ABufferOfAnotherSizeFailsWithTheFullMessage)
{
    zuSmallGraph g;
    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    stream.InsertTopLevel(g.root);
    const int size = static_cast<int>(stream.initializeClientBufferSave());
    const std::string expectedCount = std::to_string(size);
    for (int bufferSize : {size - 1, size + 1, 0}) {
        // Exactly sized, so that a write past its end is caught by the address checker.
        std::vector<char> buffer(static_cast<size_t>(bufferSize));
        stream.initializeClientBufferSave();
        zuOutputCapture capturedErr(zuOutputCapture::STDERR);
        EXPECT_FALSE(stream.finalizeClientBufferSave(buffer.data(), bufferSize)) << bufferSize;
        EXPECT_EQ(capturedErr.take(), "The buffer is not exactly filled : " + expectedCount + "/"
                                                                + std::to_string(bufferSize) + explanation);
    }

    // A class that writes more than it reports fails here too.
    zuPointer<zuShortRecord> shortRecord = new zuShortRecord;
    zuBaseStream shortStream;
    shortStream.SetVersion(zuStreamVersion(6, 32));
    shortStream.InsertTopLevel(shortRecord);
    const unsigned long shortSize = shortStream.initializeClientBufferSave();
    ASSERT_EQ(shortSize, 60u);
    std::vector<char> buffer(shortSize);
    zuOutputCapture capturedErr(zuOutputCapture::STDERR);
    EXPECT_FALSE(shortStream.finalizeClientBufferSave(buffer.data(), static_cast<int>(shortSize)));
    EXPECT_EQ(capturedErr.take(), "The buffer is not exactly filled : 61/60" + explanation);
}

} // namespace
} // namespace zu::test
