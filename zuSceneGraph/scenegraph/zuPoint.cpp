#include <zuSceneGraph/scenegraph/zuPoint.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

#include <cstring>

namespace zu {

const zuRtti zuPoint::TYPE("zuCore.zuPoint", &zuBaseGeometry::TYPE);

zuPoint::~zuPoint() = default;

int zuPoint::GetPointQuantity() const
{
    if (const zuIndexBuffer* indices = GetIndices())
        return indices->GetIndexQuantity();
    const zuVertexBuffer* vertices = GetVertices();
    return vertices ? vertices->GetVertexQuantity() : 0;
}

int zuPoint::GetPoint(int i) const
{
    if (i < 0 || i >= GetPointQuantity())
        return -1;
    const zuIndexBuffer* indices = GetIndices();
    if (!indices)
        return i;
    return indices->GetData() ? static_cast<int>(indices->GetIndex(i)) : -1;
}

// ---------------------------------------------------------------------------------------
// Hooks

int zuPoint::zuBaseGeometryGetDiskUsed(const zuBaseStream& stream) const
{
    return zuBaseGeometry::zuBaseGeometryGetDiskUsed(stream) + 4;
}

void zuPoint::zuBaseGeometrySave(zuBaseStream& stream) const
{
    zuBaseGeometry::zuBaseGeometrySave(stream);
    stream.Write(mPointSize);
}

void zuPoint::zuBaseGeometryLoad(zuBaseStream& stream, zuLink* link)
{
    zuBaseGeometry::zuBaseGeometryLoad(stream, link);
    stream.Read(mPointSize);
}

bool zuPoint::Equals(const zuRttiInterface* other) const
{
    // Bit for bit, so that a NaN size read from a file still equals itself.
    return zuBaseGeometry::Equals(other) && other->IsDerived(TYPE)
        && std::memcmp(&mPointSize, &static_cast<const zuPoint*>(other)->mPointSize, sizeof(float)) == 0;
}

bool zuPoint::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuPoint;
    if (!target->IsDerived(TYPE) || !zuBaseGeometry::Clone(target))
        return false;
    static_cast<zuPoint*>(target)->mPointSize = mPointSize;
    return true;
}

void zuPoint::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuBaseGeometry::DescribeFields(object, visitor);
    const auto& point = static_cast<const zuPoint&>(object);
    visitor.BeginGroup(nullptr);
    visitor.Number("size", point.mPointSize);
    visitor.Integer("points", point.GetPointQuantity());
    visitor.EndGroup();
}

} // namespace zu
