#include <zuSceneGraph/resources/zuBindable.h>

#include <mutex>
#include <unordered_map>

namespace zu {

namespace {

// The release function of every bound object that was given one. Made on first use and
// never destroyed: objects in static storage may still be released while the process ends.
struct ReleaseFunctions {
    std::mutex mutex;
    std::unordered_map<const zuBindable*, zuBindable::ReleaseFunction> functions;

    static ReleaseFunctions& instance()
    {
        static ReleaseFunctions* const table = new ReleaseFunctions;
        return *table;
    }
    void set(const zuBindable* object, zuBindable::ReleaseFunction function)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (function)
            functions[object] = function;
        else
            functions.erase(object);
    }
    zuBindable::ReleaseFunction get(const zuBindable* object)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        const auto found = functions.find(object);
        return found == functions.end() ? nullptr : found->second;
    }
};

char boundWithoutIdentifier;
zuResourceIdentifier* const BOUND_WITHOUT_IDENTIFIER = reinterpret_cast<zuResourceIdentifier*>(&boundWithoutIdentifier);

} // namespace

zuBindable::~zuBindable()
{
    release();
}

zuResourceIdentifier* zuBindable::getIdentifier() const
{
    return mIdentifier == BOUND_WITHOUT_IDENTIFIER ? nullptr : mIdentifier;
}

void zuBindable::release()
{
    if (!mIdentifier)
        return;
    zuResourceIdentifier* identifier = mIdentifier;
    if (const ReleaseFunction releaseFunction = ReleaseFunctions::instance().get(this))
        releaseFunction(this);
    // A renderer that did not answer with onRelease is forgotten all the same: the object
    // must not keep a binding to data that may be gone.
    if (mIdentifier == identifier)
        forget();
}

void zuBindable::onLoad(ReleaseFunction releaseFunction, zuResourceIdentifier* identifier)
{
    if (mIdentifier || releaseFunction)
        ReleaseFunctions::instance().set(this, releaseFunction);
    mIdentifier = identifier || !releaseFunction ? identifier : BOUND_WITHOUT_IDENTIFIER;
}

void zuBindable::onRelease(zuResourceIdentifier* identifier)
{
    if (identifier != getIdentifier())
        return;
    forget();
}

void zuBindable::forget()
{
    if (!mIdentifier)
        return;
    mIdentifier = nullptr;
    ReleaseFunctions::instance().set(this, nullptr);
}

} // namespace zu
