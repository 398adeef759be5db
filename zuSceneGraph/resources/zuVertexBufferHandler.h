#pragma once

#include <zuSceneGraph/resources/zuBlockResourceHandlerOf.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>

namespace zu {

// What a load request needs to read a vertex buffer's block back without touching the
// buffer: its CPU and GPU sizes, the offset of the block, the stream version and the file
// path. The block lies in the file exactly as in memory.
class zuVertexBufferHandler : public zuBlockResourceHandlerOf<zuVertexBuffer, zuVertexBufferHandler> {
public:
    zuVertexBufferHandler() = default;
    zuVertexBufferHandler(const zuVertexBufferHandler&) = default;
    zuVertexBufferHandler& operator=(const zuVertexBufferHandler&) = default;

    // Takes the snapshot of `buffer` (nothing for null).
    void setBufferHandler(const zuVertexBuffer* buffer);
    void setBufferHandler(const zuVertexBufferHandler& other) { *this = other; }

};

} // namespace zu
