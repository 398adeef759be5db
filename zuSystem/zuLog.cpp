#include <zuSystem/zuLog.h>

#include <cstdio>

namespace zu {

namespace {

void writeToStandardError(const std::string& category, const std::string& message)
{
    std::string line;
    line.reserve(category.size() + message.size() + 4);
    line += '[';
    line += category;
    line += "] ";
    line += message;
    if (message.empty() || message.back() != '\n')
        line += '\n';
    // One call per line, so that lines of other writers to stderr do not cut into it.
    std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace

zuLog& zuLog::instance()
{
    static zuLog log;
    return log;
}

void zuLog::write(const std::string& category, const std::string& message)
{
    std::lock_guard<std::recursive_mutex> lock(mMutex);
    if (!mSink) {
        writeToStandardError(category, message);
        return;
    }
    // A copy: the sink may replace itself through setSink while it runs.
    Sink sink = mSink;
    sink(category, message);
}

zuLog::Sink zuLog::setSink(Sink sink)
{
    std::lock_guard<std::recursive_mutex> lock(mMutex);
    Sink previous = std::move(mSink);
    mSink = std::move(sink);
    return previous;
}

void zuLog::enterCriticalSection()
{
    mMutex.lock();
}

void zuLog::leaveCriticalSection()
{
    mMutex.unlock();
}

} // namespace zu
