#include <zuSceneGraph/resources/zuVertexBufferHandler.h>

#include <zuSceneGraph/resources/zuVertexBuffer.h>

namespace zu {

void zuVertexBufferHandler::setBufferHandler(const zuVertexBuffer* buffer)
{
    setBlockHandler(buffer);
}

unsigned int zuVertexBufferHandler::getResourceHandlerType() const
{
    return zuVertexBuffer::msVertexBufferHandlerID;
}

// The requests check the handler type before they call these, so the resource is a
// vertex buffer.
char* zuVertexBufferHandler::getCPUBlock(zuDynamicLoadingResource* resource) const
{
    return static_cast<zuVertexBuffer*>(resource)->mData;
}

void zuVertexBufferHandler::setCPUBlock(zuDynamicLoadingResource* resource, char* block) const
{
    static_cast<zuVertexBuffer*>(resource)->mData = block;
}

} // namespace zu
