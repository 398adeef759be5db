#include <zuSystem/zuDelegateIoDevice.h>

namespace zu {

namespace {

// Mirrors the target's error state onto the delegate after a forwarded operation.
template <typename Result>
Result mirror(zuIoDevice& delegate, const zuIoDevice& target, Result result)
{
    if (target.isError())
        delegate.setError();
    return result;
}

} // namespace

int64_t zuDelegateIoDevice::read(void* destination, int64_t size)
{
    if (!mTarget) {
        setError();
        return -1;
    }
    return mirror(*this, *mTarget, mTarget->read(destination, size));
}

int64_t zuDelegateIoDevice::write(const void* source, int64_t size)
{
    if (!mTarget) {
        setError();
        return -1;
    }
    return mirror(*this, *mTarget, mTarget->write(source, size));
}

bool zuDelegateIoDevice::seek(int64_t offset, SeekOrigin origin)
{
    if (!mTarget) {
        setError();
        return false;
    }
    return mirror(*this, *mTarget, mTarget->seek(offset, origin));
}

int64_t zuDelegateIoDevice::pos() const
{
    return mTarget ? mTarget->pos() : -1;
}

int64_t zuDelegateIoDevice::size() const
{
    return mTarget ? mTarget->size() : -1;
}

bool zuDelegateIoDevice::isOpen() const
{
    return mTarget && mTarget->isOpen();
}

bool zuDelegateIoDevice::flush()
{
    if (!mTarget) {
        setError();
        return false;
    }
    return mirror(*this, *mTarget, mTarget->flush());
}

} // namespace zu
