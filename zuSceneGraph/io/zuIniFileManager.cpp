#include <zuSceneGraph/io/zuIniFileManager.h>

#include <zuSystem/zuDirUtils.h>

namespace zu {

bool zuIniFileManager::readIniFile(Sections& sections, const std::string& fileName) const
{
    zuCoreIniDriver* driver = chooseLoader(zuDirUtils::ExtractFileExtension(fileName), noOptions());
    return driver && driver->readIniFile(sections, fileName);
}

bool zuIniFileManager::saveIniFile(const Sections& sections, const std::string& fileName) const
{
    zuCoreIniDriver* driver = chooseSaver(zuDirUtils::ExtractFileExtension(fileName), noOptions());
    return driver && driver->saveIniFile(sections, fileName);
}

} // namespace zu
