// zusg convert IN OUT [--version M.m] [--option key=value ...] [--lazy] [--progress]: any
// format the mesh manager loads to any format it saves.
//
// IN is loaded and OUT saved through the mesh manager, the options given to both (each
// driver reads the keys it knows: see the headers of the drivers). --version names the
// stream version of an object-stream OUT (the driver's "streamversion"); --lazy leaves the
// blocks of an object-stream IN in its file, and the save reads each back as it writes it,
// so that a large model converts in little memory. Several top-level objects go to a format
// that holds one tree (OBJ) under a new node. The drivers' reports are printed with their
// places; a save that fails or is cancelled leaves no partial OUT (the drivers write a
// temporary file and rename it once complete). --progress shows the progress of the load
// and the save from their start, where a quick step would otherwise show none (for logs).

#include "zusgCommand.h"
#include "zusgModel.h"
#include "zusgText.h"

#include <zuSceneGraph/io/zuFileStreamMeshDriver.h>
#include <zuSceneGraph/io/zuIoManager.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSystem/zuDirUtils.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <regex>
#include <string>
#include <vector>

namespace zusg {

namespace {

struct Arguments {
    std::string in, out, version;
    zu::zuMeshManager::Options options;
    bool progress = false;
};

bool parseArguments(const std::vector<std::string>& arguments, Arguments& parsed)
{
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--lazy") {
            parsed.options[zu::zuMeshManager::sOptionLoadGeometry] = false;
        } else if (argument == "--progress") {
            parsed.progress = true;
        } else if (argument == "--version" || argument == "--option") {
            if (i + 1 == arguments.size())
                return false;
            const std::string& value = arguments[++i];
            if (argument == "--version") {
                if (!std::regex_match(value, std::regex("[0-9]{1,5}\\.[0-9]{1,5}"))) {
                    std::cerr << "zusg convert: --version takes a stream version major.minor, as 6.32\n";
                    return false;
                }
                parsed.version = value;
                continue;
            }
            const size_t equals = value.find('=');
            if (equals == 0 || equals == std::string::npos) {
                std::cerr << "zusg convert: --option takes key=value, not '" << value << "'\n";
                return false;
            }
            parsed.options[value.substr(0, equals)] = value.substr(equals + 1);
        } else if (!argument.empty() && argument[0] != '-' && (parsed.in.empty() || parsed.out.empty())) {
            (parsed.in.empty() ? parsed.in : parsed.out) = argument;
        } else {
            return false;
        }
    }
    if (parsed.out.empty())
        return false;
    if (!parsed.version.empty()) {
        if (!isStreamFile(parsed.out)) {
            std::cerr << "zusg convert: --version applies to object-stream files (mvk, tqb, zus, kv) only\n";
            return false;
        }
        parsed.options[zu::zuFileStreamMeshDriver::sOptionStreamVersion] = parsed.version;
    }
    return true;
}

double since(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

int runConvert(const std::vector<std::string>& arguments)
{
    Arguments parsed;
    if (!parseArguments(arguments, parsed))
        return Usage;

    Model model;
    zu::zuMeshManager& manager = zu::zuIoManager::msInstance->getMeshManager();
    zu::zuCoreMeshDriver* saver = manager.getSaveDriver(parsed.out, parsed.options);
    std::error_code error;
    if (std::filesystem::is_directory(parsed.out, error)) {
        std::cerr << "zusg: " << parsed.out << ": is a directory\n";
        return Failure;
    }
    if (!saver) {
        std::string known;
        for (const std::string& extension : manager.getSaveExtensions())
            known += (known.empty() ? "" : ", ") + extension;
        std::cerr << "zusg: " << parsed.out << ": no driver saves files with the extension \""
                  << zu::zuDirUtils::ExtractFileExtension(parsed.out) << "\" (known: " << known << ")\n";
        return Failure;
    }
    if (const int status = loadModel(parsed.in, parsed.options, model, parsed.progress); status != Success)
        return status;

    zu::zuMeshManager::ObjectList objects = model.objects;
    if (!isStreamFile(parsed.out) && model.roots.size() > 1) {
        zu::zuPointer<zu::zuNode> group = new zu::zuNode();
        for (zu::zuSpatial* root : model.roots)
            group->attachChild(root);
        group->UpdateGS();
        objects = {zu::zuPointer<zu::zuObject>(group.get())};
    }
    if (InterruptScope::interrupted()) {
        std::cerr << "zusg: interrupted\n";
        return Interrupted;
    }
    bool saved = false;
    const auto start = std::chrono::steady_clock::now();
    {
        ProgressBar progress("saving " + zu::zuDirUtils::ExtractFileName(parsed.out), parsed.progress);
        saved = manager.saveMeshes(objects, parsed.out, &progress, parsed.options, false);
    }
    const double saveTime = since(start);
    if (!saved && InterruptScope::interrupted()) {
        std::cerr << "zusg: interrupted, " << parsed.out << " not written\n";
        return Interrupted;
    }
    std::vector<zu::zuErrorMessage> reports;
    saver->getLastErrorsAndWarnings(reports);
    printReports(parsed.out, reports, !saved);
    if (!saved) {
        if (reports.empty())
            std::cerr << "zusg: " << parsed.out << ": the objects cannot be saved\n";
        return Failure;
    }
    uint64_t triangles = 0;
    for (const TreeEntry& entry : flattenTrees(model.roots))
        triangles += triangleCount(*entry.object);
    std::cout << "converted " << parsed.in << " to " << parsed.out << ": "
              << counted(model.objects.size(), "top-level object") << ", " << counted(triangles, "triangle")
              << "; load " << duration(model.milliseconds) << ", save " << duration(saveTime) << "\n";
    return Success;
}

} // namespace zusg
