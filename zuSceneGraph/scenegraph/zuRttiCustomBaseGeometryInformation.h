#pragma once

#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/scenegraph/zuLegacyBoundingVolume.h>
#include <zuSceneGraph/scenegraph/zuRttiCustomSpatialInformation.h>

namespace zu {

// What a geometry leaf keeps between Register and Save with streams older than 6.6: the
// legacy volume made from its model bound, which its record refers to, beside what the
// spatial part keeps (the leaf registers this record in place of the spatial's).
class zuRttiCustomBaseGeometryInformation : public zuRttiCustomSpatialInformation {
public:
    zuRttiCustomBaseGeometryInformation() = default;
    ~zuRttiCustomBaseGeometryInformation() override;

    zuPointer<zuLegacyBoundingVolume> modelVolume;
};

} // namespace zu
