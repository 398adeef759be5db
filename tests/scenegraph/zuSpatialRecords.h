#pragma once

// Records of spatial objects and nodes built by hand, field by field, at any stream
// version, and a loader that keeps what it loaded alive: for the exact-bytes tests of the
// scene-graph classes.

#include "scenegraph/zuSpatialTestHelpers.h"

#include <zuSceneGraph/scenegraph/zuBoundingVolume.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <cstdint>
#include <string>
#include <vector>

namespace zu::test {

const zuStreamVersion V6_32(6, 32);

// One record: the type name, the record size from 6.0 on, the identity, then the body.
inline void appendRecord(zuBytes& out, const std::string& type, uint64_t identity, const zuBytes& body,
                         zuStreamVersion version, bool topLevel = false)
{
    if (topLevel)
        out.str("Top Level");
    out.str(type);
    if (version >= zuStreamVersion(6, 0))
        out.i32(static_cast<int32_t>(4 + type.size() + 4 + 8 + body.size()));
    out.u64(identity).raw(body.bytes().data(), body.size());
}

inline zuBytes& boundBytes(zuBytes& out, const zuBoundingVolume& bv, zuStreamVersion version)
{
    if (version >= zuStreamVersion(6, 28)) {
        out.f32(bv.GetRadius());
        for (float v : {bv.GetExtents()[0], bv.GetExtents()[1], bv.GetExtents()[2], bv.GetCenter()[0],
                        bv.GetCenter()[1], bv.GetCenter()[2]})
            out.f32(v);
        return out;
    }
    out.u8(0).f32(bv.GetCenter()[0]).f32(bv.GetCenter()[1]).f32(bv.GetCenter()[2]);
    out.f32(1).f32(0).f32(0).f32(0).f32(1).f32(0).f32(0).f32(0).f32(1);
    return out.f32(bv.GetExtents()[0]).f32(bv.GetExtents()[1]).f32(bv.GetExtents()[2]);
}

// The fields of a spatial object in the order of the stream's version.
struct SpatialPart {
    std::string name;
    zuBytes local, world;
    int cull = 0;
    zuBoundingVolume bound;                 // from 6.6
    uint64_t legacy = 0;                    // before 6.6
    std::vector<uint64_t> states;           // before 6.6
    std::vector<uint64_t> droppedList;      // before 5.12
    float droppedFloat = 0.0f;              // up to 5.0
    std::vector<uint64_t> metadata;         // ten entries from 5.1 to 5.12

    explicit SpatialPart(const std::string& objectName = "") : name(objectName)
    {
        identityBytes(local);
        identityBytes(world);
    }
    void append(zuBytes& out, zuStreamVersion version) const
    {
        out.str(name).i32(0);
        out.raw(local.bytes().data(), local.size()).raw(world.bytes().data(), world.size()).i32(cull);
        if (version >= zuStreamVersion(6, 6)) {
            boundBytes(out, bound, version);
        } else {
            out.u8(0).u8(0).u64(legacy).i32(static_cast<int32_t>(states.size()));
            for (uint64_t state : states)
                out.u64(state);
        }
        if (version < zuStreamVersion(5, 12)) {
            out.i32(static_cast<int32_t>(droppedList.size()));
            for (uint64_t entry : droppedList)
                out.u64(entry);
        }
        if (version <= zuStreamVersion(5, 0))
            out.f32(droppedFloat);
        if (version > zuStreamVersion(5, 12))
            out.i32(static_cast<int32_t>(metadata.size()));
        if (version >= zuStreamVersion(5, 1))
            for (uint64_t entry : metadata)
                out.u64(entry);
    }
};

inline zuBytes nodeBody(const SpatialPart& part, const std::vector<uint64_t>& children, zuStreamVersion version)
{
    zuBytes body;
    part.append(body, version);
    body.i32(static_cast<int32_t>(children.size()));
    for (uint64_t child : children)
        body.u64(child);
    return body;
}

// The record of an object saved on its own, without the top-level marker before it.
inline std::vector<char> recordOf(zuRttiInterface* object, zuStreamVersion version)
{
    const std::vector<char> saved = saveToBytes({object}, version);
    return std::vector<char>(saved.begin() + 4 + 9, saved.end());
}

inline void appendBytes(zuBytes& out, const std::vector<char>& bytes)
{
    out.raw(bytes.data(), bytes.size());
}

inline int diskUsed(const zuRttiInterface* object, zuStreamVersion version)
{
    zuBaseStream sizer;
    sizer.SetVersion(version);
    return object->GetDiskUsed(sizer);
}

// The number of nodes down the first slots from `root`.
inline int chainDepth(const zuSpatial* root)
{
    int depth = 0;
    for (const zuSpatial* s = root; s && s->IsDerived(zuNode::TYPE); s = static_cast<const zuNode*>(s)->getChild(0))
        ++depth;
    return depth;
}

// Loads `bytes`; the loaded top-level objects stay alive with the stream.
struct Loaded {
    zuBaseStream stream;
    bool ok = false;
    Loaded(std::vector<char> bytes, zuStreamVersion version)
    {
        stream.SetVersion(version);
        ok = stream.Load(bytes.data(), bytes.size());
    }
    template <class T> T* top(int i) const
    {
        zuRttiInterface* object = stream.GetObjectAt(i);
        return object && object->IsDerived(T::TYPE) ? static_cast<T*>(object) : nullptr;
    }
};

} // namespace zu::test
