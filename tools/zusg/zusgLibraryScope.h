#pragma once

#include <zuSceneGraph/zuSceneGraph.h>

namespace zusg {

// Starts the library (its factories and buffer requests) for the life of a command.
class LibraryScope {
public:
    LibraryScope() { zu::initializeZuSceneGraph(); }
    ~LibraryScope() { zu::terminateZuSceneGraph(); }
    LibraryScope(const LibraryScope&) = delete;
    LibraryScope& operator=(const LibraryScope&) = delete;
};

} // namespace zusg
