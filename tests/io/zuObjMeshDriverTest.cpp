#include "support/zuOutputCapture.h"

#include <zuSceneGraph/io/zuIoManager.h>
#include <zuSceneGraph/io/zuMeshManager.h>
#include <zuSceneGraph/io/zuObjMeshDriver.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>
#include <zuSceneGraph/states/zuMaterialState.h>
#include <zuSceneGraph/zuSceneGraph.h>

#include <zuSystem/zuMemoryIoDevice.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using zu::test::zuOutputCapture;

using namespace zu;

namespace {

class ObjMeshDriverTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { initializeZuSceneGraph(); }
    static void TearDownTestSuite() { terminateZuSceneGraph(); }

    void SetUp() override
    {
        mFolder = std::filesystem::temp_directory_path() / ("zuObjMeshDriverTest_" + std::to_string(::getpid()));
        std::filesystem::create_directories(mFolder);
    }
    void TearDown() override { std::filesystem::remove_all(mFolder); }
    std::string path(const std::string& name) const { return (mFolder / name).string(); }

    zuMeshManager& meshes() { return zuIoManager::msInstance->getMeshManager(); }

    std::filesystem::path mFolder;
};

// Through the mesh manager: the OBJ driver takes "x.obj.2", loads the file with its
// material library, hands over its reports with code 9, and saves it to a device.
TEST_F(ObjMeshDriverTest, LoadsAndSavesThroughTheManager)
{
    std::ofstream(path("a.mtl")) << "newmtl red\nKd 1 0 0\n";
    std::ofstream(path("part.obj.2")) << "mtllib a.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl red\nf 1 2 3\nf 1 2 7\n";
    zuPointer<zuObject> loaded;
    std::vector<zuErrorMessage> errors;
    ASSERT_TRUE(meshes().loadMesh(loaded, path("part.obj.2"), nullptr, {}, nullptr, &errors));
    EXPECT_EQ(errors, (std::vector<zuErrorMessage>{
                          {9, 7, "index 7 out of range (3 v statements above); the f statement is dropped"}}));
    auto* root = dynamic_cast<zuNode*>(loaded.get());
    ASSERT_TRUE(root);
    EXPECT_EQ(root->GetName(), "part.obj");
    ASSERT_EQ(root->getNbChildren(), 1);
    EXPECT_EQ(static_cast<zuTriMesh*>(root->getChild(0))->GetMaterialState()->Diffuse, Wm4::ColorRGB(1, 0, 0));

    root->UpdateGS();
    zuMemoryIoDevice device;
    ASSERT_TRUE(meshes().saveMesh(loaded, device, "obj", nullptr, {}, false));
    device.seek(0);
    zuObjMeshDriver driver;
    zuCatalog<zuImage> images;
    zuCoreMeshDriver::ObjectList objects;
    ASSERT_TRUE(driver.loadMeshes(objects, device, nullptr, {}, images));
    ASSERT_EQ(objects.size(), 1u);
    EXPECT_EQ(static_cast<zuNode*>(objects[0].get())->getNbChildren(), 1);
}

// The save contract: exactly one object, a spatial one; no appending (with its message on
// standard output); a load that cannot read its file fails and adds nothing.
TEST_F(ObjMeshDriverTest, RefusesWhatItCannotDo)
{
    zuPointer<zuObject> node(new zuNode), state(new zuMaterialState);
    struct Case {
        zuCoreMeshDriver::ObjectList objects;
        bool append;
        bool saved;
        const char* output;
    };
    const Case cases[] = {
        {{}, false, false, ""},
        {{node, node}, false, false, ""},
        {{state}, false, false, ""},
        {{zuPointer<zuObject>()}, false, false, ""},
        {{node}, true, false, "zuObjMeshDriver::saveMeshes : appending is not supported\n"},
        {{node}, false, true, ""},
    };
    zuObjMeshDriver driver;
    for (const Case& c : cases) {
        for (const bool toDevice : {false, true}) {
            zuMemoryIoDevice device;
            zuOutputCapture capturedOut(zuOutputCapture::STDOUT);
            const bool saved = toDevice ? driver.saveMeshes(c.objects, device, nullptr, {}, c.append)
                                        : driver.saveMeshes(c.objects, path("out.obj"), nullptr, {}, c.append);
            EXPECT_EQ(capturedOut.take(), c.output);
            EXPECT_EQ(saved, c.saved);
            std::vector<zuErrorMessage> errors;
            driver.getLastErrorsAndWarnings(errors);
            EXPECT_EQ(errors.size(), c.saved ? 0u : 1u);
            EXPECT_EQ(std::filesystem::exists(path("out.obj")), c.saved && !toDevice);
            std::filesystem::remove(path("out.obj"));
        }
    }
    zuCatalog<zuImage> images;
    zuCoreMeshDriver::ObjectList objects;
    EXPECT_FALSE(driver.loadMeshes(objects, path("missing.obj"), nullptr, {}, images));
    EXPECT_TRUE(objects.empty());
    std::vector<zuErrorMessage> errors;
    driver.getLastErrorsAndWarnings(errors);
    EXPECT_EQ(errors, (std::vector<zuErrorMessage>{{9, 0, "cannot open \"" + path("missing.obj") + "\""}}));
}

} // namespace
