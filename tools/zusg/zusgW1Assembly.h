#pragma once

// The W1 workload of the benchmarks, "assembly(D, F)": a tree of grouping nodes F wide and
// D deep whose leaves are small meshes, with the random transformations and the camera that
// every benchmark and every comparison uses. `zusg demo` builds it, and so do the tests:
// public headers only, so that anything outside the library can compile it.

#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>
#include <zuSceneGraph/states/zuCamera.h>

#include <string>
#include <vector>

namespace zusg {

class W1Assembly {
public:
    explicit W1Assembly(int depth, int fanOut = 8) : mDepth(depth), mFanOut(fanOut) {}

    int depth() const { return mDepth; }
    int fanOut() const { return mFanOut; }

    // A root with the identity transformation; every node above level `depth` has `fanOut`
    // children, those at level `depth` are cube meshes (makeCube), each placed as
    // W1Layout (zusgW1Layout.h) says. Nothing is updated: call UpdateGS on the root.
    zu::zuPointer<zu::zuNode> build() const;

    // The camera of W1: perspective at the origin, looking down +x with up +z (right -y),
    // near 0.5, far 4 · 2^depth, 90 degrees both ways (umin = rmin = -near, umax = rmax = near).
    zu::zuPointer<zu::zuCamera> camera() const;

    // The unit cube centred on the origin as its own triangle mesh: 24 vertices (four per
    // face, each face with its own normal) of 3 position and 3 normal floats, and 36 32-bit
    // indices (two counter-clockwise triangles per face, seen from outside).
    static zu::zuPointer<zu::zuTriMesh> makeCube();

private:
    int mDepth;
    int mFanOut;
};

// What a walk of the whole tree finds.
struct TreeCount {
    int objects = 0;
    int leaves = 0;
    int buffers = 0;
    int resident = 0;  // buffers whose data is in memory
};

// Iterative: trees that came from files are counted too.
TreeCount countTree(const zu::zuSpatial* root);
// At the current output version, through zuFileStream and zuFileIoDevice.
bool saveTree(zu::zuNode* root, const std::string& path);
// The file's one top-level node, or null (with the load policies as they are set).
zu::zuPointer<zu::zuNode> loadTree(const std::string& path);
// Reads back the blocks of the given leaves on this thread, in one batch; the number of
// blocks, or -1 when one could not be read.
int readBack(const std::vector<zu::zuRenderableSpatial*>& leaves);

} // namespace zusg
