#include "zusgByteCursor.h"

#include <zuSystem/zuIoDevice.h>

#include <algorithm>
#include <cstring>

namespace zusg {

namespace {

constexpr uint64_t BUFFER_SIZE = 64 * 1024;

} // namespace

ByteCursor::ByteCursor(zu::zuIoDevice& device) : mDevice(device), mBuffer(BUFFER_SIZE)
{
    const int64_t size = mDevice.size();
    if (size >= 0) {
        mSize = static_cast<uint64_t>(size);
    } else if (mDevice.seek(0, zu::zuIoDevice::SeekEnd)) {
        // A device that cannot tell its size may still be measured by seeking.
        mSize = static_cast<uint64_t>(std::max<int64_t>(mDevice.pos(), 0));
    }
    if (!mDevice.seek(0, zu::zuIoDevice::SeekSet) || mDevice.isError()) {
        mDeviceFailed = true;
        mSize = 0;
    }
}

bool ByteCursor::fill(uint64_t n)
{
    if (mBufferEnd - mPosition >= n)
        return true;
    // Keep the bytes not yet read, then top the buffer up from the device.
    const uint64_t kept = mBufferEnd - mPosition;
    std::memmove(mBuffer.data(), mBuffer.data() + mPosition, kept);
    mBufferStart += mPosition;
    mPosition = 0;
    mBufferEnd = kept;
    const uint64_t wanted = std::min<uint64_t>(mBuffer.size() - kept, mSize - (mBufferStart + kept));
    if (wanted > 0) {
        if (!mDevice.seek(static_cast<int64_t>(mBufferStart + kept), zu::zuIoDevice::SeekSet)) {
            mDeviceFailed = true;
            return false;
        }
        const int64_t got = mDevice.read(mBuffer.data() + kept, static_cast<int64_t>(wanted));
        if (got != static_cast<int64_t>(wanted) || mDevice.isError()) {
            // The device holds fewer bytes than it announced, or failed.
            mDeviceFailed = true;
            return false;
        }
        mBufferEnd += wanted;
    }
    return mBufferEnd - mPosition >= n;
}

bool ByteCursor::read(void* destination, uint64_t n)
{
    if (n > remaining() || mDeviceFailed)
        return false;
    unsigned char* target = static_cast<unsigned char*>(destination);
    while (n > 0) {
        const uint64_t chunk = std::min<uint64_t>(n, mBuffer.size());
        if (!fill(chunk))
            return false;
        std::memcpy(target, mBuffer.data() + mPosition, chunk);
        mPosition += chunk;
        target += chunk;
        n -= chunk;
    }
    return true;
}

bool ByteCursor::readInt32(int32_t& value)
{
    unsigned char bytes[4];
    if (!read(bytes, 4))
        return false;
    const uint32_t bits = uint32_t(bytes[0]) | uint32_t(bytes[1]) << 8 | uint32_t(bytes[2]) << 16
        | uint32_t(bytes[3]) << 24;
    value = static_cast<int32_t>(bits);
    return true;
}

bool ByteCursor::readUInt64(uint64_t& value)
{
    unsigned char bytes[8];
    if (!read(bytes, 8))
        return false;
    value = 0;
    for (int i = 7; i >= 0; --i)
        value = value << 8 | bytes[i];
    return true;
}

bool ByteCursor::readString(std::string& value, int32_t maxLength)
{
    const uint64_t start = offset();
    int32_t length = 0;
    if (!readInt32(length))
        return false;
    if (length <= 0) {
        value.clear();
        return true;
    }
    if (length > maxLength || static_cast<uint64_t>(length) > remaining()) {
        seek(start);
        return false;
    }
    value.resize(static_cast<size_t>(length));
    if (!read(value.data(), static_cast<uint64_t>(length))) {
        seek(start);
        return false;
    }
    return true;
}

bool ByteCursor::seek(uint64_t target)
{
    if (target > mSize)
        return false;
    if (target >= mBufferStart && target <= mBufferStart + mBufferEnd) {
        mPosition = target - mBufferStart;
        return true;
    }
    // Far away: drop the buffer; the next read fetches from the device at the target.
    mBufferStart = target;
    mBufferEnd = 0;
    mPosition = 0;
    return true;
}

} // namespace zusg
