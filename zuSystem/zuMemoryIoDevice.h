#pragma once

#include <zuSystem/zuIoDevice.h>

#include <vector>

namespace zu {

// A device over a byte vector it owns: a write overwrites from the position and grows the
// vector past its end, reads stop at its end. The position stays within 0..size(): seeking
// before the start or past the end fails and sets the error state.
class zuMemoryIoDevice : public zuIoDevice {
public:
    zuMemoryIoDevice() = default;
    explicit zuMemoryIoDevice(std::vector<char> bytes);

    const std::vector<char>& data() const { return mBytes; }
    std::vector<char>& data() { return mBytes; }

    int64_t read(void* destination, int64_t size) override;
    int64_t write(const void* source, int64_t size) override;
    bool seek(int64_t offset, SeekOrigin origin = SeekSet) override;
    int64_t pos() const override { return mPosition; }
    int64_t size() const override { return static_cast<int64_t>(mBytes.size()); }
    bool isOpen() const override { return true; }
    bool isWritableFromAnyThread() const override { return true; }

private:
    std::vector<char> mBytes;
    int64_t mPosition = 0;
};

} // namespace zu
