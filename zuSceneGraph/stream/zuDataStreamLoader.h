#pragma once

namespace zu {

class zuProgressNotifierInterface;

// Loads bulk data of one class alongside an object stream, possibly on other threads.
// The stream tells it about each object created, waits for it at the end, or cancels it.
class zuDataStreamLoader {
public:
    virtual ~zuDataStreamLoader() = default;
    // Called after every object the stream creates; false reports a failure.
    virtual bool onObjectLoad() = 0;
    // Waits until all work has finished; false when some of it failed.
    virtual bool waitForEnd(zuProgressNotifierInterface* progress) = 0;
    virtual void cancel() = 0;
    // Forgets the state of the last load (the stream itself does not call it).
    virtual void reset() = 0;
};

} // namespace zu
