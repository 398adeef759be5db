#pragma once

#include <zuSceneGraph/io/zuImageCompressorManager.h>
#include <zuSceneGraph/io/zuImageIOManager.h>
#include <zuSceneGraph/io/zuIniFileManager.h>
#include <zuSceneGraph/io/zuMaterialManager.h>
#include <zuSceneGraph/io/zuMeshManager.h>
#include <zuSceneGraph/io/zuTextFileManager.h>

#include <memory>
#include <vector>

namespace zu {

// The six managers through which every pluggable file format is read and written. There is
// one, zuIoManager::msInstance, from library start (initializeZuSceneGraph) to library end.
//
// At start the library registers its own drivers: the OBJ mesh driver, then the stream mesh
// driver (so the OBJ driver stands first in the mesh list), then the plain text driver at
// the end of the text list. At the end it unregisters and deletes them; drivers the
// application registered must be unregistered by the application before that, since the
// managers never delete a driver.
class zuIoManager {
public:
    static zuIoManager* msInstance;

    zuIoManager();
    ~zuIoManager();
    zuIoManager(const zuIoManager&) = delete;
    zuIoManager& operator=(const zuIoManager&) = delete;

    zuMaterialManager& getMaterialManager() { return mMaterialManager; }
    zuMeshManager& getMeshManager() { return mMeshManager; }
    zuImageIOManager& getImageIOManager() { return mImageIOManager; }
    zuImageCompressorManager& getImageCompressorManager() { return mImageCompressorManager; }
    zuIniFileManager& getIniFileManager() { return mIniFileManager; }
    zuTextFileManager& getTextFileManager() { return mTextFileManager; }

    // Library start and end: create msInstance and register the built-in drivers; unregister
    // and delete them, then msInstance. Called by initializeZuSceneGraph and
    // terminateZuSceneGraph.
    static void createInstance();
    static void destroyInstance();

private:
    zuMaterialManager mMaterialManager;
    zuMeshManager mMeshManager;
    zuImageIOManager mImageIOManager;
    zuImageCompressorManager mImageCompressorManager;
    zuIniFileManager mIniFileManager;
    zuTextFileManager mTextFileManager;

    // The built-in drivers, in the order they were created.
    std::vector<std::unique_ptr<zuCoreMeshDriver>> mBuiltInMeshDrivers;
    std::vector<std::unique_ptr<zuCoreTextDriver>> mBuiltInTextDrivers;
};

} // namespace zu
