// zusg version: the library's version texts and the stream version it writes by default.

#include "zusgCommand.h"

#include <zuSceneGraph/zuSceneGraph.h>
#include <zuSystem/zuOutputStreamVersion.h>

#include <cstdio>
#include <iostream>

namespace zusg {

int runVersion(const std::vector<std::string>& arguments)
{
    if (!arguments.empty())
        return Usage;
    using Version = zu::zuSceneGraph::Version;
    char stream[32];
    std::snprintf(stream, sizeof stream, "%d.%02d", zu::zuMajorOutputStreamVersion, zu::zuMinorOutputStreamVersion);
    std::cout << "zuSceneGraph " << Version::GetDescStringMajorMinorReleaseRevisionDate() << "\n"
              << "  major.minor                  " << Version::GetDescStringMajorMinor() << "\n"
              << "  major.minor.release          " << Version::GetDescStringMajorMinorRelease() << "\n"
              << "  major.minor.release.revision " << Version::GetDescStringMajorMinorReleaseRevision() << "\n"
              << "  date                         " << Version::GetYear() << "-" << Version::GetMonth() << "\n"
              << "default output stream version  " << stream << "\n";
    return Success;
}

} // namespace zusg
