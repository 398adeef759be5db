#include <zuSceneGraph/scenegraph/zuTriMesh.h>

#include <Wm4/Wm4Vector3.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace zu {

const zuRtti zuTriMesh::TYPE("zuCore.zuTriMesh", &zuTriangles::TYPE);

namespace {

// Vertex components are copied in and out: a layout with byte-sized groups leaves the
// floats of a vertex unaligned.
Wm4::Vector3<float> readVector(const char* address)
{
    Wm4::Vector3<float> value;
    std::memcpy(static_cast<void*>(&value), address, sizeof(value));
    return value;
}

void writeVector(char* address, const Wm4::Vector3<float>& value)
{
    std::memcpy(address, static_cast<const void*>(&value), sizeof(value));
}

} // namespace

zuTriMesh::~zuTriMesh() = default;

void zuTriMesh::UpdateModelNormals()
{
    zuVertexBuffer* vertices = GetVertices();
    if (!vertices || !vertices->GetData())
        return;
    const zuAttributes& layout = vertices->GetAttributes();
    if (layout.GetNormalChannels() < 3 || layout.GetPositionChannels() < 3)
        return;
    if (const zuIndexBuffer* indices = GetIndices(); indices && !indices->GetData())
        return;
    const int quantity = vertices->GetVertexQuantity();
    const ptrdiff_t stride = vertices->GetVertexSize();
    char* data = vertices->GetData();
    const unsigned int positionOffset = layout.GetPositionOffsetByte();
    const unsigned int normalOffset = layout.GetNormalOffsetByte();

    std::vector<Wm4::Vector3<float>> sums(static_cast<size_t>(quantity), Wm4::Vector3<float>(0.0f, 0.0f, 0.0f));
    const int triangles = GetTriangleQuantity();
    for (int t = 0; t < triangles; ++t) {
        int v[3];
        if (!GetTriangle(t, v[0], v[1], v[2]))
            continue;
        if (std::any_of(v, v + 3, [quantity](int index) { return index < 0 || index >= quantity; }))
            continue;
        const Wm4::Vector3<float> p0 = readVector(data + v[0] * stride + positionOffset);
        const Wm4::Vector3<float> p1 = readVector(data + v[1] * stride + positionOffset);
        const Wm4::Vector3<float> p2 = readVector(data + v[2] * stride + positionOffset);
        // Its length is twice the area: larger triangles weigh more.
        const Wm4::Vector3<float> weighted = (p1 - p0).Cross(p2 - p0);
        for (int corner : v)
            sums[static_cast<size_t>(corner)] += weighted;
    }
    for (int i = 0; i < quantity; ++i) {
        Wm4::Vector3<float> normal = sums[static_cast<size_t>(i)];
        const float length = std::sqrt(normal.Dot(normal));
        normal = length > 0.0f && std::isfinite(length) ? normal / length : Wm4::Vector3<float>(0.0f, 0.0f, 0.0f);
        writeVector(data + i * stride + normalOffset, normal);
    }
}

void zuTriMesh::UpdateModelInvert(int)
{
    zuVertexBuffer* vertices = GetVertices();
    if (!vertices || !vertices->GetData())
        return;
    zuIndexBuffer* indices = GetIndices();
    if (indices && !indices->GetData())
        return;
    const int triangles = GetTriangleQuantity();
    const ptrdiff_t stride = vertices->GetVertexSize();
    char* data = vertices->GetData();
    for (int t = 0; t < triangles; ++t) {
        if (indices) {
            const unsigned int second = indices->GetIndex(3 * t + 1);
            indices->SetIndex(3 * t + 1, indices->GetIndex(3 * t + 2));
            indices->SetIndex(3 * t + 2, second);
        } else {
            char* second = data + (3 * t + 1) * stride;
            std::swap_ranges(second, second + stride, second + stride);
        }
    }
    const zuAttributes& layout = vertices->GetAttributes();
    const int channels = layout.GetNormalChannels();
    if (channels <= 0)
        return;
    const unsigned int offset = layout.GetNormalOffsetByte();
    for (int i = 0; i < vertices->GetVertexQuantity(); ++i) {
        char* normal = data + i * stride + offset;
        for (int c = 0; c < channels; ++c) {
            float value;
            std::memcpy(&value, normal + 4 * c, 4);
            value = -value;
            std::memcpy(normal + 4 * c, &value, 4);
        }
    }
}

// ---------------------------------------------------------------------------------------
// Hooks

void zuTriMesh::zuTrianglesRegister(zuBaseStream& stream) const
{
    zuTriangles::zuTrianglesRegister(stream);
    zuTriMeshRegister(stream);
}

int zuTriMesh::zuTrianglesGetDiskUsed(const zuBaseStream& stream) const
{
    return zuTriangles::zuTrianglesGetDiskUsed(stream) + zuTriMeshGetDiskUsed(stream);
}

void zuTriMesh::zuTrianglesSave(zuBaseStream& stream) const
{
    zuTriangles::zuTrianglesSave(stream);
    zuTriMeshSave(stream);
}

void zuTriMesh::zuTriMeshRegister(zuBaseStream&) const
{
}

int zuTriMesh::zuTriMeshGetDiskUsed(const zuBaseStream&) const
{
    return 0;
}

void zuTriMesh::zuTriMeshSave(zuBaseStream&) const
{
}

bool zuTriMesh::Equals(const zuRttiInterface* other) const
{
    return zuTriangles::Equals(other) && other->IsDerived(TYPE);
}

bool zuTriMesh::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuTriMesh;
    return target->IsDerived(TYPE) && zuTriangles::Clone(target);
}

} // namespace zu
