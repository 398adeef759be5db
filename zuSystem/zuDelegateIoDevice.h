#pragma once

#include <zuSystem/zuIoDevice.h>

namespace zu {

// Forwards every operation to another device (not owned); a subclass overrides the
// operations it wants to observe or change. Errors of the target are mirrored.
class zuDelegateIoDevice : public zuIoDevice {
public:
    explicit zuDelegateIoDevice(zuIoDevice* target) : mTarget(target) {}

    zuIoDevice* target() const { return mTarget; }
    void setTarget(zuIoDevice* target) { mTarget = target; }

    int64_t read(void* destination, int64_t size) override;
    int64_t write(const void* source, int64_t size) override;
    bool seek(int64_t offset, SeekOrigin origin = SeekSet) override;
    int64_t pos() const override;
    int64_t size() const override;
    bool isOpen() const override;
    bool flush() override;

private:
    zuIoDevice* mTarget;
};

} // namespace zu
