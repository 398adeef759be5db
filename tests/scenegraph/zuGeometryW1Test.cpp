// The W1 assembly at D = 4 with real cube meshes, saved to a file and loaded twice: with
// every buffer, and with the vertex and index buffers left in the file. The three trees
// see the same leaves from the W1 camera, and the buffers of those leaves, read back on
// demand in the lazy tree, equal the originals.

#include "support/zuTestObjects.h"
#include "zusgW1Assembly.h"

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSystem/zuFileIoDevice.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <unistd.h>

namespace zu::test {
namespace {

constexpr int DEPTH = 4;

class GeometryW1 : public ::testing::Test {
protected:
    ~GeometryW1() override
    {
        zuDynamicLoadingResource::ClearLoadingPolicies();
        std::error_code ignored;
        std::filesystem::remove(mPath, ignored);
    }
    bool save(zuNode* root) const
    {
        zuFileStream stream;
        stream.SetVersion(zuStreamVersion(6, 32));
        stream.InsertTopLevel(root);
        zuFileIoDevice device(mPath, zuFileIoDevice::WriteOnly);
        const bool saved = stream.Save(device, mPath, false);
        device.close();
        return saved && !device.isError();
    }
    zuPointer<zuNode> load() const
    {
        zuFileStream stream;
        zuFileIoDevice device(mPath, zuFileIoDevice::ReadOnly);
        if (!stream.Load(device, mPath) || stream.GetObjectCount() != 1)
            return nullptr;
        zuRttiInterface* object = stream.GetObjectAt(0);
        return object->IsDerived(zuNode::TYPE) ? static_cast<zuNode*>(object) : nullptr;
    }

    zuTestFactories factories;
    std::string mPath =
        (std::filesystem::temp_directory_path() / ("zuGeometryW1-" + std::to_string(getpid()) + ".mvk")).string();
};

// The meshes under an object, and how many of them have both buffers in memory.
void collectMeshes(const zuSpatial* object, std::vector<const zuTriMesh*>& meshes)
{
    if (object->IsDerived(zuTriMesh::TYPE)) {
        meshes.push_back(static_cast<const zuTriMesh*>(object));
    } else if (object->IsDerived(zuNode::TYPE)) {
        const auto* node = static_cast<const zuNode*>(object);
        for (int i = 0; i < node->getNbChildren(); ++i)
            if (const zuSpatial* child = node->getChild(i))
                collectMeshes(child, meshes);
    }
}

int residentMeshes(const zuNode* root)
{
    std::vector<const zuTriMesh*> meshes;
    collectMeshes(root, meshes);
    int resident = 0;
    for (const zuTriMesh* mesh : meshes)
        resident += mesh->GetVertices()->isCPUResident() && mesh->GetIndices()->isCPUResident();
    return resident;
}

// Updates the tree and culls it from the W1 camera; the visible leaves by their slots from
// the root down, as "/k1/k2/...".
std::map<std::string, zuTriMesh*> visibleMeshes(zuNode* root)
{
    zuPointer<zuCamera> camera = zusg::W1Assembly(DEPTH).camera();
    root->UpdateGS();
    zuCuller culler;
    culler.SetCamera(camera);
    culler.ComputeVisibleSet(root, nullptr, false);
    std::map<std::string, zuTriMesh*> visible;
    for (zuRenderableSpatial* leaf : culler.GetVisibleSet()) {
        EXPECT_TRUE(leaf->IsExactly(zuTriMesh::TYPE));
        std::vector<int> slots;
        for (const zuSpatial* object = leaf; object->GetParent(); object = object->GetParent())
            slots.push_back(static_cast<const zuNode*>(object->GetParent())->getChildIndex(object));
        std::string path;
        for (auto slot = slots.rbegin(); slot != slots.rend(); ++slot) {
            path += '/';
            path += std::to_string(*slot);
        }
        visible[path] = static_cast<zuTriMesh*>(leaf);
    }
    EXPECT_EQ(visible.size(), culler.GetVisibleSet().size()) << "a leaf was inserted twice";
    return visible;
}

// The loaded visible leaves are the original ones, with the same bounds and buffers.
void expectSameLeaves(const std::map<std::string, zuTriMesh*>& loaded, const std::map<std::string, zuTriMesh*>& original)
{
    ASSERT_EQ(loaded.size(), original.size());
    auto expected = original.begin();
    for (const auto& [path, mesh] : loaded) {
        ASSERT_EQ(path, expected->first);
        const zuTriMesh* source = (expected++)->second;
        EXPECT_TRUE(mesh->Equals(source)) << path;
        EXPECT_EQ(mesh->GetModelBound(), source->GetModelBound()) << path;
        EXPECT_EQ(mesh->GetWorldBound(), source->GetWorldBound()) << path;
        EXPECT_TRUE(mesh->GetVertices()->Equals(source->GetVertices())) << path;
        EXPECT_TRUE(mesh->GetIndices()->Equals(source->GetIndices())) << path;
    }
}

TEST_F(GeometryW1, OriginalFullAndLazyLoadsSeeTheSameLeavesWithTheSameBuffers)
{
    zuPointer<zuNode> original = zusg::W1Assembly(DEPTH).build();
    std::vector<const zuTriMesh*> meshes;
    collectMeshes(original, meshes);
    ASSERT_EQ(meshes.size(), 4096u);
    ASSERT_NE(meshes[0]->GetVertices(), meshes[1]->GetVertices());
    const std::map<std::string, zuTriMesh*> seen = visibleMeshes(original);
    // About a sixth of the leaves lie in the pyramid x > |y|, x > |z|.
    EXPECT_GT(seen.size(), 4096u / 10);
    EXPECT_LT(seen.size(), 4096u / 4);
    ASSERT_TRUE(save(original));

    zuPointer<zuNode> full = load();
    ASSERT_NE(full, nullptr);
    EXPECT_EQ(residentMeshes(full), 4096);
    expectSameLeaves(visibleMeshes(full), seen);

    zuDynamicLoadingResource::SetLoadPolicy(zuVertexBuffer::TYPE, false);
    zuDynamicLoadingResource::SetLoadPolicy(zuIndexBuffer::TYPE, false);
    zuPointer<zuNode> lazy = load();
    ASSERT_NE(lazy, nullptr);
    EXPECT_EQ(residentMeshes(lazy), 0);
    const std::map<std::string, zuTriMesh*> lazySeen = visibleMeshes(lazy);
    std::vector<zuDynamicLoadingResource*> resources;
    for (const auto& [path, mesh] : lazySeen) {
        mesh->getResources(resources);
        ASSERT_EQ(resources.size(), 2u) << path;
        for (zuDynamicLoadingResource* resource : resources) {
            ASSERT_NE(resource, nullptr) << path;
            EXPECT_EQ(resource->getResourceFilePath(), mPath);
            EXPECT_TRUE(zuRendererInterface::LoadCPUData(resource)) << path;
        }
        // Ready for a renderer to take.
        mesh->checkRenderable(false);
        EXPECT_EQ(mesh->getRenderFlag(zuRenderableSpatial::RENDERABLE_FIRST), 1) << path;
    }
    expectSameLeaves(lazySeen, seen);
    // Only the visible leaves were read back.
    EXPECT_EQ(residentMeshes(lazy), static_cast<int>(seen.size()));
}

} // namespace
} // namespace zu::test
