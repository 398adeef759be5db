// zusg tree FILE [--depth N] [--transforms]: the trees of a model file, one line per object.
//
// Each line, indented two spaces per level: the object's name in quotes (or "(unnamed)"),
// its type and the triangles it draws, for a grouping node those of its whole subtree. With
// --depth N the levels below N (0: the top-level objects only) are left out, and a node
// whose children are left out says how many objects lie below it. With --transforms a
// second line under each object shows its local transformation.

#include "zusgCommand.h"
#include "zusgFieldText.h"
#include "zusgModel.h"
#include "zusgText.h"

#include <zuSceneGraph/math/zuGenericTransformation.h>

#include <climits>
#include <cstdio>
#include <string>
#include <vector>

namespace zusg {

namespace {

constexpr size_t MAX_NAME_LENGTH = 120;

std::string transformText(const zu::zuGenericTransformation<float>& transformation)
{
    if (transformation.IsIdentity())
        return "identity";
    const Wm4::Matrix3<float>& m = transformation.GetMatrix();
    std::string text = "translate " + vector3(transformation.GetTranslate()) + ", "
                     + (transformation.IsRSMatrix() ? "rotate (" : "matrix (");
    for (int row = 0; row < 3; ++row)
        text += (row ? " | " : "") + number(m(row, 0)) + " " + number(m(row, 1)) + " " + number(m(row, 2));
    text += ")";
    if (transformation.IsRSMatrix())
        text += ", scale " + vector3(transformation.GetScale());
    return text;
}

} // namespace

int runTree(const std::vector<std::string>& arguments)
{
    std::string path;
    int maxDepth = INT_MAX;
    bool transforms = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--depth") {
            const auto depth = i + 1 < arguments.size() ? parseWhole(arguments[++i], 0, INT_MAX) : std::nullopt;
            if (!depth) {
                std::fprintf(stderr, "zusg tree: --depth takes a whole number from 0\n");
                return Usage;
            }
            maxDepth = static_cast<int>(*depth);
        } else if (argument == "--transforms") {
            transforms = true;
        } else if (path.empty() && !argument.empty() && argument[0] != '-') {
            path = argument;
        } else {
            return Usage;
        }
    }
    if (path.empty())
        return Usage;

    Model model;
    zu::zuMeshManager::Options options;
    // The tree needs no vertex: the triangle counts are in the records.
    options[zu::zuMeshManager::sOptionLoadGeometry] = false;
    if (const int status = loadModel(path, options, model); status != Success)
        return status;

    const std::vector<TreeEntry> entries = flattenTrees(model.roots);
    // Subtree totals: a child comes after its parent, so a backward pass adds each entry to
    // its parent after its own children were added to it.
    std::vector<uint64_t> triangles(entries.size()), below(entries.size(), 0);
    for (size_t i = 0; i < entries.size(); ++i)
        triangles[i] = triangleCount(*entries[i].object);
    for (size_t i = entries.size(); i-- > 0;)
        if (entries[i].parent >= 0) {
            triangles[static_cast<size_t>(entries[i].parent)] += triangles[i];
            below[static_cast<size_t>(entries[i].parent)] += below[i] + 1;
        }

    std::string line;
    for (size_t i = 0; i < entries.size(); ++i) {
        const TreeEntry& entry = entries[i];
        if (entry.depth > maxDepth)
            continue;
        const zu::zuSpatial& object = *entry.object;
        line.assign(2 * static_cast<size_t>(entry.depth), ' ');
        line += object.GetName().empty() ? "(unnamed)" : quotedText(object.GetName(), MAX_NAME_LENGTH);
        line.append(" ").append(object.GetType().GetName()).append(", ").append(counted(triangles[i], "triangle"));
        if (entry.depth == maxDepth && below[i] > 0)
            line.append(" (").append(counted(below[i], "object")).append(" below)");
        std::printf("%s\n", line.c_str());
        if (transforms)
            std::printf("%*s  local: %s\n", 2 * entry.depth, "", transformText(object.GetLocalTransform()).c_str());
    }
    return Success;
}

} // namespace zusg
