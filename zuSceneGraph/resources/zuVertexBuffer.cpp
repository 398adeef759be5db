#include <zuSceneGraph/resources/zuVertexBuffer.h>

#include <zuSceneGraph/math/zuGenericTransformation.h>
#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/resources/zuBlockResourceHandler.h>
#include <zuSceneGraph/resources/zuBlockResourceSave.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/resources/zuVertexBufferHandler.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>
#include <new>
#include <utility>
#include <vector>

namespace zu {

const zuRtti zuVertexBuffer::TYPE("zuCore.zuVertexBuffer", &zuObject::TYPE);
unsigned int zuVertexBuffer::msVertexBufferID = 0;
unsigned int zuVertexBuffer::msVertexBufferHandlerID = 0;

namespace {

using Group = zuAttributes::Group;

Wm4::Vector3<float> readVector3(const char* address)
{
    Wm4::Vector3<float> value;
    std::memcpy(static_cast<void*>(&value), address, sizeof(value));
    return value;
}

void writeVector3(char* address, const Wm4::Vector3<float>& value)
{
    std::memcpy(address, static_cast<const void*>(&value), sizeof(value));
}

// The unit counts and channels of a family, as the record holds them.
void appendUnits(std::vector<int>& fields, const zuAttributes& layout, Group family)
{
    const int count = layout.GetUnitCount(family);
    fields.push_back(count);
    for (int unit = 0; unit < count; ++unit)
        fields.push_back(layout.GetChannels(family, unit));
}

// The channel counts of the groups the version knows, in record order.
void appendLayout(std::vector<int>& fields, const zuAttributes& layout, const zuStreamVersion& version)
{
    fields.push_back(layout.GetPositionChannels());
    if (version <= zuStreamVersion(4, 3)) {
        fields.push_back(layout.GetNormalChannels());
        appendUnits(fields, layout, zuAttributes::COLOR);
        appendUnits(fields, layout, zuAttributes::TCOORD);
        return;
    }
    fields.push_back(layout.GetBlendWeightChannels());
    fields.push_back(layout.GetNormalChannels());
    appendUnits(fields, layout, zuAttributes::COLOR);
    fields.push_back(layout.GetFogChannels());
    fields.push_back(layout.GetPSizeChannels());
    fields.push_back(layout.GetBlendIndicesChannels());
    appendUnits(fields, layout, zuAttributes::TCOORD);
    fields.push_back(layout.GetTangentChannels());
    fields.push_back(layout.GetBitangentChannels());
    if (version >= zuStreamVersion(5, 2)) {
        for (int family = zuAttributes::USER_BYTE; family <= zuAttributes::USER_UINT; ++family)
            appendUnits(fields, layout, static_cast<Group>(family));
    }
}

// Direction vectors become unit length; one that cannot becomes zero.
Wm4::Vector3<float> normalized(const Wm4::Vector3<float>& v)
{
    const float length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    const float reciprocal = 1.0f / length;
    if (length != 0.0f && std::isfinite(reciprocal))
        return v * reciprocal;
    return Wm4::Vector3<float>(0.0f, 0.0f, 0.0f);
}

} // namespace

zuVertexBuffer::zuVertexBuffer() = default;

zuVertexBuffer::zuVertexBuffer(const zuAttributes& layout, int quantity)
    : mAttributes(layout), mVertexSize(layout.GetStride()), mVertexQuantity(std::max(quantity, 0))
{
    const int64_t size = static_cast<int64_t>(mVertexSize) * mVertexQuantity;
    mData = zuBlockResourceHandler::NewBlock(size, true);
}

zuVertexBuffer::zuVertexBuffer(const zuVertexBuffer* source)
{
    if (!source)
        return;
    mAttributes = source->mAttributes;
    mVertexSize = source->mVertexSize;
    mVertexQuantity = source->mVertexQuantity;
    if (source->mData) {
        mData = zuBlockResourceHandler::NewBlock(GetDataSize(), false);
        if (mData)
            std::memcpy(mData, source->mData, static_cast<size_t>(GetDataSize()));
    }
}

zuVertexBuffer::~zuVertexBuffer()
{
    release();
    zuBlockResourceHandler::FreeBlock(mData);
}

void zuVertexBuffer::clearContents()
{
    zuBlockResourceHandler::ReplaceBlock(mData, nullptr);
    mAttributes = zuAttributes();
    mVertexSize = 0;
    mVertexQuantity = 0;
}

bool zuVertexBuffer::setVertexFormat(const zuAttributes& layout, int quantity)
{
    if (mVertexSize > 0)
        return false;
    mAttributes = layout;
    mVertexSize = layout.GetStride();
    resizeVertexBuffer(quantity);
    return true;
}

void zuVertexBuffer::resizeVertexBuffer(int quantity)
{
    quantity = std::max(quantity, 0);
    const int64_t size = std::max<int64_t>(static_cast<int64_t>(mVertexSize) * quantity, 0);
    char* block = zuBlockResourceHandler::NewBlock(size, false);
    const int64_t kept = mData ? std::min<int64_t>(size, GetDataSize()) : 0;
    if (kept > 0)
        std::memcpy(block, mData, static_cast<size_t>(kept));
    if (size > kept)
        std::memset(block + kept, 0, static_cast<size_t>(size - kept));
    zuBlockResourceHandler::ReplaceBlock(mData, block);
    mVertexQuantity = quantity;
    // The file holds the block of the old size: it cannot be read back from there.
    clearStreamInfo();
}

void zuVertexBuffer::copyVertexFormat(zuVertexBuffer* target) const
{
    if (!target || target == this)
        return;
    target->mAttributes = mAttributes;
    target->mVertexSize = mVertexSize;
    target->mVertexQuantity = mVertexQuantity;
    zuBlockResourceHandler::ReplaceBlock(target->mData, nullptr);
    target->clearStreamInfo();
}

float* zuVertexBuffer::tuple(Group group, int unit, int i) const
{
    if (!mData || i < 0 || i >= mVertexQuantity || !mAttributes.Has(group, unit))
        return nullptr;
    const unsigned int offset = mAttributes.GetOffsetByte(group, unit);
    if (offset == static_cast<unsigned int>(-1))
        return nullptr;
    return reinterpret_cast<float*>(vertexAddress(offset, i));
}

bool zuVertexBuffer::copyVertex(const zuVertexBuffer* source, int sourceIndex, int targetIndex)
{
    if (!source || sourceIndex >= source->mVertexQuantity || targetIndex >= mVertexQuantity)
        return false;
    // Outside the blocks there is nothing to copy from or to.
    if (sourceIndex < 0 || targetIndex < 0 || !mData || !source->mData)
        return false;
    const zuAttributes& from = source->mAttributes;
    auto copyFloats = [&](Group group, int unit) {
        const int channels = std::min(from.GetChannels(group, unit), mAttributes.GetChannels(group, unit));
        if (channels <= 0)
            return;
        std::memcpy(vertexAddress(mAttributes.GetOffsetByte(group, unit), targetIndex),
                    source->vertexAddress(from.GetOffsetByte(group, unit), sourceIndex),
                    static_cast<size_t>(channels) * 4);
    };
    copyFloats(zuAttributes::POSITION, 0);
    copyFloats(zuAttributes::BLEND_WEIGHT, 0);
    copyFloats(zuAttributes::BLEND_INDICES, 0);
    copyFloats(zuAttributes::NORMAL, 0);
    copyFloats(zuAttributes::COLOR, 0);
    copyFloats(zuAttributes::COLOR, 1);
    copyFloats(zuAttributes::FOG, 0);
    copyFloats(zuAttributes::PSIZE, 0);
    for (int unit = 0; unit < from.GetTCoordUnitCount(); ++unit)
        copyFloats(zuAttributes::TCOORD, unit);
    copyFloats(zuAttributes::TANGENT, 0);
    copyFloats(zuAttributes::BITANGENT, 0);

    // UserInt unit u copies u + 1 ints, whatever the channel counts say: the rule files and
    // callers of this format expect. The ints may run past the unit into the rest of the
    // vertex, but are clipped at the end of either block.
    for (int unit = 0; unit < from.GetUserIntUnitCount() && unit < 4; ++unit) {
        if (!from.HasUserInt(unit) || !mAttributes.HasUserInt(unit))
            continue;
        char* target = vertexAddress(mAttributes.GetUserIntOffsetByte(unit), targetIndex);
        const char* origin = source->vertexAddress(from.GetUserIntOffsetByte(unit), sourceIndex);
        int64_t bytes = static_cast<int64_t>(unit + 1) * 4;
        bytes = std::min<int64_t>(bytes, (mData + GetDataSize()) - target);
        bytes = std::min<int64_t>(bytes, (source->mData + source->GetDataSize()) - origin);
        if (bytes > 0)
            std::memmove(target, origin, static_cast<size_t>(bytes));
    }
    return true;
}

bool zuVertexBuffer::swapVertexBuffer(zuVertexBuffer& other)
{
    if (isGPUResident() || other.isGPUResident())
        return false;
    mAttributes.swapAttributes(other.mAttributes);
    std::swap(mVertexSize, other.mVertexSize);
    std::swap(mVertexQuantity, other.mVertexQuantity);
    std::swap(mData, other.mData);
    swapFileInfos(other);
    return true;
}

void zuVertexBuffer::BakeFromTransformation(const zuGenericTransformation<float>& transformation)
{
    if (transformation.IsIdentity())
        return;

    const int positionChannels = mAttributes.GetPositionChannels();
    if (positionChannels == 3) {
        const unsigned int offset = mAttributes.GetPositionOffsetByte();
        for (int i = 0; mData && i < mVertexQuantity; ++i) {
            char* address = vertexAddress(offset, i);
            writeVector3(address, transformation.ApplyForward(readVector3(address)));
        }
    } else if (positionChannels != 0) {
        std::cout << "zuVertexBuffer::BakeFromTransformation is only supported for 3 position channels";
    }

    // Directions follow the transpose of the inverse's linear part: N = R·diag(S) for an
    // RS inverse, its general matrix otherwise, and d' = Nᵀ·d.
    zuGenericTransformation<float> inverse;
    transformation.Inverse(inverse);
    Wm4::Matrix3<float> directions = inverse.GetMatrix();
    if (inverse.IsRSMatrix()) {
        const Wm4::Vector3<float>& scale = inverse.GetScale();
        for (int row = 0; row < 3; ++row)
            for (int column = 0; column < 3; ++column)
                directions(row, column) *= scale[column];
    }
    for (Group group : {zuAttributes::NORMAL, zuAttributes::TANGENT, zuAttributes::BITANGENT}) {
        const int channels = mAttributes.GetChannels(group);
        if (channels == 3) {
            const unsigned int offset = mAttributes.GetOffsetByte(group);
            for (int i = 0; mData && i < mVertexQuantity; ++i) {
                char* address = vertexAddress(offset, i);
                // The row vector d times N is Nᵀ·d.
                writeVector3(address, normalized(readVector3(address) * directions));
            }
        } else if (channels != 0) {
            // Tangents and bitangents share the normals' message.
            std::cout << "zuVertexBuffer::BakeFromTransformation is only supported for 3 normal channels";
        }
    }
}

void zuVertexBuffer::BuildCompatibleArray(const zuAttributes& layout, bool colorFlag, int& byteCount,
                                          char*& array) const
{
    byteCount = 0;
    if (mVertexQuantity <= 0 || !mData)
        return;

    // What each vertex contributes, group by group in the layout's order.
    struct Part {
        unsigned int offset; // in this buffer
        int copied;          // floats taken from this buffer
        int filled;          // floats of value `fill` after them
        float fill;
    };
    std::vector<Part> parts;
    int64_t floatsPerVertex = 0;
    auto plan = [&](Group group, int unit) {
        const int wanted = layout.GetChannels(group, unit);
        if (wanted <= 0)
            return;
        const int copied = std::min(std::max(mAttributes.GetChannels(group, unit), 0), wanted);
        const float fill = group == zuAttributes::POSITION || group == zuAttributes::COLOR ? 1.0f : 0.0f;
        int filled = wanted - copied;
        if (colorFlag && group == zuAttributes::COLOR && wanted <= 3)
            filled += 4 - wanted;
        parts.push_back({mAttributes.GetOffsetByte(group, unit), copied, filled, fill});
        floatsPerVertex += copied + filled;
    };
    for (int g = zuAttributes::POSITION; g <= zuAttributes::BITANGENT; ++g) {
        const Group group = static_cast<Group>(g);
        const int units = zuAttributes::IsUnitFamily(group) ? layout.GetUnitCount(group) : 1;
        for (int unit = 0; unit < units; ++unit)
            plan(group, unit);
    }

    const int64_t bytes = floatsPerVertex * 4 * mVertexQuantity;
    if (bytes <= 0 || bytes > std::numeric_limits<int>::max())
        return;
    byteCount = static_cast<int>(bytes);
    if (!array)
        array = new char[static_cast<size_t>(byteCount)];
    char* out = array;
    for (int i = 0; i < mVertexQuantity; ++i) {
        for (const Part& part : parts) {
            if (part.copied > 0) {
                std::memcpy(out, vertexAddress(part.offset, i), static_cast<size_t>(part.copied) * 4);
                out += part.copied * 4;
            }
            for (int k = 0; k < part.filled; ++k, out += 4)
                std::memcpy(out, &part.fill, 4);
        }
    }
}

bool zuVertexBuffer::CloneVertexBuffer(zuRttiInterface*& target, bool withData) const
{
    if (target && !target->IsDerived(TYPE))
        return false;
    if (!target)
        target = new zuVertexBuffer;
    if (!zuUnnamedObject::Clone(target))
        return false;
    zuVertexBuffer* clone = static_cast<zuVertexBuffer*>(target);
    clone->mVertexSize = mVertexSize;
    clone->mVertexQuantity = mVertexQuantity;
    clone->mAttributes = mAttributes;
    if (!withData)
        return true;
    char* block = zuBlockResourceHandler::NewBlock(GetDataSize(), false);
    if (mData) {
        if (block)
            std::memcpy(block, mData, static_cast<size_t>(GetDataSize()));
    } else {
        // The bytes are brought in and dropped again, and the clone's block stays unfilled:
        // the behaviour callers of this format know and keep.
        const zuRendererInterface::ResidentScope resident(this);
    }
    zuBlockResourceHandler::ReplaceBlock(clone->mData, block);
    return true;
}

// ---------------------------------------------------------------------------------------
// Resource requests

zuDynamicLoadingResourceHandler* zuVertexBuffer::createHandler() const
{
    zuVertexBufferHandler* handler = new zuVertexBufferHandler;
    handler->setBufferHandler(this);
    return handler;
}

// ---------------------------------------------------------------------------------------
// Persistence

int zuVertexBuffer::GetDiskUsed(const zuBaseStream& stream) const
{
    const zuStreamVersion& version = stream.GetVersion();
    int size = zuUnnamedObject::GetDiskUsed(stream) + GetDataSize()
        + 4 * (mAttributes.GetColorUnitCount() + mAttributes.GetTCoordUnitCount());
    size += version > zuStreamVersion(4, 3) ? 52 : 28;
    if (version >= zuStreamVersion(5, 2)) {
        size += 24;
        for (int family = zuAttributes::USER_BYTE; family <= zuAttributes::USER_UINT; ++family)
            size += 4 * mAttributes.GetUnitCount(static_cast<Group>(family));
    }
    return size;
}

void zuVertexBuffer::checkSave(zuBaseStream& stream) const
{
    checkSizesFit(stream);
    zuBlockResourceSave::Check(stream, *this);
}

void zuVertexBuffer::checkSizesFit(zuBaseStream& stream) const
{
    // Up to 5.1 the sizes are counted in floats: a remainder would be lost.
    if (stream.GetVersion() <= zuStreamVersion(5, 1) && mVertexSize % 4 != 0)
        zuBlockResourceSave::Refuse(stream, *this,
                                    "a vertex of " + std::to_string(mVertexSize)
                                        + " bytes cannot be stored in a stream of version 5.1 or older, which counts"
                                          " vertex sizes in floats");
}

void zuVertexBuffer::Save(zuBaseStream& stream) const
{
    zuBlockResourceSave::PrefetchStart(mData, GetDataSize());
    checkSizesFit(stream);
    zuUnnamedObject::Save(stream);
    // Up to 5.1 the sizes are counted in floats.
    const bool sizesInFloats = stream.GetVersion() <= zuStreamVersion(5, 1);
    stream.Write(sizesInFloats ? mVertexSize / 4 : mVertexSize);
    stream.Write(mVertexQuantity);
    stream.Write(sizesInFloats ? GetDataSize() / 4 : GetDataSize());
    const zuBlockResourceSave block(stream, *this);
    block.writeBlock(stream, mData, GetDataSize());
    writeLayout(stream, mAttributes);
}

void zuVertexBuffer::writeLayout(zuBaseStream& stream, const zuAttributes& layout)
{
    // The buffers of a scene share a few layouts, and mostly write one after another: the
    // fields of the last layout written are kept with a reference to its record, which
    // therefore cannot give its address to another layout meanwhile.
    struct LastLayout {
        zuAttributes layout;
        zuStreamVersion version;
        std::vector<int> fields;
    };
    thread_local LastLayout last;
    const zuStreamVersion& version = stream.GetVersion();
    if (last.fields.empty() || last.layout.mLayout != layout.mLayout || last.version != version) {
        last.fields.clear();
        appendLayout(last.fields, layout, version);
        last.layout = layout;
        last.version = version;
    }
    stream.Write(static_cast<int>(last.fields.size()), last.fields.data());
}

void zuVertexBuffer::Load(zuBaseStream& stream, zuLink* link)
{
    zuUnnamedObject::Load(stream, link);
    clearContents();
    if (!readSizes(stream))
        return;

    mData = readBlock(stream, static_cast<uint64_t>(GetDataSize()));

    zuAttributes layout;
    bool valid = readLayout(stream, layout);
    // The stored vertex size is kept as read; a layout wider than it would address bytes
    // beyond each vertex, and beyond the block at the last one.
    if (valid && layout.GetStride() > mVertexSize) {
        stream.setCorrupt("the vertex layout is wider than the vertex size");
        valid = false;
    }
    if (!valid) {
        clearContents();
        return;
    }
    mAttributes.swapAttributes(layout);
}

// vertexSize, vertexQuantity and dataSize, checked against each other and against the bytes
// that remain before anything is allocated.
bool zuVertexBuffer::readSizes(zuBaseStream& stream)
{
    int vertexSize = 0;
    int quantity = 0;
    int dataSize = 0;
    stream.Read(vertexSize);
    stream.Read(quantity);
    stream.Read(dataSize);
    int64_t vertexBytes = vertexSize;
    int64_t dataBytes = dataSize;
    if (stream.GetVersion() <= zuStreamVersion(5, 1)) {
        vertexBytes *= 4;
        dataBytes *= 4;
    }
    if (!stream.CheckCount(vertexBytes, 0) || !stream.CheckCount(dataBytes, 1))
        return false;
    if (vertexBytes > std::numeric_limits<int>::max() || dataBytes > std::numeric_limits<int>::max()) {
        stream.setCorrupt("a vertex size does not fit the format");
        return false;
    }
    if (!stream.CheckCount(quantity, static_cast<uint64_t>(vertexBytes)))
        return false;
    if (dataBytes != vertexBytes * quantity) {
        stream.setCorrupt("the vertex data size is not the vertex size times the vertex count");
        return false;
    }
    mVertexSize = static_cast<int>(vertexBytes);
    mVertexQuantity = quantity;
    return true;
}

// The mirror of writeLayout. The counts are set in one draft, laid out once at the end. False, with the stream marked corrupt, on a negative count or a unit count the
// data cannot hold.
bool zuVertexBuffer::readLayout(zuBaseStream& stream, zuAttributes& layout)
{
    zuAttributes::Layout draft = layout.draft();
    auto readGroup = [&stream, &draft](Group group) {
        int channels = 0;
        stream.Read(channels);
        if (channels < 0) {
            stream.setCorrupt("a negative channel count");
            return false;
        }
        draft.setChannels(group, 0, channels);
        return !stream.isStreamError();
    };
    auto readUnits = [&stream, &draft](Group family) {
        int count = 0;
        stream.Read(count);
        // Most families have no unit: nothing to check or allocate.
        if (count == 0)
            return !stream.isStreamError();
        if (!stream.CheckCount(count, 4))
            return false;
        std::vector<int> channels(static_cast<size_t>(count));
        stream.Read(count, channels.data());
        if (std::any_of(channels.begin(), channels.end(), [](int value) { return value < 0; })) {
            stream.setCorrupt("a negative channel count");
            return false;
        }
        draft.setUnitChannels(family, channels);
        return !stream.isStreamError();
    };
    const zuStreamVersion& version = stream.GetVersion();
    bool valid = readGroup(zuAttributes::POSITION);
    if (version <= zuStreamVersion(4, 3)) {
        valid = valid && readGroup(zuAttributes::NORMAL) && readUnits(zuAttributes::COLOR)
            && readUnits(zuAttributes::TCOORD);
    } else {
        valid = valid && readGroup(zuAttributes::BLEND_WEIGHT) && readGroup(zuAttributes::NORMAL)
            && readUnits(zuAttributes::COLOR) && readGroup(zuAttributes::FOG) && readGroup(zuAttributes::PSIZE)
            && readGroup(zuAttributes::BLEND_INDICES) && readUnits(zuAttributes::TCOORD)
            && readGroup(zuAttributes::TANGENT) && readGroup(zuAttributes::BITANGENT);
        if (version >= zuStreamVersion(5, 2)) {
            for (int family = zuAttributes::USER_BYTE; valid && family <= zuAttributes::USER_UINT; ++family)
                valid = readUnits(static_cast<Group>(family));
        }
    }
    layout.adopt(std::move(draft));
    return valid;
}

bool zuVertexBuffer::Equals(const zuRttiInterface* other) const
{
    if (!zuUnnamedObject::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const zuVertexBuffer* buffer = static_cast<const zuVertexBuffer*>(other);
    if (mVertexSize != buffer->mVertexSize || mVertexQuantity != buffer->mVertexQuantity
        || GetDataSize() != buffer->GetDataSize() || mAttributes != buffer->mAttributes)
        return false;
    const int count = GetDataSize() / 4;
    if (count == 0)
        return true;
    if (!mData || !buffer->mData)
        return !mData && !buffer->mData;
    // Every 4 bytes as a float, whatever the channel types.
    for (int k = 0; k < count; ++k) {
        float a = 0.0f;
        float b = 0.0f;
        std::memcpy(&a, mData + 4 * k, 4);
        std::memcpy(&b, buffer->mData + 4 * k, 4);
        const float difference = a - b;
        if (static_cast<double>(std::fabs(difference)) > 0.0001)
            return false;
    }
    return true;
}

bool zuVertexBuffer::Clone(zuRttiInterface*& target) const
{
    return CloneVertexBuffer(target, false);
}

// ---------------------------------------------------------------------------------------
// Text dump

std::ostream& operator<<(std::ostream& out, const zuVertexBuffer& buffer)
{
    const zuAttributes& layout = buffer.GetAttributes();
    auto dump = [&](Group group, int unit, int components) {
        const char* data = buffer.GetData();
        if (!data)
            return;
        const int count = std::min(layout.GetChannels(group, unit), components);
        const unsigned int offset = layout.GetOffsetByte(group, unit);
        for (int i = 0; i < buffer.GetVertexQuantity(); ++i) {
            const char* vertex = data + static_cast<ptrdiff_t>(i) * buffer.GetVertexSize() + offset;
            for (int c = 0; c < count; ++c) {
                float value = 0.0f;
                std::memcpy(&value, vertex + 4 * c, 4);
                out << (c ? " " : "") << value;
            }
            out << "\n";
        }
    };
    if (layout.HasPosition()) {
        out << "positions\n";
        dump(zuAttributes::POSITION, 0, 3);
    }
    if (layout.HasNormal()) {
        out << "normals\n";
        dump(zuAttributes::NORMAL, 0, 3);
    }
    for (int unit = 0; unit <= 6; ++unit) {
        if (layout.HasTCoord(unit)) {
            out << "TCoord " << unit << "\n";
            dump(zuAttributes::TCOORD, unit, 2);
        }
    }
    return out;
}

void zuVertexBuffer::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuUnnamedObject::DescribeFields(object, visitor);
    const auto& buffer = static_cast<const zuVertexBuffer&>(object);
    visitor.BeginGroup(nullptr);
    visitor.Integer("quantity", buffer.mVertexQuantity);
    visitor.Integer("vertex size", buffer.mVertexSize);
    visitor.Integer("data size", buffer.GetDataSize());
    visitor.EndGroup();
    buffer.mAttributes.DescribeFields("layout", visitor);
    buffer.DescribeBlock(visitor);
    // The vertices themselves only while they are in memory: describing reads no file.
    const int channels = buffer.mAttributes.GetPositionChannels();
    if (buffer.mData && channels > 0)
        visitor.List("positions", buffer.mVertexQuantity, [&](int64_t i) {
            visitor.Numbers(nullptr, buffer.PositionTuple(static_cast<int>(i)), channels, channels);
        });
}

} // namespace zu
