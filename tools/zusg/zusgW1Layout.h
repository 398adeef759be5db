#pragma once

// The numbers of the W1 workload, "assembly(D, F)", without any scene-graph type: where each
// child sits, in the order the random numbers are drawn. Our builder (zusgW1Assembly.h) and
// the builders of other scene-graph libraries that the benchmarks compare with walk this one
// layout, so that both scenes are the same to the last bit of every draw.

#include <cmath>
#include <cstdint>

namespace zusg {

// splitmix64: the random numbers of the workloads.
class SplitMix64 {
public:
    explicit SplitMix64(uint64_t seed) : mState(seed) {}
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

// One child of the assembly: its level (1 for the root's children), its slot in its parent,
// and its local transformation: turned about z by `angle` radians, scaled uniformly by
// `scale` (1 except at the leaves), then moved by `translation`.
struct W1Placement {
    int level = 0;
    int slot = 0;
    bool leaf = false;
    float angle = 0.0f;
    float scale = 1.0f;
    float translation[3] = {0.0f, 0.0f, 0.0f};
};

class W1Layout {
public:
    explicit W1Layout(int depth, int fanOut = 8) : mDepth(depth), mFanOut(fanOut) {}

    int depth() const { return mDepth; }
    int fanOut() const { return mFanOut; }

    // fanOut^depth.
    long leafCount() const
    {
        long leaves = 1;
        for (int level = 0; level < mDepth; ++level)
            leaves *= mFanOut;
        return leaves;
    }

    // The camera's far distance, 4 · 2^depth; its near distance is NEAR, its half-extents at
    // the near plane are NEAR both ways (90 degrees).
    static constexpr float NEAR = 0.5f;
    float farDistance() const { return 4.0f * std::ldexp(1.0f, mDepth); }

    // Calls place(placement) for every child below the root, depth first, children in slot
    // order: a child comes before its own children, so a builder attaches it to the last
    // child it made one level up. Child k of a node at level l is translated by
    // 2^(depth - l) (±1, ±1, ±1) (the signs from bits 0, 1, 2 of k mod 8: set is +); the
    // angle is (unit() - 0.5) / 2 and, at the leaves only, the scale 0.5 + unit() / 4,
    // drawn in that order from splitmix64 seeded with 42.
    template <class Place>
    void forEachChild(Place&& place) const
    {
        SplitMix64 random(42);
        if (mDepth > 0)
            walk(0, random, place);
    }

    // The unit cube centred on the origin of every leaf: 24 vertices (four per face, each face
    // with its own normal) and 36 indices (two counter-clockwise triangles per face, seen
    // from outside).
    static constexpr int CUBE_VERTICES = 24;
    static constexpr int CUBE_INDICES = 36;
    static void cubeVertex(int vertex, float position[3], float normal[3])
    {
        // Per face: the outward normal and two edge directions u, v with u x v = normal, so
        // that the corners (-,-), (+,-), (+,+), (-,+) run counter-clockwise seen from outside.
        static constexpr float faces[6][3][3] = {
            {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}},  {{-1, 0, 0}, {0, 0, 1}, {0, 1, 0}},
            {{0, 1, 0}, {0, 0, 1}, {1, 0, 0}},  {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}},
            {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}},  {{0, 0, -1}, {0, 1, 0}, {1, 0, 0}},
        };
        static constexpr float corners[4][2] = {{-0.5f, -0.5f}, {0.5f, -0.5f}, {0.5f, 0.5f}, {-0.5f, 0.5f}};
        const float(&face)[3][3] = faces[vertex / 4];
        const float(&corner)[2] = corners[vertex % 4];
        for (int axis = 0; axis < 3; ++axis) {
            position[axis] = face[0][axis] * 0.5f + face[1][axis] * corner[0] + face[2][axis] * corner[1];
            normal[axis] = face[0][axis];
        }
    }
    static unsigned int cubeIndex(int index)
    {
        static constexpr unsigned int triangle[6] = {0, 1, 2, 0, 2, 3};
        return static_cast<unsigned int>(4 * (index / 6)) + triangle[index % 6];
    }

private:
    template <class Place>
    void walk(int level, SplitMix64& random, Place& place) const
    {
        const float s = std::ldexp(1.0f, mDepth - level);
        for (int k = 0; k < mFanOut; ++k) {
            const int corner = k % 8;
            W1Placement child;
            child.level = level + 1;
            child.slot = k;
            child.leaf = child.level == mDepth;
            child.angle = (random.unit() - 0.5f) * 0.5f;
            if (child.leaf)
                child.scale = 0.5f + 0.25f * random.unit();
            child.translation[0] = corner & 1 ? s : -s;
            child.translation[1] = corner & 2 ? s : -s;
            child.translation[2] = corner & 4 ? s : -s;
            place(static_cast<const W1Placement&>(child));
            if (!child.leaf)
                walk(level + 1, random, place);
        }
    }

    int mDepth;
    int mFanOut;
};

} // namespace zusg
