#pragma once

// Helpers of the geometry tests: buffers from plain lists, texture states of chosen roles,
// and a fake renderer binding.

#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuResourceIdentifier.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSceneGraph/states/zuTexture.h>
#include <zuSceneGraph/states/zuTextureState.h>

#include <Wm4/Wm4Vector3.h>

#include <initializer_list>
#include <vector>

namespace zu::test {

// A vertex buffer of 3-float positions, with a 3-float normal channel (zero normals) when
// `withNormals` is set.
inline zuPointer<zuVertexBuffer> makeVertices(const std::vector<Wm4::Vector3<float>>& positions, bool withNormals)
{
    zuAttributes layout;
    layout.SetPositionChannels(3);
    if (withNormals)
        layout.SetNormalChannels(3);
    zuPointer<zuVertexBuffer> buffer = new zuVertexBuffer(layout, static_cast<int>(positions.size()));
    for (size_t i = 0; i < positions.size(); ++i)
        buffer->Position3(static_cast<int>(i)) = positions[i];
    return buffer;
}

inline zuPointer<zuIndexBuffer> makeIndices(std::initializer_list<unsigned int> indices,
                                            zuIndexBuffer::IndexBufferType type = zuIndexBuffer::INDEX_32)
{
    zuPointer<zuIndexBuffer> buffer = new zuIndexBuffer(static_cast<int>(indices.size()), type);
    int i = 0;
    for (unsigned int index : indices)
        buffer->SetIndex(i++, index);
    return buffer;
}

// A texture state with one texture per channel, in this order.
inline zuPointer<zuTextureState> texturesWith(std::initializer_list<zuTexture::Channel> channels)
{
    zuPointer<zuTextureState> state = new zuTextureState;
    for (zuTexture::Channel channel : channels) {
        zuPointer<zuTexture> texture = new zuTexture;
        texture->SetChannel(channel);
        state->AttachTexture(texture);
    }
    return state;
}

// A renderer's identifier, and a release function that answers as a renderer does.
struct zuFakeIdentifier : zuResourceIdentifier {};

inline void releaseFakeBinding(zuBindable* bindable)
{
    bindable->onRelease(bindable->getIdentifier());
}

inline void bindFake(zuBindable* bindable)
{
    static zuFakeIdentifier identifier;
    bindable->onLoad(releaseFakeBinding, &identifier);
}

} // namespace zu::test
