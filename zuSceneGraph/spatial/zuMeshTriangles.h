#pragma once

#include <Wm4/Wm4Vector3.h>

#include <cstdint>
#include <cstring>

namespace zu {

class zuBaseGeometry;

// A read-only view of the triangles of a triangle leaf in model space, straight over its
// vertex and index blocks: what the bounding-volume trees, the picker and the collision
// tests read. It is valid while the leaf's buffers stay as they were when it was made.
// Lines and points read their vertices through it too.
//
// Triangle i has the vertices of indices 3i, 3i + 1 and 3i + 2 (or those vertices
// themselves without an index buffer); whole triangles only. A triangle that names a
// vertex outside the buffer is absent: `GetTriangle` answers false for it, so a damaged
// index buffer never makes anyone read outside the vertex block. Positions with fewer than
// three channels read 0 for the missing ones, as the model bound does.
class zuMeshTriangles {
public:
    // An empty view: no triangles.
    zuMeshTriangles() = default;
    // The view of `mesh`; empty when the mesh is null, its vertices have no positions, or a
    // block it needs is not in memory (isResident then tells the last case apart).
    explicit zuMeshTriangles(const zuBaseGeometry* mesh);

    // Whether the leaf has its blocks in memory (a view of a leaf without vertices is
    // resident and empty).
    bool isResident() const { return mResident; }
    int GetTriangleQuantity() const { return mTriangleQuantity; }
    uint32_t GetVertexQuantity() const { return mVertexQuantity; }

    // The three vertex indices of triangle i; false when one lies outside the vertices.
    bool GetTriangleIndices(int i, uint32_t& i0, uint32_t& i1, uint32_t& i2) const
    {
        const uint32_t base = 3 * static_cast<uint32_t>(i);
        if (mIndices32) {
            i0 = mIndices32[base];
            i1 = mIndices32[base + 1];
            i2 = mIndices32[base + 2];
        } else if (mIndices16) {
            i0 = mIndices16[base];
            i1 = mIndices16[base + 1];
            i2 = mIndices16[base + 2];
        } else {
            i0 = base;
            i1 = base + 1;
            i2 = base + 2;
        }
        return i0 < mVertexQuantity && i1 < mVertexQuantity && i2 < mVertexQuantity;
    }
    // The corners of triangle i; false (corners untouched) when the triangle is absent.
    bool GetTriangle(int i, Wm4::Vector3<float>& p0, Wm4::Vector3<float>& p1, Wm4::Vector3<float>& p2) const
    {
        uint32_t i0, i1, i2;
        if (!GetTriangleIndices(i, i0, i1, i2))
            return false;
        p0 = GetPosition(i0);
        p1 = GetPosition(i1);
        p2 = GetPosition(i2);
        return true;
    }
    // Vertex v's position, for v below the vertex quantity. Copied, since a layout with
    // byte-sized groups leaves the floats of a vertex unaligned.
    Wm4::Vector3<float> GetPosition(uint32_t v) const
    {
        Wm4::Vector3<float> position(0.0f, 0.0f, 0.0f);
        std::memcpy(static_cast<void*>(&position), mPositions + static_cast<size_t>(v) * mStride, mPositionBytes);
        return position;
    }

private:
    const char* mPositions = nullptr;
    const uint32_t* mIndices32 = nullptr;
    const uint16_t* mIndices16 = nullptr;
    size_t mStride = 0;
    size_t mPositionBytes = 0;
    uint32_t mVertexQuantity = 0;
    int mTriangleQuantity = 0;
    bool mResident = true;
};

} // namespace zu
