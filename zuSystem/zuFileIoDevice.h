#pragma once

#include <zuSystem/zuIoDevice.h>

#include <cstdio>
#include <string>

namespace zu {

// A file on disk, opened by UTF-8 path, with 64-bit offsets. A short read at the end of the
// file is not an error; a failed read or write sets the error state. Seeking past the end is
// allowed (a later write fills the gap with zero bytes).
class zuFileIoDevice : public zuIoDevice {
public:
    enum OpenMode {
        ReadOnly,  // existing file, reading
        WriteOnly, // created or truncated, writing
        ReadWrite, // existing file, reading and writing
        Append     // created if missing, writing at the end
    };

    zuFileIoDevice() = default;
    // Opens at once; isOpen() and isError() tell the outcome.
    zuFileIoDevice(const std::string& pathUtf8, OpenMode mode);
    ~zuFileIoDevice() override;

    // Closes any open file first. On success the error state is cleared; on failure the
    // device is closed and in the error state.
    bool open(const std::string& pathUtf8, OpenMode mode);
    // Sets the error state when the buffered data cannot be written out.
    void close();
    const std::string& path() const { return mPath; }
    // The system's reason for the last failed call (strerror of its errno), such as "No such
    // file or directory"; empty while no call has failed for a reason the system gave.
    std::string systemErrorText() const;
    // `message`, followed by ": " and the system's reason when there is one.
    std::string withSystemReason(std::string message) const;

    int64_t read(void* destination, int64_t size) override;
    int64_t write(const void* source, int64_t size) override;
    bool seek(int64_t offset, SeekOrigin origin = SeekSet) override;
    // One positioned read of the file, past the stream's buffer: the position stays where it was.
    int64_t readAt(int64_t offset, void* destination, int64_t size) override;
    int64_t pos() const override;
    int64_t size() const override;
    bool isOpen() const override { return mFile != nullptr; }
    bool flush() override;
    bool isWritableFromAnyThread() const override { return true; }

private:
    // A stream opened for update needs a positioning call between a read and a write.
    enum LastOperation { NoOperation, Reading, Writing };
    bool prepare(LastOperation next);
    // Sets the error state and keeps the errno of the call that just failed.
    void failWithSystemError();

    std::FILE* mFile = nullptr;
    std::string mPath;
    LastOperation mLastOperation = NoOperation;
    int mSystemError = 0;
};

} // namespace zu
