#include <zuSystem/zuFileIoDevice.h>

#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace zu {

zuFileIoDevice::zuFileIoDevice(const std::string& pathUtf8, OpenMode mode)
{
    open(pathUtf8, mode);
}

zuFileIoDevice::~zuFileIoDevice()
{
    close();
}

bool zuFileIoDevice::open(const std::string& pathUtf8, OpenMode mode)
{
    close();
    mPath = pathUtf8;
    const char* modeText = "rb";
    switch (mode) {
    case ReadOnly: modeText = "rb"; break;
    case WriteOnly: modeText = "wb"; break;
    case ReadWrite: modeText = "r+b"; break;
    case Append: modeText = "ab"; break;
    }
    mSystemError = 0;
    mFile = fopen64(pathUtf8.c_str(), modeText);
    if (!mFile) {
        failWithSystemError();
        return false;
    }
    clearError();
    // Where an appending stream starts is left to the C library; pos() should tell the end.
    if (mode == Append && fseeko(mFile, 0, SEEK_END) != 0) {
        failWithSystemError();
        const int reason = mSystemError;
        close();
        mSystemError = reason;
        return false;
    }
    return true;
}

void zuFileIoDevice::close()
{
    if (!mFile)
        return;
    if (std::fclose(mFile) != 0)
        failWithSystemError();
    mFile = nullptr;
    mLastOperation = NoOperation;
}

bool zuFileIoDevice::prepare(LastOperation next)
{
    if (mLastOperation != NoOperation && mLastOperation != next && fseeko(mFile, 0, SEEK_CUR) != 0)
        return false;
    mLastOperation = next;
    return true;
}

int64_t zuFileIoDevice::read(void* destination, int64_t size)
{
    if (!mFile || size < 0 || (size > 0 && !destination) || !prepare(Reading)) {
        setError();
        return -1;
    }
    if (size == 0)
        return 0;
    const size_t done = std::fread(destination, 1, static_cast<size_t>(size), mFile);
    if (done < static_cast<size_t>(size) && std::ferror(mFile)) {
        failWithSystemError();
        std::clearerr(mFile);
        return done > 0 ? static_cast<int64_t>(done) : -1;
    }
    return static_cast<int64_t>(done);
}

int64_t zuFileIoDevice::write(const void* source, int64_t size)
{
    if (!mFile || size < 0 || (size > 0 && !source) || !prepare(Writing)) {
        setError();
        return -1;
    }
    if (size == 0)
        return 0;
    const size_t done = std::fwrite(source, 1, static_cast<size_t>(size), mFile);
    if (done < static_cast<size_t>(size)) {
        failWithSystemError();
        std::clearerr(mFile);
        return done > 0 ? static_cast<int64_t>(done) : -1;
    }
    return static_cast<int64_t>(done);
}

int64_t zuFileIoDevice::readAt(int64_t offset, void* destination, int64_t size)
{
    if (!mFile || offset < 0 || size < 0 || (size > 0 && !destination)) {
        setError();
        return -1;
    }
    // Written bytes still in the stream's buffer must reach the file before it is read.
    if (mLastOperation == Writing && std::fflush(mFile) != 0) {
        failWithSystemError();
        return -1;
    }
    char* target = static_cast<char*>(destination);
    int64_t done = 0;
    while (done < size) {
        const ssize_t got = ::pread(fileno(mFile), target + done, static_cast<size_t>(size - done),
                                    static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            failWithSystemError();
            return done > 0 ? done : -1;
        }
        if (got == 0)
            break;
        done += got;
    }
    return done;
}

bool zuFileIoDevice::seek(int64_t offset, SeekOrigin origin)
{
    if (!mFile) {
        setError();
        return false;
    }
    const int whence = origin == SeekCur ? SEEK_CUR : origin == SeekEnd ? SEEK_END : SEEK_SET;
    if (fseeko(mFile, static_cast<off_t>(offset), whence) != 0) {
        failWithSystemError();
        return false;
    }
    // A seek is the positioning call that lets the next operation be of either kind.
    mLastOperation = NoOperation;
    return true;
}

int64_t zuFileIoDevice::pos() const
{
    if (!mFile)
        return -1;
    return static_cast<int64_t>(ftello(mFile));
}

int64_t zuFileIoDevice::size() const
{
    if (!mFile)
        return -1;
    // Written bytes still in the stream's buffer count too.
    if (mLastOperation == Writing)
        std::fflush(mFile);
    struct stat64 info;
    if (fstat64(fileno(mFile), &info) != 0)
        return -1;
    return static_cast<int64_t>(info.st_size);
}

bool zuFileIoDevice::flush()
{
    if (!mFile) {
        setError();
        return false;
    }
    if (std::fflush(mFile) != 0) {
        failWithSystemError();
        return false;
    }
    return true;
}

void zuFileIoDevice::failWithSystemError()
{
    mSystemError = errno;
    setError();
}

std::string zuFileIoDevice::systemErrorText() const
{
    return mSystemError != 0 ? std::strerror(mSystemError) : std::string();
}

std::string zuFileIoDevice::withSystemReason(std::string message) const
{
    return mSystemError != 0 ? message.append(": ").append(std::strerror(mSystemError)) : message;
}

} // namespace zu
