#include <zuSystem/zuProgressNotifier.h>

#include <algorithm>

namespace zu {

zuProgressNotifier::~zuProgressNotifier() = default;

double zuProgressNotifier::positionOf(const Group& group) const
{
    const double steps = static_cast<double>(std::max<int64_t>(group.stepCount, 1));
    // span * (done / steps) rather than done * (span / steps): a finished group lands
    // exactly on its end.
    return group.start + group.span * (std::min(group.done, steps) / steps);
}

void zuProgressNotifier::openGroup(const std::string& label, int64_t stepCount, double weight)
{
    std::lock_guard<std::mutex> lock(mMutex);
    if (!(weight >= 0.0)) // negative or NaN
        weight = 0.0;
    Group group{label, stepCount, 0.0, weight, 0.0, 0.0};
    double end = 1.0;
    if (mGroups.empty()) {
        group.start = mFraction;
        group.span = weight;
    } else {
        const Group& parent = mGroups.back();
        group.start = positionOf(parent);
        group.span = weight * parent.span / static_cast<double>(std::max<int64_t>(parent.stepCount, 1));
        end = parent.start + parent.span;
    }
    // A child never reaches past its parent, nor a top-level group past the whole task.
    group.start = std::min(group.start, end);
    group.span = std::min(group.span, end - group.start);
    mGroups.push_back(std::move(group));
}

void zuProgressNotifier::closeGroup()
{
    {
        std::lock_guard<std::mutex> lock(mMutex);
        if (mGroups.empty())
            return;
        const Group closed = std::move(mGroups.back());
        mGroups.pop_back();
        mFraction = std::max(mFraction, std::min(closed.start + closed.span, 1.0));
        if (!mGroups.empty())
            mGroups.back().done += closed.weight;
    }
    report();
}

void zuProgressNotifier::step(int64_t count)
{
    if (count <= 0)
        return;
    {
        std::lock_guard<std::mutex> lock(mMutex);
        mTotalSteps += count;
        if (mGroups.empty())
            return;
        Group& group = mGroups.back();
        group.done += static_cast<double>(count);
        mFraction = std::max(mFraction, std::min(positionOf(group), 1.0));
    }
    report();
}

void zuProgressNotifier::report()
{
    // Reports go out under their own lock, not the state lock, so that onProgress may query
    // the notifier; the check against the last report keeps them increasing across threads.
    std::lock_guard<std::recursive_mutex> reportLock(mReportMutex);
    const double current = fraction();
    if (current <= mReported)
        return;
    mReported = current;
    onProgress(current);
}

double zuProgressNotifier::fraction() const
{
    std::lock_guard<std::mutex> lock(mMutex);
    return mFraction;
}

int zuProgressNotifier::groupDepth() const
{
    std::lock_guard<std::mutex> lock(mMutex);
    return static_cast<int>(mGroups.size());
}

std::string zuProgressNotifier::currentLabel() const
{
    std::lock_guard<std::mutex> lock(mMutex);
    return mGroups.empty() ? std::string() : mGroups.back().label;
}

int64_t zuProgressNotifier::totalSteps() const
{
    std::lock_guard<std::mutex> lock(mMutex);
    return mTotalSteps;
}

} // namespace zu
