#pragma once

#include <zuSceneGraph/scenegraph/zuBaseGeometry.h>

namespace zu {

// A leaf drawn as a list of triangles: each three consecutive indices of the index buffer
// make one triangle, or, without an index buffer, each three consecutive vertices. The
// base of the triangle meshes; it adds no field to the record.
class zuTriangles : public zuBaseGeometry {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuTriangles>(stream); }
    static void RegisterFactory() { RegisterClass<zuTriangles>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    zuTriangles() = default;
    // References both buffers, then the model bound from the vertices.
    zuTriangles(zuVertexBuffer* vertices, zuIndexBuffer* indices) : zuBaseGeometry(vertices, indices) {}
    ~zuTriangles() override;

    // Whole triangles only: a trailing index or two make none.
    virtual int GetTriangleQuantity() const;
    // The vertex indices of triangle i, as stored (they are not checked against the vertex
    // count). False, leaving the outputs alone, for i outside [0, quantity) or while the
    // indices are not in memory.
    virtual bool GetTriangle(int i, int& v0, int& v1, int& v2) const;

    using zuBaseGeometry::UpdateMS;
    // UpdateMS(normals, false, channel).
    virtual void UpdateMS(bool normals, int channel);

    // The hook chain: the base's hooks, then this class's.
    void zuBaseGeometryRegister(zuBaseStream& stream) const override;
    int zuBaseGeometryGetDiskUsed(const zuBaseStream& stream) const override;
    void zuBaseGeometrySave(zuBaseStream& stream) const override;
    // This class's own hooks: nothing, 0 bytes.
    virtual void zuTrianglesRegister(zuBaseStream& stream) const;
    virtual int zuTrianglesGetDiskUsed(const zuBaseStream& stream) const;
    virtual void zuTrianglesSave(zuBaseStream& stream) const;

    const zuRtti& GetType() const override { return TYPE; }
    // The other object must be a zuTriangles too.
    bool Equals(const zuRttiInterface* other) const override;
    // A zuTriangles is created for an empty target.
    bool Clone(zuRttiInterface*& target) const override;
};

} // namespace zu
