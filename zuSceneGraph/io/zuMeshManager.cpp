#include <zuSceneGraph/io/zuMeshManager.h>

#include <zuSceneGraph/objects/zuCatalog.h>
#include <zuSceneGraph/resources/zuImage.h>

#include <zuSystem/zuDirUtils.h>
#include <zuSystem/zuStringUtils.h>

#include <algorithm>

namespace zu {

const char* const zuMeshManager::sOptionLoadAnnotations = "loadannotations";
const char* const zuMeshManager::sOptionReturnOriginalAnnotationData = "returnoriginalannotationdata";
const char* const zuMeshManager::sOptionLoadMetadata = "loadmetadata";
const char* const zuMeshManager::sOptionLoadXRef = "loadxref";
const char* const zuMeshManager::sOptionAddOriginalFileNameInMetadata = "addfilenametometadata";
const char* const zuMeshManager::sOptionLoadGeometry = "loadgeometry";
const char* const zuMeshManager::sSandboxDirectoryUtf8 = "sandboxdirectory";
const char* const zuMeshManager::sOptionLoadHiddenObjects = "loadhiddenobjects";

namespace {

bool isCopyNumber(const std::string& extension)
{
    return !extension.empty() && std::all_of(extension.begin(), extension.end(), [](char c) { return c >= '0' && c <= '9'; })
        && extension.find_first_not_of('0') != std::string::npos;
}

} // namespace

std::string zuMeshManager::GetLoadExtension(const std::string& fileName)
{
    const std::string extension = zuDirUtils::ExtractFileExtension(fileName);
    if (!isCopyNumber(extension))
        return extension;
    return zuDirUtils::ExtractFileExtension(fileName.substr(0, fileName.size() - extension.size() - 1));
}

bool zuMeshManager::loadMeshes(ObjectList& out, const std::string& fileName, zuProgressNotifierInterface* progress,
                               const Options& options, zuCatalog<zuImage>* images,
                               std::vector<zuErrorMessage>* errors)
{
    zuCoreMeshDriver* driver = chooseLoader({nullptr, GetLoadExtension(fileName)}, options);
    if (!driver)
        return false;
    driver->clearErrorMessages();
    // The lent catalogue releases its images when it goes.
    zuCatalog<zuImage> lent;
    const bool loaded = driver->loadMeshes(out, fileName, progress, options, images ? *images : lent);
    if (errors)
        driver->getLastErrorsAndWarnings(*errors);
    return loaded;
}

bool zuMeshManager::loadMesh(zuPointer<zuObject>& out, const std::string& fileName,
                             zuProgressNotifierInterface* progress, const Options& options,
                             zuCatalog<zuImage>* images, std::vector<zuErrorMessage>* errors)
{
    ObjectList loaded;
    if (!loadMeshes(loaded, fileName, progress, options, images, errors) || loaded.size() != 1)
        return false;
    out = loaded.front();
    return true;
}

zuCoreMeshDriver* zuMeshManager::getSaveDriver(const std::string& fileName, const Options& options) const
{
    return chooseSaver(zuDirUtils::ExtractFileExtension(fileName), options);
}

bool zuMeshManager::saveMeshes(const ObjectList& objects, const std::string& fileName,
                               zuProgressNotifierInterface* progress, const Options& options, bool append)
{
    zuCoreMeshDriver* driver = getSaveDriver(fileName, options);
    if (!driver)
        return false;
    driver->clearErrorMessages();
    return driver->saveMeshes(objects, fileName, progress, options, append);
}

bool zuMeshManager::saveMeshes(const ObjectList& objects, zuIoDevice& device, const std::string& extension,
                               zuProgressNotifierInterface* progress, const Options& options, bool append)
{
    zuCoreMeshDriver* driver = chooseSaver(extension, options);
    if (!driver)
        return false;
    driver->clearErrorMessages();
    return driver->saveMeshes(objects, device, progress, options, append);
}

bool zuMeshManager::saveMesh(const zuPointer<zuObject>& object, const std::string& fileName,
                             zuProgressNotifierInterface* progress, const Options& options, bool append)
{
    return saveMeshes(ObjectList{object}, fileName, progress, options, append);
}

bool zuMeshManager::saveMesh(const zuPointer<zuObject>& object, zuIoDevice& device, const std::string& extension,
                             zuProgressNotifierInterface* progress, const Options& options, bool append)
{
    return saveMeshes(ObjectList{object}, device, extension, progress, options, append);
}

std::set<std::string> zuMeshManager::getLoadExtensions() const
{
    std::set<std::string> extensions;
    for (const zuCoreMeshDriver* driver : getDrivers())
        extensions.insert(driver->getLoadExtensions().begin(), driver->getLoadExtensions().end());
    return extensions;
}

std::set<std::string> zuMeshManager::getSaveExtensions() const
{
    std::set<std::string> extensions;
    for (const zuCoreMeshDriver* driver : getDrivers())
        extensions.insert(driver->getSaveExtensions().begin(), driver->getSaveExtensions().end());
    return extensions;
}

std::string zuMeshManager::CopyFileToSandbox(const std::string& source, const std::string& sandboxDirectory)
{
    const auto toUtf8 = [](const std::string& text) {
        return zuStringUtils::isValidUtf8(text)
            ? text
            : zuStringUtils::convertCharset(text, zuStringUtils::Latin1, zuStringUtils::UTF8);
    };
    std::string target = toUtf8(sandboxDirectory);
    if (!target.empty() && target.back() != '/' && target.back() != '\\')
        target += '/';
    target += toUtf8(zuDirUtils::ExtractFileBaseName(source));
    const std::string extension = zuDirUtils::ExtractFileExtension(source);
    if (!extension.empty()) {
        target += '.';
        target += toUtf8(extension);
    }
    return zuDirUtils::CopyFileUtf8(source, target) ? target : std::string();
}

} // namespace zu
