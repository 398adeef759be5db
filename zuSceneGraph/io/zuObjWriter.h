#pragma once

#include <cstdint>
#include <string>

namespace zu {

class zuIoDevice;
class zuProgressNotifierInterface;
class zuSpatial;

// Writes the geometry leaves of a subtree as OBJ: every triangle leaf (zuTriangles and
// its descendants), line leaf and point leaf, in tree order, each in world coordinates
// (the world transformations of the last update pass), as one group named after the leaf
// with its own vertices, texture coordinates (unit 0), normals and, when the leaf has a
// material or texture state, a material of the library written beside it. Numbers are
// written in their shortest form that reads back to the same float.
//
// Text is formatted into one large buffer that goes to the device whenever it fills.
class zuObjWriter {
public:
    zuObjWriter();
    ~zuObjWriter();
    zuObjWriter(const zuObjWriter&) = delete;
    zuObjWriter& operator=(const zuObjWriter&) = delete;

    // Writes `path` and, when a leaf has a material, the library beside it: the same
    // folder and base name with the extension "mtl". False with GetError() when a file
    // cannot be written or the progress notifier asked to cancel; the files that were there
    // before are then left as they were.
    bool WriteFile(const zuSpatial& root, const std::string& path, zuProgressNotifierInterface* progress);
    // Writes the OBJ text to `device`. With `materials`, the library goes there and the OBJ
    // names it `libraryName` (a file device that is not open yet is opened as
    // `libraryFolder` + `libraryName` once there is a material to write); texture paths in
    // `libraryFolder` are written relative to it. Without, no material is written.
    bool Write(const zuSpatial& root, zuIoDevice& device, zuIoDevice* materials, const std::string& libraryName,
               const std::string& libraryFolder, zuProgressNotifierInterface* progress);

    const std::string& GetError() const { return mError; }
    // The OBJ bytes of the last write.
    int64_t GetBytesWritten() const { return mBytesWritten; }

private:
    // The library file is opened as `libraryFolder` + `libraryName` + `librarySuffix`.
    bool Write(const zuSpatial& root, zuIoDevice& device, zuIoDevice* materials, const std::string& libraryName,
               const std::string& libraryFolder, zuProgressNotifierInterface* progress,
               const std::string& librarySuffix);

    std::string mError;
    int64_t mBytesWritten = 0;
};

} // namespace zu
