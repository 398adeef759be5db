#include <zuSceneGraph/io/zuObjMeshDriver.h>

#include <zuSceneGraph/io/zuObjReader.h>
#include <zuSceneGraph/io/zuObjWriter.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuSpatial.h>

#include <iostream>

namespace zu {

zuObjMeshDriver::zuObjMeshDriver()
{
    loadExtensions.insert("obj");
    saveExtensions.insert("obj");
}

zuObjMeshDriver::~zuObjMeshDriver() = default;

bool zuObjMeshDriver::finishLoad(ObjectList& out, const zuPointer<zuObject>& root,
                                 const std::vector<zuObjMessage>& messages)
{
    for (const zuObjMessage& message : messages)
        addErrorMessage(ERROR_CODE, message.line, message.text);
    if (!root)
        return false;
    out.push_back(root);
    return true;
}

bool zuObjMeshDriver::loadMeshes(ObjectList& out, const std::string& fileName, zuProgressNotifierInterface* progress,
                                 const Options&, zuCatalog<zuImage>& images)
{
    clearErrorMessages();
    zuObjReader reader(images);
    const zuPointer<zuNode> root = reader.ReadFile(fileName, progress);
    return finishLoad(out, zuPointer<zuObject>(root.get()), reader.GetMessages());
}

bool zuObjMeshDriver::loadMeshes(ObjectList& out, zuIoDevice& device, zuProgressNotifierInterface* progress,
                                 const Options&, zuCatalog<zuImage>& images)
{
    clearErrorMessages();
    zuObjReader reader(images);
    const zuPointer<zuNode> root = reader.Read(device, "", "", progress);
    return finishLoad(out, zuPointer<zuObject>(root.get()), reader.GetMessages());
}

const zuSpatial* zuObjMeshDriver::savedRoot(const ObjectList& objects, bool append)
{
    if (append) {
        std::cout << "zuObjMeshDriver::saveMeshes : appending is not supported\n";
        addErrorMessage(ERROR_CODE, -1, "appending is not supported");
        return nullptr;
    }
    if (objects.size() != 1 || !objects[0] || !objects[0]->IsDerived(zuSpatial::TYPE)) {
        addErrorMessage(ERROR_CODE, -1,
                        "exactly one object, a spatial object, can be saved; " + std::to_string(objects.size()) +
                            " given");
        return nullptr;
    }
    return static_cast<const zuSpatial*>(objects[0].get());
}

bool zuObjMeshDriver::saveMeshes(const ObjectList& objects, const std::string& fileName,
                                 zuProgressNotifierInterface* progress, const Options&, bool append)
{
    clearErrorMessages();
    const zuSpatial* root = savedRoot(objects, append);
    if (!root)
        return false;
    zuObjWriter writer;
    if (writer.WriteFile(*root, fileName, progress))
        return true;
    addErrorMessage(ERROR_CODE, -1, writer.GetError());
    return false;
}

bool zuObjMeshDriver::saveMeshes(const ObjectList& objects, zuIoDevice& device, zuProgressNotifierInterface* progress,
                                 const Options&, bool append)
{
    clearErrorMessages();
    const zuSpatial* root = savedRoot(objects, append);
    if (!root)
        return false;
    zuObjWriter writer;
    if (writer.Write(*root, device, nullptr, "", "", progress))
        return true;
    addErrorMessage(ERROR_CODE, -1, writer.GetError());
    return false;
}

} // namespace zu
