// zusg pick FILE --eye x,y,z --dir x,y,z: the nearest triangle a ray meets in a scene file.
//
// Loads the file through the mesh manager (any mesh file it has a driver for), updates the
// top-level objects that are spatial objects (UpdateGS) and picks along the ray from the eye
// in the given direction through each, keeping the nearest hit. Prints the leaf's name (or
// "(unnamed)"), its type, the triangle, the world point and normal and the distance; "no
// hit" when the ray meets nothing. The blocks of a stream file stay in the file; the picker
// reads back those of the leaves the ray reaches.

#include "zusgCommand.h"
#include "zusgLibraryScope.h"
#include "zusgText.h"

#include <zuSceneGraph/scenegraph/zuRenderableSpatial.h>
#include <zuSceneGraph/io/zuIoManager.h>
#include <zuSceneGraph/io/zuMeshManager.h>
#include <zuSceneGraph/spatial/zuPicker.h>

#include <filesystem>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace zusg {

namespace {

std::string vectorText(const Wm4::Vector3<float>& v)
{
    std::ostringstream out;
    out << v[0] << ", " << v[1] << ", " << v[2];
    return out.str();
}

} // namespace

int runPick(const std::vector<std::string>& arguments)
{
    std::string path;
    std::optional<Wm4::Vector3<float>> eye, direction;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--eye" || argument == "--dir") {
            if (i + 1 == arguments.size())
                return Usage;
            auto value = parseVector(arguments[++i]);
            if (!value) {
                std::cerr << "zusg pick: " << argument << " takes three numbers x,y,z, not '" << arguments[i] << "'\n";
                return Usage;
            }
            (argument == "--eye" ? eye : direction) = value;
        } else if (path.empty() && !argument.empty() && argument[0] != '-') {
            path = argument;
        } else {
            return Usage;
        }
    }
    if (path.empty() || !eye || !direction)
        return Usage;
    if (direction->SquaredLength() == 0.0f) {
        std::cerr << "zusg pick: --dir must not be the zero vector\n";
        return Usage;
    }

    LibraryScope library;
    if (!std::filesystem::is_regular_file(path)) {
        std::cerr << "zusg: " << path << ": cannot open the file\n";
        return Failure;
    }
    // The blocks stay in the file: the picker reads back those of the leaves the ray reaches.
    zu::zuMeshManager::ObjectList objects;
    std::vector<zu::zuErrorMessage> errors;
    zu::zuMeshManager::Options options;
    options[zu::zuMeshManager::sOptionLoadGeometry] = false;
    if (!zu::zuIoManager::msInstance->getMeshManager().loadMeshes(objects, path, nullptr, options, nullptr, &errors)) {
        std::cerr << "zusg: " << path << ": the objects cannot be loaded\n";
        for (const zu::zuErrorMessage& error : errors)
            std::cerr << "    " << error.text << "\n";
        return Failure;
    }
    zu::zuPicker picker;
    std::optional<zu::zuPickRecord> nearest;
    for (const zu::zuPointer<zu::zuObject>& object : objects) {
        if (!object || !object->IsDerived(zu::zuSpatial::TYPE))
            continue;
        zu::zuSpatial* root = static_cast<zu::zuSpatial*>(object.get());
        root->UpdateGS();
        if (picker.PickRay(root, *eye, *direction) && (!nearest || picker.GetRecords()[0].distance < nearest->distance))
            nearest = picker.GetRecords()[0];
    }
    if (!nearest) {
        std::cout << "no hit\n";
        return Success;
    }
    const std::string& name = nearest->leaf->GetName();
    std::cout << "leaf      " << (name.empty() ? "(unnamed)" : name) << " (" << nearest->leaf->GetType().GetName()
              << ")\n"
              << "triangle  " << nearest->triangle << "\n"
              << "point     " << vectorText(nearest->point) << "\n"
              << "normal    " << vectorText(nearest->normal) << "\n"
              << "distance  " << nearest->distance << "\n";
    return Success;
}

} // namespace zusg
