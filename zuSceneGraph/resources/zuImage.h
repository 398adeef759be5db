#pragma once

#include <zuSceneGraph/objects/zuNamedObject.h>
#include <zuSceneGraph/resources/zuBindable.h>
#include <zuSceneGraph/resources/zuBlockResource.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <cstdint>

namespace zu {

// The pixels of a texture: a format, a width and a height, and the pixel block as one run
// of bytes (rows from the first, no padding; compressed formats as their 4x4 blocks in
// rows). Images are shared: textures refer to them, and a load with an image catalogue
// shares images of one name between all the textures that use them.
//
// The image is persistable, bindable by a renderer, and a dynamically loaded resource like
// the vertex and index buffers: its block may be absent from memory while the image stays
// in the scene (a stream load whose load policy for "zuCore.zuImage" is false, or a CPU
// delete request), and is read back from the file and offset recorded when it was loaded
// or saved. It carries a name (the key of the catalogue, usually the image's file name).
//
// Record: the object part (name, controllers); format, width, height and the block size
// (ints); the block (no count of its own; its offset is what the resource records). The
// record is the same at every stream version.
class zuImage : public zuBindable, public zuDynamicLoadingResource, public zuNamedObject {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuImage>(stream); }
    static void RegisterFactory() { RegisterClass<zuImage>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // Pixel formats. The plain formats store their channels in the order of the name, one
    // unsigned byte each (8), one unsigned 16-bit value (16) or one float (32F); the
    // compressed formats store 4x4 blocks of 8 (DXT1) or 16 bytes (DXT3, DXT5). Files keep
    // the number; a number outside the list loads as read (see the record checks below).
    enum FormatMode : int {
        RGB8,
        RGBA8,
        BGR8,
        BGRA8,
        L8,
        A8,
        LA8,
        L16,
        L32F,
        RGB32F,
        RGBA32F,
        DXT1,
        DXT3,
        DXT5,
        FORMAT_QUANTITY
    };

    // An RGBA8 image of no pixels.
    zuImage();
    // SetImage(format, width, height, pixels); when that refuses, the image of no pixels.
    zuImage(FormatMode format, int width, int height, const void* pixels = nullptr);
    zuImage(const zuImage&) = delete;
    zuImage& operator=(const zuImage&) = delete;
    // Drops the renderer's binding (release), then frees the block.
    ~zuImage() override;

    // Bytes per pixel of a plain format; 0 for a compressed or unknown one.
    static int GetBytesPerPixel(FormatMode format);
    // Bytes per 4x4 block of a compressed format; 0 for a plain or unknown one.
    static int GetBlockBytes(FormatMode format);
    static bool IsCompressed(FormatMode format) { return GetBlockBytes(format) > 0; }
    // Whether the format carries an alpha channel (DXT1 counts: its blocks may hold
    // transparent pixels).
    static bool HasAlpha(FormatMode format);
    // "RGB8", "RGBA8", ...; "UNKNOWN" outside the list.
    static const char* GetFormatName(FormatMode format);
    // The block size of an image: width × height × bytes per pixel, or the number of 4x4
    // blocks (rounded up in each direction) × block bytes. False for an unknown format, a
    // negative dimension, or a size beyond 64 bits.
    static bool ComputeDataSize(FormatMode format, int width, int height, uint64_t& size);

    // Takes a new format and size and a new block, filled from `pixels` (ComputeDataSize
    // bytes) or with zeros when `pixels` is null. The block now exists only in memory: the
    // file it came from is forgotten. False, changing nothing, when the size cannot be
    // computed, does not fit the int the format stores (2 GB), the memory is not there, or
    // a request for the image is under way.
    bool SetImage(FormatMode format, int width, int height, const void* pixels = nullptr);
    FormatMode GetFormat() const { return mFormat; }
    int GetWidth() const { return mWidth; }
    int GetHeight() const { return mHeight; }
    int GetDataSize() const { return mDataSize; }
    // The block, or null while the image is not resident (or has no pixels).
    char* GetData() { return mData; }
    const char* GetData() const { return mData; }

    // The numbers RegisterRequests took (0 before).
    static unsigned int GetResourceType() { return msImageID; }
    static unsigned int GetResourceHandlerType() { return msImageHandlerID; }
    // Takes the resource-type and handler-type numbers once and registers the generic CPU
    // load and delete requests of block resources for images. Called by the library start.
    static void RegisterRequests() { zuBlockResourceRequests::Register(msImageID, msImageHandlerID); }
    // Clears the request builders of the handler type (the library end); the numbers stay.
    static void UnRegisterRequests() { zuBlockResourceRequests::Unregister(msImageHandlerID); }
    static unsigned int msImageID;
    static unsigned int msImageHandlerID;

    // The zuObject operations, then the resource operations (see zuBlockResource.h).
    // Save makes the block resident for the write (and drops it again when it was not), and
    // records the offset of the block in the stream written. Load refuses (marks the stream
    // corrupt) negative dimensions, a block size the data cannot hold, and, for a known
    // format, a block size other than ComputeDataSize gives; the image is then left empty.
    // A format outside the list is kept with its block as read: only a renderer knows what
    // to make of it. The block is read when the load policy asks for it (or there is no file
    // to read it from later), else skipped. Equals compares the object part, format,
    // dimensions and block size, then the pixels byte for byte; two absent blocks are equal,
    // one absent block is not. Clone gives the target a copy of the block when this image is
    // resident; otherwise no block and this image's file, so that it reads the same pixels
    // when loaded.
    ZU_BLOCK_RESOURCE_OPERATIONS(zuNamedObject, msImageID, msImageHandlerID, mDataSize);

private:
    void clearContents();

    char* mData = nullptr;
    FormatMode mFormat = RGBA8;
    int mWidth = 0;
    int mHeight = 0;
    int mDataSize = 0;
};

} // namespace zu
