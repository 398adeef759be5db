#include <zuSceneGraph/scenegraph/zuRttiCustomBaseGeometryInformation.h>

namespace zu {

// Out of line, so that the record's virtual table lives in the library.
zuRttiCustomBaseGeometryInformation::~zuRttiCustomBaseGeometryInformation() = default;

} // namespace zu
