#include <zuSystem/LibInitCounter.h>

#include <map>
#include <mutex>

namespace zu {

namespace {

// Function-local statics: another library may count its initialisation from its own static
// constructors, before this library's globals would have been built.
std::mutex& counterMutex()
{
    static std::mutex mutex;
    return mutex;
}

std::map<std::string, int>& counters()
{
    static std::map<std::string, int> map;
    return map;
}

} // namespace

bool LibInitCounter::initialize(const std::string& name)
{
    std::lock_guard<std::mutex> lock(counterMutex());
    return ++counters()[name] == 1;
}

bool LibInitCounter::terminate(const std::string& name)
{
    std::lock_guard<std::mutex> lock(counterMutex());
    auto it = counters().find(name);
    if (it == counters().end() || it->second <= 0)
        return false;
    if (--it->second > 0)
        return false;
    counters().erase(it);
    return true;
}

int LibInitCounter::count(const std::string& name)
{
    std::lock_guard<std::mutex> lock(counterMutex());
    auto it = counters().find(name);
    return it == counters().end() ? 0 : it->second;
}

} // namespace zu
