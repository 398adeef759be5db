#include <zuSystem/zuMemoryIoDevice.h>

#include <algorithm>
#include <cstring>

namespace zu {

zuMemoryIoDevice::zuMemoryIoDevice(std::vector<char> bytes) : mBytes(std::move(bytes))
{
}

int64_t zuMemoryIoDevice::read(void* destination, int64_t size)
{
    if (size < 0 || (size > 0 && !destination)) {
        setError();
        return -1;
    }
    // The vector may have shrunk through data() since the last seek.
    const int64_t available = std::max<int64_t>(0, this->size() - mPosition);
    const int64_t count = std::min(size, available);
    if (count > 0) {
        std::memcpy(destination, mBytes.data() + mPosition, static_cast<size_t>(count));
        mPosition += count;
    }
    return count;
}

int64_t zuMemoryIoDevice::write(const void* source, int64_t size)
{
    if (size < 0 || (size > 0 && !source)) {
        setError();
        return -1;
    }
    if (size == 0)
        return 0;
    const int64_t end = mPosition + size;
    if (end > this->size())
        mBytes.resize(static_cast<size_t>(end));
    std::memcpy(mBytes.data() + mPosition, source, static_cast<size_t>(size));
    mPosition = end;
    return size;
}

bool zuMemoryIoDevice::seek(int64_t offset, SeekOrigin origin)
{
    const int64_t base = origin == SeekCur ? mPosition : origin == SeekEnd ? size() : 0;
    const int64_t target = base + offset;
    if (target < 0 || target > size()) {
        setError();
        return false;
    }
    mPosition = target;
    return true;
}

} // namespace zu
