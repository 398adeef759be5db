#pragma once

#include <zuSceneGraph/io/zuCoreMeshDriver.h>
#include <zuSceneGraph/io/zuDriverList.h>
#include <zuSceneGraph/io/zuErrorMessage.h>

#include <set>
#include <string>
#include <vector>

namespace zu {

class zuImage;
class zuIoDevice;
class zuProgressNotifierInterface;
template <class T> class zuCatalog;

// Loads and saves scene objects through the mesh drivers, chosen by the file's extension
// (see zuDriverList for the rule). The usual way into a file:
//
//     std::vector<zuPointer<zuObject>> objects;
//     std::vector<zuErrorMessage> errors;
//     zuVariant::zuVariantMapImpl options;
//     options[zuMeshManager::sOptionLoadGeometry] = false;  // blocks stay in the file
//     bool ok = zuIoManager::msInstance->getMeshManager().loadMeshes(objects, "part.mvk",
//                                                                     nullptr, options, nullptr, &errors);
//
// The option keys are those below; what each means belongs to the driver that reads it
// (the stream mesh driver documents them, and its own keys).
class zuMeshManager : public zuDriverList<zuCoreMeshDriver> {
public:
    using ObjectList = zuCoreMeshDriver::ObjectList;
    using Options = zuCoreMeshDriver::Options;

    static const char* const sOptionLoadAnnotations;               // "loadannotations"
    static const char* const sOptionReturnOriginalAnnotationData;  // "returnoriginalannotationdata"
    static const char* const sOptionLoadMetadata;                  // "loadmetadata"
    static const char* const sOptionLoadXRef;                      // "loadxref"
    static const char* const sOptionAddOriginalFileNameInMetadata; // "addfilenametometadata"
    static const char* const sOptionLoadGeometry;                  // "loadgeometry"
    static const char* const sSandboxDirectoryUtf8;                // "sandboxdirectory"
    static const char* const sOptionLoadHiddenObjects;             // "loadhiddenobjects"

    zuMeshManager() = default;

    // Loads the file `fileName` through the driver chosen for its extension, with
    // `options` (the keys above and the driver's own; an empty map for the defaults), and
    // returns the driver's result; false when no driver accepts the file. The driver
    // appends the file's top-level objects to `out`. `progress`, when not null, receives
    // the progress reports and can cancel the load.
    // A numeric extension other than 0 is a copy number and is ignored for the choice: a
    // file named model.obj.3 goes to the driver of "obj".
    // Without `images` the driver is lent a catalogue of the manager's for the call, whose
    // images are released afterwards. `errors`, when given, receives the driver's errors and
    // warnings (it is left alone when no driver accepts the file).
    bool loadMeshes(ObjectList& out, const std::string& fileName, zuProgressNotifierInterface* progress,
                    const Options& options, zuCatalog<zuImage>* images, std::vector<zuErrorMessage>* errors);
    // loadMeshes (the same arguments) into a list of its own; succeeds only when exactly
    // one object came back, which replaces the object of `out`. Otherwise `out` is left as
    // it was and whatever was loaded is released.
    bool loadMesh(zuPointer<zuObject>& out, const std::string& fileName, zuProgressNotifierInterface* progress,
                  const Options& options, zuCatalog<zuImage>* images, std::vector<zuErrorMessage>* errors);
    // Saves `objects` as the top-level objects of the file `fileName` through the driver
    // chosen for its extension (no copy-number rule here), with `options` (an empty map for
    // the defaults: the object stream writes its newest version). With `append` the objects
    // are added to the file there, where the driver can append. `progress` as for a load.
    // True when the driver saved; false when it failed (its reports say why) or no driver
    // accepts the extension.
    bool saveMeshes(const ObjectList& objects, const std::string& fileName, zuProgressNotifierInterface* progress,
                    const Options& options, bool append);
    // Saves to an open `device` through the driver chosen for `extension` (without its dot,
    // as "mvk").
    bool saveMeshes(const ObjectList& objects, zuIoDevice& device, const std::string& extension,
                    zuProgressNotifierInterface* progress, const Options& options, bool append);
    // saveMeshes of the one `object`.
    bool saveMesh(const zuPointer<zuObject>& object, const std::string& fileName,
                  zuProgressNotifierInterface* progress, const Options& options, bool append);
    bool saveMesh(const zuPointer<zuObject>& object, zuIoDevice& device, const std::string& extension,
                  zuProgressNotifierInterface* progress, const Options& options, bool append);
    // The driver that saveMeshes would choose for the file name (null when none accepts it),
    // so that a caller can read its reports (getLastErrorsAndWarnings) after the save.
    zuCoreMeshDriver* getSaveDriver(const std::string& fileName, const Options& options) const;
    // The sorted union of the extensions of every registered driver.
    std::set<std::string> getLoadExtensions() const;
    std::set<std::string> getSaveExtensions() const;

    // Copies `source` into `sandboxDirectory` under the same file name and returns the
    // copy's path ("" when the copy fails). A directory without a trailing separator gets
    // one; a name that is not valid UTF-8 is taken as Latin-1 and converted.
    static std::string CopyFileToSandbox(const std::string& source, const std::string& sandboxDirectory);

    // The extension that chooses the driver of a load of `fileName`: the file's own, unless
    // it is a copy number (digits only, not 0), in which case that of the name without it.
    static std::string GetLoadExtension(const std::string& fileName);
};

} // namespace zu
