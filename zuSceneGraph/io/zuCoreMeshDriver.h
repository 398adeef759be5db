#pragma once

#include <zuSceneGraph/io/zuCoreDriver.h>
#include <zuSceneGraph/io/zuErrorMessage.h>
#include <zuSceneGraph/objects/zuCatalog.h>
#include <zuSceneGraph/objects/zuObject.h>
#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/objects/zuRtti.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace zu {

class zuImage;
class zuIoDevice;
class zuProgressNotifierInterface;

// The kind of driver that loads and saves scene objects (nodes and geometry leaves) from and
// to files of some format.
//
// The load key is (device, extension): the device is null when the request names a file,
// and the extension is the file's, without its dot and with its case unchanged. The save
// key is the extension. A mesh driver answers SCORE_PREFERRED for the extensions it lists
// (exact, case-sensitive comparison) and SCORE_NONE for any other, whatever the options.
//
// Contract of the four operations, which every mesh driver keeps:
// - they start by emptying `errors`, and report every error and warning there with
//   addErrorMessage; the managers hand the list to the caller;
// - they return true only on success. A load appends the top-level objects it read to
//   `out` and, when it fails, leaves `out` as it was and keeps nothing it loaded. A save
//   that fails leaves no partial output behind where it can avoid it;
// - `images` is the catalogue through which loaded textures share their images (the mesh
//   manager lends one when its caller has none);
// - `progress` may be null; a cancellation requested through it makes the operation fail;
// - `options` holds the keys of zuMeshManager and the driver's own keys (each driver lists
//   those it reads, with their defaults, in its header); unknown keys are ignored.
class zuCoreMeshDriver : public zuCoreDriver<std::pair<zuIoDevice*, std::string>, std::string> {
public:
    // The run-time type of the kind (named in the managers' messages).
    static const zuRtti TYPE;

    using ObjectList = std::vector<zuPointer<zuObject>>;
    using Options = zuVariant::zuVariantMapImpl;

    ~zuCoreMeshDriver() override;

    unsigned int canLoad(const LoadKeyType& key, const Options& options) const override;
    unsigned int canSave(const SaveKeyType& key, const Options& options) const override;

    // Loads the file `fileName` and appends its top-level objects to `out`.
    virtual bool loadMeshes(ObjectList& out, const std::string& fileName, zuProgressNotifierInterface* progress,
                            const Options& options, zuCatalog<zuImage>& images) = 0;
    // Saves `objects` as the top-level objects of the file `fileName`: a new file, or with
    // `append` added to the file there (a driver that cannot append fails).
    virtual bool saveMeshes(const ObjectList& objects, const std::string& fileName,
                            zuProgressNotifierInterface* progress, const Options& options, bool append) = 0;
    // The same through an open `device`, read or written from its current position.
    virtual bool loadMeshes(ObjectList& out, zuIoDevice& device, zuProgressNotifierInterface* progress,
                            const Options& options, zuCatalog<zuImage>& images) = 0;
    virtual bool saveMeshes(const ObjectList& objects, zuIoDevice& device, zuProgressNotifierInterface* progress,
                            const Options& options, bool append) = 0;
    virtual const std::set<std::string>& getLoadExtensions() const { return loadExtensions; }
    virtual const std::set<std::string>& getSaveExtensions() const { return saveExtensions; }

    // Adds a report of the running operation: its `code` (the driver's own numbering), its
    // `line` (line of a text file, byte offset of a binary one, -1 for none) and its `text`.
    void addErrorMessage(int64_t code, int64_t line, const std::string& text);
    void clearErrorMessages() { errors.clear(); }
    // Replaces the content of `out` with the reports of the last operation.
    void getLastErrorsAndWarnings(std::vector<zuErrorMessage>& out) const { out = errors; }

protected:
    zuCoreMeshDriver() = default;

    std::set<std::string> loadExtensions;
    std::set<std::string> saveExtensions;
    std::vector<zuErrorMessage> errors;
};

} // namespace zu
