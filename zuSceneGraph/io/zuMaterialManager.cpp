#include <zuSceneGraph/io/zuMaterialManager.h>

#include <zuSystem/zuDirUtils.h>

namespace zu {

bool zuMaterialManager::parseMaterialInfo(zuMaterialInfo* info, const std::string& fileName) const
{
    zuCoreMaterialDriver* driver = chooseLoader(zuDirUtils::ExtractFileExtension(fileName), noOptions());
    return driver && driver->parseMaterialInfo(info, fileName);
}

} // namespace zu
