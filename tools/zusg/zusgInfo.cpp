// zusg info FILE [--lazy]: what a model file holds, loaded as an application loads it.
//
// Loads the file through the mesh manager (any format it has a driver for), updates the
// trees and prints: the file and its format (with the stream version of an object stream),
// the time the load took, the objects by type (the spatial objects of the trees and the
// buffers and states their leaves hold, each shared one once), the parts (drawable leaves),
// their triangles and vertices, the world bound, and the data blocks: how many bytes are in
// memory and how many were left in the file. --lazy leaves the blocks in the file, as a
// viewer of a large model does.

#include "zusgCommand.h"
#include "zusgFieldText.h"
#include "zusgModel.h"
#include "zusgText.h"

#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/scenegraph/zuBaseGeometry.h>
#include <zuSceneGraph/states/zuGlobalState.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace zusg {

namespace {

struct Totals {
    std::map<std::string, uint64_t> types;
    uint64_t objects = 0;
    uint64_t parts = 0;
    uint64_t triangles = 0;
    uint64_t vertices = 0;
    uint64_t blocks = 0;
    uint64_t residentBytes = 0;
    uint64_t fileBytes = 0;  // of the blocks left in the file
    zu::zuBoundingVolume bound;
};

// Counts a shared object (buffer, state) once, however many leaves hold it.
void countShared(const zu::zuObject* object, std::set<const zu::zuObject*>& seen, Totals& totals)
{
    if (object && seen.insert(object).second) {
        ++totals.types[object->GetType().GetName()];
        ++totals.objects;
    }
}

Totals measure(const Model& model)
{
    Totals totals;
    std::set<const zu::zuObject*> shared;
    std::set<const zu::zuDynamicLoadingResource*> blocks;
    std::vector<zu::zuDynamicLoadingResource*> resources;
    for (const TreeEntry& entry : flattenTrees(model.roots)) {
        const zu::zuSpatial& object = *entry.object;
        ++totals.types[object.GetType().GetName()];
        ++totals.objects;
        if (entry.depth == 0)
            totals.bound.growToContainBox(object.GetWorldBound());
        if (!object.IsDerived(zu::zuRenderableSpatial::TYPE))
            continue;
        ++totals.parts;
        totals.triangles += triangleCount(object);
        if (object.IsDerived(zu::zuBaseGeometry::TYPE)) {
            const auto& leaf = static_cast<const zu::zuBaseGeometry&>(object);
            if (const zu::zuVertexBuffer* vertices = leaf.GetVertices())
                totals.vertices += static_cast<uint64_t>(std::max(vertices->GetVertexQuantity(), 0));
            countShared(leaf.GetVertices(), shared, totals);
            countShared(leaf.GetIndices(), shared, totals);
            for (int i = 1; i <= leaf.getGlobalStateQuantity(); ++i)
                countShared(leaf.getGlobalState(i), shared, totals);
        }
        static_cast<const zu::zuRenderableSpatial&>(object).getResources(resources);
        for (const zu::zuDynamicLoadingResource* resource : resources)
            if (resource && blocks.insert(resource).second) {
                ++totals.blocks;
                (resource->isCPUResident() ? totals.residentBytes : totals.fileBytes) += resource->getCPUSize();
            }
    }
    return totals;
}

std::string formatOf(const std::string& path)
{
    if (!isStreamFile(path))
        return zu::zuMeshManager::GetLoadExtension(path) == "obj" ? "OBJ" : zu::zuMeshManager::GetLoadExtension(path);
    const zu::zuStreamVersion version = readStreamVersion(path);
    char text[64];
    std::snprintf(text, sizeof text, "object stream, MVK %d.%02d", version.GetMajor(), version.GetMinor());
    return text;
}

void printLine(const char* label, const std::string& value)
{
    std::printf("%-11s %s\n", label, value.c_str());
}

} // namespace

int runInfo(const std::vector<std::string>& arguments)
{
    std::string path;
    bool lazy = false;
    for (const std::string& argument : arguments) {
        if (argument == "--lazy")
            lazy = true;
        else if (path.empty() && !argument.empty() && argument[0] != '-')
            path = argument;
        else
            return Usage;
    }
    if (path.empty())
        return Usage;

    Model model;
    zu::zuMeshManager::Options options;
    if (lazy)
        options[zu::zuMeshManager::sOptionLoadGeometry] = false;
    if (const int status = loadModel(path, options, model); status != Success)
        return status;
    const Totals totals = measure(model);

    std::error_code error;
    const uintmax_t size = std::filesystem::file_size(path, error);
    printLine("file", path + (error ? "" : ", " + counted(size, "byte")));
    printLine("format", formatOf(path));
    printLine("load", duration(model.milliseconds) + (lazy ? ", blocks left in the file" : ""));
    printLine("objects", grouped(totals.objects) + " (" + counted(model.objects.size(), "top-level object")
                             + ")");
    for (const auto& [type, count] : totals.types)
        std::printf("  %-36s %12s\n", type.c_str(), grouped(count).c_str());
    printLine("parts", grouped(totals.parts));
    printLine("triangles", grouped(totals.triangles));
    printLine("vertices", grouped(totals.vertices));
    if (totals.bound.isValid()) {
        const Wm4::Vector3<float>& centre = totals.bound.GetCenter();
        const Wm4::Vector3<float>& extents = totals.bound.GetExtents();
        printLine("bound", vector3(centre - extents) + " to " + vector3(centre + extents));
    } else {
        printLine("bound", "none (nothing with a bound)");
    }
    printLine("blocks", counted(totals.blocks, "block") + ": " + counted(totals.residentBytes, "byte")
                            + " in memory, " + counted(totals.fileBytes, "byte") + " left in the file");
    return Success;
}

} // namespace zusg
