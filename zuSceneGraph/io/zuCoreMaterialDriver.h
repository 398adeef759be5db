#pragma once

#include <zuSceneGraph/io/zuCoreDriver.h>
#include <zuSceneGraph/objects/zuRtti.h>

#include <string>

namespace zu {

class zuMaterialInfo;

// The kind of driver that parses material description files; the application supplies
// them. Asked by the file's extension.
class zuCoreMaterialDriver : public zuCoreDriver<std::string, std::string> {
public:
    static constexpr zuRtti TYPE{"zuCore.zuCoreMaterialDriver", nullptr};

    virtual bool parseMaterialInfo(zuMaterialInfo* info, const std::string& fileName) = 0;
};

} // namespace zu
