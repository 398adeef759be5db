#pragma once

#include <functional>

namespace zu {

class zuLODNode;
class zuNode;
class zuTriMesh;

// Puts level-of-detail nodes in the place of triangle meshes. The caller's functor makes
// the levels: it receives the new, empty level-of-detail node and the mesh it replaces,
// and attaches the levels to the node (the mesh itself among them, typically as the
// nearest level).
class zuLODBuilder {
public:
    using SimplifyFunctor = std::function<void(zuLODNode* lod, zuTriMesh* mesh)>;

    // Nothing when the mesh is null, has no parent, its parent is not a node or already a
    // level-of-detail node. Otherwise a new zuLODNode takes the mesh's slot in its parent
    // (zuNode::replaceChild), `simplify(lod, mesh)` runs, and the mesh's controllers move
    // to the node: for i from 0 while i is below the mesh's current controller count,
    // controller i is detached from the mesh and attached to the node, i advancing after
    // each move. As detaching shifts the later controllers down, every second one stays
    // with the mesh (of a, b, c: a and c move, b stays).
    static void BuildLOD(zuTriMesh* mesh, const SimplifyFunctor& simplify);
    // The mesh form for every triangle mesh of the subtree under `node` (depth first,
    // children in slot order), collected before the first one is replaced.
    static void BuildLOD(zuNode* node, const SimplifyFunctor& simplify);
};

} // namespace zu
