#include <zuSystem/zuDelegateIoDevice.h>
#include <zuSystem/zuMemoryIoDevice.h>
#include <zuSystem/zuStdIoDevice.h>

#include <gtest/gtest.h>

using zu::zuDelegateIoDevice;
using zu::zuIoDevice;
using zu::zuMemoryIoDevice;

TEST(zuDelegateIoDeviceTest, ForwardsAndMirrorsTargetErrors)
{
    zuMemoryIoDevice memory;
    zuDelegateIoDevice device(&memory);
    EXPECT_EQ(device.write("hello", 5), 5);
    EXPECT_TRUE(device.seek(1));
    EXPECT_EQ(memory.pos(), 1);
    EXPECT_EQ(device.size(), 5);
    EXPECT_FALSE(device.isError());
    EXPECT_FALSE(device.seek(100));
    EXPECT_TRUE(memory.isError());
    EXPECT_TRUE(device.isError());
}

TEST(zuDelegateIoDeviceTest, WithoutTargetEverythingFails)
{
    zuDelegateIoDevice device(nullptr);
    char byte = 0;
    EXPECT_FALSE(device.isOpen());
    EXPECT_EQ(device.read(&byte, 1), -1);
    EXPECT_FALSE(device.seek(0));
    EXPECT_FALSE(device.flush());
    EXPECT_EQ(device.pos(), -1);
    EXPECT_TRUE(device.isError());
}

TEST(zuStdIoDeviceTest, ChannelsRejectTheWrongDirectionAndSeeking)
{
    zu::zuStdIoDevice input(zu::zuStdIoDevice::StdIn);
    EXPECT_EQ(input.write("x", 1), -1);
    EXPECT_TRUE(input.isError());

    zu::zuStdIoDevice error(zu::zuStdIoDevice::StdErr);
    char byte;
    EXPECT_EQ(error.read(&byte, 1), -1);
    error.clearError();
    EXPECT_EQ(error.size(), -1);
    EXPECT_FALSE(error.seek(0, zuIoDevice::SeekCur));
    EXPECT_TRUE(error.isError());
}
