#pragma once

#include <zuSceneGraph/io/zuCoreMeshDriver.h>

#include <string>

namespace zu {

// The mesh driver of OBJ files (extension "obj", load and save).
//
// For now it only holds its place in the mesh list: every operation fails with an error
// of code ERROR_NOT_AVAILABLE.
class zuObjMeshDriver : public zuCoreMeshDriver {
public:
    static constexpr int64_t ERROR_NOT_AVAILABLE = 9;

    zuObjMeshDriver();
    ~zuObjMeshDriver() override;

    bool loadMeshes(ObjectList& out, const std::string& fileName, zuProgressNotifierInterface* progress,
                    const Options& options, zuCatalog<zuImage>& images) override;
    bool saveMeshes(const ObjectList& objects, const std::string& fileName, zuProgressNotifierInterface* progress,
                    const Options& options, bool append) override;
    bool loadMeshes(ObjectList& out, zuIoDevice& device, zuProgressNotifierInterface* progress,
                    const Options& options, zuCatalog<zuImage>& images) override;
    bool saveMeshes(const ObjectList& objects, zuIoDevice& device, zuProgressNotifierInterface* progress,
                    const Options& options, bool append) override;

private:
    bool notAvailable(const std::string& what);
};

} // namespace zu
