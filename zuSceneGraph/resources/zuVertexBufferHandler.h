#pragma once

#include <zuSceneGraph/resources/zuBlockResourceHandler.h>

namespace zu {

class zuVertexBuffer;

// What a load request needs to read a vertex buffer's block back without touching the
// buffer: its CPU and GPU sizes, the offset of the block, the stream version and the file
// path. The block lies in the file exactly as in memory.
class zuVertexBufferHandler : public zuBlockResourceHandler {
public:
    zuVertexBufferHandler() = default;
    zuVertexBufferHandler(const zuVertexBufferHandler&) = default;
    zuVertexBufferHandler& operator=(const zuVertexBufferHandler&) = default;

    // Takes the snapshot of `buffer` (nothing for null).
    void setBufferHandler(const zuVertexBuffer* buffer);
    void setBufferHandler(const zuVertexBufferHandler& other) { *this = other; }

    zuDynamicLoadingResourceHandler* clone() const override { return new zuVertexBufferHandler(*this); }
    // zuVertexBuffer::msVertexBufferHandlerID.
    unsigned int getResourceHandlerType() const override;
    char* getCPUBlock(zuDynamicLoadingResource* resource) const override;
    void setCPUBlock(zuDynamicLoadingResource* resource, char* block) const override;
};

} // namespace zu
