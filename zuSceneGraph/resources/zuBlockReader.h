#pragma once

#include <cstdint>
#include <cstdio>

namespace zu {

// Where a handler reads a block's file form from: the file itself, standing at the block's
// offset (a single load request), or bytes of the file read ahead with its neighbours (a
// batch of requests). Reads are exact: a read that cannot be served whole reads nothing,
// fails, and every later read fails too, as a short file read would leave it.
class zuBlockReader {
public:
    explicit zuBlockReader(std::FILE* file) : mFile(file) {}
    zuBlockReader(const char* bytes, uint64_t size) : mBytes(bytes), mRemaining(bytes ? size : 0) {}

    // Copies the next `size` bytes; false when fewer remain.
    bool read(void* destination, uint64_t size);
    // The next `size` bytes in place when the reader holds them in memory (and passes
    // over them); null when it reads a file or fewer remain. Lets a decoder skip a copy.
    const char* take(uint64_t size);

private:
    std::FILE* mFile = nullptr;
    const char* mBytes = nullptr;
    uint64_t mRemaining = 0;
    bool mFailed = false;
};

} // namespace zu
