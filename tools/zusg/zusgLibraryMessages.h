#pragma once

#include <iostream>
#include <sstream>
#include <string>

namespace zusg {

// Sends what the library writes to the standard streams into a text of its own while it
// lives, for loads whose messages would mislead beside the tool's own (offsets within a
// record loaded alone) or repeat what the tool says itself.
class LibraryMessages {
public:
    LibraryMessages() : mOut(std::cout.rdbuf(mText.rdbuf())), mErr(std::cerr.rdbuf(mText.rdbuf())) {}
    ~LibraryMessages()
    {
        std::cout.rdbuf(mOut);
        std::cerr.rdbuf(mErr);
    }
    LibraryMessages(const LibraryMessages&) = delete;
    LibraryMessages& operator=(const LibraryMessages&) = delete;

    std::string text() const { return mText.str(); }

private:
    std::ostringstream mText;
    std::streambuf* mOut;
    std::streambuf* mErr;
};

} // namespace zusg
