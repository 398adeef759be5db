#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace zu {

// Progress of a long operation as nested groups of steps. A group covers `weight` of its
// parent's current step (of the whole task at the top). Cancellation may be requested from
// any thread; the worker polls isCancelRequested().
class zuProgressNotifierInterface {
public:
    virtual ~zuProgressNotifierInterface() = default;

    virtual void openGroup(const std::string& label, int64_t stepCount, double weight = 1.0) = 0;
    virtual void closeGroup() = 0;
    virtual void step(int64_t count = 1) = 0;
    virtual bool isCancelRequested() const = 0;
    virtual void requestCancel() = 0;
};

// The ready-made notifier: tracks the overall fraction done; onProgress is called with it.
class zuProgressNotifier : public zuProgressNotifierInterface {
public:
    void openGroup(const std::string& label, int64_t stepCount, double weight = 1.0) override;
    void closeGroup() override;
    void step(int64_t count = 1) override;
    bool isCancelRequested() const override { return mCancel.load(); }
    void requestCancel() override { mCancel.store(true); }

    // Fraction of the whole task done, 0..1.
    double fraction() const;
    int groupDepth() const;
    const std::string& currentLabel() const;
    int64_t totalSteps() const { return mTotalSteps; }

protected:
    virtual void onProgress(double /*fraction*/) {}

private:
    struct Group {
        std::string label;
        int64_t stepCount;
        int64_t done;
        double start;  // fraction of the whole task where the group starts
        double span;   // fraction of the whole task the group covers
    };
    mutable std::mutex mMutex;
    std::vector<Group> mGroups;
    double mFraction = 0.0;
    int64_t mTotalSteps = 0;
    std::atomic<bool> mCancel{false};
};

// Closes the group it was given on destruction (when the notifier is not null).
class zuProgressNotifierGroupCloser {
public:
    explicit zuProgressNotifierGroupCloser(zuProgressNotifierInterface* notifier) : mNotifier(notifier) {}
    ~zuProgressNotifierGroupCloser() { if (mNotifier) mNotifier->closeGroup(); }
    zuProgressNotifierGroupCloser(const zuProgressNotifierGroupCloser&) = delete;
    zuProgressNotifierGroupCloser& operator=(const zuProgressNotifierGroupCloser&) = delete;

private:
    zuProgressNotifierInterface* mNotifier;
};

} // namespace zu
