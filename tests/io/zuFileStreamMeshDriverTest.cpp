// The stream mesh driver on real files: round trips, every option, bad input.

#include "support/zuTestObjects.h"

#include <zuSceneGraph/io/zuFileStreamMeshDriver.h>
#include <zuSceneGraph/io/zuIoManager.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/scenegraph/zuSemanticMetadata.h>
#include <zuSceneGraph/scenegraph/zuXRefNode.h>
#include <zuSceneGraph/zuSceneGraph.h>

#include <zuSystem/zuDirUtils.h>
#include <zuSystem/zuMemoryIoDevice.h>

#include <zusgW1Assembly.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <sys/stat.h>

namespace zu::test {
namespace {

using ObjectList = zuCoreMeshDriver::ObjectList;
using Options = zuCoreMeshDriver::Options;
using Driver = zuFileStreamMeshDriver;

template <class T> zuPointer<T> named(T* object, const std::string& name) { return object->SetName(name), object; }

// The object down a path of child slots from a root node (null where the path breaks).
const zuSpatial* at(const zuPointer<zuObject>& root, std::initializer_list<int> slots)
{
    const zuSpatial* spatial = static_cast<const zuSpatial*>(root.get());
    for (int slot : slots)
        spatial = spatial && spatial->IsDerived(zuNode::TYPE) ? static_cast<const zuNode*>(spatial)->getChild(slot) : nullptr;
    return spatial;
}

std::string semantic(const zuSpatial* spatial, const std::string& key)
{
    std::string value = "-";
    const auto* record = static_cast<const zuSemanticMetadata*>(spatial->getMetadata(zuSemanticMetadata::TYPE_KEY));
    if (record)
        record->getValue(key, value);
    return value;
}

class FileStreamMeshDriver : public ::testing::Test {
protected:
    FileStreamMeshDriver() { initializeZuSceneGraph(); }
    ~FileStreamMeshDriver() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(mFolder, ignored);
        terminateZuSceneGraph();
    }
    std::string path(const std::string& name) const { return mFolder + name; }
    zuMeshManager& manager() { return zuIoManager::msInstance->getMeshManager(); }
    bool save(const ObjectList& objects, const std::string& name, const Options& options = {}, bool append = false)
    {
        return manager().saveMeshes(objects, path(name), nullptr, options, append);
    }
    bool load(ObjectList& out, const std::string& name, const Options& options = {}, zuProgressNotifierInterface* progress = nullptr)
    {
        return manager().loadMeshes(out, path(name), progress, options, nullptr, &mErrors);
    }
    std::string bytes(const std::string& name) const
    {
        std::ifstream file(path(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    // A folder per test: ctest runs the tests of this file side by side.
    std::string mFolder = ::testing::TempDir() + "zuFileStreamMeshDriverTest."
        + ::testing::UnitTest::GetInstance()->current_test_info()->name() + "/";
    bool mMadeFolder = std::filesystem::create_directories(mFolder);
    std::vector<zuErrorMessage> mErrors;
};

TEST_F(FileStreamMeshDriver, SavesAndAppendsAtTheNewestVersionUnlessTheOptionsOrTheFileNameOne)
{
    const ObjectList cube{zusg::W1Assembly::makeCube().get()}, node{named(new zuNode, "node").get()};
    ASSERT_TRUE(save(cube, "cube.mvk"));
    EXPECT_EQ(bytes("cube.mvk").substr(0, 9), std::string("MVK 6.32\0", 9));
    ASSERT_TRUE(save(cube, "both.kv", {{Driver::sOptionStreamVersion, "6.20"}}));
    EXPECT_EQ(bytes("both.kv").substr(0, 9), std::string("MVK 6.20\0", 9));
    for (zuVariant refused : {zuVariant("5.20"), zuVariant("6.33"), zuVariant("six"), zuVariant(6)})
        EXPECT_FALSE(save(cube, "refused.mvk", {{Driver::sOptionStreamVersion, refused}}) || std::filesystem::exists(path("refused.mvk")));
    EXPECT_FALSE(save(node, "both.kv", {{Driver::sOptionStreamVersion, "6.32"}}, true));  // adds nothing
    ASSERT_TRUE(save(node, "both.kv", {}, true));
    // Through a device, and back.
    zuMemoryIoDevice device;
    ASSERT_TRUE(manager().saveMesh(cube[0], device, "zus", nullptr, {}, false));
    EXPECT_EQ(std::string(device.data().begin(), device.data().end()), bytes("cube.mvk"));
    ObjectList loaded{cube[0]};
    zuCatalog<zuImage> images;
    ASSERT_TRUE(manager().getDrivers()[1]->loadMeshes(loaded, device, nullptr, {}, images));
    ASSERT_TRUE(load(loaded, "both.kv"));
    ASSERT_EQ(loaded.size(), 4u);
    EXPECT_TRUE(loaded[1]->Equals(cube[0].get()) && loaded[2]->Equals(cube[0].get()) && loaded[3]->Equals(node[0].get()));
    // loadMesh wants exactly one object.
    zuPointer<zuObject> one = cube[0];
    EXPECT_FALSE(manager().loadMesh(one, path("both.kv"), nullptr, {}, nullptr, nullptr));
    EXPECT_EQ(one, cube[0]);
    EXPECT_TRUE(manager().loadMesh(one, path("cube.mvk"), nullptr, {}, nullptr, nullptr) && one != cube[0] && one->Equals(cube[0].get()));
}

TEST_F(FileStreamMeshDriver, OptionsShapeTheLoadedTrees)
{
    zuPointer<zuNode> root = new zuNode, hidden = new zuNode, hiddenTop = new zuNode;
    zuPointer<zuTriMesh> cube = zusg::W1Assembly::makeCube();
    hidden->SetCullingMode(zuSpatial::CULL_ALWAYS);
    hiddenTop->SetCullingMode(zuSpatial::CULL_ALWAYS);
    zuPointer<zuSemanticMetadata> record = new zuSemanticMetadata;
    record->setValue("part", "A-1");
    root->setMetadata(record);
    root->attachChild(cube);
    root->attachChild(hidden);
    ASSERT_TRUE(save({root.get(), hiddenTop.get()}, "scene.mvk"));
    const struct { Options options; bool hidden; const char *part, *fileName; } cases[] = {
        {{}, true, "A-1", "-"},
        {{{zuMeshManager::sOptionLoadHiddenObjects, false}}, false, "A-1", "-"},
        {{{zuMeshManager::sOptionLoadMetadata, "false"}}, true, "-", "-"},
        {{{zuMeshManager::sOptionAddOriginalFileNameInMetadata, true}}, true, "A-1", "scene.mvk"},
        {{{zuMeshManager::sOptionLoadMetadata, 0}, {zuMeshManager::sOptionAddOriginalFileNameInMetadata, 1}}, true, "-", "scene.mvk"},
    };
    for (const auto& c : cases) {
        ObjectList loaded;
        ASSERT_TRUE(load(loaded, "scene.mvk", c.options));
        ASSERT_EQ(loaded.size(), c.hidden ? 2u : 1u);
        const zuNode* node = static_cast<zuNode*>(loaded[0].get());
        EXPECT_EQ(node->getNbChildren(), 2);  // a dropped child leaves its slot empty
        EXPECT_EQ(node->getChild(1) != nullptr, c.hidden);
        EXPECT_EQ(semantic(node, "part"), c.part);
        EXPECT_EQ(semantic(node, Driver::sOriginalFileNameKey), c.fileName);
    }
    // A lazy load from a sandbox leaves the blocks in the copy, which serves them when the
    // original is gone.
    std::filesystem::create_directories(path("sandbox"));
    ObjectList lazy;
    ASSERT_TRUE(load(lazy, "scene.mvk", {{zuMeshManager::sOptionLoadGeometry, false}, {zuMeshManager::sSandboxDirectoryUtf8, path("sandbox")}}));
    std::filesystem::remove(path("scene.mvk"));
    zuVertexBuffer* vertices = static_cast<const zuTriMesh*>(at(lazy[0], {0}))->GetVertices();
    EXPECT_TRUE(!vertices->isCPUResident() && vertices->getResourceFilePath() == path("sandbox/scene.mvk"));
    ASSERT_TRUE(zuRendererInterface::LoadCPUData(vertices));
    EXPECT_TRUE(vertices->Equals(cube->GetVertices()));
}

TEST_F(FileStreamMeshDriver, ReferencesLoadTheirFilesAndReportMissingOnesAndCycles)
{
    // A refers to parts/B, C and a missing file; B to D (relative to B's folder); C back to A.
    std::filesystem::create_directories(path("parts"));
    const auto assembly = [&](const std::string& name, std::initializer_list<const char*> references) {
        zuPointer<zuNode> node = named(new zuNode, zuDirUtils::ExtractFileBaseName(name));
        for (const char* reference : references)
            node->attachChild(new zuXRefNode(reference));
        ASSERT_TRUE(save({node.get()}, name));
    };
    assembly("A.mvk", {"parts/B.mvk", "C.mvk", "missing.mvk"});
    assembly("parts/B.mvk", {"../D.mvk"});
    assembly("C.mvk", {"A.mvk"});
    assembly("D.mvk", {});

    ObjectList loaded;
    ASSERT_TRUE(load(loaded, "A.mvk", {{zuMeshManager::sOptionLoadXRef, true}}));
    ASSERT_EQ(loaded.size(), 1u);
    EXPECT_EQ(at(loaded[0], {0, 0})->GetName() + at(loaded[0], {0, 0, 0, 0})->GetName() + at(loaded[0], {1, 0})->GetName(), "BDC");
    EXPECT_FALSE(at(loaded[0], {1, 0, 0, 0}) || at(loaded[0], {2, 0}));
    ASSERT_TRUE(mErrors.size() == 2 && mErrors[0].code == Driver::ERROR_REFERENCE && mErrors[1].code == Driver::ERROR_REFERENCE);
    EXPECT_NE(mErrors[0].text.find(path("A.mvk") + " of " + path("C.mvk") + ": it is part of a reference cycle"), std::string::npos) << mErrors[0].text;
    EXPECT_NE(mErrors[1].text.find("missing.mvk of " + path("A.mvk") + ": no such file"), std::string::npos) << mErrors[1].text;
}

TEST_F(FileStreamMeshDriver, ACancelledLoadOrSaveKeepsWhatTheCallerHad)
{
    zuPointer<zuNode> built = zusg::W1Assembly(2).build();
    ASSERT_TRUE(save({built.get()}, "w1.mvk"));
    const std::string saved = bytes("w1.mvk");
    const Options lazy{{zuMeshManager::sOptionLoadGeometry, false}};
    zuDynamicLoadingResource::SetLoadPolicy(zuIndexBuffer::TYPE, true);  // to be kept as it is
    ObjectList tree;
    ASSERT_TRUE(load(tree, "w1.mvk", lazy));
    zuVertexBuffer* vertices = static_cast<const zuTriMesh*>(at(tree[0], {0, 0}))->GetVertices();
    const uint64_t offset = vertices->getStreamOffset();
    for (int step = 1; step <= 3; ++step) {
        zuTestProgress progress;
        progress.mCancelAfterSteps = step;
        ObjectList loaded{built.get()};
        EXPECT_FALSE(load(loaded, "w1.mvk", lazy, &progress));
        EXPECT_EQ(loaded, ObjectList{built.get()});
        EXPECT_EQ(mErrors, (std::vector<zuErrorMessage>{{Driver::ERROR_CANCELLED, -1, "Loading " + path("w1.mvk") + " was cancelled"}}));
        EXPECT_EQ(progress.mOpenGroups, 0);
        bool policy = false;
        EXPECT_FALSE(zuDynamicLoadingResource::GetLoadPolicy(zuVertexBuffer::TYPE, policy));
        EXPECT_TRUE(zuDynamicLoadingResource::GetLoadPolicy(zuIndexBuffer::TYPE, policy) && policy);
        progress = zuTestProgress();
        progress.mCancelAfterSteps = 10 * step;  // past the first leaf's buffers
        // The lazy tree's blocks are read from the file being replaced, and stay found there.
        EXPECT_FALSE(manager().saveMeshes(tree, path("w1.mvk"), &progress, {}, step == 2));
        EXPECT_EQ(bytes("w1.mvk"), saved);
        EXPECT_EQ(vertices->getStreamOffset(), offset);
        EXPECT_EQ(vertices->getResourceFilePath(), path("w1.mvk"));
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(mFolder), {}), 1);  // no partial file
    ASSERT_TRUE(zuRendererInterface::LoadCPUData(vertices));
    EXPECT_TRUE(vertices->Equals(static_cast<const zuTriMesh*>(at(built.get(), {0, 0}))->GetVertices()));
    zuDynamicLoadingResource::RemoveLoadPolicy(zuIndexBuffer::TYPE);
}

TEST_F(FileStreamMeshDriver, BadFilesFailWithTheirNameAndWhereTheyBreak)
{
    ASSERT_TRUE(save({zusg::W1Assembly::makeCube().get()}, "good.mvk"));
    const std::string good = bytes("good.mvk");
    std::filesystem::create_directories(path("folder.mvk"));
    ASSERT_EQ(mkfifo(path("pipe.mvk").c_str(), 0600), 0);  // opening it would wait for a writer
    const int64_t cut = static_cast<int64_t>(good.size()) - 10;
    // The lines of the reports: where the stream broke.
    const struct { const char* name; std::string content; int64_t code, firstLine, lastLine; } cases[] = {{"folder.mvk", "", Driver::ERROR_FILE, -1, -1},
                 {"missing.mvk", "", Driver::ERROR_FILE, -1, -1},
                 {"pipe.mvk", "", Driver::ERROR_FILE, -1, -1},
                 {"empty.mvk", "", Driver::ERROR_STREAM, 0, 0},
                 {"text.tqb", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n", Driver::ERROR_STREAM, 28, 28},
                 {"cut.mvk", good.substr(0, static_cast<size_t>(cut)), Driver::ERROR_STREAM, cut / 2, cut}};
    for (const auto& c : cases) {
        if (c.code == Driver::ERROR_STREAM)
            std::ofstream(path(c.name), std::ios::binary) << c.content;
        ObjectList loaded{zusg::W1Assembly::makeCube().get()}, before = loaded;
        EXPECT_FALSE(load(loaded, c.name)) << c.name;
        EXPECT_EQ(loaded, before);
        ASSERT_EQ(mErrors.size(), 1u) << c.name;
        EXPECT_EQ(mErrors[0].code, c.code) << c.name;
        EXPECT_TRUE(mErrors[0].line >= c.firstLine && mErrors[0].line <= c.lastLine) << c.name << " " << mErrors[0].line;
        EXPECT_NE(mErrors[0].text.find(path(c.name)), std::string::npos) << mErrors[0].text;
    }
}

} // namespace
} // namespace zu::test
