#include <zuSceneGraph/scenegraph/zuLODBuilder.h>

#include <zuSceneGraph/objects/zuController.h>
#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>

#include <utility>
#include <vector>

namespace zu {

void zuLODBuilder::BuildLOD(zuTriMesh* mesh, const SimplifyFunctor& simplify)
{
    if (!mesh)
        return;
    zuSpatial* parent = mesh->GetParent();
    if (!parent || !parent->IsDerived(zuNode::TYPE) || parent->IsDerived(zuLODNode::TYPE))
        return;
    // The parent lets go of the mesh when the node takes its slot: hold both meanwhile.
    zuPointer<zuTriMesh> heldMesh = mesh;
    zuPointer<zuLODNode> lod = new zuLODNode;
    if (!static_cast<zuNode*>(parent)->replaceChild(mesh, lod))
        return;
    if (simplify)
        simplify(lod, mesh);
    for (int i = 0; i < mesh->GetControllerQuantity(); ++i) {
        // Held across the move: the mesh's list may hold the only reference.
        zuPointer<zuController> controller = mesh->GetController(i);
        if (!controller)
            continue;
        mesh->DetachController(controller);
        lod->AttachController(controller);
    }
}

void zuLODBuilder::BuildLOD(zuNode* node, const SimplifyFunctor& simplify)
{
    if (!node)
        return;
    std::vector<zuPointer<zuTriMesh>> meshes;
    // Depth first with an explicit stack (children pushed in reverse slot order), so that a
    // deep tree costs no deep recursion.
    std::vector<zuSpatial*> pending{node};
    while (!pending.empty()) {
        zuSpatial* object = pending.back();
        pending.pop_back();
        if (object->IsDerived(zuTriMesh::TYPE)) {
            meshes.emplace_back(static_cast<zuTriMesh*>(object));
        } else if (object->IsDerived(zuNode::TYPE)) {
            const zuNode* group = static_cast<const zuNode*>(object);
            for (int i = group->getNbChildren() - 1; i >= 0; --i)
                if (zuSpatial* child = group->getChild(i))
                    pending.push_back(child);
        }
    }
    for (const zuPointer<zuTriMesh>& mesh : meshes)
        BuildLOD(mesh.get(), simplify);
}

} // namespace zu

