#include <zuSceneGraph/resources/zuBlockReader.h>

#include <cstring>
#include <limits>

namespace zu {

bool zuBlockReader::read(void* destination, uint64_t size)
{
    if (size == 0)
        return !mFailed;
    if (mFailed || !destination || size > std::numeric_limits<size_t>::max()) {
        mFailed = true;
        return false;
    }
    if (mFile) {
        mFailed = std::fread(destination, 1, static_cast<size_t>(size), mFile) != static_cast<size_t>(size);
        return !mFailed;
    }
    const char* bytes = take(size);
    if (bytes)
        std::memcpy(destination, bytes, static_cast<size_t>(size));
    return bytes != nullptr;
}

const char* zuBlockReader::take(uint64_t size)
{
    if (mFile || mFailed || size > mRemaining) {
        mFailed = mFailed || !mFile;
        return nullptr;
    }
    const char* bytes = mBytes;
    mBytes += size;
    mRemaining -= size;
    return bytes;
}

} // namespace zu
