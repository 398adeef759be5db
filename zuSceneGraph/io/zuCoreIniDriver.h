#pragma once

#include <zuSceneGraph/io/zuCoreDriver.h>
#include <zuSceneGraph/objects/zuRtti.h>

#include <map>
#include <string>

namespace zu {

// The kind of driver that reads and writes ini files (sections of key-value pairs); the
// application supplies them. Asked by the file's extension.
class zuCoreIniDriver : public zuCoreDriver<std::string, std::string> {
public:
    static constexpr zuRtti TYPE{"zuCore.zuCoreIniDriver", nullptr};

    // Section name -> (key -> value).
    using Sections = std::map<std::string, std::map<std::string, std::string>>;

    virtual bool readIniFile(Sections& sections, const std::string& fileName) = 0;
    virtual bool saveIniFile(const Sections& sections, const std::string& fileName) = 0;
};

} // namespace zu
