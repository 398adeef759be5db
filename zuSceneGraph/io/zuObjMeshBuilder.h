#pragma once

#include <zuSceneGraph/io/zuObjVertexData.h>
#include <zuSceneGraph/objects/zuPointer.h>

#include <cstdint>
#include <string>
#include <vector>

namespace zu {

class zuBaseGeometry;
class zuVertexBuffer;

// Gathers the faces, lines or points of one group and material of an OBJ file and builds
// the leaf that holds them: a zuTriMesh, a zuLine of segments or a zuPoint.
//
// Vertices are shared: each distinct (position, texture coordinate, normal) triple of
// indices becomes one vertex of the leaf, numbered in the order the triples first appear.
// Polygons are split into triangles that keep their winding: a convex polygon as a fan, a
// quad along its shorter valid diagonal, a concave polygon by clipping ears in the plane
// that best fits it (its Newell normal), so non-planar polygons split sensibly too.
//
// The indices given to the builder are 0-based and already checked against the vertex data
// (-1 for an absent texture coordinate or normal).
class zuObjMeshBuilder {
public:
    enum Kind { TRIANGLES, LINES, POINTS };

    // `seed` varies the table's hash between loads, so that no file can be shaped to make
    // every look-up collide.
    zuObjMeshBuilder(Kind kind, std::string group, std::string material, uint64_t seed);

    Kind GetKind() const { return mKind; }
    const std::string& GetGroup() const { return mGroup; }
    const std::string& GetMaterial() const { return mMaterial; }
    bool IsEmpty() const { return mIndices.empty(); }

    // A polygon of `count` corners (index triples); split into triangles.
    void AddFace(const int32_t* corners, int count, const zuObjVertexData& data);
    // A polyline of `count` corners: count - 1 segments.
    void AddLine(const int32_t* corners, int count);
    // `count` points.
    void AddPoints(const int32_t* corners, int count);

    // The leaf named after the group, or null when nothing was added. Normals a face did
    // not give are computed from the triangles around each vertex (area-weighted). The
    // builder's memory is released; it is empty afterwards. Throws std::bad_alloc when the
    // memory is not there or the leaf is too large for a buffer (2^31 indices or 2 GB of
    // vertices).
    zuPointer<zuBaseGeometry> Finish(const zuObjVertexData& data);

private:
    struct Entry {
        int32_t position;  // -1: the slot is free
        int32_t texCoord;
        int32_t normal;
        uint32_t vertex;
    };

    [[gnu::always_inline]] uint32_t vertexOf(const int32_t* corner);
    [[gnu::always_inline]] size_t slotOf(const int32_t* corner) const;
    void growTable();
    [[gnu::always_inline]] void emit(uint32_t index) { mIndices.push_back(&index); }
    void fillVertices(zuVertexBuffer& vertices, const zuObjVertexData& data, bool normalsOnly) const;

    Kind mKind;
    std::string mGroup;
    std::string mMaterial;
    uint64_t mSeed;
    std::vector<Entry> mTable;
    int mTableBits = 0;
    size_t mMask = 0;          // table size - 1
    uint32_t mGrowAt = 0;      // the vertex count that grows the table (3/4 full)
    uint32_t mVertexCount = 0;
    zuObjBlockArray<uint32_t, 1> mIndices;
    bool mHasTexCoords = false;
    bool mHasNormals = false;
    bool mMissingNormals = false;
    // Scratch space of the polygon split, kept between faces.
    std::vector<uint32_t> mPolygon;
    std::vector<int> mTriangles;
    std::vector<double> mPlane;
};

} // namespace zu
