#include <zuSceneGraph/resources/zuImage.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/resources/zuBlockResourceHandler.h>
#include <zuSceneGraph/resources/zuBlockResourceRequests.h>
#include <zuSceneGraph/resources/zuBlockResourceSave.h>
#include <zuSceneGraph/resources/zuImageHandler.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace zu {

const zuRtti zuImage::TYPE("zuCore.zuImage", &zuObject::TYPE);

unsigned int zuImage::msImageID = 0;
unsigned int zuImage::msImageHandlerID = 0;

namespace {

struct FormatInfo {
    const char* name;
    int bytesPerPixel;  // plain formats
    int blockBytes;     // compressed formats, per 4x4 block
    bool alpha;
};

// In the order of zuImage::FormatMode.
const FormatInfo formatInfos[] = {
    {"RGB8", 3, 0, false},   {"RGBA8", 4, 0, true},    {"BGR8", 3, 0, false},  {"BGRA8", 4, 0, true},
    {"L8", 1, 0, false},     {"A8", 1, 0, true},       {"LA8", 2, 0, true},    {"L16", 2, 0, false},
    {"L32F", 4, 0, false},   {"RGB32F", 12, 0, false}, {"RGBA32F", 16, 0, true}, {"DXT1", 0, 8, true},
    {"DXT3", 0, 16, true},   {"DXT5", 0, 16, true},
};
static_assert(sizeof(formatInfos) / sizeof(formatInfos[0]) == zuImage::FORMAT_QUANTITY,
              "one entry per format");

const FormatInfo* infoOf(zuImage::FormatMode format)
{
    const int index = static_cast<int>(format);
    return index >= 0 && index < zuImage::FORMAT_QUANTITY ? &formatInfos[index] : nullptr;
}

} // namespace

zuImage::zuImage() = default;

zuImage::zuImage(FormatMode format, int width, int height, const void* pixels)
{
    SetImage(format, width, height, pixels);
}

zuImage::~zuImage()
{
    release();
    zuBlockResourceHandler::FreeBlock(mData);
}

int zuImage::GetBytesPerPixel(FormatMode format)
{
    const FormatInfo* info = infoOf(format);
    return info ? info->bytesPerPixel : 0;
}

int zuImage::GetBlockBytes(FormatMode format)
{
    const FormatInfo* info = infoOf(format);
    return info ? info->blockBytes : 0;
}

bool zuImage::HasAlpha(FormatMode format)
{
    const FormatInfo* info = infoOf(format);
    return info && info->alpha;
}

const char* zuImage::GetFormatName(FormatMode format)
{
    const FormatInfo* info = infoOf(format);
    return info ? info->name : "UNKNOWN";
}

bool zuImage::ComputeDataSize(FormatMode format, int width, int height, uint64_t& size)
{
    const FormatInfo* info = infoOf(format);
    if (!info || width < 0 || height < 0)
        return false;
    uint64_t units = 0;
    uint64_t unitBytes = 0;
    if (info->blockBytes > 0) {
        units = ((static_cast<uint64_t>(width) + 3) / 4) * ((static_cast<uint64_t>(height) + 3) / 4);
        unitBytes = static_cast<uint64_t>(info->blockBytes);
    } else {
        // Below 2^62: two factors below 2^31.
        units = static_cast<uint64_t>(width) * static_cast<uint64_t>(height);
        unitBytes = static_cast<uint64_t>(info->bytesPerPixel);
    }
    if (units > std::numeric_limits<uint64_t>::max() / unitBytes)
        return false;
    size = units * unitBytes;
    return true;
}

bool zuImage::SetImage(FormatMode format, int width, int height, const void* pixels)
{
    uint64_t size = 0;
    if (!ComputeDataSize(format, width, height, size) || size > static_cast<uint64_t>(std::numeric_limits<int>::max()))
        return false;
    // A load under way would hand the old file's pixels to the new image.
    if (getResourceState() == RESOURCE_REQUEST_UNDER_WAY)
        return false;
    char* block = nullptr;
    if (size > 0) {
        block = zuBlockResourceHandler::AllocateBlock(size);
        if (!block)
            return false;
        if (pixels)
            std::memcpy(block, pixels, static_cast<size_t>(size));
        else
            std::memset(block, 0, static_cast<size_t>(size));
    }
    zuBlockResourceHandler::ReplaceBlock(mData, block);
    mFormat = format;
    mWidth = width;
    mHeight = height;
    mDataSize = static_cast<int>(size);
    clearStreamInfo();
    return true;
}

void zuImage::clearContents()
{
    zuBlockResourceHandler::ReplaceBlock(mData, nullptr);
    mFormat = RGBA8;
    mWidth = 0;
    mHeight = 0;
    mDataSize = 0;
}

// ---------------------------------------------------------------------------------------
// Resource requests

zuDynamicLoadingResourceHandler* zuImage::createHandler() const
{
    zuImageHandler* handler = new zuImageHandler;
    handler->setImageHandler(this);
    return handler;
}

// ---------------------------------------------------------------------------------------
// Persistence

// Format, width, height, block size, then the block.
int zuImage::GetDiskUsed(const zuBaseStream& stream) const
{
    const int64_t size = static_cast<int64_t>(zuNamedObject::GetDiskUsed(stream)) + 16 + mDataSize;
    // A block near 2 GB leaves no room for the rest of its record: the size reported then
    // differs from the bytes written, and the stream refuses the save instead of wrapping.
    return static_cast<int>(std::min<int64_t>(size, std::numeric_limits<int>::max()));
}

void zuImage::checkSave(zuBaseStream& stream) const
{
    zuBlockResourceSave::Check(stream, *this);
}

void zuImage::Save(zuBaseStream& stream) const
{
    zuNamedObject::Save(stream);
    stream.Write(static_cast<int>(mFormat));
    stream.Write(mWidth);
    stream.Write(mHeight);
    stream.Write(mDataSize);
    const zuBlockResourceSave block(stream, *this);
    block.writeBlock(stream, mData, mDataSize);
}

void zuImage::Load(zuBaseStream& stream, zuLink* link)
{
    zuNamedObject::Load(stream, link);
    clearContents();

    int format = 0;
    int width = 0;
    int height = 0;
    int dataSize = 0;
    stream.Read(format);
    stream.Read(width);
    stream.Read(height);
    stream.Read(dataSize);
    if (stream.isStreamError())
        return;
    if (width < 0 || height < 0) {
        stream.setCorrupt("an image dimension is negative");
        return;
    }
    if (!stream.CheckCount(dataSize, 1))
        return;
    const FormatMode mode = static_cast<FormatMode>(format);
    uint64_t expected = 0;
    if (infoOf(mode)
        && (!ComputeDataSize(mode, width, height, expected) || expected != static_cast<uint64_t>(dataSize))) {
        stream.setCorrupt("the image's block size is not what its format and dimensions give");
        return;
    }
    mFormat = mode;
    mWidth = width;
    mHeight = height;
    mDataSize = dataSize;

    mData = readBlock(stream, static_cast<uint64_t>(mDataSize));
}

bool zuImage::Equals(const zuRttiInterface* other) const
{
    if (!zuNamedObject::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const zuImage* image = static_cast<const zuImage*>(other);
    if (mFormat != image->mFormat || mWidth != image->mWidth || mHeight != image->mHeight
        || mDataSize != image->mDataSize)
        return false;
    if (mDataSize == 0)
        return true;
    if (!mData || !image->mData)
        return !mData && !image->mData;
    return std::memcmp(mData, image->mData, static_cast<size_t>(mDataSize)) == 0;
}

bool zuImage::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuImage;
    if (target == this)
        return true;
    if (!target->IsDerived(TYPE) || !zuNamedObject::Clone(target))
        return false;
    zuImage* image = static_cast<zuImage*>(target);
    // A load under way would overwrite the copy with the target's old pixels.
    if (image->getResourceState() == RESOURCE_REQUEST_UNDER_WAY)
        return false;
    char* block = nullptr;
    if (mData && mDataSize > 0) {
        block = zuBlockResourceHandler::AllocateBlock(static_cast<uint64_t>(mDataSize));
        if (!block)
            return false;
        std::memcpy(block, mData, static_cast<size_t>(mDataSize));
    }
    zuBlockResourceHandler::ReplaceBlock(image->mData, block);
    image->mFormat = mFormat;
    image->mWidth = mWidth;
    image->mHeight = mHeight;
    image->mDataSize = mDataSize;
    copyStreamInfo(image);
    return true;
}

void zuImage::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuNamedObject::DescribeFields(object, visitor);
    const auto& image = static_cast<const zuImage&>(object);
    visitor.BeginGroup(nullptr);
    visitor.Enumerator("format", image.mFormat, GetFormatName(image.mFormat));
    visitor.Integer("width", image.mWidth);
    visitor.Integer("height", image.mHeight);
    visitor.Integer("data size", image.mDataSize);
    visitor.EndGroup();
    image.DescribeBlock(visitor);
}

} // namespace zu
