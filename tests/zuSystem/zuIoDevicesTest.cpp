// The memory device: positions, bounds and errors.

#include <zuSystem/zuMemoryIoDevice.h>

#include <gtest/gtest.h>

#include <string>

using zu::zuIoDevice;
using zu::zuMemoryIoDevice;

TEST(zuMemoryIoDeviceTest, WriteOverwritesThenExtendsAndReadStopsAtEnd)
{
    zuMemoryIoDevice device(std::vector<char>{'a', 'b', 'c', 'd'});
    ASSERT_TRUE(device.seek(2));
    EXPECT_EQ(device.write("XYZ", 3), 3);
    EXPECT_EQ(std::string(device.data().begin(), device.data().end()), "abXYZ");
    EXPECT_EQ(device.pos(), 5);

    char buffer[8];
    ASSERT_TRUE(device.seek(-2, zuIoDevice::SeekCur));
    EXPECT_EQ(device.read(buffer, 8), 2);
    EXPECT_EQ(device.read(buffer, 8), 0);
    EXPECT_FALSE(device.isError());
    EXPECT_EQ(device.read(buffer, -1), -1);
    EXPECT_TRUE(device.isError());
}

TEST(zuMemoryIoDeviceTest, SeekStaysWithinTheBytes)
{
    zuMemoryIoDevice device(std::vector<char>(10));
    EXPECT_TRUE(device.seek(0, zuIoDevice::SeekEnd));
    EXPECT_TRUE(device.seek(-4, zuIoDevice::SeekCur));
    EXPECT_FALSE(device.isError());
    EXPECT_FALSE(device.seek(11));
    EXPECT_FALSE(device.seek(-7, zuIoDevice::SeekCur));
    EXPECT_FALSE(device.seek(1, zuIoDevice::SeekEnd));
    EXPECT_TRUE(device.isError());
    EXPECT_EQ(device.pos(), 6);

    // Bytes shrunk behind the position: reads find nothing, a write fills the gap with zeros.
    device.data().resize(2);
    char buffer[4];
    EXPECT_EQ(device.read(buffer, 4), 0);
    EXPECT_EQ(device.write("q", 1), 1);
    EXPECT_EQ(std::string(device.data().begin(), device.data().end()), std::string(6, '\0') + "q");
}
