#include <zuSceneGraph/zuSceneGraph.h>

#include <zuSceneGraph/animation/zuKeyframeController.h>
#include <zuSceneGraph/io/zuIoManager.h>
#include <zuSceneGraph/objects/zuObject.h>
#include <zuSceneGraph/states/zuAlphaState.h>
#include <zuSceneGraph/states/zuCullState.h>
#include <zuSceneGraph/states/zuPolygonOffsetState.h>
#include <zuSceneGraph/states/zuStencilState.h>
#include <zuSceneGraph/states/zuWireframeState.h>
#include <zuSceneGraph/states/zuZBufferState.h>
#include <zuSceneGraph/states/zuCamera.h>
#include <zuSceneGraph/states/zuLight.h>
#include <zuSceneGraph/states/zuMaterialState.h>
#include <zuSceneGraph/states/zuTexture.h>
#include <zuSceneGraph/states/zuTextureState.h>
#include <zuSceneGraph/resources/zuImage.h>
#include <zuSceneGraph/objects/zuTSharedArray.h>
#include <zuSceneGraph/scenegraph/zuLegacyBoxBV.h>
#include <zuSceneGraph/scenegraph/zuLegacySphereBV.h>
#include <zuSceneGraph/scenegraph/zuBillboardNode.h>
#include <zuSceneGraph/scenegraph/zuCameraNode.h>
#include <zuSceneGraph/scenegraph/zuDummy.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>
#include <zuSceneGraph/scenegraph/zuLightNode.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuXRefNode.h>
#include <zuSceneGraph/scenegraph/zuGenericGeometry.h>
#include <zuSceneGraph/scenegraph/zuGeometry.h>
#include <zuSceneGraph/scenegraph/zuLine.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuPoint.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>
#include <zuSceneGraph/scenegraph/zuTriangles.h>
#include <zuSceneGraph/scenegraph/zuSemanticMetadata.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSceneGraph/stream/zuCoreSettings.h>

#include <zuSystem/LibInitCounter.h>

namespace zu {

std::string zuSceneGraph::Version::GetDescStringMajorMinor()
{
    return std::to_string(GetMajor()) + "." + std::to_string(GetMinor());
}

std::string zuSceneGraph::Version::GetDescStringMajorMinorRelease()
{
    return GetDescStringMajorMinor() + "." + std::to_string(GetRelease());
}

std::string zuSceneGraph::Version::GetDescStringMajorMinorReleaseRevision()
{
    return GetDescStringMajorMinorRelease() + "." + std::to_string(GetRevision());
}

std::string zuSceneGraph::Version::GetDescStringMajorMinorReleaseRevisionDate()
{
    return GetDescStringMajorMinorReleaseRevision() + " " + std::to_string(GetYear()) + "-"
        + std::to_string(GetMonth());
}

namespace {

// The persistable classes of the library, registered in this order at start and
// unregistered in reverse at the end.
struct FactoryRegistration {
    void (*registerFactory)();
    void (*unregisterFactory)();
};

const FactoryRegistration factoryRegistrations[] = {
    {zuAlphaState::RegisterFactory, zuAlphaState::UnRegisterFactory},
    {zuCullState::RegisterFactory, zuCullState::UnRegisterFactory},
    {zuPolygonOffsetState::RegisterFactory, zuPolygonOffsetState::UnRegisterFactory},
    {zuStencilState::RegisterFactory, zuStencilState::UnRegisterFactory},
    {zuWireframeState::RegisterFactory, zuWireframeState::UnRegisterFactory},
    {zuZBufferState::RegisterFactory, zuZBufferState::UnRegisterFactory},
    {zuCamera::RegisterFactory, zuCamera::UnRegisterFactory},
    {zuLight::RegisterFactory, zuLight::UnRegisterFactory},
    {zuFloatArray::RegisterFactory, zuFloatArray::UnRegisterFactory},
    {zuDoubleArray::RegisterFactory, zuDoubleArray::UnRegisterFactory},
    {zuIntArray::RegisterFactory, zuIntArray::UnRegisterFactory},
    {zuColorRGBArray::RegisterFactory, zuColorRGBArray::UnRegisterFactory},
    {zuColorRGBAArray::RegisterFactory, zuColorRGBAArray::UnRegisterFactory},
    {zuVector2fArray::RegisterFactory, zuVector2fArray::UnRegisterFactory},
    {zuVector2dArray::RegisterFactory, zuVector2dArray::UnRegisterFactory},
    {zuVector3fArray::RegisterFactory, zuVector3fArray::UnRegisterFactory},
    {zuVector3dArray::RegisterFactory, zuVector3dArray::UnRegisterFactory},
    {zuVector4fArray::RegisterFactory, zuVector4fArray::UnRegisterFactory},
    {zuVector4dArray::RegisterFactory, zuVector4dArray::UnRegisterFactory},
    {zuQuaternionfArray::RegisterFactory, zuQuaternionfArray::UnRegisterFactory},
    {zuQuaterniondArray::RegisterFactory, zuQuaterniondArray::UnRegisterFactory},
    {zuMatrix2fArray::RegisterFactory, zuMatrix2fArray::UnRegisterFactory},
    {zuMatrix2dArray::RegisterFactory, zuMatrix2dArray::UnRegisterFactory},
    {zuMatrix3fArray::RegisterFactory, zuMatrix3fArray::UnRegisterFactory},
    {zuMatrix3dArray::RegisterFactory, zuMatrix3dArray::UnRegisterFactory},
    {zuMatrix4fArray::RegisterFactory, zuMatrix4fArray::UnRegisterFactory},
    {zuMatrix4dArray::RegisterFactory, zuMatrix4dArray::UnRegisterFactory},
    {zuPlane3fArray::RegisterFactory, zuPlane3fArray::UnRegisterFactory},
    {zuPlane3dArray::RegisterFactory, zuPlane3dArray::UnRegisterFactory},
    {zuCoreSettings::RegisterFactory, zuCoreSettings::UnRegisterFactory},
    {zuLegacySphereBV::RegisterFactory, zuLegacySphereBV::UnRegisterFactory},
    {zuLegacyBoxBV::RegisterFactory, zuLegacyBoxBV::UnRegisterFactory},
    {zuSemanticMetadata::RegisterFactory, zuSemanticMetadata::UnRegisterFactory},
    {zuNode::RegisterFactory, zuNode::UnRegisterFactory},
    {zuLODNode::RegisterFactory, zuLODNode::UnRegisterFactory},
    {zuLightNode::RegisterFactory, zuLightNode::UnRegisterFactory},
    {zuCameraNode::RegisterFactory, zuCameraNode::UnRegisterFactory},
    {zuBillboardNode::RegisterFactory, zuBillboardNode::UnRegisterFactory},
    {zuXRefNode::RegisterFactory, zuXRefNode::UnRegisterFactory},
    {zuDummy::RegisterFactory, zuDummy::UnRegisterFactory},
    {zuVertexBuffer::RegisterFactory, zuVertexBuffer::UnRegisterFactory},
    {zuIndexBuffer::RegisterFactory, zuIndexBuffer::UnRegisterFactory},
    {zuKeyframeController::RegisterFactory, zuKeyframeController::UnRegisterFactory},
    {zuMaterialState::RegisterFactory, zuMaterialState::UnRegisterFactory},
    {zuTextureState::RegisterFactory, zuTextureState::UnRegisterFactory},
    {zuTexture::RegisterFactory, zuTexture::UnRegisterFactory},
    {zuImage::RegisterFactory, zuImage::UnRegisterFactory},
    {zuVertexBuffer::RegisterFactory, zuVertexBuffer::UnRegisterFactory},
    {zuIndexBuffer::RegisterFactory, zuIndexBuffer::UnRegisterFactory},
    {zuTriangles::RegisterFactory, zuTriangles::UnRegisterFactory},
    {zuTriMesh::RegisterFactory, zuTriMesh::UnRegisterFactory},
    {zuGeometry::RegisterFactory, zuGeometry::UnRegisterFactory},
    {zuGenericGeometry::RegisterFactory, zuGenericGeometry::UnRegisterFactory},
    {zuLine::RegisterFactory, zuLine::UnRegisterFactory},
    {zuPoint::RegisterFactory, zuPoint::UnRegisterFactory},
};

} // namespace

void initializeZuSceneGraph()
{
    if (!LibInitCounter::initialize("scenegraph"))
        return;
    zuObject::createLibraryMutex();
    zuRttiInterface::CreateFactoryMap();
    for (const FactoryRegistration& entry : factoryRegistrations)
        entry.registerFactory();
    zuVertexBuffer::RegisterRequests();
    zuIndexBuffer::RegisterRequests();
    zuImage::RegisterRequests();
    zuIoManager::createInstance();
}

void terminateZuSceneGraph()
{
    if (!LibInitCounter::terminate("scenegraph"))
        return;
    zuIoManager::destroyInstance();
    zuImage::UnRegisterRequests();
    zuIndexBuffer::UnRegisterRequests();
    zuVertexBuffer::UnRegisterRequests();
    for (auto entry = std::rbegin(factoryRegistrations); entry != std::rend(factoryRegistrations); ++entry)
        entry->unregisterFactory();
    zuRttiInterface::DestroyFactoryMap();
    zuObject::destroyLibraryMutex();
}

} // namespace zu
