#pragma once

// What the benchmarks of the W1 assembly do with our library, in one place: count a tree,
// cull it from the W1 camera, save it, load it (with every buffer or with the vertex and
// index buffers left in the file), and read back the blocks of the visible leaves.

#include "zusgW1Assembly.h"

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSceneGraph/scenegraph/zuBaseLODPolicy.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>
#include <zuSceneGraph/scenegraph/zuNode.h>

#include <string>
#include <vector>

namespace bench {

// Counting, saving, loading and reading back are the workload's own (zusgW1Assembly.h), the
// same as `zusg demo` uses.
using zusg::countTree;
using zusg::readBack;
using zusg::TreeCount;

// The visible leaves; the culler keeps its camera. No level-of-detail node in this scene;
// the policy is the one producers hand over.
inline const std::vector<zu::zuRenderableSpatial*>& cull(zu::zuCuller& culler, zu::zuNode* root)
{
    culler.ComputeVisibleSet(root, zu::zuLODNode::GetBasePolicy(), false);
    return culler.GetVisibleSet();
}

inline bool save(zu::zuNode* root, const std::string& path)
{
    return zusg::saveTree(root, path);
}

// The file's one top-level node, or null. With `lazy`, the vertex and index buffers stay in
// the file (the load policies are set for this process and stay so).
inline zu::zuPointer<zu::zuNode> load(const std::string& path, bool lazy = false)
{
    if (lazy) {
        zu::zuDynamicLoadingResource::SetLoadPolicy(zu::zuVertexBuffer::TYPE, false);
        zu::zuDynamicLoadingResource::SetLoadPolicy(zu::zuIndexBuffer::TYPE, false);
    }
    return zusg::loadTree(path);
}

} // namespace bench
