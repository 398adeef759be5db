#pragma once

#include <zuSceneGraph/scenegraph/zuBaseGeometry.h>

namespace zu {

// A leaf drawn as points: one per index, or per vertex without an index buffer (scanned
// point clouds, markers). Points are drawn with one size, in pixels, unless the vertices
// carry a size of their own.
//
// Record after the geometry's: the point size (float).
class zuPoint : public zuBaseGeometry {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuPoint>(stream); }
    static void RegisterFactory() { RegisterClass<zuPoint>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // Size 1, no buffers.
    zuPoint() = default;
    // References both buffers, then the model bound from the vertices.
    zuPoint(zuVertexBuffer* vertices, zuIndexBuffer* indices) : zuBaseGeometry(vertices, indices) {}
    ~zuPoint() override;

    float GetPointSize() const { return mPointSize; }
    void SetPointSize(float size) { mPointSize = size; }

    // The number of indices, or of vertices without an index buffer.
    int GetPointQuantity() const;
    // The vertex index of point i, as stored; -1 for i outside [0, quantity) or while the
    // indices are not in memory.
    int GetPoint(int i) const;

    // The hook chain: the base's, then the point size.
    int zuBaseGeometryGetDiskUsed(const zuBaseStream& stream) const override;
    void zuBaseGeometrySave(zuBaseStream& stream) const override;
    void zuBaseGeometryLoad(zuBaseStream& stream, zuLink* link) override;

    const zuRtti& GetType() const override { return TYPE; }
    // A zuPoint of the same size, bit for bit.
    bool Equals(const zuRttiInterface* other) const override;
    // A zuPoint is created for an empty target; the size is copied.
    bool Clone(zuRttiInterface*& target) const override;

private:
    float mPointSize = 1.0f;
};

} // namespace zu
