// first_scene: the library's main path in one small program.
//
// Builds a scene of nodes and triangle meshes, updates its world transformations and
// bounds, culls it against a camera, saves it to an .mvk file and loads it back twice:
// with every vertex and index block, and with the blocks left in the file, of which only
// those of the visible meshes are then read back.
//
//     first_scene [FILE.mvk]      (default: a file in the temporary directory, removed at the end)
//
// Prints one line per step; exits with 1 and a message when a step fails.

#include <zuSceneGraph/zuSceneGraph.h>
#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/io/zuIoManager.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>
#include <zuSceneGraph/states/zuCamera.h>

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using Vector = Wm4::Vector3<float>;
using Leaves = std::vector<zu::zuRenderableSpatial*>;

// A cube of edge 2 centred on its origin: 8 shared corners, 12 triangles, counter-clockwise
// seen from outside. Corner i has x from bit 0, y from bit 1, z from bit 2.
zu::zuPointer<zu::zuTriMesh> makeCube(const std::string& name)
{
    zu::zuAttributes layout;  // what each vertex holds: 3 position and 3 normal floats
    layout.SetPositionChannels(3);
    layout.SetNormalChannels(3);
    zu::zuPointer<zu::zuVertexBuffer> vertices = new zu::zuVertexBuffer(layout, 8);
    for (int i = 0; i < 8; ++i)
        vertices->Position3(i) = Vector(i & 1 ? 1.0f : -1.0f, i & 2 ? 1.0f : -1.0f, i & 4 ? 1.0f : -1.0f);

    static const unsigned short corners[36] = {0, 2, 3, 0, 3, 1,  4, 5, 7, 4, 7, 6,  0, 1, 5, 0, 5, 4,
                                               2, 6, 7, 2, 7, 3,  0, 4, 6, 0, 6, 2,  1, 3, 7, 1, 7, 5};
    zu::zuPointer<zu::zuIndexBuffer> indices = new zu::zuIndexBuffer(36, zu::zuIndexBuffer::INDEX_16);
    for (int i = 0; i < 36; ++i)
        indices->SetIndex(i, corners[i]);

    zu::zuPointer<zu::zuTriMesh> cube = new zu::zuTriMesh(vertices, indices);  // also computes its model bound
    cube->UpdateModelNormals();
    cube->SetName(name);
    return cube;
}

// Two rows of five cubes, 10 and 20 units ahead of the origin along +x, spread along y.
zu::zuPointer<zu::zuNode> buildScene()
{
    zu::zuPointer<zu::zuNode> root = new zu::zuNode;
    root->SetName("scene");
    for (int row = 0; row < 2; ++row) {
        zu::zuPointer<zu::zuNode> rowNode = new zu::zuNode;
        rowNode->SetName("row " + std::to_string(row));
        rowNode->GetLocalTransform().SetTranslate(Vector(10.0f * (row + 1), 0.0f, 0.0f));
        for (int i = 0; i < 5; ++i) {
            zu::zuPointer<zu::zuTriMesh> cube = makeCube("cube " + std::to_string(row) + "." + std::to_string(i));
            cube->GetLocalTransform().SetTranslate(Vector(0.0f, 10.0f * (i - 2), 0.0f));  // relative to the row
            rowNode->attachChild(cube);
        }
        root->attachChild(rowNode);
    }
    return root;
}

// The names of the leaves the camera sees, in the order of the walk.
std::vector<std::string> visibleNames(zu::zuNode* scene, const zu::zuCamera* camera, Leaves& leaves)
{
    scene->UpdateGS();  // world transformations down the tree, world bounds back up
    zu::zuCuller culler;
    culler.SetCamera(camera);
    culler.ComputeVisibleSet(scene, nullptr, false);
    leaves = culler.GetVisibleSet();
    std::vector<std::string> names;
    for (zu::zuRenderableSpatial* leaf : leaves)
        names.push_back(leaf->GetName());
    return names;
}

// The file's one top-level object, as a node; null (and the messages printed) on failure.
zu::zuPointer<zu::zuNode> load(const std::string& path, const zu::zuMeshManager::Options& options)
{
    zu::zuPointer<zu::zuObject> object;
    std::vector<zu::zuErrorMessage> errors;
    zu::zuMeshManager& meshes = zu::zuIoManager::msInstance->getMeshManager();
    if (!meshes.loadMesh(object, path, nullptr, options, nullptr, &errors)) {
        for (const zu::zuErrorMessage& error : errors)
            std::fprintf(stderr, "%s\n", error.text.c_str());
        return nullptr;
    }
    if (!object->IsDerived(zu::zuNode::TYPE))
        return nullptr;
    return static_cast<zu::zuNode*>(object.get());
}

// The vertex and index buffers (and textures) the leaves draw with: the blocks a renderer needs.
std::vector<zu::zuDynamicLoadingResource*> blocksOf(const Leaves& leaves)
{
    std::vector<zu::zuDynamicLoadingResource*> blocks;
    std::vector<zu::zuDynamicLoadingResource*> resources;
    for (zu::zuRenderableSpatial* leaf : leaves) {
        leaf->getResources(resources);
        for (zu::zuDynamicLoadingResource* resource : resources)
            if (resource)
                blocks.push_back(resource);
    }
    return blocks;
}

std::string residentText(const Leaves& leaves)
{
    const std::vector<zu::zuDynamicLoadingResource*> blocks = blocksOf(leaves);
    size_t resident = 0;
    for (const zu::zuDynamicLoadingResource* block : blocks)
        resident += block->isCPUResident() ? 1 : 0;
    return std::to_string(resident) + " of their " + std::to_string(blocks.size()) + " blocks in memory";
}

int fail(const char* step)
{
    std::fprintf(stderr, "first_scene: %s failed\n", step);
    return 1;
}

int run(const std::string& path)
{
    zu::zuPointer<zu::zuNode> scene = buildScene();
    std::printf("build   %d rows of %d cubes\n", scene->getNbChildren(), 5);

    // At the origin, looking down +x with +z up (right is D x U = -y), 60 degrees wide.
    zu::zuPointer<zu::zuCamera> camera = new zu::zuCamera(true);
    camera->SetFrame(Vector(0, 0, 0), Vector(1, 0, 0), Vector(0, 0, 1), Vector(0, -1, 0));
    camera->SetFrustum(60.0f, 1.0f, 0.5f, 100.0f);

    Leaves leaves;
    const std::vector<std::string> seen = visibleNames(scene, camera, leaves);
    const zu::zuBoundingVolume& bound = scene->GetWorldBound();
    std::printf("update  world bound centred at (%g, %g, %g), radius %g\n", bound.GetCenter().X(),
                bound.GetCenter().Y(), bound.GetCenter().Z(), bound.GetRadius());
    std::printf("cull    %zu of 10 cubes visible:", seen.size());
    for (const std::string& name : seen)
        std::printf(" [%s]", name.c_str());
    std::printf("\n");

    // The mesh manager picks the object-stream driver for ".mvk" and writes the newest
    // stream version unless the options name another.
    zu::zuMeshManager& meshes = zu::zuIoManager::msInstance->getMeshManager();
    if (!meshes.saveMesh(scene.get(), path, nullptr, {}, false))
        return fail("save");
    std::printf("save    %s, %ju bytes\n", path.c_str(), static_cast<uintmax_t>(std::filesystem::file_size(path)));

    zu::zuPointer<zu::zuNode> full = load(path, {});
    if (!full || visibleNames(full, camera, leaves) != seen)
        return fail("full load");
    std::printf("load    the same %zu cubes visible, %s\n", seen.size(), residentText(leaves).c_str());

    // Left in the file, the blocks are read back for what the camera sees only: in one
    // call that opens the file once and reads neighbouring blocks together.
    zu::zuMeshManager::Options lazy;
    lazy[zu::zuMeshManager::sOptionLoadGeometry] = false;
    zu::zuPointer<zu::zuNode> partial = load(path, lazy);
    if (!partial || visibleNames(partial, camera, leaves) != seen)
        return fail("lazy load");
    std::printf("lazy    the same %zu cubes visible, %s\n", seen.size(), residentText(leaves).c_str());
    const std::vector<zu::zuDynamicLoadingResource*> blocks = blocksOf(leaves);
    if (zu::zuRendererInterface::LoadCPUData(blocks) != blocks.size())
        return fail("read-back");
    std::printf("read    %s\n", residentText(leaves).c_str());
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc > 2) {
        std::fprintf(stderr, "usage: first_scene [FILE.mvk]\n");
        return 2;
    }
    const bool keep = argc == 2;
    const std::string path = keep ? argv[1]
                                  : (std::filesystem::temp_directory_path()
                                     / ("first_scene-" + std::to_string(getpid()) + ".mvk")).string();

    zu::initializeZuSceneGraph();  // once, before anything is created or loaded
    const int status = run(path);
    zu::terminateZuSceneGraph();   // after every object of the library is released
    if (!keep)
        std::filesystem::remove(path);
    return status;
}
