#pragma once

#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/scenegraph/zuTriangles.h>
#include <zuSceneGraph/spatial/zuBVTree.h>

#include <cstddef>
#include <memory>
#include <unordered_map>

namespace zu {

// The bounding-volume trees of triangle meshes, kept beside the meshes: a table from mesh
// to its trees (one per kind), built when first asked for. Nothing of it is persisted and
// the meshes carry nothing for it, so meshes that are never picked cost nothing.
//
// A tree belongs to the mesh's triangles as they were when it was built: the vertex and
// index buffers the mesh held, their blocks (addresses and sizes) and the model bound.
// Every request compares these with the mesh as it is now and builds the tree again when
// they differ, so a tree is dropped when a buffer is replaced, resized, swapped or leaves
// memory (a CPU delete frees its block). Vertices changed in place keep their block: the
// model bound that UpdateMS or UpdateModelBound recompute catches most such edits, and an
// application that moves vertices without changing the bound calls Invalidate.
//
// The table holds a reference to each mesh it has trees for, so a mesh never leaves memory
// under it; Purge drops the trees of meshes no one else holds and those gone stale, Clear
// all. Used from one thread at a time, like the scene.
class zuBVTreeCache {
public:
    zuBVTreeCache();
    ~zuBVTreeCache();
    zuBVTreeCache(const zuBVTreeCache&) = delete;
    zuBVTreeCache& operator=(const zuBVTreeCache&) = delete;

    // The tree of `kind` over the mesh's triangles as they are now; null when the mesh has
    // none in memory (a stale tree is then dropped). It stays valid until the cache drops
    // it: Invalidate, Clear, Purge, or a request that finds it stale.
    const zuBVTree* GetTree(zuTriangles* mesh, zuBVTree::Kind kind);
    // Drops the trees of one mesh (after its vertices moved in place).
    void Invalidate(const zuTriangles* mesh);
    // Drops every tree.
    void Clear();
    // Drops the trees of meshes that only this cache still holds and of meshes whose
    // buffers changed or left memory; returns how many meshes lost their trees.
    int Purge();

    int GetMeshQuantity() const { return static_cast<int>(mEntries.size()); }
    int GetTreeQuantity() const;
    // Bytes of the trees and of the table's entries.
    size_t GetMemoryUsed() const;

private:
    // What a tree was built from.
    struct Signature {
        const void* vertices = nullptr;
        const void* indices = nullptr;
        const void* vertexData = nullptr;
        const void* indexData = nullptr;
        int vertexQuantity = 0;
        int vertexSize = 0;
        int positionChannels = 0;
        unsigned int positionOffset = 0;
        int indexQuantity = 0;
        int indexType = 0;
        zuBoundingVolume modelBound;

        explicit Signature(const zuTriangles* mesh);
        bool operator==(const Signature& other) const;
    };
    struct Entry {
        zuPointer<zuTriangles> mesh;
        Signature signature;
        std::unique_ptr<zuBVTree> trees[zuBVTree::KIND_QUANTITY];
    };

    std::unordered_map<const zuTriangles*, Entry> mEntries;
};

} // namespace zu
