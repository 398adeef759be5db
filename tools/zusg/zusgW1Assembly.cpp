#include "zusgW1Assembly.h"
#include "zusgW1Layout.h"

#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>

#include <Wm4/Wm4Matrix3.h>
#include <Wm4/Wm4Vector3.h>

#include <cmath>
#include <vector>

namespace zusg {

namespace {

using Vec = Wm4::Vector3<float>;

} // namespace

zu::zuPointer<zu::zuNode> W1Assembly::build() const
{
    zu::zuPointer<zu::zuNode> root = new zu::zuNode;
    // parents[l] is the last node made at level l: the parent of the next child at l + 1.
    std::vector<zu::zuNode*> parents(static_cast<size_t>(mDepth) + 1, nullptr);
    parents[0] = root;
    W1Layout(mDepth, mFanOut).forEachChild([&parents](const W1Placement& placement) {
        zu::zuPointer<zu::zuSpatial> child;
        if (placement.leaf)
            child = makeCube().get();
        else
            child = parents[static_cast<size_t>(placement.level)] = new zu::zuNode;
        zu::zuGenericTransformation<float> local;
        const float c = std::cos(placement.angle);
        const float s = std::sin(placement.angle);
        local.SetRotate(Wm4::Matrix3<float>(c, -s, 0.0f, s, c, 0.0f, 0.0f, 0.0f, 1.0f));
        local.SetTranslate(Vec(placement.translation[0], placement.translation[1], placement.translation[2]));
        if (placement.leaf)
            local.SetUniformScale(placement.scale);
        child->SetLocalTransform(local);
        parents[static_cast<size_t>(placement.level) - 1]->attachChild(child);
    });
    return root;
}

zu::zuPointer<zu::zuCamera> W1Assembly::camera() const
{
    zu::zuPointer<zu::zuCamera> camera = new zu::zuCamera(true);
    camera->SetFrame(Vec(0, 0, 0), Vec(1, 0, 0), Vec(0, 0, 1), Vec(0, -1, 0));
    const W1Layout layout(mDepth, mFanOut);
    const float near = W1Layout::NEAR;
    camera->SetFrustum(near, layout.farDistance(), -near, near, -near, near);
    return camera;
}

zu::zuPointer<zu::zuTriMesh> W1Assembly::makeCube()
{
    zu::zuAttributes layout;
    layout.SetPositionChannels(3);
    layout.SetNormalChannels(3);
    zu::zuPointer<zu::zuVertexBuffer> vertices = new zu::zuVertexBuffer(layout, W1Layout::CUBE_VERTICES);
    zu::zuPointer<zu::zuIndexBuffer> indices = new zu::zuIndexBuffer(W1Layout::CUBE_INDICES, zu::zuIndexBuffer::INDEX_32);
    for (int i = 0; i < W1Layout::CUBE_VERTICES; ++i) {
        float position[3], normal[3];
        W1Layout::cubeVertex(i, position, normal);
        vertices->Position3(i) = Vec(position[0], position[1], position[2]);
        vertices->Normal3(i) = Vec(normal[0], normal[1], normal[2]);
    }
    for (int j = 0; j < W1Layout::CUBE_INDICES; ++j)
        indices->SetIndex(j, W1Layout::cubeIndex(j));
    return new zu::zuTriMesh(vertices, indices);
}

} // namespace zusg
