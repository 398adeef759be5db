// The stream mesh driver on real files: round trips, every option, bad input.

#include "support/zuTestObjects.h"

#include <zuSceneGraph/io/zuFileStreamMeshDriver.h>
#include <zuSceneGraph/io/zuIoManager.h>
#include <zuSceneGraph/zuSceneGraph.h>

#include <zusgW1Assembly.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace zu::test {
namespace {

using ObjectList = zuCoreMeshDriver::ObjectList;
using Options = zuCoreMeshDriver::Options;

class FileStreamMeshDriver : public ::testing::Test {
protected:
    FileStreamMeshDriver() { initializeZuSceneGraph(); }
    ~FileStreamMeshDriver() override
    {
        std::filesystem::remove_all(mFolder);
        terminateZuSceneGraph();
    }
    std::string path(const std::string& name) const { return mFolder + name; }
    zuMeshManager& manager() { return zuIoManager::msInstance->getMeshManager(); }
    bool save(const ObjectList& objects, const std::string& name, const Options& options = {})
    {
        return manager().saveMeshes(objects, path(name), nullptr, options, false);
    }
    bool load(ObjectList& out, const std::string& name, const Options& options = {})
    {
        mErrors.clear();
        return manager().loadMeshes(out, path(name), nullptr, options, nullptr, &mErrors);
    }
    std::string bytes(const std::string& name) const
    {
        std::ifstream file(path(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    std::string mFolder = ::testing::TempDir() + "zuFileStreamMeshDriverTest/";
    std::vector<zuErrorMessage> mErrors;
    bool mMadeFolder = std::filesystem::create_directories(mFolder);
};

TEST_F(FileStreamMeshDriver, SavesTheNewestVersionUnlessTheOptionsNameOne)
{
    const ObjectList cube{zusg::W1Assembly::makeCube().get()};
    ASSERT_TRUE(save(cube, "cube.mvk"));
    EXPECT_EQ(bytes("cube.mvk").substr(0, 9), std::string("MVK 6.32\0", 9));
    ASSERT_TRUE(save(cube, "cube.kv", {{zuFileStreamMeshDriver::sOptionStreamVersion, "6.20"}}));
    EXPECT_EQ(bytes("cube.kv").substr(0, 9), std::string("MVK 6.20\0", 9));
    ObjectList loaded;
    ASSERT_TRUE(load(loaded, "cube.kv"));
    ASSERT_EQ(loaded.size(), 1u);
    EXPECT_TRUE(loaded[0]->Equals(cube[0].get()));
}

} // namespace
} // namespace zu::test
