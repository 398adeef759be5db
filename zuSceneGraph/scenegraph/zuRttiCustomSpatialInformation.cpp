#include <zuSceneGraph/scenegraph/zuRttiCustomSpatialInformation.h>

namespace zu {

// Out of line, so that the record's virtual table lives in the library.
zuRttiCustomSpatialInformation::~zuRttiCustomSpatialInformation() = default;

} // namespace zu
