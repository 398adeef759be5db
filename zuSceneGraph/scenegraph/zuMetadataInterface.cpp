#include <zuSceneGraph/scenegraph/zuMetadataInterface.h>

namespace zu {

const zuRtti zuMetadataInterface::TYPE("zuCore.zuMetadataInterface", &zuUnnamedObject::TYPE);

bool zuMetadataInterface::Equals(const zuRttiInterface* other) const
{
    if (!zuUnnamedObject::Equals(other) || !other->IsDerived(TYPE))
        return false;
    return getTypeKey() == static_cast<const zuMetadataInterface*>(other)->getTypeKey();
}

} // namespace zu
