#pragma once

#include <zuSceneGraph/io/zuCoreMeshDriver.h>

#include <string>

namespace zu {

class zuFileStream;
class zuStreamVersion;

// The mesh driver of the library's own object stream: files with the extensions "mvk",
// "tqb", "zus" and "kv", loaded and saved, by file name or through an IO device.
//
// A load reads the file with a zuFileStream and appends its top-level objects to `out`. A
// save writes the given objects as the top-level objects of a new stream, or appends them
// to an existing one (`append`).
//
// Load options (zuMeshManager's keys; a flag may also be a number or "true"/"false", and a
// value that is none of these counts as absent):
// - "loadgeometry" (default true): false leaves the blocks of vertex buffers, index buffers
//   and images in the file, to be read back on demand (their load policies are false for
//   this load only and are put back afterwards, also when the load fails). Blocks of a
//   device that is not a file are read anyway: they could not be read back.
// - "loadmetadata" (default true): false leaves the loaded spatial objects without metadata
//   records.
// - "loadhiddenobjects" (default true): false drops the spatial objects whose culling mode
//   is zuSpatial::CULL_ALWAYS: from the returned list, and from their parents, whose slots
//   stay in place, empty (a level-of-detail node keeps its levels' numbers).
// - "loadxref" (default false): true loads the file named by each zuXRefNode that has no
//   children yet, through the mesh manager with the same options (so any registered format),
//   relative to the folder of the file that holds the node, and attaches the spatial
//   objects that come back as the node's children. A missing or unreadable file, a
//   reference back to a file being loaded (a cycle), or references nested deeper than
//   MAX_REFERENCE_DEPTH files become errors of code ERROR_REFERENCE naming the file, and
//   the rest still loads. One load reads at most MAX_REFERENCE_LOADS referenced files.
// - "addfilenametometadata" (default false): true sets the key "OriginalFileName" of the
//   semantic metadata of each top-level spatial object to the loaded file's name (without
//   its folder), creating the record when there is none.
// - "sandboxdirectory" (default none): the file is first copied into that folder with
//   zuMeshManager::CopyFileToSandbox and the copy is loaded, so blocks left in the file are
//   read back from the copy. Loads from a device ignore it. The copy is named after the
//   file, so files of one name (two parts/B.mvk of different folders) loaded lazily into one
//   sandbox would share it, the later copy replacing the earlier: give them separate sandboxes.
// The manager's "loadannotations" and "returnoriginalannotationdata" do not apply to this
// format.
//
// Save options:
// - "streamversion" (sOptionStreamVersion, default zuMajorOutputStreamVersion.
//   zuMinorOutputStreamVersion, i.e. 6.32): the stream version to write, as the text
//   "major.minor" ("6.20"; "6.2" is 6.2). From 6.0 to the default; anything else fails the
//   save. Appending to a file writes the file's own version, and naming another fails.
//
// A save by file name writes a temporary file beside the target and renames it over the
// target once complete, so a failed or cancelled save leaves the previous file as it was;
// a failed append cuts the file back to its previous length. A failed save also puts back
// the file positions of the saved resources, which saving moves to the new file.
//
// Errors carry the file name; those of a broken stream carry the offset where it broke,
// also in the report's `line`.
class zuFileStreamMeshDriver : public zuCoreMeshDriver {
public:
    static const char* const sOptionStreamVersion;  // "streamversion"
    // The semantic metadata key of "addfilenametometadata".
    static const char* const sOriginalFileNameKey;  // "OriginalFileName"

    // Report codes.
    static constexpr int64_t ERROR_FILE = 1;       // the file cannot be opened, read or written
    static constexpr int64_t ERROR_STREAM = 2;     // the stream is broken (`line` is the offset)
    static constexpr int64_t ERROR_CANCELLED = 3;  // the progress notifier asked to cancel
    static constexpr int64_t ERROR_REFERENCE = 4;  // an external reference did not load
    static constexpr int64_t ERROR_OPTION = 5;     // an option has a value the driver refuses

    static constexpr int MAX_REFERENCE_DEPTH = 64;
    static constexpr int MAX_REFERENCE_LOADS = 1 << 20;

    zuFileStreamMeshDriver();
    ~zuFileStreamMeshDriver() override;

    bool loadMeshes(ObjectList& out, const std::string& fileName, zuProgressNotifierInterface* progress,
                    const Options& options, zuCatalog<zuImage>& images) override;
    bool saveMeshes(const ObjectList& objects, const std::string& fileName, zuProgressNotifierInterface* progress,
                    const Options& options, bool append) override;
    bool loadMeshes(ObjectList& out, zuIoDevice& device, zuProgressNotifierInterface* progress,
                    const Options& options, zuCatalog<zuImage>& images) override;
    bool saveMeshes(const ObjectList& objects, zuIoDevice& device, zuProgressNotifierInterface* progress,
                    const Options& options, bool append) override;

private:
    // The stream load behind both load operations. `path` is what the stream reads (the
    // sandbox copy, the device's file, "" for another device); `fileName` the file the
    // caller named, for messages, metadata and references.
    bool load(ObjectList& out, zuIoDevice& device, const std::string& path, const std::string& fileName,
              zuProgressNotifierInterface* progress, const Options& options, zuCatalog<zuImage>& images);
    // Resolves the external references of the loaded trees; false only on cancellation.
    bool loadReferences(ObjectList& loaded, const std::string& fileName, zuProgressNotifierInterface* progress,
                        const Options& options, zuCatalog<zuImage>& images);
    // Writes the objects as a stream to the device, naming the stream `name`; the stream
    // keeps the resources it moved, for the caller to put back if the save fails after all.
    bool writeStream(zuFileStream& stream, const ObjectList& objects, zuIoDevice& device, const std::string& name,
                     const zuStreamVersion& version, zuProgressNotifierInterface* progress, bool append,
                     const std::string& shownName);
    bool saveVersion(const Options& options, zuStreamVersion& version);
    bool fail(int64_t code, int64_t line, const std::string& text);
};

} // namespace zu
