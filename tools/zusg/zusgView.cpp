// zusg view FILE [-o OUT.svg] [--size WxH] [--eye x,y,z] [--target x,y,z] [--up x,y,z]
//           [--fov DEG] [--lazy] [--max-triangles N]: a picture of a model as SVG.
//
// Loads the file through the mesh manager, updates it, culls it from the camera and draws
// the visible parts with the library's SVG builder (zuSvgBuilder): flat-shaded triangles
// sorted back to front, lines, points; past the triangle limit each part's projected bound.
//
// The camera: by default it looks at the centre of the model's bound from the diagonal
// (+x, -y, +z), up +z, from the distance at which the bound's sphere just fits the field of
// view (vertical, 45 degrees by default; the horizontal one follows the picture's aspect).
// Each of --eye, --target and --up replaces its part of that; without --eye the eye keeps
// the default direction and distance from the target. The near and far planes enclose the
// bound. With --lazy the blocks stay in the file and only those of the visible parts are
// read back (none when the picture will be simplified anyway). OUT defaults to the file's
// base name with ".svg", in the current folder.

#include "zusgCommand.h"
#include "zusgFieldText.h"
#include "zusgModel.h"
#include "zusgText.h"
#include "zusgW1Assembly.h"

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/io/zuSvgBuilder.h>
#include <zuSceneGraph/states/zuCamera.h>
#include <zuSystem/zuDirUtils.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

namespace zusg {

namespace {

constexpr int MAX_SIZE = 16384;
constexpr float DEFAULT_FOV = 45.0f;

struct Arguments {
    std::string path, out;
    int width = zu::zuSvgBuilder::DEFAULT_WIDTH;
    int height = zu::zuSvgBuilder::DEFAULT_HEIGHT;
    std::optional<Wm4::Vector3<float>> eye, target, up;
    float fov = DEFAULT_FOV;
    bool lazy = false;
    uint64_t maxTriangles = zu::zuSvgBuilder::DEFAULT_TRIANGLE_LIMIT;
};

bool parseSize(const std::string& text, int& width, int& height)
{
    const size_t x = text.find('x');
    if (x == std::string::npos)
        return false;
    const auto w = parseWhole(text.substr(0, x), 1, MAX_SIZE);
    const auto h = parseWhole(text.substr(x + 1), 1, MAX_SIZE);
    if (!w || !h)
        return false;
    width = static_cast<int>(*w);
    height = static_cast<int>(*h);
    return true;
}

bool parseArguments(const std::vector<std::string>& arguments, Arguments& parsed)
{
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& option = arguments[i];
        if (option == "--lazy") {
            parsed.lazy = true;
            continue;
        }
        if (option.empty() || option[0] != '-') {
            if (!parsed.path.empty())
                return false;
            parsed.path = option;
            continue;
        }
        if (i + 1 == arguments.size())
            return false;
        const std::string& value = arguments[++i];
        bool good = true;
        if (option == "-o") {
            good = !value.empty();
            parsed.out = value;
        } else if (option == "--size") {
            good = parseSize(value, parsed.width, parsed.height);
        } else if (option == "--eye" || option == "--target" || option == "--up") {
            auto vector = parseVector(value);
            good = vector.has_value() && (option != "--up" || vector->SquaredLength() > 0.0f);
            (option == "--eye" ? parsed.eye : option == "--target" ? parsed.target : parsed.up) = vector;
        } else if (option == "--fov") {
            const auto fov = parseNumber(value);
            good = fov && *fov > 0.0f && *fov < 180.0f;
            parsed.fov = fov.value_or(0.0f);
        } else if (option == "--max-triangles") {
            const auto limit = parseWhole(value, 0, INT64_MAX);
            good = limit.has_value();
            parsed.maxTriangles = static_cast<uint64_t>(limit.value_or(0));
        } else {
            return false;
        }
        if (!good) {
            std::cerr << "zusg view: " << option << " does not take '" << value << "'\n";
            return false;
        }
    }
    return !parsed.path.empty();
}

// The camera of the arguments, with the defaults filled in from the bound.
zu::zuPointer<zu::zuCamera> makeCamera(const Arguments& arguments, const zu::zuBoundingVolume& bound)
{
    const Wm4::Vector3<float> centre = bound.isValid() ? bound.GetCenter() : Wm4::Vector3<float>(0, 0, 0);
    // A bound of one point still gets a picture of some size.
    const float radius = bound.isValid() && bound.GetRadius() > 0.0f ? bound.GetRadius() : 1.0f;
    const float aspect = static_cast<float>(arguments.width) / static_cast<float>(arguments.height);
    const float halfUp = 0.5f * arguments.fov * Wm4::Math<float>::DEG_TO_RAD;
    const float halfRight = std::atan(std::tan(halfUp) * aspect);
    const Wm4::Vector3<float> target = arguments.target.value_or(centre);
    Wm4::Vector3<float> up = arguments.up.value_or(Wm4::Vector3<float>(0, 0, 1));
    up.Normalize();

    Wm4::Vector3<float> eye;
    if (arguments.eye) {
        eye = *arguments.eye;
    } else {
        // Far enough that the sphere around the bound, seen from the target, fits both ways.
        const float fit = (radius + (target - centre).Length()) / std::sin(std::min(halfUp, halfRight));
        Wm4::Vector3<float> diagonal(1, -1, 1);
        diagonal.Normalize();
        eye = target + diagonal * fit;
    }
    Wm4::Vector3<float> direction = target - eye;
    if (direction.Normalize() == 0.0f)
        direction = Wm4::Vector3<float>(-1, 1, -1) / std::sqrt(3.0f);
    // An up along the view direction leaves no frame: take another world axis.
    if (std::fabs(direction.Dot(up)) > 0.999f)
        up = std::fabs(direction.Z()) < 0.9f ? Wm4::Vector3<float>(0, 0, 1) : Wm4::Vector3<float>(0, 1, 0);
    const Wm4::Vector3<float> right = direction.UnitCross(up);
    const Wm4::Vector3<float> trueUp = right.Cross(direction);

    const float toCentre = (centre - eye).Dot(direction);
    const float far = std::max(toCentre + radius * 1.01f, radius * 1e-3f);
    const float near = std::max(toCentre - radius * 1.01f, far * 1e-4f);
    zu::zuPointer<zu::zuCamera> camera = new zu::zuCamera(true);
    camera->SetFrame(eye, direction, trueUp, right);
    camera->SetFrustum(arguments.fov, aspect, near, far);
    return camera;
}

} // namespace

int runView(const std::vector<std::string>& arguments)
{
    Arguments parsed;
    if (!parseArguments(arguments, parsed))
        return Usage;
    if (parsed.out.empty())
        parsed.out = zu::zuDirUtils::ExtractFileBaseName(parsed.path) + ".svg";

    Model model;
    zu::zuMeshManager::Options options;
    if (parsed.lazy)
        options[zu::zuMeshManager::sOptionLoadGeometry] = false;
    if (const int status = loadModel(parsed.path, options, model); status != Success)
        return status;

    zu::zuBoundingVolume bound;
    for (const zu::zuSpatial* root : model.roots)
        bound.growToContainBox(root->GetWorldBound());
    const zu::zuPointer<zu::zuCamera> camera = makeCamera(parsed, bound);
    std::vector<zu::zuRenderableSpatial*> visible;
    zu::zuCuller culler;
    culler.SetCamera(camera);
    for (zu::zuSpatial* root : model.roots) {
        culler.ComputeVisibleSet(root, nullptr, false);
        visible.insert(visible.end(), culler.GetVisibleSet().begin(), culler.GetVisibleSet().end());
    }

    zu::zuSvgBuilder builder;
    builder.setCamera(*camera);
    builder.setViewport(parsed.width, parsed.height);
    builder.setTriangleLimit(parsed.maxTriangles);
    if (parsed.lazy && zu::zuSvgBuilder::countTriangles(visible) <= parsed.maxTriangles
        && readBack(visible) < 0)
        std::cerr << "zusg: " << parsed.path << ": warning: some blocks of the visible parts cannot be read back\n";
    std::string svg;
    bool built = false;
    {
        ProgressBar progress("drawing " + zu::zuDirUtils::ExtractFileName(parsed.out));
        built = builder.build(visible, svg, &progress);
    }
    if (!built || !writeFileSafely(parsed.out, svg)) {
        if (!InterruptScope::interrupted())
            return Failure;
        std::cerr << "zusg: interrupted, " << parsed.out << " not written\n";
        return Interrupted;
    }

    const zu::zuSvgBuilder::Report& report = builder.getReport();
    uint64_t parts = 0;
    for (const TreeEntry& entry : flattenTrees(model.roots))
        parts += entry.object->IsDerived(zu::zuRenderableSpatial::TYPE) ? 1 : 0;
    std::cout << "camera     eye " << vector3(camera->GetLocation()) << ", looking " << vector3(camera->GetDVector())
              << ", up " << vector3(camera->GetUVector()) << ", " << number(parsed.fov) << " degrees\n"
              << "visible    " << grouped(visible.size()) << " of " << counted(parts, "part") << "\n"
              << "drawn      " << counted(report.triangles, "triangle") << " (" << grouped(report.backFaces)
              << " facing away), " << counted(report.segments, "segment") << ", " << counted(report.points, "point")
              << ", " << counted(report.bounds, "bound") << "\n";
    if (!builder.getNote().empty())
        std::cout << "note       " << builder.getNote() << "\n";
    std::cout << "written    " << parsed.out << " (" << parsed.width << "x" << parsed.height << ")\n";
    return Success;
}

} // namespace zusg
