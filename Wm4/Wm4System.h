#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

namespace Wm4 {

// Byte-level helpers of the object stream. Stream data is little-endian on
// every host: the ReadNle functions copy `quantity` elements of N bytes from a
// byte buffer into memory in host order, the WriteNle functions copy them from
// memory into the buffer in little-endian order. Each returns the number of
// bytes copied (0 for a quantity of 0 or less). They sit in the hot path of
// saving and loading, so they are inline and reduce to one memcpy on a
// little-endian host; the buffer needs no alignment.
class System {
public:
    static std::size_t Read2le(const char* buffer, int quantity, void* data) { return CopyLittleEndian(2, buffer, quantity, data); }
    static std::size_t Read4le(const char* buffer, int quantity, void* data) { return CopyLittleEndian(4, buffer, quantity, data); }
    static std::size_t Read8le(const char* buffer, int quantity, void* data) { return CopyLittleEndian(8, buffer, quantity, data); }
    static std::size_t Write2le(char* buffer, int quantity, const void* data) { return CopyLittleEndian(2, data, quantity, buffer); }
    static std::size_t Write4le(char* buffer, int quantity, const void* data) { return CopyLittleEndian(4, data, quantity, buffer); }
    static std::size_t Write8le(char* buffer, int quantity, const void* data) { return CopyLittleEndian(8, data, quantity, buffer); }

    // Reverses the byte order of each of `quantity` elements of `size` bytes, in place.
    static void SwapBytes(int size, int quantity, void* data)
    {
        auto* bytes = static_cast<unsigned char*>(data);
        for (int i = 0; i < quantity; ++i, bytes += size) {
            std::reverse(bytes, bytes + size);
        }
    }

    // Copies min(dstSize, srcSize) bytes from src to dst (which must not
    // overlap) and returns dst. Nothing is copied when either pointer is null.
    static void* Memcpy(void* dst, std::size_t dstSize, const void* src, std::size_t srcSize);

private:
    static std::size_t CopyLittleEndian(int size, const void* src, int quantity, void* dst)
    {
        if (quantity <= 0) {
            return 0;
        }
        std::size_t bytes = static_cast<std::size_t>(size) * static_cast<std::size_t>(quantity);
        std::memcpy(dst, src, bytes);
        if constexpr (std::endian::native != std::endian::little) {
            SwapBytes(size, quantity, dst);
        }
        return bytes;
    }
};

} // namespace Wm4
