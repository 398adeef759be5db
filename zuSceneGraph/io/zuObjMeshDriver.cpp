#include <zuSceneGraph/io/zuObjMeshDriver.h>

namespace zu {

zuObjMeshDriver::zuObjMeshDriver()
{
    loadExtensions.insert("obj");
    saveExtensions.insert("obj");
}

zuObjMeshDriver::~zuObjMeshDriver() = default;

bool zuObjMeshDriver::notAvailable(const std::string& what)
{
    clearErrorMessages();
    addErrorMessage(ERROR_NOT_AVAILABLE, -1, "zuObjMeshDriver: cannot " + what + ": OBJ files are not supported yet");
    return false;
}

bool zuObjMeshDriver::loadMeshes(ObjectList&, const std::string& fileName, zuProgressNotifierInterface*,
                                 const Options&, zuCatalog<zuImage>&)
{
    return notAvailable("load " + fileName);
}

bool zuObjMeshDriver::saveMeshes(const ObjectList&, const std::string& fileName, zuProgressNotifierInterface*,
                                 const Options&, bool)
{
    return notAvailable("save " + fileName);
}

bool zuObjMeshDriver::loadMeshes(ObjectList&, zuIoDevice&, zuProgressNotifierInterface*, const Options&,
                                 zuCatalog<zuImage>&)
{
    return notAvailable("load from a device");
}

bool zuObjMeshDriver::saveMeshes(const ObjectList&, zuIoDevice&, zuProgressNotifierInterface*, const Options&, bool)
{
    return notAvailable("save to a device");
}

} // namespace zu
