#pragma once

#include <functional>
#include <mutex>
#include <string>

namespace zu {

// The process-wide log. Messages carry a category word ("zustream", "driver", ...).
// By default each message goes to standard error as "[category] message" followed by a
// newline (unless it ends with one); tests install a sink to capture them.
class zuLog {
public:
    using Sink = std::function<void(const std::string& category, const std::string& message)>;

    static zuLog& instance();

    void write(const std::string& category, const std::string& message);

    // Replaces the sink; an empty sink restores the standard-error one. Returns the old sink.
    Sink setSink(Sink sink);

    // The critical section that serialises writers; a caller that writes several related
    // messages may hold it across them (it is recursive).
    void enterCriticalSection();
    void leaveCriticalSection();

private:
    zuLog() = default;

    std::recursive_mutex mMutex;
    Sink mSink;
};

} // namespace zu
