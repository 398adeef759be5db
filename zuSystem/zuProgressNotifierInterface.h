#pragma once

#include <cstdint>
#include <string>

namespace zu {

// Progress of a long operation as nested groups of steps. A group covers `weight` of its
// parent's current step (of the whole task at the top). Cancellation may be requested from
// any thread; the worker polls isCancelRequested().
class zuProgressNotifierInterface {
public:
    virtual ~zuProgressNotifierInterface();

    virtual void openGroup(const std::string& label, int64_t stepCount, double weight = 1.0) = 0;
    virtual void closeGroup() = 0;
    virtual void step(int64_t count = 1) = 0;
    virtual bool isCancelRequested() const = 0;
    virtual void requestCancel() = 0;
};

} // namespace zu
