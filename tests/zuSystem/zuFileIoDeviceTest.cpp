#include <zuSystem/zuFileIoDevice.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <unistd.h>

using zu::zuFileIoDevice;
using zu::zuIoDevice;

namespace {

class zuFileIoDeviceTest : public ::testing::Test {
protected:
    void TearDown() override { std::remove(mPath.c_str()); }

    void writeFile(const std::string& content)
    {
        zuFileIoDevice device(mPath, zuFileIoDevice::WriteOnly);
        ASSERT_EQ(device.write(content.data(), static_cast<int64_t>(content.size())), static_cast<int64_t>(content.size()));
    }

    std::string readFile()
    {
        zuFileIoDevice device(mPath, zuFileIoDevice::ReadOnly);
        std::string content(64, '\0');
        content.resize(static_cast<size_t>(device.read(content.data(), 64)));
        return content;
    }

    const std::string mPath = ::testing::TempDir() + "zuFileIoDeviceTest_" + std::to_string(::getpid());
};

} // namespace

TEST_F(zuFileIoDeviceTest, MissingFilesShortReadsAndWritesToReadOnlyFiles)
{
    zuFileIoDevice device(mPath + ".missing", zuFileIoDevice::ReadOnly);
    EXPECT_FALSE(device.isOpen());
    EXPECT_TRUE(device.isError());
    char buffer[16];
    EXPECT_EQ(device.read(buffer, 1), -1);
    EXPECT_EQ(device.size(), -1);

    // A successful open clears the error of the failed one; a short read at the end is no
    // error, writing to a read-only file is.
    writeFile("long content to be truncated");
    writeFile("hello");
    EXPECT_TRUE(device.open(mPath, zuFileIoDevice::ReadOnly));
    EXPECT_FALSE(device.isError());
    EXPECT_EQ(device.read(buffer, sizeof(buffer)), 5);
    EXPECT_EQ(device.read(buffer, sizeof(buffer)), 0);
    EXPECT_FALSE(device.isError());
    EXPECT_EQ(device.write("zz", 2), -1);
    EXPECT_TRUE(device.isError());
}

TEST_F(zuFileIoDeviceTest, SeekPositionAndSize)
{
    writeFile("0123456789");
    zuFileIoDevice device(mPath, zuFileIoDevice::ReadOnly);
    EXPECT_TRUE(device.seek(-3, zuIoDevice::SeekEnd));
    EXPECT_EQ(device.size(), 10);
    EXPECT_EQ(device.pos(), 7); // size() leaves the position where it was
    EXPECT_TRUE(device.seek(-2, zuIoDevice::SeekCur));
    char c;
    ASSERT_EQ(device.read(&c, 1), 1);
    EXPECT_EQ(c, '5');
    EXPECT_FALSE(device.seek(-1));
    EXPECT_TRUE(device.isError());
}

TEST_F(zuFileIoDeviceTest, OffsetsBeyondFourGigabytes)
{
    // A sparse file: an offset past 4 GiB must not wrap at 32 bits.
    const int64_t far = (int64_t(1) << 32) + 17;
    {
        zuFileIoDevice device(mPath, zuFileIoDevice::WriteOnly);
        ASSERT_TRUE(device.seek(far));
        ASSERT_EQ(device.write("end", 3), 3);
    }
    zuFileIoDevice device(mPath, zuFileIoDevice::ReadOnly);
    EXPECT_EQ(device.size(), far + 3);
    ASSERT_TRUE(device.seek(far));
    EXPECT_EQ(device.pos(), far);
    char buffer[3];
    ASSERT_EQ(device.read(buffer, 3), 3);
    EXPECT_EQ(std::string(buffer, 3), "end");
}

TEST_F(zuFileIoDeviceTest, ReadWriteInterleavedAndAppend)
{
    writeFile("abcdef");
    {
        zuFileIoDevice device(mPath, zuFileIoDevice::ReadWrite);
        char buffer[2];
        ASSERT_EQ(device.read(buffer, 2), 2);
        ASSERT_EQ(device.write("XY", 2), 2); // lands at the current position
        ASSERT_EQ(device.read(buffer, 2), 2);
        EXPECT_EQ(std::string(buffer, 2), "ef");
        ASSERT_EQ(device.write("gh", 2), 2);
        EXPECT_EQ(device.size(), 8); // unflushed bytes count
    }
    {
        zuFileIoDevice device(mPath, zuFileIoDevice::Append);
        EXPECT_EQ(device.pos(), 8);
        ASSERT_EQ(device.write("!", 1), 1);
    }
    EXPECT_EQ(readFile(), "abXYefgh!");
}
