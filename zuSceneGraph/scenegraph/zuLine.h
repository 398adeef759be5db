#pragma once

#include <zuSceneGraph/scenegraph/zuBaseGeometry.h>

namespace zu {

// A leaf drawn as lines over its buffers: separate segments (each two consecutive indices,
// or vertices without an index buffer, make one) or one strip (each index, or vertex, is
// joined to the next). Edges, outlines and measures of a technical model.
//
// Record after the geometry's: the line type (int). A type read from a file is kept as
// read; every type other than STRIP is drawn as segments.
class zuLine : public zuBaseGeometry {
public:
    enum LineType : int {
        SEGMENTS = 0,
        STRIP = 1
    };

    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuLine>(stream); }
    static void RegisterFactory() { RegisterClass<zuLine>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // Segments, no buffers.
    zuLine() = default;
    // References both buffers, then the model bound from the vertices.
    zuLine(zuVertexBuffer* vertices, zuIndexBuffer* indices, LineType type = SEGMENTS)
        : zuBaseGeometry(vertices, indices), mLineType(type)
    {
    }
    ~zuLine() override;

    LineType GetLineType() const { return mLineType; }
    void SetLineType(LineType type) { mLineType = type; }
    bool IsStrip() const { return mLineType == STRIP; }

    // Segments: count / 2; a strip: count - 1 (none below two). The count is that of the
    // indices, or of the vertices without an index buffer.
    int GetSegmentQuantity() const;
    // The vertex indices of segment i, as stored. False, leaving the outputs alone, for i
    // outside [0, quantity) or while the indices are not in memory.
    bool GetSegment(int i, int& v0, int& v1) const;

    // The hook chain: the base's, then the line type.
    int zuBaseGeometryGetDiskUsed(const zuBaseStream& stream) const override;
    void zuBaseGeometrySave(zuBaseStream& stream) const override;
    void zuBaseGeometryLoad(zuBaseStream& stream, zuLink* link) override;

    const zuRtti& GetType() const override { return TYPE; }
    // A zuLine of the same type.
    bool Equals(const zuRttiInterface* other) const override;
    // A zuLine is created for an empty target; the type is copied.
    bool Clone(zuRttiInterface*& target) const override;

private:
    int elementQuantity() const;
    int element(int i) const;

    LineType mLineType = SEGMENTS;
};

} // namespace zu
