#include <zuSceneGraph/scenegraph/zuLine.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

namespace zu {

const zuRtti zuLine::TYPE("zuCore.zuLine", &zuBaseGeometry::TYPE);

zuLine::~zuLine() = default;

int zuLine::elementQuantity() const
{
    if (const zuIndexBuffer* indices = GetIndices())
        return indices->GetIndexQuantity();
    const zuVertexBuffer* vertices = GetVertices();
    return vertices ? vertices->GetVertexQuantity() : 0;
}

int zuLine::element(int i) const
{
    const zuIndexBuffer* indices = GetIndices();
    return indices ? static_cast<int>(indices->GetIndex(i)) : i;
}

int zuLine::GetSegmentQuantity() const
{
    const int count = elementQuantity();
    if (IsStrip())
        return count > 1 ? count - 1 : 0;
    return count / 2;
}

bool zuLine::GetSegment(int i, int& v0, int& v1) const
{
    if (i < 0 || i >= GetSegmentQuantity())
        return false;
    if (const zuIndexBuffer* indices = GetIndices(); indices && !indices->GetData())
        return false;
    const int first = IsStrip() ? i : 2 * i;
    v0 = element(first);
    v1 = element(first + 1);
    return true;
}

// ---------------------------------------------------------------------------------------
// Hooks

int zuLine::zuBaseGeometryGetDiskUsed(const zuBaseStream& stream) const
{
    return zuBaseGeometry::zuBaseGeometryGetDiskUsed(stream) + 4;
}

void zuLine::zuBaseGeometrySave(zuBaseStream& stream) const
{
    zuBaseGeometry::zuBaseGeometrySave(stream);
    stream.Write(static_cast<int>(mLineType));
}

void zuLine::zuBaseGeometryLoad(zuBaseStream& stream, zuLink* link)
{
    zuBaseGeometry::zuBaseGeometryLoad(stream, link);
    int type = SEGMENTS;
    stream.Read(type);
    mLineType = static_cast<LineType>(type);
}

bool zuLine::Equals(const zuRttiInterface* other) const
{
    return zuBaseGeometry::Equals(other) && other->IsDerived(TYPE)
        && mLineType == static_cast<const zuLine*>(other)->mLineType;
}

bool zuLine::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuLine;
    if (!target->IsDerived(TYPE) || !zuBaseGeometry::Clone(target))
        return false;
    static_cast<zuLine*>(target)->mLineType = mLineType;
    return true;
}

namespace {

const char* const lineTypeNames[] = {"SEGMENTS", "STRIP"};

} // namespace

void zuLine::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuBaseGeometry::DescribeFields(object, visitor);
    const auto& line = static_cast<const zuLine&>(object);
    visitor.BeginGroup(nullptr);
    visitor.EnumeratorOf("type", line.mLineType, lineTypeNames);
    visitor.Integer("segments", line.GetSegmentQuantity());
    visitor.EndGroup();
}

} // namespace zu
