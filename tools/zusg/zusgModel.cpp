#include "zusgModel.h"

#include "zusgCommand.h"
#include "zusgProgress.h"
#include "zusgText.h"

#include <zuSceneGraph/io/zuIoManager.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuTriangles.h>
#include <zuSystem/zuDirUtils.h>
#include <zuSystem/zuOutputStreamVersion.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

#include <unistd.h>

namespace zusg {

namespace {

// What the header field of a stream can hold: "MVK 6.32" and its NUL, or the longer field of
// old streams.
constexpr int HEADER_BYTES = zu::zuStreamVersion::LENGTH_V4;

std::string knownExtensions()
{
    std::string list;
    for (const std::string& extension : zu::zuIoManager::msInstance->getMeshManager().getLoadExtensions())
        list += (list.empty() ? "" : ", ") + extension;
    return list;
}

} // namespace

bool isStreamFile(const std::string& path)
{
    const std::string extension = zu::zuMeshManager::GetLoadExtension(path);
    return extension == "mvk" || extension == "tqb" || extension == "zus" || extension == "kv";
}

zu::zuStreamVersion readStreamVersion(const std::string& path)
{
    char header[HEADER_BYTES] = {};
    std::ifstream in(path, std::ios::binary);
    in.read(header, HEADER_BYTES);
    const auto length = static_cast<int>(in.gcount());
    const void* end = std::memchr(header, '\0', static_cast<size_t>(length));
    if (length < 5 || std::memcmp(header, "MVK ", 4) != 0 || !end)
        return {};
    return zu::zuStreamVersion(header, static_cast<int>(static_cast<const char*>(end) - header) + 1);
}

void warnIfNewerThanLibrary(const std::string& path, const zu::zuStreamVersion& version)
{
    const zu::zuStreamVersion newest(zu::zuMajorOutputStreamVersion, zu::zuMinorOutputStreamVersion);
    if (!version.IsValid() || version <= newest)
        return;
    char text[96];
    std::snprintf(text, sizeof text, "the stream version %d.%02d is newer than this library's %d.%02d",
                  version.GetMajor(), version.GetMinor(), newest.GetMajor(), newest.GetMinor());
    std::cerr << "zusg: " << path << ": warning: " << text << "\n";
}

bool checkInputFile(const std::string& path)
{
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    std::string problem;
    if (status.type() == std::filesystem::file_type::not_found)
        problem = "no such file";
    else if (error)
        problem = error.message();
    else if (status.type() == std::filesystem::file_type::directory)
        problem = "is a directory";
    else if (status.type() != std::filesystem::file_type::regular)
        problem = "is not a regular file";
    else if (!std::ifstream(path, std::ios::binary))
        problem = std::strerror(errno);
    if (problem.empty())
        return true;
    std::cerr << "zusg: " << path << ": " << problem << "\n";
    return false;
}

void printReports(const std::string& path, const std::vector<zu::zuErrorMessage>& reports, bool failed)
{
    const char* kind = failed ? "error" : "warning";
    const bool stream = isStreamFile(path);
    for (const zu::zuErrorMessage& report : reports) {
        std::cerr << "zusg: ";
        if (!stream) {
            std::cerr << path;
            if (report.line >= 0)
                std::cerr << ":" << report.line;
            std::cerr << ": ";
        }
        std::cerr << kind << ": " << report.text << "\n";
    }
}

int loadModel(const std::string& path, const zu::zuMeshManager::Options& options, Model& model,
              bool progressFromTheStart)
{
    if (!checkInputFile(path))
        return Failure;
    zu::zuMeshManager& manager = zu::zuIoManager::msInstance->getMeshManager();
    const std::string extension = zu::zuMeshManager::GetLoadExtension(path);
    if (!manager.getLoadExtensions().count(extension)) {
        std::cerr << "zusg: " << path << ": no driver loads files with the extension \"" << extension
                  << "\" (known: " << knownExtensions() << ")\n";
        return Failure;
    }
    if (isStreamFile(path))
        warnIfNewerThanLibrary(path, readStreamVersion(path));

    std::vector<zu::zuErrorMessage> reports;
    bool loaded = false;
    {
        ProgressBar progress("loading " + zu::zuDirUtils::ExtractFileName(path), progressFromTheStart);
        const auto start = std::chrono::steady_clock::now();
        loaded = manager.loadMeshes(model.objects, path, &progress, options, nullptr, &reports);
        model.milliseconds =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    }
    if (InterruptScope::interrupted()) {
        std::cerr << "zusg: interrupted\n";
        return Interrupted;
    }
    printReports(path, reports, !loaded);
    if (!loaded) {
        if (reports.empty())
            std::cerr << "zusg: " << path << ": the file cannot be loaded\n";
        return Failure;
    }
    for (const zu::zuPointer<zu::zuObject>& object : model.objects)
        if (object && object->IsDerived(zu::zuSpatial::TYPE)) {
            auto* root = static_cast<zu::zuSpatial*>(object.get());
            root->UpdateGS();
            model.roots.push_back(root);
        }
    return Success;
}

std::vector<TreeEntry> flattenTrees(const std::vector<zu::zuSpatial*>& roots)
{
    std::vector<TreeEntry> entries;
    // Pending objects, the last pushed first: children go on in reverse so that they come
    // off in slot order.
    std::vector<TreeEntry> stack;
    for (auto root = roots.rbegin(); root != roots.rend(); ++root)
        stack.push_back({*root, 0, -1});
    while (!stack.empty()) {
        const TreeEntry entry = stack.back();
        stack.pop_back();
        const auto index = static_cast<int64_t>(entries.size());
        entries.push_back(entry);
        if (!entry.object->IsDerived(zu::zuNode::TYPE))
            continue;
        const auto* node = static_cast<const zu::zuNode*>(entry.object);
        for (int i = node->getNbChildren() - 1; i >= 0; --i)
            if (const zu::zuSpatial* child = node->getChild(i))
                stack.push_back({child, entry.depth + 1, index});
    }
    return entries;
}

uint64_t triangleCount(const zu::zuSpatial& object)
{
    if (!object.IsDerived(zu::zuTriangles::TYPE))
        return 0;
    const int quantity = static_cast<const zu::zuTriangles&>(object).GetTriangleQuantity();
    return quantity > 0 ? static_cast<uint64_t>(quantity) : 0;
}

bool writeFileSafely(const std::string& path, const std::string& text)
{
    namespace fs = std::filesystem;
    std::error_code error;
    if (fs::is_directory(path, error)) {
        std::cerr << "zusg: " << path << ": is a directory\n";
        return false;
    }
    const fs::path target(path);
    fs::path temporary = target;
    temporary.replace_filename(std::string(".").append(target.filename().string()).append(".zusg-").append(
        std::to_string(::getpid())));
    std::string reason;
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        if (out) {
            out.write(text.data(), static_cast<std::streamsize>(text.size()));
            out.close();
        }
        if (out.fail())
            reason = std::strerror(errno);
    }
    if (reason.empty() && !InterruptScope::interrupted()) {
        fs::rename(temporary, target, error);
        if (error)
            reason = error.message();
    }
    if (!reason.empty() || InterruptScope::interrupted()) {
        fs::remove(temporary, error);
        if (!reason.empty())
            std::cerr << "zusg: " << path << ": cannot be written: " << reason << "\n";
        return false;
    }
    return true;
}

} // namespace zusg
