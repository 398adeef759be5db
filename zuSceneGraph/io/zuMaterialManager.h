#pragma once

#include <zuSceneGraph/io/zuCoreMaterialDriver.h>
#include <zuSceneGraph/io/zuDriverList.h>

#include <string>

namespace zu {

class zuMaterialInfo;

// Parses material description files through the material drivers the application
// registers, chosen by the file's extension with no options. False when no driver accepts
// the file.
class zuMaterialManager : public zuDriverList<zuCoreMaterialDriver> {
public:
    bool parseMaterialInfo(zuMaterialInfo* info, const std::string& fileName) const;
};

} // namespace zu
