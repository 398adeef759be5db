#pragma once

#include <zuSystem/zuIoDevice.h>

#include <cstdio>

namespace zu {

// Standard input, output or error as a device. Not seekable: seek fails, size is -1.
class zuStdIoDevice : public zuIoDevice {
public:
    enum Channel { StdIn, StdOut, StdErr };

    explicit zuStdIoDevice(Channel channel);

    int64_t read(void* destination, int64_t size) override;
    int64_t write(const void* source, int64_t size) override;
    bool seek(int64_t offset, SeekOrigin origin = SeekSet) override;
    int64_t pos() const override { return mPosition; }
    int64_t size() const override { return -1; }
    bool isOpen() const override { return true; }
    bool flush() override;

private:
    Channel mChannel;
    std::FILE* mFile;
    int64_t mPosition = 0;
};

} // namespace zu
