#pragma once

#include <zuSystem/zuVariant.h>

namespace zu {

// The common base of every driver kind: a driver says how well it can load or save a
// request described by a key (a file extension, an image format, ...) and an option map,
// and a manager hands the request to the best one (see zuDriverList).
//
// Scores: SCORE_NONE cannot handle the request, SCORE_FALLBACK can handle it when no
// preferred driver can, SCORE_PREFERRED can handle it and is a preferred choice.
template <class LoadKey, class SaveKey>
class zuCoreDriver {
public:
    using LoadKeyType = LoadKey;
    using SaveKeyType = SaveKey;

    static constexpr unsigned int SCORE_NONE = 0;
    static constexpr unsigned int SCORE_FALLBACK = 1;
    static constexpr unsigned int SCORE_PREFERRED = 2;

    virtual ~zuCoreDriver() = default;
    virtual unsigned int canLoad(const LoadKey& key, const zuVariant::zuVariantMapImpl& options) const = 0;
    virtual unsigned int canSave(const SaveKey& key, const zuVariant::zuVariantMapImpl& options) const = 0;

protected:
    zuCoreDriver() = default;
    zuCoreDriver(const zuCoreDriver&) = default;
    zuCoreDriver& operator=(const zuCoreDriver&) = default;
};

} // namespace zu
