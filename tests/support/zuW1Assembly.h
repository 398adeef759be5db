#pragma once

// The W1 workload of the benchmarks, "assembly(D, F)": a tree of grouping nodes F wide
// and D deep whose leaves are small meshes, with the random transformations and the camera
// that every benchmark and every comparison uses. Public headers only, so that benchmarks
// can compile it too.

#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>
#include <zuSceneGraph/states/zuCamera.h>

#include <cstdint>
#include <functional>

namespace zu::test {

// splitmix64: the random numbers of the workloads.
class zuSplitMix64 {
public:
    explicit zuSplitMix64(uint64_t seed = 42) : mState(seed) {}
    uint64_t next()
    {
        mState += 0x9E3779B97F4A7C15ull;
        uint64_t z = mState;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    // A float in [0, 1) from the top 24 bits.
    float unit() { return static_cast<float>(next() >> 40) * (1.0f / 16777216.0f); }

private:
    uint64_t mState;
};

// Makes the leaf of one slot at level D (the builder sets its local transformation).
using zuW1LeafMaker = std::function<zuPointer<zuSpatial>()>;

// The tree of assembly(depth, fanOut): a root with the identity transformation; every node
// above level `depth` has `fanOut` children, those at level `depth` are leaves from
// `makeLeaf`. Child k of a node at level l is translated by 2^(depth - l) (±1, ±1, ±1) (the
// signs from bits 0, 1, 2 of k mod 8: set is +), turned about z by (unit() - 0.5) / 2
// radians and, at the leaves only, scaled uniformly by 0.5 + unit() / 4; the numbers come
// from splitmix64 seeded with 42, angle then scale, depth first, children in slot order.
// Nothing is updated: call UpdateGS on the root.
zuPointer<zuNode> buildW1Assembly(int depth, int fanOut, const zuW1LeafMaker& makeLeaf);

// The unit cube centred on the origin as its own triangle mesh: 24 vertices (four per
// face, each face with its own normal) of 3 position and 3 normal floats, and 36 32-bit
// indices (two counter-clockwise triangles per face, seen from outside).
zuPointer<zuTriMesh> makeW1Cube();

// buildW1Assembly with a cube mesh at every leaf.
inline zuPointer<zuNode> buildW1CubeAssembly(int depth, int fanOut = 8)
{
    return buildW1Assembly(depth, fanOut, [] { return zuPointer<zuSpatial>(makeW1Cube().get()); });
}

// The camera of W1: perspective at the origin, looking down +x with up +z (right -y), near
// 0.5, far 4 · 2^depth, 90 degrees both ways (umin = rmin = -near, umax = rmax = near).
zuPointer<zuCamera> makeW1Camera(int depth);

} // namespace zu::test
