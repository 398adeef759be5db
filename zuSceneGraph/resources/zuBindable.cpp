#include <zuSceneGraph/resources/zuBindable.h>

namespace zu {

zuBindable::~zuBindable()
{
    release();
}

zuResourceIdentifier* zuBindable::getIdentifier() const
{
    return mIdentifier;
}

void zuBindable::release()
{
    if (!mIdentifier && !mReleaseFunction)
        return;
    zuResourceIdentifier* identifier = mIdentifier;
    if (mReleaseFunction)
        mReleaseFunction(this);
    // A renderer that did not answer with onRelease is forgotten all the same: the object
    // must not keep a binding to data that may be gone.
    if (mIdentifier == identifier) {
        mIdentifier = nullptr;
        mReleaseFunction = nullptr;
    }
}

void zuBindable::onLoad(ReleaseFunction releaseFunction, zuResourceIdentifier* identifier)
{
    mReleaseFunction = releaseFunction;
    mIdentifier = identifier;
}

void zuBindable::onRelease(zuResourceIdentifier* identifier)
{
    if (identifier != mIdentifier)
        return;
    mIdentifier = nullptr;
    mReleaseFunction = nullptr;
}

} // namespace zu
