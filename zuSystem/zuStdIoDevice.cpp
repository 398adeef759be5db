#include <zuSystem/zuStdIoDevice.h>

namespace zu {

zuStdIoDevice::zuStdIoDevice(Channel channel)
    : mChannel(channel), mFile(channel == StdIn ? stdin : channel == StdOut ? stdout : stderr)
{
}

int64_t zuStdIoDevice::read(void* destination, int64_t size)
{
    if (mChannel != StdIn || size < 0 || (size > 0 && !destination)) {
        setError();
        return -1;
    }
    if (size == 0)
        return 0;
    const size_t done = std::fread(destination, 1, static_cast<size_t>(size), mFile);
    mPosition += static_cast<int64_t>(done);
    if (done < static_cast<size_t>(size) && std::ferror(mFile)) {
        std::clearerr(mFile);
        setError();
        return done > 0 ? static_cast<int64_t>(done) : -1;
    }
    return static_cast<int64_t>(done);
}

int64_t zuStdIoDevice::write(const void* source, int64_t size)
{
    if (mChannel == StdIn || size < 0 || (size > 0 && !source)) {
        setError();
        return -1;
    }
    if (size == 0)
        return 0;
    const size_t done = std::fwrite(source, 1, static_cast<size_t>(size), mFile);
    mPosition += static_cast<int64_t>(done);
    if (done < static_cast<size_t>(size)) {
        std::clearerr(mFile);
        setError();
        return done > 0 ? static_cast<int64_t>(done) : -1;
    }
    return static_cast<int64_t>(done);
}

bool zuStdIoDevice::seek(int64_t /*offset*/, SeekOrigin /*origin*/)
{
    setError();
    return false;
}

bool zuStdIoDevice::flush()
{
    if (mChannel == StdIn)
        return true;
    if (std::fflush(mFile) != 0) {
        setError();
        return false;
    }
    return true;
}

} // namespace zu
