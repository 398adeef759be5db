#pragma once

#include <string>

namespace zu {

// The library's own version.
class zuSceneGraph {
public:
    class Version {
    public:
        static int GetMajor() { return 3; }
        static int GetMinor() { return 0; }
        static int GetRelease() { return 0; }
        static int GetRevision() { return 17; }
        static int GetYear() { return 2022; }
        static int GetMonth() { return 7; }
        static std::string GetDescStringMajorMinor();                       // "3.0"
        static std::string GetDescStringMajorMinorRelease();                // "3.0.0"
        static std::string GetDescStringMajorMinorReleaseRevision();        // "3.0.0.17"
        static std::string GetDescStringMajorMinorReleaseRevisionDate();    // "3.0.0.17 2022-7"
    };
};

// Library start and end. Calls nest: only the first initialise and the last terminate
// do the work: creating the library mutex, registering every persistable class and the
// request builders of the resources, creating zuIoManager::msInstance with the built-in
// drivers; and undoing all of it in reverse.
void initializeZuSceneGraph();
void terminateZuSceneGraph();

} // namespace zu
