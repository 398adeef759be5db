#pragma once

#include <zuSceneGraph/objects/zuUnnamedObject.h>
#include <zuSceneGraph/resources/zuAttributes.h>
#include <zuSceneGraph/resources/zuBindable.h>
#include <zuSceneGraph/resources/zuBlockResource.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <Wm4/Wm4Vector2.h>
#include <Wm4/Wm4Vector3.h>
#include <Wm4/Wm4Vector4.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iosfwd>

namespace zu {

template <class T> class zuGenericTransformation;
class zuRequestInterfaceForDynamicResource;
class zuResourceRequestClientInterface;

// The value a typed vertex accessor reads or writes: N components of type T. Floats come as
// Wm4 vectors, integers of the user families as arrays.
template <class T, int N> struct zuVertexTuple {
    using Type = std::array<T, N>;
};
template <class T> struct zuVertexTuple<T, 1> {
    using Type = T;
};
template <> struct zuVertexTuple<float, 2> {
    using Type = Wm4::Vector2<float>;
};
template <> struct zuVertexTuple<float, 3> {
    using Type = Wm4::Vector3<float>;
};
template <> struct zuVertexTuple<float, 4> {
    using Type = Wm4::Vector4<float>;
};
template <class T, int N> using zuVertexTupleType = typename zuVertexTuple<T, N>::Type;

// The vertices of one geometry as a single interleaved byte block, laid out by a
// zuAttributes value: vertex i, group g starts at byte i × vertexSize + offset(g).
//
// The buffer is persistable, bindable by a renderer, and a dynamically loaded resource: its
// block may be absent from memory while the buffer stays in the scene (a stream load that
// was told not to load it, or a CPU delete request), and is then read back from the file
// and offset recorded when it was loaded or saved. It carries no name and no controllers.
//
// Record: the object part; vertexSize, vertexQuantity and dataSize (ints; up to 5.1 the two
// sizes are counted in floats); the block (dataSize bytes, no count; its offset is what the
// resource records); the position channels; then the channel counts of the other groups
// (up to 4.3 only normals, colour and texture-coordinate units) and, from 5.2, the unit
// counts and channels of the six user families.
class zuVertexBuffer : public zuBindable, public zuDynamicLoadingResource, public zuUnnamedObject {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuVertexBuffer>(stream); }
    static void RegisterFactory() { RegisterClass<zuVertexBuffer>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // Empty layout, no data, all sizes 0.
    zuVertexBuffer();
    // The layout, `quantity` vertices (a negative quantity is taken as 0) and a block of
    // zero bytes. The block is allocated with new: a failure throws std::bad_alloc, and
    // so does a block beyond 2 GB (its size would not fit the int the format stores).
    zuVertexBuffer(const zuAttributes& layout, int quantity);
    // The layout, quantity and bytes of `source`; without a resident source the copy has
    // the format and no block.
    explicit zuVertexBuffer(const zuVertexBuffer* source);
    zuVertexBuffer(const zuVertexBuffer&) = delete;
    zuVertexBuffer& operator=(const zuVertexBuffer&) = delete;
    // Drops the renderer's binding (release), then frees the block.
    ~zuVertexBuffer() override;

    const zuAttributes& GetAttributes() const { return mAttributes; }
    int GetVertexSize() const { return mVertexSize; }
    int GetVertexQuantity() const { return mVertexQuantity; }
    // vertexSize × vertexQuantity (every size the buffer takes fits an int).
    int GetDataSize() const { return mVertexSize * mVertexQuantity; }
    // The block, or null while the buffer is not resident.
    char* GetData() { return mData; }
    const char* GetData() const { return mData; }

    // Only for a buffer without a format (vertexSize 0 or less): takes the layout and
    // resizes to `quantity`. False, changing nothing, otherwise.
    bool setVertexFormat(const zuAttributes& layout, int quantity);
    // A new block for `quantity` vertices: the old bytes as far as they fit, zero bytes
    // after them. A non-resident buffer gets zero bytes only. The block then exists in
    // memory only (no file to read it back from, so no delete drops it unforced).
    void resizeVertexBuffer(int quantity);
    // Gives `target` this layout, quantity and sizes, frees the target's block and forgets
    // its file.
    void copyVertexFormat(zuVertexBuffer* target) const;

    // The address of a group of vertex i (unit `unit` of a family), or null when the group
    // (unit) is absent, i is outside [0, vertexQuantity) or the buffer is not resident.
#define ZU_VERTEX_TUPLE(Name, GROUP)                                                            \
    float* Name##Tuple(int i) { return tuple(zuAttributes::GROUP, 0, i); }                      \
    const float* Name##Tuple(int i) const { return tuple(zuAttributes::GROUP, 0, i); }
#define ZU_VERTEX_UNIT_TUPLE(Name, GROUP)                                                       \
    float* Name##Tuple(int unit, int i) { return tuple(zuAttributes::GROUP, unit, i); }         \
    const float* Name##Tuple(int unit, int i) const { return tuple(zuAttributes::GROUP, unit, i); }
    ZU_VERTEX_TUPLE(Position, POSITION)
    ZU_VERTEX_TUPLE(BlendWeight, BLEND_WEIGHT)
    ZU_VERTEX_TUPLE(Normal, NORMAL)
    ZU_VERTEX_UNIT_TUPLE(Color, COLOR)
    ZU_VERTEX_TUPLE(Fog, FOG)
    ZU_VERTEX_TUPLE(PSize, PSIZE)
    ZU_VERTEX_TUPLE(BlendIndices, BLEND_INDICES)
    ZU_VERTEX_UNIT_TUPLE(TCoord, TCOORD)
    ZU_VERTEX_TUPLE(Tangent, TANGENT)
    ZU_VERTEX_TUPLE(Bitangent, BITANGENT)
#undef ZU_VERTEX_TUPLE
#undef ZU_VERTEX_UNIT_TUPLE

    // Typed component access, unchecked (no range, presence or residency test): the
    // writable form is a reference into the block, the read-only form a copy. `<Name>N` reads
    // N components: a float, a Wm4 vector of 2 to 4 floats, or an integer / array of
    // integers for the user families. With a stride that is not a multiple of 4 the
    // references may be unaligned (which x86-64 allows).
#define ZU_VERTEX_ACCESS(Name, N, T, GROUP)                                                     \
    zuVertexTupleType<T, N>& Name##N(int i)                                                     \
    {                                                                                           \
        return component<zuVertexTupleType<T, N>>(zuAttributes::GROUP, 0, i);                   \
    }                                                                                           \
    zuVertexTupleType<T, N> Name##N(int i) const                                                \
    {                                                                                           \
        return componentValue<zuVertexTupleType<T, N>>(zuAttributes::GROUP, 0, i);              \
    }
#define ZU_VERTEX_UNIT_ACCESS(Name, N, T, GROUP)                                                \
    zuVertexTupleType<T, N>& Name##N(int unit, int i)                                           \
    {                                                                                           \
        return component<zuVertexTupleType<T, N>>(zuAttributes::GROUP, unit, i);                \
    }                                                                                           \
    zuVertexTupleType<T, N> Name##N(int unit, int i) const                                      \
    {                                                                                           \
        return componentValue<zuVertexTupleType<T, N>>(zuAttributes::GROUP, unit, i);           \
    }
#define ZU_VERTEX_FAMILY(Name, GROUP)                                                           \
    ZU_VERTEX_ACCESS(Name, 1, float, GROUP)                                                     \
    ZU_VERTEX_ACCESS(Name, 2, float, GROUP)                                                     \
    ZU_VERTEX_ACCESS(Name, 3, float, GROUP)                                                     \
    ZU_VERTEX_ACCESS(Name, 4, float, GROUP)
#define ZU_VERTEX_UNIT_FAMILY(Name, T, GROUP)                                                   \
    ZU_VERTEX_UNIT_ACCESS(Name, 1, T, GROUP)                                                    \
    ZU_VERTEX_UNIT_ACCESS(Name, 2, T, GROUP)                                                    \
    ZU_VERTEX_UNIT_ACCESS(Name, 3, T, GROUP)                                                    \
    ZU_VERTEX_UNIT_ACCESS(Name, 4, T, GROUP)
    ZU_VERTEX_FAMILY(Position, POSITION)
    ZU_VERTEX_FAMILY(BlendWeight, BLEND_WEIGHT)
    ZU_VERTEX_FAMILY(Normal, NORMAL)
    ZU_VERTEX_FAMILY(Tangent, TANGENT)
    ZU_VERTEX_FAMILY(Bitangent, BITANGENT)
    ZU_VERTEX_FAMILY(BlendIndices, BLEND_INDICES)
    ZU_VERTEX_UNIT_FAMILY(Color, float, COLOR)
    ZU_VERTEX_UNIT_FAMILY(TCoord, float, TCOORD)
    ZU_VERTEX_ACCESS(Fog, 1, float, FOG)
    ZU_VERTEX_ACCESS(PSize, 1, float, PSIZE)
    ZU_VERTEX_UNIT_FAMILY(UserByte, signed char, USER_BYTE)
    ZU_VERTEX_UNIT_FAMILY(UserUByte, unsigned char, USER_UBYTE)
    ZU_VERTEX_UNIT_FAMILY(UserShort, short, USER_SHORT)
    ZU_VERTEX_UNIT_FAMILY(UserUShort, unsigned short, USER_USHORT)
    ZU_VERTEX_UNIT_FAMILY(UserInt, int, USER_INT)
    ZU_VERTEX_UNIT_FAMILY(UserUInt, unsigned int, USER_UINT)
#undef ZU_VERTEX_ACCESS
#undef ZU_VERTEX_UNIT_ACCESS
#undef ZU_VERTEX_FAMILY
#undef ZU_VERTEX_UNIT_FAMILY

    // Copies vertex `sourceIndex` of `source` over vertex `targetIndex` of this buffer,
    // group by group where both have the group: min(source, target) channels of position,
    // blend weight, blend indices, normal, colour units 0 and 1 only, fog, point size,
    // every texture-coordinate unit of the source, tangent and bitangent. Of the user
    // families only UserInt is copied, by a rule kept from the format's history: unit u
    // (0 to 3) copies u + 1 ints whatever its channel counts, units from 4 copy nothing;
    // the ints run on into the following bytes of the vertex but never past either block.
    // False when `source` is null, an index is negative or not below its buffer's quantity,
    // or either buffer is not resident.
    bool copyVertex(const zuVertexBuffer* source, int sourceIndex, int targetIndex);
    // Exchanges layouts, sizes, blocks and file information; false, changing nothing, when
    // either buffer is bound on the renderer.
    bool swapVertexBuffer(zuVertexBuffer& other);

    // Bakes a transformation into the vertices: 3-channel positions are mapped as points;
    // 3-channel normals, tangents and bitangents by the transpose of the inverse's linear
    // part, then normalised (a vector that cannot be normalised becomes zero). Another
    // non-zero channel count leaves the group alone and writes a message to standard
    // output (no line end); the normal message stands for tangents and bitangents too.
    // The identity changes nothing.
    void BakeFromTransformation(const zuGenericTransformation<float>& transformation);
    // The vertices re-laid out as floats in `layout` (its float groups, in layout order):
    // each group takes this buffer's first channels and fills the missing ones with 1.0
    // (position, colour) or 0.0 (the others). With `colorFlag`, a colour unit of at most 3
    // channels is completed with 1.0 components up to 4 (an opaque RGBA colour). Sets
    // `byteCount`; when `array` is null a new char array of that size is allocated with
    // new[] (the caller owns it), then the bytes are copied into `array`. A buffer without
    // vertices or not resident yields 0 bytes and leaves `array` alone.
    void BuildCompatibleArray(const zuAttributes& layout, bool colorFlag, int& byteCount, char*& array) const;
    // A clone of the format: into a null target a new buffer is created; an existing
    // target must be a zuVertexBuffer. With `withData` the target gets a new block of
    // dataSize bytes (its previous block is freed once the new one exists): filled from
    // this buffer when resident; when not, this buffer is loaded and dropped again through
    // zuRendererInterface and the target's block is left unfilled.
    bool CloneVertexBuffer(zuRttiInterface*& target, bool withData) const;

    // The two readiness tests a geometry leaf makes of its buffers (checkRenderable). The
    // first: the block is in memory and holds vertices, so a renderer can take it. The
    // second: a renderer has taken it (the buffer is bound).
    bool isReadyForUpload() const { return mData != nullptr && mVertexQuantity > 0; }
    bool isReadyForDraw() const { return isGPUResident(); }

    // The numbers RegisterRequests took (0 before).
    static unsigned int GetResourceType() { return msVertexBufferID; }
    static unsigned int GetResourceHandlerType() { return msVertexBufferHandlerID; }
    // Takes the resource-type and handler-type numbers once and registers the CPU load and
    // delete requests of vertex buffers. Called by the library start.
    static void RegisterRequests() { zuBlockResourceRequests::Register(msVertexBufferID, msVertexBufferHandlerID); }
    // Clears the request builders of the handler type (the library end); the numbers stay.
    static void UnRegisterRequests() { zuBlockResourceRequests::Unregister(msVertexBufferHandlerID); }
    // The request factories RegisterRequests registers: the generic CPU requests of block
    // resources, for a vertex-buffer handler or buffer.
    static constexpr auto& CreateVertexBufferCPULoadRequest = zuBlockResourceRequests::LoadFromHandler;
    static constexpr auto& CreateVertexBufferCPUDeleteRequest = zuBlockResourceRequests::DeleteFromHandler;
    static constexpr auto& CreateVertexBufferCPULoadRequestResource = zuBlockResourceRequests::LoadFromResource;
    static constexpr auto& CreateVertexBufferCPUDeleteRequestResource = zuBlockResourceRequests::DeleteFromResource;
    static unsigned int msVertexBufferID;
    static unsigned int msVertexBufferHandlerID;

    // The zuObject operations, then the resource operations (see zuBlockResource.h).
    // Save makes the block resident for the write (zuBlockResourceSave: refused when it
    // cannot) and records the offset of the block in the stream written; up to 5.1 it refuses
    // a vertex size that is not a whole number of floats. Load refuses (marks the stream
    // corrupt) negative sizes, a dataSize other than vertexSize × vertexQuantity, sizes or
    // unit counts the data cannot hold, negative channel counts, and a layout wider than
    // vertexSize; the buffer is then left empty. Equals compares sizes and layout
    // (zuAttributes::operator==), then the blocks as dataSize / 4 floats within 0.0001 (a
    // NaN difference is no mismatch); two absent blocks are equal, one absent block is not.
    // Clone is CloneVertexBuffer(target, false): a plain clone never copies vertex bytes.
    ZU_BLOCK_RESOURCE_OPERATIONS(zuUnnamedObject, msVertexBufferID, msVertexBufferHandlerID, GetDataSize());

private:
    // Refuses the save when the stream cannot store this vertex size.
    void checkSizesFit(zuBaseStream& stream) const;
    float* tuple(zuAttributes::Group group, int unit, int i) const;
    template <class T> T& component(zuAttributes::Group group, int unit, int i)
    {
        return *reinterpret_cast<T*>(vertexAddress(mAttributes.GetOffsetByte(group, unit), i));
    }
    template <class T> T componentValue(zuAttributes::Group group, int unit, int i) const
    {
        T value;
        std::memcpy(static_cast<void*>(&value), vertexAddress(mAttributes.GetOffsetByte(group, unit), i), sizeof(T));
        return value;
    }
    char* vertexAddress(unsigned int offset, int i) const
    {
        return mData + static_cast<ptrdiff_t>(i) * mVertexSize + static_cast<int>(offset);
    }
    void clearContents();
    bool readSizes(zuBaseStream& stream);
    static bool readLayout(zuBaseStream& stream, zuAttributes& layout);
    static void writeLayout(zuBaseStream& stream, const zuAttributes& layout);

    char* mData = nullptr;
    zuAttributes mAttributes;
    int mVertexSize = 0;
    int mVertexQuantity = 0;
};

// A text dump: "positions" and one line "x y z" per vertex, "normals" likewise, then for
// each present texture-coordinate unit 0 to 6 the line "TCoord <unit>" and one line "u v"
// per vertex. A group with fewer components prints the ones it has; a buffer that is not
// resident prints the headings only.
std::ostream& operator<<(std::ostream& out, const zuVertexBuffer& buffer);

} // namespace zu
