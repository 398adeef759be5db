#include <zuSystem/zuDirUtils.h>
#include <zuSystem/zuFileIoDevice.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <unistd.h>

using zu::zuDirUtils;
using zu::zuFileIoDevice;

TEST(zuDirUtilsTest, PathParts)
{
    struct Case {
        const char *path, *extension, *baseName, *fileName, *directory;
    };
    const Case cases[] = {
        {"dir/model.obj.3", "3", "model.obj", "model.obj.3", "dir/"},
        {"dir/.hidden", "hidden", "", ".hidden", "dir/"},
        {"model.OBJ", "OBJ", "model", "model.OBJ", ""},
        {"my.dir/model", "", "model", "model", "my.dir/"}, // a dot in a folder is no extension
        {"C:\\data.v2\\part.mvk", "mvk", "part", "part.mvk", "C:\\data.v2\\"},
        {"a\\b/c.d", "d", "c", "c.d", "a\\b/"},
        {"dir/", "", "", "", "dir/"},
        {"name.", "", "name", "name.", ""},
        {"", "", "", "", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(zuDirUtils::ExtractFileExtension(c.path), c.extension);
        EXPECT_EQ(zuDirUtils::ExtractFileBaseName(c.path), c.baseName);
        EXPECT_EQ(zuDirUtils::ExtractFileName(c.path), c.fileName);
        EXPECT_EQ(zuDirUtils::ExtractDirectory(c.path), c.directory);
    }
}

TEST(zuDirUtilsTest, CopyFile)
{
    const std::string prefix = ::testing::TempDir() + "zuDirUtilsTest_" + std::to_string(::getpid());
    const std::string source = prefix + "_source";
    const std::string target = prefix + "_target";
    const auto readAll = [](const std::string& path) {
        zuFileIoDevice device(path, zuFileIoDevice::ReadOnly);
        std::string content(static_cast<size_t>(device.size()), '\0');
        device.read(content.data(), static_cast<int64_t>(content.size()));
        return content;
    };
    // More than one copy chunk, with every byte value, over a longer old target.
    std::string content;
    for (int i = 0; i < 200000; ++i)
        content += static_cast<char>(i * 7);
    {
        zuFileIoDevice(source, zuFileIoDevice::WriteOnly).write(content.data(), static_cast<int64_t>(content.size()));
        const std::string old(300000, 'o');
        zuFileIoDevice(target, zuFileIoDevice::WriteOnly).write(old.data(), static_cast<int64_t>(old.size()));
    }
    EXPECT_TRUE(zuDirUtils::CopyFileUtf8(source, target));
    EXPECT_EQ(readAll(target), content);
    // Onto itself: nothing is lost.
    EXPECT_TRUE(zuDirUtils::CopyFileUtf8(source, source));
    EXPECT_EQ(readAll(source), content);

    EXPECT_TRUE(zuDirUtils::FileExists(source));
    EXPECT_FALSE(zuDirUtils::FileExists(::testing::TempDir()));
    EXPECT_FALSE(zuDirUtils::CopyFileUtf8(prefix + "_missing", prefix + "_never"));
    EXPECT_FALSE(zuDirUtils::FileExists(prefix + "_never"));
    EXPECT_FALSE(zuDirUtils::CopyFileUtf8(::testing::TempDir(), prefix + "_never"));
    EXPECT_FALSE(zuDirUtils::CopyFileUtf8(source, prefix + "_no/such/folder"));
    std::remove(source.c_str());
    std::remove(target.c_str());
}
