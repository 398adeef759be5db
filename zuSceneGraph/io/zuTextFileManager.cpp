#include <zuSceneGraph/io/zuTextFileManager.h>

#include <vector>

namespace zu {

namespace {

// Collects the drivers that do not refuse, in list order, and tries them from the last.
template <class Score, class Operation>
bool tryWillingDrivers(const std::vector<zuCoreTextDriver*>& drivers, Score score, Operation operation)
{
    std::vector<zuCoreTextDriver*> willing;
    for (zuCoreTextDriver* driver : drivers)
        if (score(*driver) != zuCoreTextDriver::SCORE_NONE)
            willing.push_back(driver);
    for (auto driver = willing.rbegin(); driver != willing.rend(); ++driver)
        if (operation(**driver))
            return true;
    return false;
}

} // namespace

bool zuTextFileManager::readTextFile(std::string& out, const std::string& fileName) const
{
    return tryWillingDrivers(
        getDrivers(), [](const zuCoreTextDriver& driver) { return driver.canLoad(std::string(), noOptions()); },
        [&](const zuCoreTextDriver& driver) { return driver.readTextFile(out, fileName); });
}

bool zuTextFileManager::saveTextFile(const std::string& text, const std::string& fileName) const
{
    return tryWillingDrivers(
        getDrivers(), [](const zuCoreTextDriver& driver) { return driver.canSave(std::string(), noOptions()); },
        [&](const zuCoreTextDriver& driver) { return driver.saveTextFile(text, fileName); });
}

} // namespace zu
