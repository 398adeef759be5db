#pragma once

#include <string>

namespace zu {

// Named initialisation counters shared by a process: nested initialise/terminate pairs
// where only the first initialise and the last terminate do the work.
class LibInitCounter {
public:
    // Counts one initialisation of `name`; true when it is the first (the caller initialises).
    static bool initialize(const std::string& name);
    // Counts one termination; true when it ends the last initialisation (the caller
    // terminates). A terminate without a matching initialise returns false.
    static bool terminate(const std::string& name);
    static int count(const std::string& name);
};

} // namespace zu
