#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zu {
class zuIoDevice;
}

namespace zusg {

// Reads little-endian values from a device, checking every read against the device's size
// before it is made: a read that would run past the end fails and leaves the cursor where
// it was. Reads go through a buffer of its own so that walking millions of small records
// costs few device calls; skipping far ahead seeks the device instead of reading.
class ByteCursor {
public:
    // Measures the device (seek to the end and back to the start).
    explicit ByteCursor(zu::zuIoDevice& device);

    uint64_t offset() const { return mBufferStart + mPosition; }
    uint64_t size() const { return mSize; }
    uint64_t remaining() const { return mSize - offset(); }
    // True when the device failed (as opposed to the data ending early).
    bool deviceFailed() const { return mDeviceFailed; }

    // Each returns false, moving nothing, when fewer bytes remain than it needs.
    bool read(void* destination, uint64_t n);
    bool readInt32(int32_t& value);
    bool readUInt64(uint64_t& value);
    // A signed 32-bit length, then that many bytes; a length of 0 or less is "".
    // Fails when the bytes are not all there or the length exceeds maxLength.
    bool readString(std::string& value, int32_t maxLength);
    // Moves to an absolute offset within 0..size().
    bool seek(uint64_t offset);
    bool skip(uint64_t n) { return n <= remaining() && seek(offset() + n); }

private:
    // Makes at least n bytes (n <= the buffer's capacity) available at mPosition.
    bool fill(uint64_t n);

    zu::zuIoDevice& mDevice;
    uint64_t mSize = 0;
    std::vector<unsigned char> mBuffer;
    uint64_t mBufferStart = 0;  // device offset of mBuffer[0]
    uint64_t mBufferEnd = 0;    // valid bytes in mBuffer
    uint64_t mPosition = 0;     // position inside mBuffer
    bool mDeviceFailed = false;
};

} // namespace zusg
