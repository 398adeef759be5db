#include "zusgW1Assembly.h"
#include "zusgW1Layout.h"

#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSceneGraph/scenegraph/zuBaseGeometry.h>
#include <zuSceneGraph/stream/zuFileStream.h>
#include <zuSystem/zuFileIoDevice.h>
#include <zuSystem/zuOutputStreamVersion.h>

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

TreeCount countTree(const zu::zuSpatial* root)
{
    TreeCount count;
    std::vector<const zu::zuSpatial*> stack{root};
    while (!stack.empty()) {
        const zu::zuSpatial* object = stack.back();
        stack.pop_back();
        ++count.objects;
        if (object->IsDerived(zu::zuBaseGeometry::TYPE)) {
            const auto* leaf = static_cast<const zu::zuBaseGeometry*>(object);
            ++count.leaves;
            const zu::zuDynamicLoadingResource* buffers[] = {leaf->GetVertices(), leaf->GetIndices()};
            for (const zu::zuDynamicLoadingResource* buffer : buffers) {
                count.buffers += buffer ? 1 : 0;
                count.resident += buffer && buffer->isCPUResident() ? 1 : 0;
            }
        } else if (object->IsDerived(zu::zuNode::TYPE)) {
            const auto* node = static_cast<const zu::zuNode*>(object);
            for (int i = node->getNbChildren() - 1; i >= 0; --i)
                if (const zu::zuSpatial* child = node->getChild(i))
                    stack.push_back(child);
        }
    }
    return count;
}

bool saveTree(zu::zuNode* root, const std::string& path)
{
    zu::zuFileStream stream;
    stream.SetVersion(zu::zuStreamVersion(zu::zuMajorOutputStreamVersion, zu::zuMinorOutputStreamVersion));
    stream.InsertTopLevel(root);
    zu::zuFileIoDevice device(path, zu::zuFileIoDevice::WriteOnly);
    const bool saved = device.isOpen() && stream.Save(device, path, false);
    device.close();
    return saved && !device.isError();
}

zu::zuPointer<zu::zuNode> loadTree(const std::string& path)
{
    zu::zuFileStream stream;
    zu::zuFileIoDevice device(path, zu::zuFileIoDevice::ReadOnly);
    if (!device.isOpen() || !stream.Load(device, path) || stream.GetObjectCount() != 1)
        return nullptr;
    zu::zuRttiInterface* object = stream.GetObjectAt(0);
    return object && object->IsDerived(zu::zuNode::TYPE) ? static_cast<zu::zuNode*>(object) : nullptr;
}

int readBack(const std::vector<zu::zuRenderableSpatial*>& leaves)
{
    std::vector<zu::zuDynamicLoadingResource*> all;
    std::vector<zu::zuDynamicLoadingResource*> resources;
    all.reserve(2 * leaves.size());
    for (zu::zuRenderableSpatial* leaf : leaves) {
        leaf->getResources(resources);
        for (zu::zuDynamicLoadingResource* resource : resources)
            if (resource)
                all.push_back(resource);
    }
    const size_t resident = zu::zuRendererInterface::LoadCPUData(all);
    return resident == all.size() ? static_cast<int>(all.size()) : -1;
}

} // namespace zusg
