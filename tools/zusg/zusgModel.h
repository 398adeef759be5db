#pragma once

// What the commands that read a model share: the checks of the input file, the load through
// the mesh manager with its progress bar and reports, and the walk of the loaded trees.

#include "zusgLibraryScope.h"
#include "zusgProgress.h"

#include <zuSceneGraph/io/zuErrorMessage.h>
#include <zuSceneGraph/io/zuMeshManager.h>
#include <zuSceneGraph/scenegraph/zuRenderableSpatial.h>
#include <zuSceneGraph/scenegraph/zuSpatial.h>
#include <zuSceneGraph/stream/zuStreamVersion.h>

#include <cstdint>
#include <string>
#include <vector>

namespace zusg {

// The file extensions of the object stream; every other format the tool meets is text.
bool isStreamFile(const std::string& path);

// The version in the header of an object-stream file; invalid when the file has none.
zu::zuStreamVersion readStreamVersion(const std::string& path);

// Warns on standard error when a stream's version is newer than the library writes: the
// format may hold what this library cannot read, and a load may fail or miss fields.
void warnIfNewerThanLibrary(const std::string& path, const zu::zuStreamVersion& version);

// Whether `path` names a regular file the tool can read; otherwise says why on standard
// error ("is a directory", "no such file", ...) and answers false.
bool checkInputFile(const std::string& path);

// Prints a driver's reports on standard error, one line each: those of a text format with
// the file and line ("in.obj:12: ..."), those of the object stream as they are (they name
// the file and offset themselves). `failed` tells errors from warnings.
void printReports(const std::string& path, const std::vector<zu::zuErrorMessage>& reports, bool failed);

// A model loaded through the mesh manager: the top-level objects and, among them, the
// spatial ones, updated (UpdateGS). The library runs, and Ctrl-C asks the running step to
// stop, for the life of the model (a command declares it before it uses the library).
struct Model {
    LibraryScope library;
    InterruptScope interrupt;
    zu::zuMeshManager::ObjectList objects;
    std::vector<zu::zuSpatial*> roots;
    double milliseconds = 0.0;  // the load itself
};

// Checks and loads `path` with a progress bar ("loading NAME", shown from the start when
// asked), prints the driver's reports and, on failure, why. Answers an ExitStatus: Success,
// Failure, or Interrupted on Ctrl-C.
int loadModel(const std::string& path, const zu::zuMeshManager::Options& options, Model& model,
              bool progressFromTheStart = false);

// One object of the loaded trees, in depth-first order.
struct TreeEntry {
    const zu::zuSpatial* object;
    int depth;       // 0 for a root
    int64_t parent;  // index of the parent's entry, -1 for a root
};

// The spatial objects under the roots, depth first, children in slot order; empty child
// slots are skipped. Walked without recursion, so a file's deep chain cannot exhaust the
// stack.
std::vector<TreeEntry> flattenTrees(const std::vector<zu::zuSpatial*>& roots);

// The triangles a leaf draws (0 for anything that is not a triangle leaf).
uint64_t triangleCount(const zu::zuSpatial& object);

// Writes `text` to `path` through a temporary file beside it, renamed over `path` once
// complete: a failed write, or Ctrl-C (with an InterruptScope), leaves no partial file and
// keeps a file that was there. False, with the reason on standard error, when not written.
bool writeFileSafely(const std::string& path, const std::string& text);

} // namespace zusg
