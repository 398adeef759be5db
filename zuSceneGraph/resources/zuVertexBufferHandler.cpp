#include <zuSceneGraph/resources/zuVertexBufferHandler.h>

#include <zuSceneGraph/resources/zuVertexBuffer.h>

namespace zu {

void zuVertexBufferHandler::setBufferHandler(const zuVertexBuffer* buffer)
{
    setBlockHandler(buffer);
}

} // namespace zu
