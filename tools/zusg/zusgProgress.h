#pragma once

// Progress and Ctrl-C for the long steps of a command (loads, saves, drawing).

#include <zuSystem/zuProgressNotifier.h>

#include <chrono>
#include <string>

namespace zusg {

// While one lives, Ctrl-C (SIGINT) does not end the process but asks the running step to
// stop: every ProgressBar then reports a cancel to the library, and the command cleans up
// and returns Interrupted. A second Ctrl-C ends the process at once, as usual.
class InterruptScope {
public:
    InterruptScope();
    ~InterruptScope();
    InterruptScope(const InterruptScope&) = delete;
    InterruptScope& operator=(const InterruptScope&) = delete;

    // Whether Ctrl-C was pressed since the scope began.
    static bool interrupted();
};

// The progress notifier of one step, shown on standard error: a bar redrawn in place when
// standard error is a terminal, otherwise a plain line at each tenth. Unless asked to show it
// from the start, nothing is shown for a step that ends within SHOW_AFTER, so that quick
// commands stay quiet.
class ProgressBar : public zu::zuProgressNotifier {
public:
    static constexpr std::chrono::milliseconds SHOW_AFTER{500};

    // `task` names the step in the bar: "loading model.mvk".
    explicit ProgressBar(std::string task, bool fromTheStart = false);
    // Ends the bar's line if one was shown.
    ~ProgressBar() override;

    bool isCancelRequested() const override;

protected:
    void onProgress(double fraction) override;

private:
    void draw(int percent);

    std::string mTask;
    bool mTerminal;
    bool mFromTheStart;
    std::chrono::steady_clock::time_point mStart = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point mLastDraw;
    int mShownPercent = -1;
};

} // namespace zusg
