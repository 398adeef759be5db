#pragma once

#include <zuSceneGraph/scenegraph/zuTriangles.h>

namespace zu {

// The triangle mesh: a triangle list over its buffers (as zuTriangles) that derives its
// vertex normals from its triangles and can turn itself inside out. The mesh that
// importers build and that the level-of-detail builder replaces. It adds no field to the
// record.
class zuTriMesh : public zuTriangles {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuTriMesh>(stream); }
    static void RegisterFactory() { RegisterClass<zuTriMesh>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }

    zuTriMesh() = default;
    // References both buffers (without `indices`, each three vertices make a triangle), then
    // the model bound from the vertices.
    zuTriMesh(zuVertexBuffer* vertices, zuIndexBuffer* indices) : zuTriangles(vertices, indices) {}
    ~zuTriMesh() override;

    // Area-weighted vertex normals, for a mesh whose vertices have a normal channel of at
    // least three components and three position components: each vertex gets the sum of
    // the cross products (p1 - p0) x (p2 - p0) of its triangles (twice their areas times
    // their unit normals), made unit length; a vertex of no triangle, or whose sum is zero,
    // gets a zero normal. Triangles with an index outside the vertices are skipped. Nothing
    // happens without such a channel or while a buffer is not in memory.
    void UpdateModelNormals() override;
    // Turns the mesh inside out: the last two vertices of every triangle change places (in
    // the index buffer, or the vertices themselves without one) and every normal is
    // negated. Nothing happens while a buffer is not in memory. `channel` is not used.
    void UpdateModelInvert(int channel) override;

    // The hook chain: zuTriangles's, then this class's.
    void zuTrianglesRegister(zuBaseStream& stream) const override;
    int zuTrianglesGetDiskUsed(const zuBaseStream& stream) const override;
    void zuTrianglesSave(zuBaseStream& stream) const override;
    // This class's own hooks: nothing, 0 bytes.
    virtual void zuTriMeshRegister(zuBaseStream& stream) const;
    virtual int zuTriMeshGetDiskUsed(const zuBaseStream& stream) const;
    virtual void zuTriMeshSave(zuBaseStream& stream) const;

    const zuRtti& GetType() const override { return TYPE; }
    // The other object must be a zuTriMesh too.
    bool Equals(const zuRttiInterface* other) const override;
    // A zuTriMesh is created for an empty target.
    bool Clone(zuRttiInterface*& target) const override;
};

} // namespace zu
