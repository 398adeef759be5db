#pragma once

#include <zuSystem/zuProgressNotifierInterface.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace zu {

// The ready-made notifier: tracks the overall fraction done; onProgress is called with it.
//
// A group opened with n steps and weight w covers w times one step of its parent (w times
// the whole task at the top level) and starts where the parent has got to. step() advances
// the innermost group; closeGroup() moves the fraction to the group's end and advances the
// parent by w steps. Steps past a group's count do not move the fraction beyond the group.
// A group opened with fewer than one step counts as one step for the span of its children.
// Every operation may be called from any thread.
class zuProgressNotifier : public zuProgressNotifierInterface {
public:
    zuProgressNotifier() = default;
    ~zuProgressNotifier() override;

    void openGroup(const std::string& label, int64_t stepCount, double weight = 1.0) override;
    // Closing with no open group does nothing.
    void closeGroup() override;
    // Advances the innermost group; without an open group only totalSteps() counts it.
    void step(int64_t count = 1) override;
    bool isCancelRequested() const override { return mCancel.load(); }
    void requestCancel() override { mCancel.store(true); }

    // Fraction of the whole task done, 0..1; it never decreases.
    double fraction() const;
    int groupDepth() const;
    // The label of the innermost open group, "" when none is open.
    std::string currentLabel() const;
    // The steps counted by step() since construction, over all groups.
    int64_t totalSteps() const;

protected:
    // Called whenever the fraction grows, outside the notifier's state lock and with the
    // reports of all threads in increasing order; an override may query the notifier.
    virtual void onProgress(double /*fraction*/) {}

private:
    struct Group {
        std::string label;
        int64_t stepCount;
        double done;   // steps advanced, fractional when a child group covered part of a step
        double weight; // share of one parent step, added to the parent's done on close
        double start;  // fraction of the whole task where the group starts
        double span;   // fraction of the whole task the group covers
    };

    double positionOf(const Group& group) const;
    void report();

    mutable std::mutex mMutex;
    std::vector<Group> mGroups;
    double mFraction = 0.0;
    int64_t mTotalSteps = 0;
    std::atomic<bool> mCancel{false};

    std::recursive_mutex mReportMutex; // serialises onProgress calls
    double mReported = 0.0;            // the last fraction given to onProgress
};

} // namespace zu
