#include "support/zuW1Assembly.h"

#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>

#include <Wm4/Wm4Matrix3.h>
#include <Wm4/Wm4Vector3.h>

#include <cmath>

namespace zu::test {

namespace {

using Vec = Wm4::Vector3<float>;

void addChildren(zuNode* node, int level, int depth, int fanOut, zuSplitMix64& random, const zuW1LeafMaker& makeLeaf)
{
    const float s = std::ldexp(1.0f, depth - level);
    for (int k = 0; k < fanOut; ++k) {
        const int corner = k % 8;
        const float angle = (random.unit() - 0.5f) * 0.5f;
        const bool leafLevel = level + 1 == depth;
        zuPointer<zuSpatial> child = leafLevel ? makeLeaf() : zuPointer<zuSpatial>(new zuNode);
        zuGenericTransformation<float> local;
        const float c = std::cos(angle);
        const float sn = std::sin(angle);
        local.SetRotate(Wm4::Matrix3<float>(c, -sn, 0.0f, sn, c, 0.0f, 0.0f, 0.0f, 1.0f));
        local.SetTranslate(Vec(corner & 1 ? s : -s, corner & 2 ? s : -s, corner & 4 ? s : -s));
        if (leafLevel)
            local.SetUniformScale(0.5f + 0.25f * random.unit());
        child->SetLocalTransform(local);
        node->attachChild(child);
        if (!leafLevel)
            addChildren(static_cast<zuNode*>(child.get()), level + 1, depth, fanOut, random, makeLeaf);
    }
}

} // namespace

zuPointer<zuNode> buildW1Assembly(int depth, int fanOut, const zuW1LeafMaker& makeLeaf)
{
    zuPointer<zuNode> root = new zuNode;
    zuSplitMix64 random(42);
    if (depth > 0)
        addChildren(root, 0, depth, fanOut, random, makeLeaf);
    return root;
}

zuPointer<zuTriMesh> makeW1Cube()
{
    // Per face: the outward normal and two edge directions u, v with u x v = normal, so that
    // the corners (-,-), (+,-), (+,+), (-,+) run counter-clockwise seen from outside.
    static const float faces[6][3][3] = {
        {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}},  {{-1, 0, 0}, {0, 0, 1}, {0, 1, 0}},
        {{0, 1, 0}, {0, 0, 1}, {1, 0, 0}},  {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}},
        {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}},  {{0, 0, -1}, {0, 1, 0}, {1, 0, 0}},
    };
    static const float corners[4][2] = {{-0.5f, -0.5f}, {0.5f, -0.5f}, {0.5f, 0.5f}, {-0.5f, 0.5f}};
    zuAttributes layout;
    layout.SetPositionChannels(3);
    layout.SetNormalChannels(3);
    zuPointer<zuVertexBuffer> vertices = new zuVertexBuffer(layout, 24);
    zuPointer<zuIndexBuffer> indices = new zuIndexBuffer(36, zuIndexBuffer::INDEX_32);
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
    return new zuTriMesh(vertices, indices);
}

zuPointer<zuCamera> makeW1Camera(int depth)
{
    zuPointer<zuCamera> camera = new zuCamera(true);
    camera->SetFrame(Vec(0, 0, 0), Vec(1, 0, 0), Vec(0, 0, 1), Vec(0, -1, 0));
    const float near = 0.5f;
    camera->SetFrustum(near, 4.0f * std::ldexp(1.0f, depth), -near, near, -near, near);
    return camera;
}

} // namespace zu::test
