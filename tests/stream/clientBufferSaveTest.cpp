// Saving into a buffer the caller provides.

#include "support/zuTestObjects.h"

#include <gtest/gtest.h>

namespace zu::test {
namespace {

class ClientBufferSave : public ::testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(zuTestNode::msLiving, 0) << "a test node leaked or died twice"; }
    zuTestFactories factories;
};

const char* const explanation = " bytes written regarding bytes to be written\n"
                                " This is an indication that some class is either incorrectly reporting the number"
                                " of disk bytes used (via the GetDiskUsed function) or incorrectly writing the member"
                                " data to disk.\n";

TEST_F(ClientBufferSave, WritesTheSameBytesAsSaveIntoABufferOfTheAnnouncedSize)
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
        ::testing::internal::CaptureStderr();
        EXPECT_TRUE(stream.finalizeClientBufferSave(buffer.data(), static_cast<int>(size)));
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(buffer, expected);
    }

    zuBaseStream empty;
    EXPECT_EQ(empty.initializeClientBufferSave(), 0u);
    EXPECT_TRUE(empty.finalizeClientBufferSave(nullptr, 0));
}

TEST_F(ClientBufferSave, ABufferOfAnotherSizeFailsWithTheFullMessage)
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
        ::testing::internal::CaptureStderr();
        EXPECT_FALSE(stream.finalizeClientBufferSave(buffer.data(), bufferSize)) << bufferSize;
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "The buffer is not exactly filled : " + expectedCount + "/"
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
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(shortStream.finalizeClientBufferSave(buffer.data(), static_cast<int>(shortSize)));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), std::string("The buffer is not exactly filled : 61/60") + explanation);
}

} // namespace
} // namespace zu::test
