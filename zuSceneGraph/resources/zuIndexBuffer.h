#pragma once

#include <zuSceneGraph/objects/zuUnnamedObject.h>
#include <zuSceneGraph/resources/zuBindable.h>
#include <zuSceneGraph/resources/zuBlockResource.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <cstdint>

namespace zu {

class zuRequestInterfaceForDynamicResource;
class zuResourceRequestClientInterface;

// The vertex indices of one geometry: an array of 16-bit or 32-bit unsigned integers.
//
// Like zuVertexBuffer it is persistable, bindable by a renderer, and a dynamically loaded
// resource whose array may be absent from memory and read back from its file. It carries
// no name and no controllers.
//
// Record: the object part; indexQuantity (int); from 5.2 indexType (int; older streams
// hold 32-bit indices); the index data, whose offset is what the resource records; from
// 4.2 and before 6.32 a trailing int 0. A non-empty buffer writes its data as: 32-bit
// indices from 6.32 packed as deltas (a width byte of 1, 2 or 4, the first index as an
// int, then each following index as its signed difference from the previous one, in
// `width` bytes); 32-bit indices before 6.32 as ints; 16-bit indices as unsigned shorts
// (as ints before 5.2, where the reader knows only 32-bit indices). An empty buffer
// writes no data.
//
// An empty 32-bit buffer in a 6.32 stream: the writer writes nothing after the type, as
// always, while other writers may put a width byte and a first index there. The record's
// size tells which: the reader reads the two only when the record holds more bytes, so
// both forms load.
class zuIndexBuffer : public zuBindable, public zuDynamicLoadingResource, public zuUnnamedObject {
public:
    // Stored as a 32-bit integer; any value other than 1 is taken as 16-bit.
    enum IndexBufferType : int32_t {
        INDEX_16 = 0,
        INDEX_32 = 1,
    };

    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuIndexBuffer>(stream); }
    static void RegisterFactory() { RegisterClass<zuIndexBuffer>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // No data, 0 indices, INDEX_32.
    zuIndexBuffer();
    // `quantity` zero indices of the type's width (a negative quantity is taken as 0).
    // The array is allocated with new: a failure throws std::bad_alloc.
    zuIndexBuffer(int quantity, IndexBufferType type);
    // The count, type and indices of `source`; without a resident source the copy has no
    // array.
    explicit zuIndexBuffer(const zuIndexBuffer* source);
    zuIndexBuffer(const zuIndexBuffer&) = delete;
    zuIndexBuffer& operator=(const zuIndexBuffer&) = delete;
    // Drops the renderer's binding (release), then frees the array.
    ~zuIndexBuffer() override;

    int GetIndexQuantity() const { return mIndexQuantity; }
    IndexBufferType GetIndexType() const { return static_cast<IndexBufferType>(mIndexType); }
    // Bytes per index in memory: 4 or 2.
    int GetIndexSize() const { return mIndexType == INDEX_32 ? 4 : 2; }
    // The array, or null while the buffer is not resident; the typed forms are null for
    // the other type too.
    void* GetData() { return mData; }
    const void* GetData() const { return mData; }
    unsigned int* GetIndices32() { return mIndexType == INDEX_32 ? reinterpret_cast<unsigned int*>(mData) : nullptr; }
    const unsigned int* GetIndices32() const
    {
        return mIndexType == INDEX_32 ? reinterpret_cast<const unsigned int*>(mData) : nullptr;
    }
    unsigned short* GetIndices16() { return mIndexType == INDEX_32 ? nullptr : reinterpret_cast<unsigned short*>(mData); }
    const unsigned short* GetIndices16() const
    {
        return mIndexType == INDEX_32 ? nullptr : reinterpret_cast<const unsigned short*>(mData);
    }
    // Index i of either type; 0 outside [0, quantity) or while not resident.
    unsigned int GetIndex(int i) const;
    // Sets index i (truncated to 16 bits for INDEX_16); nothing outside [0, quantity) or
    // while not resident.
    void SetIndex(int i, unsigned int value);

    // A new array of `quantity` indices: the old ones as far as they fit, zeros after them.
    // Growing allocates without throwing: false, buffer unchanged, when the memory is not
    // there (or the array would pass 2 GB). Shrinking allocates as new does. A non-resident
    // buffer gets zeros only. The indices then exist in memory only (no file to read them
    // back from, so no delete drops them unforced).
    bool resizeIndexBuffer(int quantity);
    // Makes a 32-bit buffer 16-bit. False with the message "cannot convert iBuffer if
    // already loaded" when the buffer is bound on the renderer; true at once when it is
    // 16-bit already; false, buffer unchanged, when an index exceeds 65535 or a non-empty
    // buffer is not resident. Converted indices exist in memory only, as resized ones.
    bool ConvertToShort();
    // Exchanges count, type, arrays and file information; false, changing nothing, when
    // either buffer is bound on the renderer.
    bool swapIndexBuffer(zuIndexBuffer& other);
    // As zuVertexBuffer::CloneVertexBuffer: count and type, and with `withData` a new array
    // (copied from a resident buffer; for a non-resident one the data is loaded and dropped
    // again through zuRendererInterface and the new array is left unfilled).
    bool CloneIndexBuffer(zuRttiInterface*& target, bool withData) const;

    // The delta width the packed format takes for these indices: 1 when the largest
    // absolute difference between neighbours is at most 127, 4 when it exceeds 32767, else
    // 2. Null indices count as zeros.
    static int PackedDeltaWidth(int count, const unsigned int* indices);
    // Decodes `count` little-endian signed deltas of `width` bytes (1, 2 or 4): each one is
    // added to `running`, which is stored in turn into `indices`.
    static void DecodePackedDeltas(const char* deltas, int width, int count, unsigned int& running,
                                   unsigned int* indices);
    // How many deltas the packed format reads or writes at a time.
    static constexpr int DELTA_CHUNK = 4096;

    // The readiness tests of zuVertexBuffer, for the indices: in memory and not empty;
    // bound by a renderer.
    bool isReadyForUpload() const { return mData != nullptr && mIndexQuantity > 0; }
    bool isReadyForDraw() const { return isGPUResident(); }

    static unsigned int GetResourceType() { return msIndexBufferID; }
    static unsigned int GetResourceHandlerType() { return msIndexBufferHandlerID; }
    // As zuVertexBuffer::RegisterRequests, for index buffers.
    static void RegisterRequests() { zuBlockResourceRequests::Register(msIndexBufferID, msIndexBufferHandlerID); }
    static void UnRegisterRequests() { zuBlockResourceRequests::Unregister(msIndexBufferHandlerID); }
    static constexpr auto& CreateIndexBufferCPULoadRequest = zuBlockResourceRequests::LoadFromHandler;
    static constexpr auto& CreateIndexBufferCPUDeleteRequest = zuBlockResourceRequests::DeleteFromHandler;
    static constexpr auto& CreateIndexBufferCPULoadRequestResource = zuBlockResourceRequests::LoadFromResource;
    static constexpr auto& CreateIndexBufferCPUDeleteRequestResource = zuBlockResourceRequests::DeleteFromResource;
    static unsigned int msIndexBufferID;
    static unsigned int msIndexBufferHandlerID;

    // The zuObject operations, then the resource operations (see zuBlockResource.h); the
    // CPU size is indexQuantity × 4 for INDEX_32, × 2 otherwise.
    // GetDiskUsed needs the delta width of packed data: from the indices when resident, else
    // from the width read or written at the recorded offset, else by loading the indices for
    // the count. Save packs with that same width, makes the array resident for the write
    // (zuBlockResourceSave: refused when it cannot) and records the offset of the data in
    // the stream written. Load refuses (marks
    // the stream corrupt) counts the data cannot hold and unknown delta widths, leaving the
    // buffer empty; when the resource is not to be loaded now the data is skipped (for
    // packed data the width byte is read to know how far). Equals compares count and type,
    // then the arrays byte for byte; two absent arrays are equal, one absent array is not.
    // Clone is CloneIndexBuffer(target, false).
    ZU_BLOCK_RESOURCE_OPERATIONS(zuUnnamedObject, msIndexBufferID, msIndexBufferHandlerID,
                                 static_cast<uint64_t>(mIndexQuantity) * GetIndexSize());

private:
    bool isPackedIn(const zuStreamVersion& version) const;
    int deltaWidthForSave() const;
    void writeDeltas(zuBaseStream& stream, int width) const;
    bool readPacked(zuBaseStream& stream, bool load);
    void clearContents();
    void forgetFile();

    char* mData = nullptr;
    int mIndexQuantity = 0;
    // An IndexBufferType, and the delta width of the packed data at the recorded offset (read
    // or written there; 0 when unknown: what GetDiskUsed needs while the indices are not
    // resident), in a byte each: index buffers are many.
    int8_t mIndexType = INDEX_32;
    mutable int8_t mFileDeltaWidth = 0;
};

} // namespace zu
