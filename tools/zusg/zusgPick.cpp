// zusg pick FILE --eye x,y,z --dir x,y,z: the nearest triangle a ray meets in a scene file.
//
// Loads the file's top-level objects, updates those that are spatial objects (UpdateGS) and
// picks along the ray from the eye in the given direction through each, keeping the
// nearest hit. Prints the leaf's name (or "(unnamed)"), its type, the triangle, the world
// point and normal and the distance; "no hit" when the ray meets nothing. Buffers are read
// with the file.

#include "zusgCommand.h"
#include "zusgLibraryScope.h"

#include <zuSceneGraph/scenegraph/zuRenderableSpatial.h>
#include <zuSceneGraph/spatial/zuPicker.h>
#include <zuSceneGraph/stream/zuFileStream.h>
#include <zuSystem/zuFileIoDevice.h>

#include <cmath>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace zusg {

namespace {

// "x,y,z", three finite numbers.
std::optional<Wm4::Vector3<float>> parseVector(const std::string& text)
{
    Wm4::Vector3<float> v;
    const char* cursor = text.c_str();
    for (int i = 0; i < 3; ++i) {
        char* end = nullptr;
        const float value = std::strtof(cursor, &end);
        if (end == cursor || !std::isfinite(value) || *end != (i < 2 ? ',' : '\0'))
            return std::nullopt;
        v[i] = value;
        cursor = end + (i < 2 ? 1 : 0);
    }
    return v;
}

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
    zu::zuFileStream stream;
    zu::zuFileIoDevice device(path, zu::zuFileIoDevice::ReadOnly);
    if (!device.isOpen()) {
        std::cerr << "zusg: " << path << ": cannot open the file\n";
        return Failure;
    }
    if (!stream.Load(device, path)) {
        std::cerr << "zusg: " << path << ": the objects cannot be loaded (the reason is written above)\n";
        return Failure;
    }
    zu::zuPicker picker;
    std::optional<zu::zuPickRecord> nearest;
    for (int i = 0; i < stream.GetObjectCount(); ++i) {
        zu::zuRttiInterface* object = stream.GetObjectAt(i);
        if (!object || !object->IsDerived(zu::zuSpatial::TYPE))
            continue;
        zu::zuSpatial* root = static_cast<zu::zuSpatial*>(object);
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
