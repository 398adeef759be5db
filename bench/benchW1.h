#pragma once

// What the benchmarks of the W1 assembly do with our library, in one place: count a tree,
// cull it from the W1 camera, save it, load it (with every buffer or with the vertex and
// index buffers left in the file), and read back the blocks of the visible leaves.

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSceneGraph/scenegraph/zuBaseGeometry.h>
#include <zuSceneGraph/scenegraph/zuBaseLODPolicy.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/stream/zuFileStream.h>
#include <zuSystem/zuFileIoDevice.h>
#include <zuSystem/zuOutputStreamVersion.h>

#include <string>
#include <vector>

namespace bench {

// What a walk of the whole tree finds.
struct TreeCount {
    int objects = 0;
    int leaves = 0;
    int buffers = 0;
    int resident = 0;  // buffers whose data is in memory
};

// Iterative: the benchmarks also count trees that came from files.
inline TreeCount countTree(const zu::zuSpatial* root)
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

// The visible leaves; the culler keeps its camera. No level-of-detail node in this scene;
// the policy is the one producers hand over.
inline const std::vector<zu::zuRenderableSpatial*>& cull(zu::zuCuller& culler, zu::zuNode* root)
{
    culler.ComputeVisibleSet(root, zu::zuLODNode::GetBasePolicy(), false);
    return culler.GetVisibleSet();
}

// At the current output version, through zuFileStream and zuFileIoDevice.
inline bool save(zu::zuNode* root, const std::string& path)
{
    zu::zuFileStream stream;
    stream.SetVersion(zu::zuStreamVersion(zu::zuMajorOutputStreamVersion, zu::zuMinorOutputStreamVersion));
    stream.InsertTopLevel(root);
    zu::zuFileIoDevice device(path, zu::zuFileIoDevice::WriteOnly);
    const bool saved = device.isOpen() && stream.Save(device, path, false);
    device.close();
    return saved && !device.isError();
}

// The file's one top-level node, or null. With `lazy`, the vertex and index buffers stay in
// the file (the load policies are set for this process and stay so).
inline zu::zuPointer<zu::zuNode> load(const std::string& path, bool lazy = false)
{
    if (lazy) {
        zu::zuDynamicLoadingResource::SetLoadPolicy(zu::zuVertexBuffer::TYPE, false);
        zu::zuDynamicLoadingResource::SetLoadPolicy(zu::zuIndexBuffer::TYPE, false);
    }
    zu::zuFileStream stream;
    zu::zuFileIoDevice device(path, zu::zuFileIoDevice::ReadOnly);
    if (!device.isOpen() || !stream.Load(device, path) || stream.GetObjectCount() != 1)
        return nullptr;
    zu::zuRttiInterface* object = stream.GetObjectAt(0);
    return object && object->IsDerived(zu::zuNode::TYPE) ? static_cast<zu::zuNode*>(object) : nullptr;
}

// Reads back the blocks of the given leaves on this thread, in one batch; the number of
// blocks, or -1 when one could not be read.
inline int readBack(const std::vector<zu::zuRenderableSpatial*>& leaves)
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

} // namespace bench
