#include "zusgW1Assembly.h"

#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>

#include <Wm4/Wm4Matrix3.h>
#include <Wm4/Wm4Vector3.h>

#include <cmath>
#include <cstdint>

namespace zusg {

namespace {

using Vec = Wm4::Vector3<float>;

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

// Each child is attached before its own children are made, so that the random numbers
// follow the depth-first order.
void addChildren(zu::zuNode* node, int level, int depth, int fanOut, SplitMix64& random)
{
    const float s = std::ldexp(1.0f, depth - level);
    for (int k = 0; k < fanOut; ++k) {
        const int corner = k % 8;
        const float angle = (random.unit() - 0.5f) * 0.5f;
        const bool leafLevel = level + 1 == depth;
        zu::zuPointer<zu::zuSpatial> child;
        if (leafLevel)
            child = W1Assembly::makeCube().get();
        else
            child = new zu::zuNode;
        zu::zuGenericTransformation<float> local;
        const float c = std::cos(angle);
        const float sn = std::sin(angle);
        local.SetRotate(Wm4::Matrix3<float>(c, -sn, 0.0f, sn, c, 0.0f, 0.0f, 0.0f, 1.0f));
        local.SetTranslate(Vec(corner & 1 ? s : -s, corner & 2 ? s : -s, corner & 4 ? s : -s));
        if (leafLevel)
            local.SetUniformScale(0.5f + 0.25f * random.unit());
        child->SetLocalTransform(local);
        node->attachChild(child);
        if (!leafLevel)
            addChildren(static_cast<zu::zuNode*>(child.get()), level + 1, depth, fanOut, random);
    }
}

} // namespace

zu::zuPointer<zu::zuNode> W1Assembly::build() const
{
    zu::zuPointer<zu::zuNode> root = new zu::zuNode;
    SplitMix64 random(42);
    if (mDepth > 0)
        addChildren(root, 0, mDepth, mFanOut, random);
    return root;
}

zu::zuPointer<zu::zuCamera> W1Assembly::camera() const
{
    zu::zuPointer<zu::zuCamera> camera = new zu::zuCamera(true);
    camera->SetFrame(Vec(0, 0, 0), Vec(1, 0, 0), Vec(0, 0, 1), Vec(0, -1, 0));
    const float near = 0.5f;
    camera->SetFrustum(near, 4.0f * std::ldexp(1.0f, mDepth), -near, near, -near, near);
    return camera;
}

zu::zuPointer<zu::zuTriMesh> W1Assembly::makeCube()
{
    // Per face: the outward normal and two edge directions u, v with u x v = normal, so that
    // the corners (-,-), (+,-), (+,+), (-,+) run counter-clockwise seen from outside.
    static const float faces[6][3][3] = {
        {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}},  {{-1, 0, 0}, {0, 0, 1}, {0, 1, 0}},
        {{0, 1, 0}, {0, 0, 1}, {1, 0, 0}},  {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}},
        {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}},  {{0, 0, -1}, {0, 1, 0}, {1, 0, 0}},
    };
    static const float corners[4][2] = {{-0.5f, -0.5f}, {0.5f, -0.5f}, {0.5f, 0.5f}, {-0.5f, 0.5f}};
    zu::zuAttributes layout;
    layout.SetPositionChannels(3);
    layout.SetNormalChannels(3);
    zu::zuPointer<zu::zuVertexBuffer> vertices = new zu::zuVertexBuffer(layout, 24);
    zu::zuPointer<zu::zuIndexBuffer> indices = new zu::zuIndexBuffer(36, zu::zuIndexBuffer::INDEX_32);
    for (int f = 0; f < 6; ++f) {
        const Vec n(faces[f][0][0], faces[f][0][1], faces[f][0][2]);
        const Vec u(faces[f][1][0], faces[f][1][1], faces[f][1][2]);
        const Vec v(faces[f][2][0], faces[f][2][1], faces[f][2][2]);
        for (int c = 0; c < 4; ++c) {
            const int i = 4 * f + c;
            vertices->Position3(i) = n * 0.5f + u * corners[c][0] + v * corners[c][1];
            vertices->Normal3(i) = n;
        }
        const unsigned int first = static_cast<unsigned int>(4 * f);
        const unsigned int triangles[6] = {first, first + 1, first + 2, first, first + 2, first + 3};
        for (int j = 0; j < 6; ++j)
            indices->SetIndex(6 * f + j, triangles[j]);
    }
    return new zu::zuTriMesh(vertices, indices);
}

} // namespace zusg
