#include <zuSceneGraph/scenegraph/zuTriangles.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

namespace zu {

const zuRtti zuTriangles::TYPE("zuCore.zuTriangles", &zuBaseGeometry::TYPE);

zuTriangles::~zuTriangles() = default;

int zuTriangles::GetTriangleQuantity() const
{
    if (const zuIndexBuffer* indices = GetIndices())
        return indices->GetIndexQuantity() / 3;
    const zuVertexBuffer* vertices = GetVertices();
    return vertices ? vertices->GetVertexQuantity() / 3 : 0;
}

bool zuTriangles::GetTriangle(int i, int& v0, int& v1, int& v2) const
{
    if (i < 0 || i >= GetTriangleQuantity())
        return false;
    if (const zuIndexBuffer* indices = GetIndices()) {
        if (!indices->GetData())
            return false;
        v0 = static_cast<int>(indices->GetIndex(3 * i));
        v1 = static_cast<int>(indices->GetIndex(3 * i + 1));
        v2 = static_cast<int>(indices->GetIndex(3 * i + 2));
        return true;
    }
    v0 = 3 * i;
    v1 = 3 * i + 1;
    v2 = 3 * i + 2;
    return true;
}

void zuTriangles::UpdateMS(bool normals, int channel)
{
    UpdateMS(normals, false, channel);
}

// ---------------------------------------------------------------------------------------
// Hooks

void zuTriangles::zuBaseGeometryRegister(zuBaseStream& stream) const
{
    zuBaseGeometry::zuBaseGeometryRegister(stream);
    zuTrianglesRegister(stream);
}

int zuTriangles::zuBaseGeometryGetDiskUsed(const zuBaseStream& stream) const
{
    return zuBaseGeometry::zuBaseGeometryGetDiskUsed(stream) + zuTrianglesGetDiskUsed(stream);
}

void zuTriangles::zuBaseGeometrySave(zuBaseStream& stream) const
{
    zuBaseGeometry::zuBaseGeometrySave(stream);
    zuTrianglesSave(stream);
}

void zuTriangles::zuTrianglesRegister(zuBaseStream&) const
{
}

int zuTriangles::zuTrianglesGetDiskUsed(const zuBaseStream&) const
{
    return 0;
}

void zuTriangles::zuTrianglesSave(zuBaseStream&) const
{
}

bool zuTriangles::Equals(const zuRttiInterface* other) const
{
    return zuBaseGeometry::Equals(other) && other->IsDerived(TYPE);
}

bool zuTriangles::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuTriangles;
    return target->IsDerived(TYPE) && zuBaseGeometry::Clone(target);
}

void zuTriangles::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuBaseGeometry::DescribeFields(object, visitor);
    // Not saved: the count follows from the buffers.
    visitor.Integer("triangles", static_cast<const zuTriangles&>(object).GetTriangleQuantity());
}

} // namespace zu
