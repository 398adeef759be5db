// load_obj: a model file through the mesh manager, and the parts a camera sees of it.
//
// Loads FILE with the driver the mesh manager chooses by its extension (the OBJ driver for
// ".obj"; an .mvk file loads the same way), prints the driver's reports, attaches what came
// back to a scene, updates it, and looks at the middle of the model from in front: a camera
// one and a half bound radii from the centre with a 45-degree view, so the ends of a long
// model fall outside. Lists every part (geometry leaf) with its triangles and whether the
// camera sees it.
//
//     load_obj FILE               (examples/parts.obj: a row of five cubes, three seen)

#include <zuSceneGraph/zuSceneGraph.h>
#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/io/zuIoManager.h>
#include <zuSceneGraph/scenegraph/zuBaseLODPolicy.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuTriangles.h>
#include <zuSceneGraph/states/zuCamera.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using Vector = Wm4::Vector3<float>;

// The geometry leaves below `root`, depth-first in child order, without recursion (a file
// may nest deeply).
std::vector<zu::zuBaseGeometry*> partsOf(zu::zuSpatial* root)
{
    std::vector<zu::zuBaseGeometry*> parts;
    std::vector<zu::zuSpatial*> pending{root};
    while (!pending.empty()) {
        zu::zuSpatial* object = pending.back();
        pending.pop_back();
        if (object->IsDerived(zu::zuBaseGeometry::TYPE)) {
            parts.push_back(static_cast<zu::zuBaseGeometry*>(object));
        } else if (object->IsDerived(zu::zuNode::TYPE)) {
            const auto* node = static_cast<const zu::zuNode*>(object);
            for (int i = node->getNbChildren() - 1; i >= 0; --i)
                if (zu::zuSpatial* child = node->getChild(i))
                    pending.push_back(child);
        }
    }
    return parts;
}

int triangles(const zu::zuBaseGeometry* part)
{
    return part->IsDerived(zu::zuTriangles::TYPE) ? static_cast<const zu::zuTriangles*>(part)->GetTriangleQuantity()
                                                   : 0;
}

int run(const std::string& fileName)
{
    std::vector<zu::zuPointer<zu::zuObject>> objects;  // the file's top-level objects
    std::vector<zu::zuErrorMessage> reports;           // errors and warnings, with their lines
    zu::zuMeshManager& meshes = zu::zuIoManager::msInstance->getMeshManager();
    const bool loaded = meshes.loadMeshes(objects, fileName, nullptr, {}, nullptr, &reports);
    for (const zu::zuErrorMessage& report : reports)
        std::fprintf(stderr, "%s:%lld: %s\n", fileName.c_str(), static_cast<long long>(report.line),
                     report.text.c_str());
    if (!loaded) {
        std::fprintf(stderr, "load_obj: %s did not load (no driver for its extension, or a broken file)\n",
                     fileName.c_str());
        return 1;
    }

    // A scene for what came back: spatial objects have a place in it; anything else (a
    // material, a camera) would be the application's to use.
    zu::zuPointer<zu::zuNode> scene = new zu::zuNode;
    for (const zu::zuPointer<zu::zuObject>& object : objects)
        if (object->IsDerived(zu::zuSpatial::TYPE))
            scene->attachChild(static_cast<zu::zuSpatial*>(object.get()));
    scene->UpdateGS();
    const zu::zuBoundingVolume& bound = scene->GetWorldBound();
    if (!bound.isValid()) {
        std::fprintf(stderr, "load_obj: %s holds nothing to look at\n", fileName.c_str());
        return 1;
    }

    // Looking down +y with +z up (right is D x U = +x).
    const Vector direction(0, 1, 0);
    const float radius = std::max(bound.GetRadius(), 1e-3f);
    const Vector location = bound.GetCenter() - direction * (1.5f * radius);
    zu::zuPointer<zu::zuCamera> camera = new zu::zuCamera(true);
    camera->SetFrame(location, direction, Vector(0, 0, 1), Vector(1, 0, 0));
    camera->SetFrustum(45.0f, 1.0f, 0.01f * radius, 4.0f * radius);

    zu::zuCuller culler;
    culler.SetCamera(camera);
    // Level-of-detail nodes show the level the distance policy chooses (none without a policy).
    culler.ComputeVisibleSet(scene, zu::zuLODNode::GetBasePolicy(), false);
    const std::vector<zu::zuRenderableSpatial*>& visible = culler.GetVisibleSet();

    const std::vector<zu::zuBaseGeometry*> parts = partsOf(scene);
    std::printf("%s: top-level objects %zu, parts %zu, reports %zu\n", fileName.c_str(), objects.size(),
                parts.size(), reports.size());
    std::printf("camera at (%g, %g, %g) looking along +y\n", location.X(), location.Y(), location.Z());
    for (const zu::zuBaseGeometry* part : parts) {
        const bool seen = std::find(visible.begin(), visible.end(), part) != visible.end();
        std::printf("  %-8s %-24s %8d triangles\n", seen ? "visible" : "-", part->GetName().c_str(), triangles(part));
    }
    std::printf("%zu of %zu parts visible\n", visible.size(), parts.size());
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: load_obj FILE\n");
        return 2;
    }
    zu::initializeZuSceneGraph();
    const int status = run(argv[1]);
    zu::terminateZuSceneGraph();
    return status;
}
