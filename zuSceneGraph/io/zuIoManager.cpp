#include <zuSceneGraph/io/zuIoManager.h>

#include <zuSceneGraph/io/zuFileStreamMeshDriver.h>
#include <zuSceneGraph/io/zuObjMeshDriver.h>

namespace zu {

zuIoManager* zuIoManager::msInstance = nullptr;

zuIoManager::zuIoManager() = default;

zuIoManager::~zuIoManager() = default;

void zuIoManager::createInstance()
{
    if (msInstance)
        return;
    msInstance = new zuIoManager;
    auto stream = std::make_unique<zuFileStreamMeshDriver>();
    auto obj = std::make_unique<zuObjMeshDriver>();
    msInstance->mMeshManager.registerDriver(obj.get(), true);
    msInstance->mMeshManager.registerDriver(stream.get(), true);
    msInstance->mBuiltInMeshDrivers.push_back(std::move(stream));
    msInstance->mBuiltInMeshDrivers.push_back(std::move(obj));
    msInstance->mBuiltInTextDrivers.push_back(std::make_unique<zuCoreTextDriver>());
    msInstance->mTextFileManager.registerDriver(msInstance->mBuiltInTextDrivers.back().get(), true);
}

void zuIoManager::destroyInstance()
{
    if (!msInstance)
        return;
    for (std::unique_ptr<zuCoreMeshDriver>& driver : msInstance->mBuiltInMeshDrivers) {
        msInstance->mMeshManager.unregisterDriver(driver.get());
        driver.reset();
    }
    for (std::unique_ptr<zuCoreTextDriver>& driver : msInstance->mBuiltInTextDrivers) {
        msInstance->mTextFileManager.unregisterDriver(driver.get());
        driver.reset();
    }
    delete msInstance;
    msInstance = nullptr;
}

} // namespace zu
