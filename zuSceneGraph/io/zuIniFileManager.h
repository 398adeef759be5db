#pragma once

#include <zuSceneGraph/io/zuCoreIniDriver.h>
#include <zuSceneGraph/io/zuDriverList.h>

#include <string>

namespace zu {

// Reads and writes ini files through the ini drivers the application registers, chosen by
// the file's extension with no options. False when no driver accepts the file.
class zuIniFileManager : public zuDriverList<zuCoreIniDriver> {
public:
    using Sections = zuCoreIniDriver::Sections;

    bool readIniFile(Sections& sections, const std::string& fileName) const;
    bool saveIniFile(const Sections& sections, const std::string& fileName) const;
};

} // namespace zu
