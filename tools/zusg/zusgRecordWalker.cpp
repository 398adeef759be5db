#include "zusgRecordWalker.h"

#include "zusgByteCursor.h"

#include <algorithm>
#include <cstring>

namespace zusg {

namespace {

const char* const TOP_LEVEL_MARKER = "Top Level";
// The header text and its NUL are short; a longer search means there is no header.
constexpr uint64_t MAX_HEADER_LENGTH = 64;

bool isPrintable(const std::string& text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < 127; });
}

std::string bytesLeft(uint64_t n)
{
    return std::to_string(n) + (n == 1 ? " byte remains" : " bytes remain");
}

} // namespace

bool RecordWalker::fail(uint64_t offset, const std::string& reason)
{
    if (!mFailed) {
        mFailed = true;
        mFailureOffset = offset;
        mFailureReason = mCursor.deviceFailed() ? "the file cannot be read (" + reason + ")" : reason;
    }
    return false;
}

bool RecordWalker::readHeader()
{
    char text[MAX_HEADER_LENGTH];
    const uint64_t available = std::min<uint64_t>(mCursor.size(), MAX_HEADER_LENGTH);
    if (!mCursor.read(text, available))
        return fail(0, "the header cannot be read");
    const void* nul = std::memchr(text, '\0', available);
    if (available < 4 || std::memcmp(text, "MVK ", 4) != 0 || !nul)
        return fail(0, "no object-stream header (a NUL-terminated \"MVK major.minor\")");
    const int length = static_cast<int>(static_cast<const char*>(nul) - text) + 1;
    mHeaderText.assign(text, static_cast<size_t>(length - 1));
    mVersion = zu::zuStreamVersion(text, length);
    if (!mVersion.IsValid())
        return fail(0, "the header \"" + mHeaderText + "\" names no valid version");
    mCursor.seek(static_cast<uint64_t>(length));
    return true;
}

bool RecordWalker::readName(std::string& name)
{
    const uint64_t start = mCursor.offset();
    int32_t length = 0;
    if (!mCursor.readInt32(length))
        return fail(start, "a record starts here but its type name's length needs 4 bytes and only "
                               + bytesLeft(mCursor.remaining()));
    if (length <= 0 || length > MAX_TYPE_NAME_LENGTH)
        return fail(start, "a type name cannot be " + std::to_string(length) + " bytes long");
    if (static_cast<uint64_t>(length) > mCursor.remaining())
        return fail(start, "a type name of " + std::to_string(length) + " bytes is cut off: only "
                               + bytesLeft(mCursor.remaining()));
    name.resize(static_cast<size_t>(length));
    if (!mCursor.read(name.data(), static_cast<uint64_t>(length)))
        return fail(start, "the type name cannot be read");
    if (name != TOP_LEVEL_MARKER && !isPrintable(name))
        return fail(start, "the type name is not text");
    return true;
}

bool RecordWalker::next(Record& record)
{
    if (mFailed || mCursor.remaining() == 0)
        return false;
    record = Record();
    record.offset = mCursor.offset();
    if (!readName(record.type))
        return false;
    if (record.type == TOP_LEVEL_MARKER) {
        record.topLevel = true;
        record.offset = mCursor.offset();
        if (!readName(record.type))
            return false;
    }
    const uint64_t sizeOffset = mCursor.offset();
    if (!mCursor.readInt32(record.size))
        return fail(record.offset, "the record \"" + record.type + "\" is cut off before its size field");
    // The record counts its type name (4 + length), its size field (4) and its identifier (8).
    const int64_t header = 4 + static_cast<int64_t>(record.type.size()) + 4 + 8;
    if (record.size < header)
        return fail(sizeOffset, "the record \"" + record.type + "\" announces " + std::to_string(record.size)
                                    + (record.size == 1 ? " byte" : " bytes") + ", fewer than its own header (" + std::to_string(header) + ")");
    const uint64_t end = record.offset + static_cast<uint64_t>(record.size);
    if (end > mCursor.size())
        return fail(record.offset, "the record \"" + record.type + "\" needs " + std::to_string(record.size)
                                       + " bytes but the file ends " + std::to_string(end - mCursor.size())
                                       + " bytes short of it, at offset " + std::to_string(mCursor.size()));
    if (!mCursor.readUInt64(record.identifier) || !mCursor.seek(end))
        return fail(record.offset, "the record \"" + record.type + "\" cannot be read");
    return true;
}

} // namespace zusg
