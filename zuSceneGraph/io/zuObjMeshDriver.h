#pragma once

#include <zuSceneGraph/io/zuCoreMeshDriver.h>
#include <zuSceneGraph/io/zuMtlReader.h>

#include <string>
#include <vector>

namespace zu {

class zuSpatial;

// The mesh driver of OBJ files (extension "obj", load and save).
//
// A load reads the file with zuObjReader: one top-level zuNode named after the file (its
// base name; empty for a device), holding one leaf per group, material and kind, with
// the material libraries the file names (looked for beside it). Every report of the reader
// becomes an error message of code ERROR_CODE with its line (of the MTL file for reports
// about one, whose text starts with that file's name); the load succeeds whenever the file
// could be read, reports or not. A load from a device finds no material library.
//
// A save writes exactly one object, which must derive from zuSpatial, with zuObjWriter:
// every geometry leaf of its subtree in world coordinates (those of the last update pass),
// and the materials into a library beside the OBJ file, named by its base name and ".mtl".
// Appending is not supported. A save to a device writes no materials. A failed save to a
// file leaves the files that were there as they were. The driver reads no options.
class zuObjMeshDriver : public zuCoreMeshDriver {
public:
    // The code of every report of the OBJ driver.
    static constexpr int64_t ERROR_CODE = 9;

    zuObjMeshDriver();
    ~zuObjMeshDriver() override;

    bool loadMeshes(ObjectList& out, const std::string& fileName, zuProgressNotifierInterface* progress,
                    const Options& options, zuCatalog<zuImage>& images) override;
    bool saveMeshes(const ObjectList& objects, const std::string& fileName, zuProgressNotifierInterface* progress,
                    const Options& options, bool append) override;
    bool loadMeshes(ObjectList& out, zuIoDevice& device, zuProgressNotifierInterface* progress,
                    const Options& options, zuCatalog<zuImage>& images) override;
    bool saveMeshes(const ObjectList& objects, zuIoDevice& device, zuProgressNotifierInterface* progress,
                    const Options& options, bool append) override;

private:
    bool finishLoad(ObjectList& out, const zuPointer<zuObject>& root, const std::vector<zuObjMessage>& messages);
    // The object to save, or null (with a report) when the request breaks the contract.
    const zuSpatial* savedRoot(const ObjectList& objects, bool append);
};

} // namespace zu
