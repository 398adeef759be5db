#pragma once

#include <cstdint>

namespace zu {

// A byte device: read, write, seek, position, size and a sticky error state.
// Offsets are 64-bit. A failed operation sets the error state; clearError() resets it.
class zuIoDevice {
public:
    enum SeekOrigin { SeekSet, SeekCur, SeekEnd };

    virtual ~zuIoDevice();

    // Read up to `size` bytes into `destination`, or write `size` bytes from `source`, at
    // the position, which moves past them. Return the number of bytes transferred
    // (0..size), or -1 on failure.
    virtual int64_t read(void* destination, int64_t size) = 0;
    virtual int64_t write(const void* source, int64_t size) = 0;
    // Moves the position to `offset` bytes from `origin`; false (and the error state) when
    // the target is invalid.
    virtual bool seek(int64_t offset, SeekOrigin origin = SeekSet) = 0;
    virtual int64_t pos() const = 0;
    // The total size in bytes, or -1 when the device cannot tell (a pipe).
    virtual int64_t size() const = 0;
    virtual bool isOpen() const = 0;
    virtual bool flush() { return true; }
    // Reads up to `size` bytes at `offset` (a seek, then a read, unless the device can do
    // both in one call). Where the position is afterwards depends on the device: seek before
    // the next read or write.
    virtual int64_t readAt(int64_t offset, void* destination, int64_t size);
    // True when write may be called from a thread other than the one that opened the
    // device, one call at a time: a stream saving a large file then hands its full blocks to
    // a writer thread. False by default, for devices that call back into the application.
    virtual bool isWritableFromAnyThread() const { return false; }

    bool isError() const { return mError; }
    void setError() { mError = true; }
    void clearError() { mError = false; }

private:
    bool mError = false;
};

} // namespace zu
