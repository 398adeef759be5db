#pragma once

#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/scenegraph/zuLegacyBoundingVolume.h>
#include <zuSceneGraph/stream/zuRttiCustomInformation.h>

namespace zu {

// What a spatial object passes between its stream passes with streams older than 6.6:
// saving, the legacy volume that Register creates from the world bound and Save refers
// to; loading, the number of global-state references that Load read and Link resolves.
//
// The stream keeps one side record per object. A derived class that needs its own (the
// legacy model bound of a geometry leaf) derives its record from this one and registers
// it in place of the spatial's, copying what the spatial part stored.
class zuRttiCustomSpatialInformation : public zuRttiCustomInformation {
public:
    zuRttiCustomSpatialInformation() = default;
    ~zuRttiCustomSpatialInformation() override;

    zuPointer<zuLegacyBoundingVolume> legacyVolume;
    int globalStateCount = 0;
};

} // namespace zu
