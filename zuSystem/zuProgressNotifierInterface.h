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

    // Opens a group named `label` ("Loading", "Saving", ...) of `stepCount` steps inside the
    // current step, covering `weight` of it (1: all of it).
    virtual void openGroup(const std::string& label, int64_t stepCount, double weight = 1.0) = 0;
    // Closes the innermost group.
    virtual void closeGroup() = 0;
    // Advances the innermost group by `count` steps.
    virtual void step(int64_t count = 1) = 0;
    // Whether someone asked the operation to stop; it then fails as soon as it can.
    virtual bool isCancelRequested() const = 0;
    virtual void requestCancel() = 0;
};

} // namespace zu
