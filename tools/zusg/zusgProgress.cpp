#include "zusgProgress.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>

namespace zusg {

namespace {

volatile std::sig_atomic_t gInterrupted = 0;

extern "C" void onInterrupt(int)
{
    gInterrupted = 1;
}

constexpr int BAR_WIDTH = 30;
// A terminal bar is redrawn at most this often.
constexpr std::chrono::milliseconds REDRAW_EVERY{100};

struct sigaction gPrevious;

} // namespace

InterruptScope::InterruptScope()
{
    gInterrupted = 0;
    struct sigaction action = {};
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    // The handler is removed once it ran: a second Ctrl-C ends the process.
    action.sa_flags = SA_RESETHAND;
    sigaction(SIGINT, &action, &gPrevious);
}

InterruptScope::~InterruptScope()
{
    sigaction(SIGINT, &gPrevious, nullptr);
}

bool InterruptScope::interrupted()
{
    return gInterrupted != 0;
}

ProgressBar::ProgressBar(std::string task, bool fromTheStart)
    : mTask(std::move(task)), mTerminal(::isatty(STDERR_FILENO) == 1), mFromTheStart(fromTheStart)
{
}

ProgressBar::~ProgressBar()
{
    if (mShownPercent >= 0 && mTerminal)
        std::fputc('\n', stderr);
}

bool ProgressBar::isCancelRequested() const
{
    return InterruptScope::interrupted() || zuProgressNotifier::isCancelRequested();
}

void ProgressBar::onProgress(double fraction)
{
    const auto now = std::chrono::steady_clock::now();
    if (!mFromTheStart && now - mStart < SHOW_AFTER)
        return;
    const int percent = static_cast<int>(fraction * 100.0 + 1e-9);
    if (mTerminal) {
        if (percent != mShownPercent && (percent == 100 || now - mLastDraw >= REDRAW_EVERY)) {
            mLastDraw = now;
            draw(percent);
        }
    } else if (percent / 10 > mShownPercent / 10 || mShownPercent < 0) {
        // The first line shows where the step had got to when it became long.
        mShownPercent = percent / 10 * 10;
        std::fprintf(stderr, "zusg: %s: %d%%\n", mTask.c_str(), mShownPercent);
    }
}

void ProgressBar::draw(int percent)
{
    mShownPercent = percent;
    char bar[BAR_WIDTH + 1];
    const int filled = percent * BAR_WIDTH / 100;
    for (int i = 0; i < BAR_WIDTH; ++i)
        bar[i] = i < filled ? '#' : '.';
    bar[BAR_WIDTH] = '\0';
    std::fprintf(stderr, "\r%s [%s] %3d%%", mTask.c_str(), bar, percent);
    std::fflush(stderr);
}

} // namespace zusg
