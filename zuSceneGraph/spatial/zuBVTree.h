#pragma once

#include <zuSceneGraph/spatial/zuTriangleQueries.h>

#include <Wm4/Wm4Matrix3.h>
#include <Wm4/Wm4Vector3.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace zu {

class zuMeshTriangles;
template <class T> class zuGenericTransformation;

// A bounding-volume tree over the triangles of one mesh, in the mesh's model space: a
// binary tree whose nodes bound their triangles with an axis-aligned box (BOX) or a sphere
// (SPHERE), whose leaves hold at most MAX_LEAF_TRIANGLES triangles. It answers ray queries
// (nearest hit, every hit) and meets another tree (the pairs of triangles in contact).
//
// The tree holds no triangle data: its leaves name triangles of the mesh, whose positions
// are read from the mesh's blocks through a zuMeshTriangles view at every query, so the
// view must be of the buffers the tree was built from (zuBVTreeCache sees to that).
//
// Layout: one block holds the tree's header, its nodes, then the triangle numbers in leaf
// order (4 bytes each). A box node is 32 bytes (low corner, high corner, two 32-bit words), a sphere node
// 24 (centre, radius, two words). An inner node's children sit side by side; a leaf names
// a run of triangle numbers. Built top-down by a binned surface-area heuristic over the
// triangle centres (12 bins on each axis); the heuristic's splits give way to median splits
// below depth MEDIAN_DEPTH, so that no tree is deeper than MEDIAN_DEPTH + 32 levels and the
// walks keep a fixed stack.
class zuBVTree {
public:
    enum Kind : uint8_t {
        BOX = 0,
        SPHERE = 1
    };
    static constexpr int KIND_QUANTITY = 2;
    static constexpr int MAX_LEAF_TRIANGLES = 4;
    static constexpr int MEDIAN_DEPTH = 40;

    // A hit of a ray on a triangle of the mesh.
    struct TriangleHit {
        int triangle = -1;
        zuTriangleQueries::Hit hit;
    };

    // The map from another tree's model space into this tree's: y = linear·x + translation,
    // with its inverse (when there is one) and the bound of its stretch, for tree tests.
    class Placement {
    public:
        // From the world transformations of the two meshes: the other's model space into
        // world space, then into this one's model space. False when this mesh's
        // transformation has no inverse.
        bool Set(const zuGenericTransformation<float>& thisWorld, const zuGenericTransformation<float>& otherWorld);
        Wm4::Vector3<float> Apply(const Wm4::Vector3<float>& point) const { return linear * point + translation; }

        Wm4::Matrix3<float> linear, linearAbs;
        Wm4::Vector3<float> translation;
        Wm4::Matrix3<float> inverse, inverseAbs;
        Wm4::Vector3<float> inverseTranslation;
        bool hasInverse = false;
        float stretch = 1.0f;
    };

    ~zuBVTree();
    zuBVTree(const zuBVTree&) = delete;
    zuBVTree& operator=(const zuBVTree&) = delete;
    // A tree lives in one allocation with its nodes and triangle numbers behind it.
    static void operator delete(void* tree) { ::operator delete(tree); }

    // The tree of the present triangles of a view (absent triangles are left out); null
    // when there is none.
    static std::unique_ptr<zuBVTree> Build(const zuMeshTriangles& triangles, Kind kind);

    Kind GetKind() const { return mKind; }
    int GetNodeQuantity() const { return static_cast<int>(mNodeQuantity); }
    // The triangles in the tree (the mesh's present ones).
    int GetTriangleQuantity() const { return static_cast<int>(mTriangleQuantity); }
    int GetDepth() const { return mDepth; }
    // Bytes held: this object and its block.
    size_t GetMemoryUsed() const;
    // The root's bound as a box.
    void GetBound(Wm4::Vector3<float>& low, Wm4::Vector3<float>& high) const;

    // The nearest hit of the ray with t in [tmin, tmax]; false when there is none.
    bool IntersectNearest(const zuMeshTriangles& triangles, const zuTriangleQueries::Ray& ray, float tmin, float tmax,
                          TriangleHit& nearest) const;
    // Appends every hit with t in [tmin, tmax], in no particular order.
    void IntersectAll(const zuMeshTriangles& triangles, const zuTriangleQueries::Ray& ray, float tmin, float tmax,
                      std::vector<TriangleHit>& hits) const;
    // Appends the pairs (triangle of this mesh, triangle of the other) that meet, the other
    // mesh placed by `placement`; with `firstOnly` it stops at the first. Both trees must be
    // of one kind. True when any pair met.
    bool Overlap(const zuMeshTriangles& triangles, const zuBVTree& other, const zuMeshTriangles& otherTriangles,
                 const Placement& placement, bool firstOnly, std::vector<std::pair<int, int>>& pairs) const;

    // The two node layouts (defined with the walks).
    struct BoxNode;
    struct SphereNode;

private:
    template <class Node> friend struct zuBVTreeWalk;

    zuBVTree(Kind kind, uint32_t nodes, uint32_t triangles, int depth);
    static void* operator new(size_t size, size_t block) { return ::operator new(size + block); }

    const std::byte* block() const { return reinterpret_cast<const std::byte*>(this + 1); }
    std::byte* block() { return reinterpret_cast<std::byte*>(this + 1); }
    template <class Node> const Node* nodes() const { return reinterpret_cast<const Node*>(block()); }
    template <class Node> Node* nodes() { return reinterpret_cast<Node*>(block()); }
    size_t nodeBytes() const;
    const uint32_t* triangleNumbers() const { return reinterpret_cast<const uint32_t*>(block() + nodeBytes()); }
    uint32_t* triangleNumbers() { return reinterpret_cast<uint32_t*>(block() + nodeBytes()); }

    uint32_t mNodeQuantity;
    uint32_t mTriangleQuantity;
    int mDepth;
    Kind mKind;
};

} // namespace zu
