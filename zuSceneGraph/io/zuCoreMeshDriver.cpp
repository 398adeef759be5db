#include <zuSceneGraph/io/zuCoreMeshDriver.h>

namespace zu {

const zuRtti zuCoreMeshDriver::TYPE("zuCore.zuCoreMeshDriver", nullptr);

zuCoreMeshDriver::~zuCoreMeshDriver() = default;

unsigned int zuCoreMeshDriver::canLoad(const LoadKeyType& key, const Options&) const
{
    return loadExtensions.count(key.second) ? SCORE_PREFERRED : SCORE_NONE;
}

unsigned int zuCoreMeshDriver::canSave(const SaveKeyType& key, const Options&) const
{
    return saveExtensions.count(key) ? SCORE_PREFERRED : SCORE_NONE;
}

void zuCoreMeshDriver::addErrorMessage(int64_t code, int64_t line, const std::string& text)
{
    errors.emplace_back(code, line, text);
}

} // namespace zu
