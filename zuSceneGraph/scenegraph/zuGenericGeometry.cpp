#include <zuSceneGraph/scenegraph/zuGenericGeometry.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

namespace zu {

const zuRtti zuGenericGeometry::TYPE("zuCore.zuGenericGeometry", &zuGeometry::TYPE);

zuGenericGeometry::~zuGenericGeometry() = default;

void zuGenericGeometry::setUserShader(const std::string& defines, const std::string& key)
{
    mUserDefines = defines;
    mUserKey = key;
    updateObjectDescription();
}

void zuGenericGeometry::updateObjectDescription()
{
    zuGeometry::updateObjectDescription();
    appendShaderDescription(mUserDefines, mUserKey);
}

// ---------------------------------------------------------------------------------------
// Hooks

int zuGenericGeometry::zuGeometryGetDiskUsed(const zuBaseStream& stream) const
{
    return zuGeometry::zuGeometryGetDiskUsed(stream) + 4 + static_cast<int>(mUserDefines.size()) + 4
        + static_cast<int>(mUserKey.size());
}

void zuGenericGeometry::zuGeometrySave(zuBaseStream& stream) const
{
    zuGeometry::zuGeometrySave(stream);
    stream.Write(mUserDefines);
    stream.Write(mUserKey);
}

void zuGenericGeometry::zuBaseGeometryLoad(zuBaseStream& stream, zuLink* link)
{
    zuGeometry::zuBaseGeometryLoad(stream, link);
    stream.Read(mUserDefines);
    stream.Read(mUserKey);
}

bool zuGenericGeometry::Equals(const zuRttiInterface* other) const
{
    if (!zuGeometry::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const auto* generic = static_cast<const zuGenericGeometry*>(other);
    return mUserDefines == generic->mUserDefines && mUserKey == generic->mUserKey;
}

bool zuGenericGeometry::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuGenericGeometry;
    if (!target->IsDerived(TYPE) || !zuGeometry::Clone(target))
        return false;
    auto* generic = static_cast<zuGenericGeometry*>(target);
    generic->mUserDefines = mUserDefines;
    generic->mUserKey = mUserKey;
    // The base's clone composed the description without the strings.
    generic->updateObjectDescription();
    return true;
}

void zuGenericGeometry::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuGeometry::DescribeFields(object, visitor);
    const auto& geometry = static_cast<const zuGenericGeometry&>(object);
    visitor.BeginGroup("user shader");
    visitor.Text("defines", geometry.mUserDefines);
    visitor.Text("key", geometry.mUserKey);
    visitor.EndGroup();
}

} // namespace zu
