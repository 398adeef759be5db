#pragma once

// Helpers of the states tests: the start of a record as the stream writes it, and loads
// from a buffer of records or from a whole file image.

#include "support/zuTestObjects.h"

#include <zuSceneGraph/objects/zuCatalog.h>
#include <zuSceneGraph/resources/zuImage.h>
#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSystem/zuMemoryIoDevice.h>

#include <string>
#include <vector>

namespace zu::test {

inline const zuStreamVersion V6_32(6, 32);

// The identity the stream writes: the address of the object's zuRttiInterface part.
inline uint64_t id(const zuRttiInterface* object)
{
    return reinterpret_cast<uintptr_t>(object);
}

// A 6.32 record header (type name, size counted from the type name's length field,
// identity) and the object part (name, no controllers), for `fieldBytes` bytes of fields.
inline zuBytes& recordStart(zuBytes& bytes, const std::string& type, uint64_t identity, const std::string& name,
                            int fieldBytes)
{
    bytes.str(type).i32(static_cast<int>(4 + type.size() + 4 + 8 + 4 + name.size() + 4) + fieldBytes);
    return bytes.u64(identity).str(name).i32(0);
}

// The top-level objects a load of the records hands out; empty when the load fails.
inline std::vector<zuPointer<zuObject>> loadRecords(std::vector<char> records)
{
    zuBaseStream stream;
    stream.SetVersion(V6_32);
    std::vector<zuPointer<zuObject>> loaded;
    if (stream.Load(records.data(), records.size()))
        for (int i = 0; i < stream.GetObjectCount(); ++i)
            loaded.emplace_back(static_cast<zuObject*>(stream.GetObjectAt(i)));
    return loaded;
}

// Saves the objects through a file stream of `blockSize` and loads them back with the
// catalogue: the loaded top-level objects; empty when the load fails.
inline std::vector<zuPointer<zuObject>> throughFile(const std::vector<zuRttiInterface*>& objects, int blockSize = 16,
                                                    zuCatalog<zuImage>* catalog = nullptr)
{
    zuMemoryIoDevice device(saveToFileBytes(objects, V6_32, blockSize));
    zuFileStream stream(blockSize, catalog);
    std::vector<zuPointer<zuObject>> loaded;
    if (stream.Load(device, "memory"))
        for (int i = 0; i < stream.GetObjectCount(); ++i)
            loaded.emplace_back(static_cast<zuObject*>(stream.GetObjectAt(i)));
    return loaded;
}

} // namespace zu::test
