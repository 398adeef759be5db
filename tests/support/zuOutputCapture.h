#pragma once

// Catches what is written to standard output or standard error while it lives: the file
// descriptor itself is pointed at a temporary file, so that C stdio, iostreams and the
// library's own messages all land there. Header-only, so that every test binary can use it.

#include <cstdio>
#include <iostream>
#include <string>

#include <unistd.h>

namespace zu::test {

class zuOutputCapture {
public:
    enum Channel { STDOUT = 1, STDERR = 2 };

    explicit zuOutputCapture(Channel channel) : mChannel(channel) { start(); }
    // Ends a capture still running; what it caught is dropped.
    ~zuOutputCapture() { take(); }
    zuOutputCapture(const zuOutputCapture&) = delete;
    zuOutputCapture& operator=(const zuOutputCapture&) = delete;

    // Starts catching again after take().
    void start()
    {
        if (mFile)
            return;
        flush();
        mFile = std::tmpfile();
        mSaved = mFile ? ::dup(mChannel) : -1;
        if (mSaved < 0 || ::dup2(::fileno(mFile), mChannel) < 0)
            release();
    }

    // Ends the capture and returns what was written since start ("" when not capturing).
    std::string take()
    {
        if (!mFile)
            return {};
        flush();
        ::dup2(mSaved, mChannel);
        std::string text;
        std::rewind(mFile);
        char chunk[4096];
        for (size_t n; (n = std::fread(chunk, 1, sizeof chunk, mFile)) > 0;)
            text.append(chunk, n);
        release();
        return text;
    }

private:
    static void flush()
    {
        std::cout.flush();
        std::cerr.flush();
        std::fflush(stdout);
        std::fflush(stderr);
    }
    void release()
    {
        if (mSaved >= 0)
            ::close(mSaved);
        if (mFile)
            std::fclose(mFile);
        mSaved = -1;
        mFile = nullptr;
    }

    Channel mChannel;
    std::FILE* mFile = nullptr;
    int mSaved = -1;
};

} // namespace zu::test
