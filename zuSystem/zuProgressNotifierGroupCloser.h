#pragma once

namespace zu {

class zuProgressNotifierInterface;

// Closes the group it was given on destruction (when the notifier is not null), so that
// every way out of a scope that opened a group closes it.
class zuProgressNotifierGroupCloser {
public:
    explicit zuProgressNotifierGroupCloser(zuProgressNotifierInterface* notifier) : mNotifier(notifier) {}
    ~zuProgressNotifierGroupCloser();
    zuProgressNotifierGroupCloser(const zuProgressNotifierGroupCloser&) = delete;
    zuProgressNotifierGroupCloser& operator=(const zuProgressNotifierGroupCloser&) = delete;

private:
    zuProgressNotifierInterface* mNotifier;
};

} // namespace zu
