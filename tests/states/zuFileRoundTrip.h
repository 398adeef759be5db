#pragma once

// Saves objects with a zuFileStream into a zuMemoryIoDevice and loads them back, as an
// application moves a scene to a file and back.

#include <zuSceneGraph/objects/zuObject.h>
#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSystem/zuMemoryIoDevice.h>

#include <string>
#include <vector>

namespace zu::test {

// The whole file: the "MVK" header, then the records. Empty when the save fails.
inline std::vector<char> saveThroughFile(zuRttiInterface* object, zuStreamVersion version, int blockSize)
{
    zuMemoryIoDevice device;
    zuFileStream stream(blockSize);
    stream.SetVersion(version);
    stream.InsertTopLevel(object);
    if (!stream.Save(device, "memory", false))
        return {};
    return device.data();
}

// The first top-level object of the file (null when the load fails); the pointer keeps it
// alive once the stream is gone.
inline zuPointer<zuObject> loadThroughFile(const std::vector<char>& file, int blockSize)
{
    zuMemoryIoDevice device(file);
    zuFileStream stream(blockSize);
    if (!stream.Load(device, "memory") || stream.GetObjectCount() != 1)
        return zuPointer<zuObject>();
    zuRttiInterface* object = stream.GetObjectAt(0);
    return object && object->IsDerived(zuObject::TYPE) ? static_cast<zuObject*>(object) : nullptr;
}

} // namespace zu::test
