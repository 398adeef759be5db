#include <zuSceneGraph/states/zuGlobalState.h>

namespace zu {

// zuUnnamedObject adds no type record: a global state derives from zuObject's.
const zuRtti zuGlobalState::TYPE("zuCore.zuGlobalState", &zuObject::TYPE);

} // namespace zu
