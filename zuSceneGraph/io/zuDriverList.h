#pragma once

#include <zuSystem/zuLog.h>
#include <zuSystem/zuVariant.h>

#include <algorithm>
#include <string>
#include <vector>

namespace zu {

// The ordered list of drivers of one kind that every manager holds, and the rule by which
// a manager chooses among them. The list never owns its drivers.
//
// Choosing: every driver is asked, front to back, even after one has answered
// SCORE_PREFERRED; the first that answered SCORE_PREFERRED wins, else the first that answered
// SCORE_FALLBACK, else none (the manager's operation then fails without a message). The
// list order is thus the order of preference between equal scores.
template <class Driver>
class zuDriverList {
public:
    // Adds the driver at the end (`appendAtEnd`) or at the front. A driver already listed
    // stays where it is and the log (category "driver") says so; null is ignored. True when
    // the list changed.
    bool registerDriver(Driver* driver, bool appendAtEnd)
    {
        if (!driver)
            return false;
        if (std::find(mDrivers.begin(), mDrivers.end(), driver) != mDrivers.end()) {
            zuLog::instance().write("driver", std::string("Weird error, driver ") + Driver::TYPE.GetName()
                                                  + " is already registered");
            return false;
        }
        mDrivers.insert(appendAtEnd ? mDrivers.end() : mDrivers.begin(), driver);
        return true;
    }
    // Removes the driver; the log says so when it is not listed. True when the list changed.
    bool unregisterDriver(Driver* driver)
    {
        const auto found = std::find(mDrivers.begin(), mDrivers.end(), driver);
        if (found == mDrivers.end()) {
            zuLog::instance().write("driver", std::string("Weird error, driver ") + Driver::TYPE.GetName()
                                                  + " has already been unregistered");
            return false;
        }
        mDrivers.erase(found);
        return true;
    }
    const std::vector<Driver*>& getDrivers() const { return mDrivers; }

protected:
    zuDriverList() = default;
    ~zuDriverList() = default;
    zuDriverList(const zuDriverList&) = delete;
    zuDriverList& operator=(const zuDriverList&) = delete;

    Driver* chooseLoader(const typename Driver::LoadKeyType& key, const zuVariant::zuVariantMapImpl& options) const
    {
        return choose([&](const Driver* driver) { return driver->canLoad(key, options); });
    }
    Driver* chooseSaver(const typename Driver::SaveKeyType& key, const zuVariant::zuVariantMapImpl& options) const
    {
        return choose([&](const Driver* driver) { return driver->canSave(key, options); });
    }
    // The options of the kinds that take none.
    static const zuVariant::zuVariantMapImpl& noOptions()
    {
        static const zuVariant::zuVariantMapImpl empty;
        return empty;
    }

private:
    template <class Score>
    Driver* choose(Score score) const
    {
        Driver* preferred = nullptr;
        Driver* fallback = nullptr;
        for (Driver* driver : mDrivers) {
            const unsigned int answer = score(driver);
            if (answer == Driver::SCORE_PREFERRED && !preferred)
                preferred = driver;
            else if (answer == Driver::SCORE_FALLBACK && !fallback)
                fallback = driver;
        }
        return preferred ? preferred : fallback;
    }

    std::vector<Driver*> mDrivers;
};

} // namespace zu
