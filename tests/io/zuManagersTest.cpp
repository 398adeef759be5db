// The managers: how they choose a driver, register drivers, and what the library registers.

#include "support/zuTestObjects.h"

#include <zuSceneGraph/io/zuIoManager.h>
#include <zuSceneGraph/zuSceneGraph.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <memory>

namespace zu::test {
namespace {

// A mesh driver that answers a fixed score (or, without one, scores by its extensions) and
// counts what it is asked.
class CountingDriver : public zuCoreMeshDriver {
public:
    explicit CountingDriver(int score, const char* extension = "") : mScore(score) { loadExtensions.insert(extension); }
    unsigned int canLoad(const LoadKeyType& key, const Options& options) const override
    {
        ++mAsked;
        return mScore < 0 ? zuCoreMeshDriver::canLoad(key, options) : static_cast<unsigned int>(mScore);
    }
    unsigned int canSave(const SaveKeyType&, const Options&) const override { return ++mAsked, static_cast<unsigned int>(mScore); }
    bool loadMeshes(ObjectList&, const std::string&, zuProgressNotifierInterface*, const Options&, zuCatalog<zuImage>&) override { return call(); }
    bool saveMeshes(const ObjectList&, const std::string&, zuProgressNotifierInterface*, const Options&, bool) override { return call(); }
    bool loadMeshes(ObjectList&, zuIoDevice&, zuProgressNotifierInterface*, const Options&, zuCatalog<zuImage>&) override { return call(); }
    bool saveMeshes(const ObjectList&, zuIoDevice&, zuProgressNotifierInterface*, const Options&, bool) override { return call(); }
    bool call() { return addErrorMessage(7, ++mCalls, "called"), true; }
    int mScore, mCalls = 0;
    mutable int mAsked = 0;
};

TEST(zuManagers, EveryDriverIsAskedAndTheFirstPreferredOrElseTheFirstFallbackWins)
{
    const struct { std::vector<int> scores; int chosen; /* -1: none */ } cases[] = {{{}, -1}, {{0, 0}, -1}, {{2, 2}, 0}, {{1, 2}, 1}, {{1, 1, 0}, 0}, {{0, 1, 2, 1}, 2}, {{3, 1}, 1}};
    for (const auto& c : cases) {
        zuMeshManager manager;
        std::vector<std::unique_ptr<CountingDriver>> drivers;
        for (int score : c.scores) {
            drivers.push_back(std::make_unique<CountingDriver>(score));
            manager.registerDriver(drivers.back().get(), true);
        }
        std::vector<zuErrorMessage> errors{{1, 1, "stale"}};
        zuCoreMeshDriver::ObjectList objects;
        EXPECT_EQ(manager.loadMeshes(objects, "a.x", nullptr, {}, nullptr, &errors), c.chosen >= 0);
        EXPECT_EQ(manager.saveMeshes(objects, "a.x", nullptr, {}, false), c.chosen >= 0);
        for (size_t i = 0; i < drivers.size(); ++i)
            EXPECT_TRUE(drivers[i]->mAsked == 2 && drivers[i]->mCalls == (static_cast<int>(i) == c.chosen ? 2 : 0)) << i;
        // The chosen driver's reports of the load (cleared before the call) replace the caller's.
        EXPECT_EQ(errors[0], c.chosen >= 0 ? zuErrorMessage(7, 1, "called") : zuErrorMessage(1, 1, "stale"));
    }
}

TEST(zuManagers, ANumericExtensionIsACopyNumber)
{
    const struct { const char *file, *extension; } cases[] = {{"scene.obj.2", "obj"}, {"d.x/scene.obj.007", "obj"}, {"scene.2", ""},      {"scene.obj.0", "0"},
                 {"scene.obj.00", "00"}, {"scene.obj.3a", "3a"},       {"a.b/scene.4", ""}, {"scene.OBJ", "OBJ"}};
    CountingDriver obj(-1, "obj");
    zuMeshManager manager;
    manager.registerDriver(&obj, true);
    zuCoreMeshDriver::ObjectList objects;
    for (const auto& c : cases) {
        EXPECT_EQ(zuMeshManager::GetLoadExtension(c.file), c.extension) << c.file;
        EXPECT_EQ(manager.loadMeshes(objects, c.file, nullptr, {}, nullptr, nullptr), std::string(c.extension) == "obj") << c.file;
    }
    EXPECT_EQ(obj.mCalls, 2);
}

TEST(zuManagers, RegistrationLogsDoublesAndMissingDriversAndReportsSort)
{
    CountingDriver first(2), second(2);
    zuMeshManager manager;
    zuLogCapture log;
    EXPECT_TRUE(manager.registerDriver(&first, true));
    EXPECT_FALSE(manager.registerDriver(&first, false));
    EXPECT_TRUE(manager.registerDriver(&second, false));
    EXPECT_EQ(manager.getDrivers(), (std::vector<zuCoreMeshDriver*>{&second, &first}));
    EXPECT_TRUE(manager.unregisterDriver(&second));
    EXPECT_FALSE(manager.unregisterDriver(&second));
    EXPECT_EQ(manager.getDrivers(), std::vector<zuCoreMeshDriver*>{&first});
    // Reports are built as (code, line, text) and ordered by line, then code, then text.
    const zuErrorMessage report(9, 4, "y");
    EXPECT_TRUE(report.line == 4 && report.code == 9 && report < zuErrorMessage(1, 5, "a"));
    EXPECT_TRUE(zuErrorMessage(1, 5, "a") < zuErrorMessage(2, 5, "a") && zuErrorMessage(2, 5, "a") < zuErrorMessage(2, 5, "b"));
    using Message = std::pair<std::string, std::string>;
    EXPECT_EQ(log.mMessages, (std::vector<Message>{{"driver", "Weird error, driver zuCore.zuCoreMeshDriver is already registered"},
                                                   {"driver", "Weird error, driver zuCore.zuCoreMeshDriver has already been unregistered"}}));
}

TEST(zuManagers, TheLibraryRegistersItsDriversInOrder)
{
    ASSERT_EQ(zuIoManager::msInstance, nullptr);
    initializeZuSceneGraph();
    zuIoManager& io = *zuIoManager::msInstance;
    zuMeshManager& meshes = io.getMeshManager();
    ASSERT_TRUE(meshes.getDrivers().size() == 2 && io.getTextFileManager().getDrivers().size() == 1);
    EXPECT_EQ(meshes.getDrivers()[0]->getLoadExtensions(), std::set<std::string>{"obj"});
    EXPECT_EQ(meshes.getLoadExtensions(), (std::set<std::string>{"kv", "mvk", "obj", "tqb", "zus"}));
    EXPECT_EQ(meshes.getSaveExtensions(), meshes.getLoadExtensions());
    terminateZuSceneGraph();
    EXPECT_EQ(zuIoManager::msInstance, nullptr);
}

TEST(zuManagers, TheTextDriverRefusesLinesThatFillItsBuffer)
{
    const std::string path = ::testing::TempDir() + "zuManagersText.txt";
    const struct { std::string content; bool read; } cases[] = {{std::string(2046, 'a') + "\nb", true}, {std::string(2047, 'a') + "\nb", false},
                 {std::string(3000, 'a') + "\n", false}, {std::string("x\0y\n", 4), true}, {"", true}};
    zuCoreTextDriver driver;
    zuTextFileManager manager;
    manager.registerDriver(&driver, true);
    for (const auto& c : cases) {
        std::ofstream(path, std::ios::binary) << c.content;
        zuLogCapture log;
        std::string text = "kept:";
        EXPECT_EQ(manager.readTextFile(text, path), c.read) << c.content.size();
        EXPECT_EQ(text, c.read ? "kept:" + c.content + (c.content.empty() || c.content.back() == '\n' ? "" : "\n") : "kept:");
        EXPECT_EQ(log.mMessages, (c.read ? decltype(log.mMessages){} : decltype(log.mMessages){{"driver", "Too many characters in row\n"}}));
    }
    std::remove(path.c_str());
    zuLogCapture log;
    std::string text;
    EXPECT_FALSE(driver.readTextFile(text, path) || driver.saveTextFile("x", path));
    EXPECT_EQ(log.mMessages, (decltype(log.mMessages){{"driver", "Error reading " + path}}));
}

} // namespace
} // namespace zu::test
