#include <zuSceneGraph/spatial/zuMeshTriangles.h>

#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSceneGraph/scenegraph/zuBaseGeometry.h>

#include <algorithm>

namespace zu {

zuMeshTriangles::zuMeshTriangles(const zuBaseGeometry* mesh)
{
    const zuVertexBuffer* vertices = mesh ? mesh->GetVertices() : nullptr;
    if (!vertices || vertices->GetVertexQuantity() <= 0)
        return;
    const zuIndexBuffer* indices = mesh->GetIndices();
    if (!vertices->GetData() || (indices && indices->GetIndexQuantity() > 0 && !indices->GetData())) {
        mResident = false;
        return;
    }
    const zuAttributes& layout = vertices->GetAttributes();
    const int channels = std::min(layout.GetPositionChannels(), 3);
    if (channels <= 0)
        return;
    mPositions = vertices->GetData() + layout.GetPositionOffsetByte();
    mStride = static_cast<size_t>(vertices->GetVertexSize());
    mPositionBytes = 4 * static_cast<size_t>(channels);
    mVertexQuantity = static_cast<uint32_t>(vertices->GetVertexQuantity());
    if (indices) {
        mIndices32 = reinterpret_cast<const uint32_t*>(indices->GetIndices32());
        mIndices16 = reinterpret_cast<const uint16_t*>(indices->GetIndices16());
        mTriangleQuantity = indices->GetIndexQuantity() / 3;
    } else {
        mTriangleQuantity = vertices->GetVertexQuantity() / 3;
    }
}

} // namespace zu
