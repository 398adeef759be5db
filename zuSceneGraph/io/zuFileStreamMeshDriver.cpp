#include <zuSceneGraph/io/zuFileStreamMeshDriver.h>

#include <zuSceneGraph/io/zuIoManager.h>
#include <zuSceneGraph/io/zuMeshManager.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/resources/zuImage.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuSemanticMetadata.h>
#include <zuSceneGraph/scenegraph/zuSpatial.h>
#include <zuSceneGraph/scenegraph/zuXRefNode.h>
#include <zuSceneGraph/stream/zuFileStream.h>
#include <zuSceneGraph/stream/zuStreamVersion.h>

#include <zuSystem/zuDirUtils.h>
#include <zuSystem/zuFileIoDevice.h>
#include <zuSystem/zuOutputStreamVersion.h>
#include <zuSystem/zuProgressNotifierGroupCloser.h>
#include <zuSystem/zuProgressNotifierInterface.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace zu {

const char* const zuFileStreamMeshDriver::sOptionStreamVersion = "streamversion";
const char* const zuFileStreamMeshDriver::sOriginalFileNameKey = "OriginalFileName";

namespace {

using ObjectList = zuCoreMeshDriver::ObjectList;
using Options = zuCoreMeshDriver::Options;

bool option(const Options& options, const char* key, bool defaultValue)
{
    const zuVariant value = options.value(key);
    return value.isValid() ? value.toBool(defaultValue) : defaultValue;
}

std::string textOption(const Options& options, const char* key)
{
    const zuVariant value = options.value(key);
    return value.getType() == zuVariant::String ? value.toString() : std::string();
}

// The newest version the library writes, and how a message names it.
const zuStreamVersion newestVersion(zuMajorOutputStreamVersion, zuMinorOutputStreamVersion);
const std::string newestVersionText =
    std::to_string(zuMajorOutputStreamVersion) + "." + std::to_string(zuMinorOutputStreamVersion);

bool cancelled(const zuProgressNotifierInterface* progress)
{
    return progress && progress->isCancelRequested();
}

// Leaves the blocks of the resource classes in the file for one load (their load policies
// false), and puts back the policies that were there before, whatever way the load ends.
class BlocksLeftInFile {
public:
    explicit BlocksLeftInFile(bool active)
    {
        if (!active)
            return;
        for (const zuRtti* type : {&zuVertexBuffer::TYPE, &zuIndexBuffer::TYPE, &zuImage::TYPE}) {
            Previous previous{type, false, true};
            previous.existed = zuDynamicLoadingResource::GetLoadPolicy(*type, previous.load);
            mPrevious.push_back(previous);
            zuDynamicLoadingResource::SetLoadPolicy(*type, false);
        }
    }
    ~BlocksLeftInFile()
    {
        for (const Previous& previous : mPrevious) {
            if (previous.existed)
                zuDynamicLoadingResource::SetLoadPolicy(*previous.type, previous.load);
            else
                zuDynamicLoadingResource::RemoveLoadPolicy(*previous.type);
        }
    }
    BlocksLeftInFile(const BlocksLeftInFile&) = delete;
    BlocksLeftInFile& operator=(const BlocksLeftInFile&) = delete;

private:
    struct Previous {
        const zuRtti* type;
        bool existed;
        bool load;
    };
    std::vector<Previous> mPrevious;
};

zuSpatial* asSpatial(zuObject* object)
{
    return object && object->IsDerived(zuSpatial::TYPE) ? static_cast<zuSpatial*>(object) : nullptr;
}

// Visits every spatial object of the trees under `roots`, each parent before its children,
// children in slot order, without recursion (a loaded tree may be deep). `visit` may empty
// the slots of the node it is given; the walk then skips them.
template <class Visit>
void forEachSpatial(const ObjectList& roots, Visit visit)
{
    std::vector<zuSpatial*> pending;
    for (auto root = roots.rbegin(); root != roots.rend(); ++root)
        if (zuSpatial* spatial = asSpatial(root->get()))
            pending.push_back(spatial);
    while (!pending.empty()) {
        zuSpatial* spatial = pending.back();
        pending.pop_back();
        visit(*spatial);
        if (!spatial->IsDerived(zuNode::TYPE))
            continue;
        const zuNode& node = static_cast<const zuNode&>(*spatial);
        for (int i = node.getNbChildren() - 1; i >= 0; --i)
            if (zuSpatial* child = node.getChild(i))
                pending.push_back(child);
    }
}

bool isHidden(const zuSpatial* spatial)
{
    return spatial && spatial->GetCullingMode() == zuSpatial::CULL_ALWAYS;
}

void dropHiddenObjects(ObjectList& roots)
{
    roots.erase(std::remove_if(roots.begin(), roots.end(),
                               [](const zuPointer<zuObject>& object) { return isHidden(asSpatial(object.get())); }),
                roots.end());
    forEachSpatial(roots, [](zuSpatial& spatial) {
        if (!spatial.IsDerived(zuNode::TYPE))
            return;
        zuNode& node = static_cast<zuNode&>(spatial);
        for (int i = 0; i < node.getNbChildren(); ++i)
            if (isHidden(node.getChild(i)))
                node.setChild(i, nullptr);
    });
}

void addFileName(const ObjectList& roots, const std::string& fileName)
{
    for (const zuPointer<zuObject>& object : roots) {
        zuSpatial* spatial = asSpatial(object.get());
        if (!spatial)
            continue;
        zuMetadataInterface* record = spatial->getMetadata(zuSemanticMetadata::TYPE_KEY);
        if (!record) {
            record = new zuSemanticMetadata;
            spatial->setMetadata(record);
        }
        // A record of another class under the semantic key is the application's: left alone.
        if (record->IsDerived(zuSemanticMetadata::TYPE))
            static_cast<zuSemanticMetadata*>(record)->setValue(zuFileStreamMeshDriver::sOriginalFileNameKey, fileName);
    }
}

// The files whose references are being loaded on this thread, outermost first (canonical
// paths), and how many referenced files the outermost load has read: what finds cycles and
// bounds the work, whichever driver instance the nested loads go through.
thread_local std::vector<std::string> tReferenceChain;
thread_local int tReferenceLoads = 0;

class ReferenceChainEntry {
public:
    explicit ReferenceChainEntry(const std::string& canonicalPath)
    {
        if (tReferenceChain.empty())
            tReferenceLoads = 0;
        tReferenceChain.push_back(canonicalPath);
    }
    ~ReferenceChainEntry() { tReferenceChain.pop_back(); }
    ReferenceChainEntry(const ReferenceChainEntry&) = delete;
    ReferenceChainEntry& operator=(const ReferenceChainEntry&) = delete;
};

std::string canonicalPath(const std::string& path)
{
    std::error_code error;
    const std::filesystem::path canonical = std::filesystem::canonical(path, error);
    return error ? std::string() : canonical.string();
}

// A reference names its file relative to the folder of the file that holds it; written on
// another system it may separate folders with '\\'.
std::string referencedPath(const std::string& holder, std::string reference)
{
    std::replace(reference.begin(), reference.end(), '\\', '/');
    if (!reference.empty() && reference.front() == '/')
        return reference;
    return zuDirUtils::ExtractDirectory(holder) + reference;
}

bool hasChildren(const zuNode& node)
{
    for (int i = 0; i < node.getNbChildren(); ++i)
        if (node.getChild(i))
            return true;
    return false;
}

// Puts back where the blocks of the resources were before a save that failed moved them to
// its new stream, so that blocks left in a file are still found.
void restoreMovedResources(const std::vector<zuBaseStream::MovedResource>& moved)
{
    for (const auto& [resource, position] : moved)
        resource->setStreamPosition(position);
}

// The version of a stream file's header, or 0.0 when the file does not begin with one.
zuStreamVersion headerVersion(const std::string& fileName)
{
    zuFileIoDevice file(fileName, zuFileIoDevice::ReadOnly);
    char header[zuStreamVersion::LENGTH_V4 + 1] = {};
    const int64_t got = file.isOpen() ? file.read(header, zuStreamVersion::LENGTH_V4) : -1;
    const char* end = got > 0 ? static_cast<const char*>(std::memchr(header, '\0', static_cast<size_t>(got))) : nullptr;
    if (!end || std::strncmp(header, "MVK ", 4) != 0)
        return zuStreamVersion();
    return zuStreamVersion(header, static_cast<int>(end - header) + 1);
}

// A name beside `target` that no file has: where a save writes before it replaces the target.
std::string temporaryPath(const std::string& target)
{
    static std::atomic<int> counter{0};
    const std::string stem = zuDirUtils::ExtractDirectory(target) + "." + zuDirUtils::ExtractFileName(target) + "."
        + std::to_string(getpid()) + ".";
    std::error_code error;
    std::string path;
    do
        path = stem + std::to_string(++counter) + ".partial";
    while (std::filesystem::exists(path, error));
    return path;
}

} // namespace

zuFileStreamMeshDriver::zuFileStreamMeshDriver()
{
    for (const char* extension : {"mvk", "tqb", "zus", "kv"}) {
        loadExtensions.insert(extension);
        saveExtensions.insert(extension);
    }
}

zuFileStreamMeshDriver::~zuFileStreamMeshDriver() = default;

bool zuFileStreamMeshDriver::fail(int64_t code, int64_t line, const std::string& text)
{
    addErrorMessage(code, line, text);
    return false;
}

bool zuFileStreamMeshDriver::loadMeshes(ObjectList& out, const std::string& fileName,
                                        zuProgressNotifierInterface* progress, const Options& options,
                                        zuCatalog<zuImage>& images)
{
    clearErrorMessages();
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(fileName, error);
    if (std::filesystem::is_directory(status))
        return fail(ERROR_FILE, -1, "Cannot load " + fileName + ": it is a directory");
    if (!std::filesystem::exists(status))
        return fail(ERROR_FILE, -1, "Cannot load " + fileName + ": no such file");
    // A pipe or a device would block the load, or never end it.
    if (!std::filesystem::is_regular_file(status))
        return fail(ERROR_FILE, -1, "Cannot load " + fileName + ": it is not a regular file");
    std::string path = fileName;
    const std::string sandbox = textOption(options, zuMeshManager::sSandboxDirectoryUtf8);
    if (!sandbox.empty()) {
        path = zuMeshManager::CopyFileToSandbox(fileName, sandbox);
        if (path.empty())
            return fail(ERROR_FILE, -1, "Cannot copy " + fileName + " into the sandbox directory " + sandbox);
    }
    zuFileIoDevice device(path, zuFileIoDevice::ReadOnly);
    if (!device.isOpen())
        return fail(ERROR_FILE, -1, "Cannot open " + path);
    return load(out, device, path, fileName, progress, options, images);
}

bool zuFileStreamMeshDriver::loadMeshes(ObjectList& out, zuIoDevice& device, zuProgressNotifierInterface* progress,
                                        const Options& options, zuCatalog<zuImage>& images)
{
    clearErrorMessages();
    // Only a file can hold blocks for later: another device's stream gets no name.
    const auto* file = dynamic_cast<const zuFileIoDevice*>(&device);
    const std::string path = file ? file->path() : std::string();
    return load(out, device, path, path, progress, options, images);
}

bool zuFileStreamMeshDriver::load(ObjectList& out, zuIoDevice& device, const std::string& path,
                                  const std::string& fileName, zuProgressNotifierInterface* progress,
                                  const Options& options, zuCatalog<zuImage>& images)
{
    const std::string shown = fileName.empty() ? std::string("the device") : fileName;
    const bool references = option(options, zuMeshManager::sOptionLoadXRef, false);
    // With references the load is two steps: the stream, then the referenced files.
    if (progress && references)
        progress->openGroup("Loading " + shown, 2);
    zuProgressNotifierGroupCloser closer(progress && references ? progress : nullptr);

    ObjectList loaded;
    {
        BlocksLeftInFile blocksLeftInFile(!option(options, zuMeshManager::sOptionLoadGeometry, true));
        zuFileStream stream(zuFileStream::DEFAULT_BLOCK_SIZE, &images);
        stream.SetProgressNotifier(progress);
        const bool complete = stream.Load(device, path);
        if (cancelled(progress))
            return fail(ERROR_CANCELLED, -1, "Loading " + shown + " was cancelled");
        if (!complete) {
            const std::string& reason = stream.GetErrorText();
            return fail(ERROR_STREAM, static_cast<int64_t>(stream.GetErrorOffset()),
                        "Cannot load " + shown + ": " + (reason.empty() ? "the stream is broken" : reason));
        }
        if (!stream.GetVersion().IsValid())
            return fail(ERROR_STREAM, 0, "Cannot load " + shown + ": it does not begin with an object stream header");
        for (int i = 0; i < stream.GetObjectCount(); ++i) {
            zuRttiInterface* object = stream.GetObjectAt(i);
            if (object->IsDerived(zuObject::TYPE))
                loaded.emplace_back(static_cast<zuObject*>(object));
        }
    }

    if (!option(options, zuMeshManager::sOptionLoadHiddenObjects, true))
        dropHiddenObjects(loaded);
    if (!option(options, zuMeshManager::sOptionLoadMetadata, true))
        forEachSpatial(loaded, [](zuSpatial& spatial) { spatial.removeAllMetadata(); });
    if (option(options, zuMeshManager::sOptionAddOriginalFileNameInMetadata, false) && !fileName.empty())
        addFileName(loaded, zuDirUtils::ExtractFileName(fileName));
    if (references && !loadReferences(loaded, fileName, progress, options, images))
        return false;
    out.insert(out.end(), loaded.begin(), loaded.end());
    return true;
}

bool zuFileStreamMeshDriver::loadReferences(ObjectList& loaded, const std::string& fileName,
                                            zuProgressNotifierInterface* progress, const Options& options,
                                            zuCatalog<zuImage>& images)
{
    std::vector<zuXRefNode*> nodes;
    forEachSpatial(loaded, [&](zuSpatial& spatial) {
        if (spatial.IsDerived(zuXRefNode::TYPE) && !hasChildren(static_cast<zuNode&>(spatial)))
            nodes.push_back(static_cast<zuXRefNode*>(&spatial));
    });
    if (progress)
        progress->openGroup("Loading references", static_cast<int64_t>(nodes.size()));
    zuProgressNotifierGroupCloser closer(progress);
    if (nodes.empty())
        return true;
    const std::string shown = fileName.empty() ? std::string("the device") : fileName;
    // A device that is not a file has no folder to resolve from: references are taken as
    // they are written.
    ReferenceChainEntry entry(fileName.empty() ? std::string() : canonicalPath(fileName));
    zuMeshManager* manager = zuIoManager::msInstance ? &zuIoManager::msInstance->getMeshManager() : nullptr;

    for (zuXRefNode* node : nodes) {
        const std::string path = referencedPath(fileName, node->GetReference());
        const std::string canonical = canonicalPath(path);
        const std::string failure = "Cannot load the reference " + path + " of " + shown + ": ";
        if (node->GetReference().empty())
            addErrorMessage(ERROR_REFERENCE, -1, failure + "the reference names no file");
        else if (canonical.empty())
            addErrorMessage(ERROR_REFERENCE, -1, failure + "no such file");
        else if (std::find(tReferenceChain.begin(), tReferenceChain.end(), canonical) != tReferenceChain.end())
            addErrorMessage(ERROR_REFERENCE, -1, failure + "it is part of a reference cycle");
        else if (tReferenceChain.size() >= static_cast<size_t>(MAX_REFERENCE_DEPTH))
            addErrorMessage(ERROR_REFERENCE, -1, failure + "references are nested too deeply");
        else if (tReferenceLoads >= MAX_REFERENCE_LOADS)
            addErrorMessage(ERROR_REFERENCE, -1, failure + "too many referenced files");
        else if (!manager)
            addErrorMessage(ERROR_REFERENCE, -1, failure + "the library is not started");
        else {
            ++tReferenceLoads;
            // The nested load may run through this very driver, whose reports it replaces.
            std::vector<zuErrorMessage> ownErrors = std::move(errors);
            std::vector<zuErrorMessage> nestedErrors;
            ObjectList children;
            const bool complete = manager->loadMeshes(children, path, progress, options, &images, &nestedErrors);
            errors = std::move(ownErrors);
            errors.insert(errors.end(), nestedErrors.begin(), nestedErrors.end());
            if (cancelled(progress))
                return fail(ERROR_CANCELLED, -1, "Loading " + shown + " was cancelled");
            if (!complete)
                addErrorMessage(ERROR_REFERENCE, -1, failure + "its load failed");
            for (const zuPointer<zuObject>& child : children)
                if (zuSpatial* spatial = asSpatial(child.get()))
                    node->attachChild(spatial);
        }
        if (progress)
            progress->step(1);
    }
    return true;
}

bool zuFileStreamMeshDriver::saveVersion(const Options& options, zuStreamVersion& version)
{
    version = newestVersion;
    const zuVariant value = options.value(sOptionStreamVersion);
    if (!value.isValid())
        return true;
    const std::string text = value.toString();
    if (value.getType() == zuVariant::String)
        version = zuStreamVersion(text.c_str(), static_cast<int>(text.size()));
    if (value.getType() != zuVariant::String || version < zuStreamVersion(6, 0) || version > newestVersion)
        return fail(ERROR_OPTION, -1,
                    "Cannot save: the option " + std::string(sOptionStreamVersion) + " is \"" + text
                        + "\"; it must name a stream version from 6.0 to " + newestVersionText
                        + " as \"major.minor\"");
    return true;
}

bool zuFileStreamMeshDriver::writeStream(zuFileStream& stream, const ObjectList& objects, zuIoDevice& device,
                                         const std::string& name, const zuStreamVersion& version,
                                         zuProgressNotifierInterface* progress, bool append,
                                         const std::string& shownName)
{
    stream.SetVersion(version);
    stream.SetProgressNotifier(progress);
    stream.keepMovedResources(true);
    for (const zuPointer<zuObject>& object : objects)
        if (object)
            stream.InsertTopLevel(object.get());
    if (stream.Save(device, name, append))
        return true;
    if (cancelled(progress))
        return fail(ERROR_CANCELLED, -1, "Saving " + shownName + " was cancelled");
    const std::string& reason = stream.GetErrorText();
    return fail(ERROR_FILE, -1, "Cannot save " + shownName + ": " + (reason.empty() ? "the device failed" : reason));
}

bool zuFileStreamMeshDriver::saveMeshes(const ObjectList& objects, const std::string& fileName,
                                        zuProgressNotifierInterface* progress, const Options& options, bool append)
{
    clearErrorMessages();
    zuStreamVersion version;
    if (!saveVersion(options, version))
        return false;
    std::error_code error;
    if (std::filesystem::is_directory(fileName, error))
        return fail(ERROR_FILE, -1, "Cannot save " + fileName + ": it is a directory");
    zuFileStream stream;
    // Writes the stream into `path`, opened with `mode`; a failed open, write or close is
    // reported with the system's reason.
    const auto writeFile = [&](const std::string& path, zuFileIoDevice::OpenMode mode, zuStreamVersion at, bool appending) {
        zuFileIoDevice device(path, mode);
        if (!device.isOpen())
            return fail(ERROR_FILE, -1, device.withSystemReason("Cannot open " + fileName + " for writing"));
        bool written = writeStream(stream, objects, device, fileName, at, progress, appending, fileName);
        device.close();
        if (written && device.isError())
            written = fail(ERROR_FILE, -1, device.withSystemReason("Cannot save " + fileName + ": the file cannot be written"));
        return written;
    };
    const std::uintmax_t previousSize = std::filesystem::file_size(fileName, error);
    if (append && !error && previousSize > 0) {
        const zuStreamVersion fileVersion = headerVersion(fileName);
        if (fileVersion < zuStreamVersion(6, 0) || fileVersion > newestVersion)
            return fail(ERROR_FILE, -1, "Cannot append to " + fileName
                                            + ": it is not an object stream of version 6.0 to " + newestVersionText);
        if (options.contains(sOptionStreamVersion) && version != fileVersion)
            return fail(ERROR_OPTION, -1, "Cannot append to " + fileName + ": the file holds another stream version");
        const bool saved = writeFile(fileName, zuFileIoDevice::Append, fileVersion, true);
        if (!saved) {
            std::filesystem::resize_file(fileName, previousSize, error);
            restoreMovedResources(stream.GetMovedResources());
        }
        return saved;
    }

    // The new stream replaces the file only once it is complete. A link is followed, so that
    // the file it names is replaced rather than the link itself.
    std::string target = canonicalPath(fileName);
    if (target.empty())
        target = fileName;
    const std::string temporary = temporaryPath(target);
    bool saved = writeFile(temporary, zuFileIoDevice::WriteOnly, version, false);
    if (saved && std::rename(temporary.c_str(), target.c_str()) != 0)
        saved = fail(ERROR_FILE, -1, "Cannot save " + fileName + ": the file cannot be replaced: " + std::strerror(errno));
    if (!saved) {
        std::remove(temporary.c_str());
        restoreMovedResources(stream.GetMovedResources());
    }
    return saved;
}

bool zuFileStreamMeshDriver::saveMeshes(const ObjectList& objects, zuIoDevice& device,
                                        zuProgressNotifierInterface* progress, const Options& options, bool append)
{
    clearErrorMessages();
    zuStreamVersion version;
    if (!saveVersion(options, version))
        return false;
    const auto* file = dynamic_cast<const zuFileIoDevice*>(&device);
    const std::string name = file ? file->path() : std::string();
    zuFileStream stream;
    if (writeStream(stream, objects, device, name, version, progress, append, name.empty() ? "to the device" : name))
        return true;
    restoreMovedResources(stream.GetMovedResources());
    return false;
}

} // namespace zu
